"""What the programs do not need around them: a home folder, /proc, a folder that they get into."""

import os
import shutil
import subprocess
import unittest

from support import COMPONENT, ProgramCase, read_tags, set_value, summary

NOBODY_KNOWN = 54321  # a user whom the user database does not have
GROW = set_value("LYRICS", "la " * 40000)
WITHOUT_PROC = ["unshare", "--mount", "sh", "-c", 'mount -t tmpfs none /proc && exec "$0" "$@"']


def has_mounts_of_its_own():
    return os.getuid() == 0 and subprocess.run([*WITHOUT_PROC, "true"], capture_output=True).returncode == 0


@unittest.skipIf(os.getuid() != 0, "another user can only be taken by root")
class UnknownUser(ProgramCase):
    def setUp(self):
        super().setUp()
        self.song = self.copy("07", "a.flac")
        self.edit = self.script(GROW)
        self.quorvex = shutil.copy(os.environ["QUORVEX"], self.folder)
        for path in (self.folder, self.song):
            os.chown(path, NOBODY_KNOWN, NOBODY_KNOWN)

    def run_as_unknown(self, *arguments, program=None, **variables):
        return self.run_program(*(program or [self.quorvex]), *arguments, env={"PATH": os.environ["PATH"]} | variables,
                                user=NOBODY_KNOWN, group=NOBODY_KNOWN, extra_groups=[])

    def test_reads_without_home(self):
        for arguments in (["tags", self.song], ["format", "%title%", self.song], ["preview", self.edit, self.song],
                          ["runs"], ["kinds"], ["scripts", "list"]):
            with self.subTest(arguments[0]):
                outcome = self.run_as_unknown(*arguments)
                self.assertEqual((outcome.status, outcome.stderr), (0, ""))

    def test_vantaro_without_home(self):
        (self.folder / "components").mkdir()
        component = shutil.copy(COMPONENT, self.folder / "components")
        vantaro = [shutil.copy(os.environ["VANTARO"], self.folder), "--components", os.path.dirname(component)]
        for arguments in (["--list-menu"], ["/tag:help"]):
            outcome = self.run_as_unknown(*arguments, program=vantaro)
            self.assertEqual((outcome.status, outcome.stderr), (0, ""))
        with self.untouched(self.song):
            outcome = self.run_as_unknown("/tag:title=x", self.song, program=vantaro)
        self.assertEqual((outcome.status, outcome.stdout), (1, summary(failed=1)))
        self.assert_line(outcome.stderr, "Nothing was written: There is no home folder; set the variable HOME")

    def test_writes_only_what_can_be_taken_back(self):
        with self.untouched(self.song):
            outcome = self.run_as_unknown("run", self.edit, self.song)
            self.assertEqual((outcome.status, outcome.stdout), (1, "1 track: 0 written, 0 unchanged, 1 failed\n"))
            self.assertEqual(outcome.stderr, "Nothing was written: There is no home folder; set the variable HOME\n"
                                             "1 of 1 tracks failed.\n")
        self.assertEqual(self.run_as_unknown("scripts", "import", self.edit).status, 1)
        state = str(self.folder / "state")
        self.assertEqual(self.run_as_unknown("run", self.edit, self.song, XDG_STATE_HOME=state).status, 0)
        self.assertEqual(self.run_as_unknown("undo", XDG_STATE_HOME=state).status, 0)
        self.assertEqual(self.song.read_bytes(), self.copy("07", "b.flac").read_bytes())

    def test_a_folder_that_nobody_gets_into_is_told_of_once(self):
        home = self.folder / "home"
        (home / ".local/state").mkdir(parents=True)
        (home / ".local/state").chmod(0o700)  # root's, as after "sudo -E"
        denial = f"{home}/.local/state/vantaro/runs: Access denied\n"
        for status, arguments in ((0, ["tags", self.song]), (0, ["scripts", "list"]), (2, ["runs"]), (2, ["undo"])):
            with self.subTest(arguments[0]):
                outcome = self.run_as_unknown(*arguments, HOME=str(home))
                self.assertEqual((outcome.status, outcome.stderr), (status, denial))
        others = [self.copy("07", f"music/{n}.flac") for n in range(3)]
        for path in others:
            os.chown(path, NOBODY_KNOWN, NOBODY_KNOWN)
        with self.untouched(*others):
            outcome = self.run_as_unknown("run", self.edit, *others, HOME=str(home))
        self.assertEqual((outcome.status, outcome.stdout), (1, summary(failed=3)))
        self.assertEqual(outcome.stderr, f"{denial}Nothing was written: {denial}3 of 3 tracks failed.\n")


@unittest.skipIf(not has_mounts_of_its_own(), "/proc cannot be hidden here")
class WithoutProc(ProgramCase):
    def run_without_proc(self, program, *arguments):
        return self.run_program(*WITHOUT_PROC, os.environ[program.upper()], *arguments)

    def test_reads_writes_and_undoes(self):
        songs = [self.copy("07", "a.flac"), self.copy("06", "b.mp3")]
        outcome = self.run_without_proc("quorvex", "run", self.script(GROW), *songs)
        self.assertEqual((outcome.status, outcome.stdout, outcome.stderr), (0, summary(written=2), ""))
        for song in songs:
            self.assertEqual(read_tags(song)["LYRICS"], ["la " * 40000])
        outcome = self.run_without_proc("quorvex", "undo")
        self.assertEqual((outcome.status, outcome.stderr), (0, ""))
        self.assertEqual(songs[0].read_bytes(), self.copy("07", "c.flac").read_bytes())
        self.assertEqual(list(self.folder.glob(".*")), [])

    def test_finds_its_components(self):
        outcome = self.run_without_proc("vantaro", "--list-menu")
        self.assertEqual((outcome.status, outcome.stderr), (0, ""))
        self.assert_line(outcome.stdout, "Tagging/")
