"""Runs taken back: every file byte for byte, across all formats, and what is refused."""

import os
import re
import subprocess

from support import FIVE, LONG_AGO, ProgramCase, add_value, audio_digest, read_tags, set_value, summary

MORE = {"b.wav": [], "c.aiff": [], "d.wma": [], "e.wv": [], "f.tta": [], "g.spx": ["-c:a", "libspeex", "-ar", "16000"],
        "h.oga": ["-c:a", "flac"], "i.front.m4a": ["-c:a", "aac", "-movflags", "faststart"]}
# What people do with tags: little that fits, much that does not, less, and none.
SCRIPTS = {
    "edit": [set_value("TITLE", "Another"), add_value("GENRE", "Jazz")],
    "grow": [set_value("LYRICS", "la " * 40000)],
    "shrink": [set_value("LYRICS", "la"), set_value("TITLE", "T")],
    "grow again": [set_value("COMMENT", "c" * 9000), add_value("ARTIST", "Somebody")],
}


class Undo(ProgramCase):
    def setUp(self):
        super().setUp()
        self.files = self.copy_five()
        for name, options in MORE.items():
            path = self.folder / name
            subprocess.run(["ffmpeg", "-v", "error", "-i", self.files[1], "-map", "0:a", *options, path], check=True,
                           stdin=subprocess.DEVNULL)
            self.files.append(path)
        for path in self.files:
            os.utime(path, ns=(LONG_AGO, LONG_AGO))

    def contents(self):
        return [path.read_bytes() for path in self.files]

    def do(self, *arguments, status=0):
        outcome = self.run_program("quorvex", *arguments)
        self.assertEqual(outcome.status, status, outcome.stderr)
        return outcome

    def remove_all(self):
        (self.folder / "strip.json").write_text('{"actions": [{"kind": "Remove all fields"}]}')
        self.do("run", "strip.json", *self.files)

    def test_every_format_step_by_step(self):
        audio = [audio_digest(path) for path in self.files]
        states = [self.contents()]
        for name, actions in SCRIPTS.items():
            with self.subTest(name):
                self.do("run", self.script(*actions), *self.files)
                self.assertEqual([audio_digest(path) for path in self.files], audio)
                states.append(self.contents())
        self.remove_all()
        self.assertEqual([audio_digest(path) for path in self.files], audio)
        self.assertTrue(all(old != new for old, new in zip(states[-1], self.contents(), strict=True)))
        for number in range(len(states), 0, -1):
            count = len(self.files)
            outcome = self.do("undo")
            asked = "strip.json" if number == len(SCRIPTS) + 1 else f"{self.folder}/script.qvx"
            when = r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d"
            self.assertRegex(outcome.stdout, rf"\AUndoing run {number} of {when}: run {re.escape(asked)}\n"
                                             rf"Run {number}: {count} files: {count} put back, 0 failed\n\Z")
            for path, found, wanted in zip(self.files, self.contents(), states.pop(), strict=True):
                self.assertTrue(found == wanted, f"{path} after undoing run {number}")

    def test_an_undo_is_a_run(self):
        old = self.contents()
        self.do("run", self.script(*SCRIPTS["grow"]), *self.files)
        new = self.contents()
        self.do("undo", "--times")
        self.assertEqual(self.contents(), old)
        self.assertEqual({path.stat().st_mtime_ns for path in self.files}, {LONG_AGO})
        self.assert_line(self.do("undo", status=2).stderr, "no run that can be undone")
        self.do("undo", "2")
        self.assertEqual(self.contents(), new)
        runs = self.do("runs", "--json").objects()
        self.assertEqual([(run["run"], run.get("undoes"), run.get("undone_by"), run["files"]) for run in runs],
                         [(3, 2, None, len(new)), (2, 1, 3, len(new)), (1, None, 2, len(new))])
        lines = self.do("runs").stdout.splitlines()
        self.assertEqual([line.split("  ")[0] for line in lines], ["3", "2", "1"])
        self.assertIn("(undone by 2)", lines[2])
        paths = sorted(str(path) for path in self.files)
        self.assertEqual(sorted(self.do("runs", "1").stdout.splitlines()), paths)
        self.assertEqual(sorted(row["path"] for row in self.do("runs", "2", "--json").objects()), paths)
        self.assert_line(self.do("runs", "7", status=2).stderr, "Run 7: there is no such run")

    def test_what_has_changed_since_is_left_alone(self):
        old = self.contents()
        self.do("run", self.script(*SCRIPTS["edit"]), *self.files)
        changed, gone, *others = self.files
        with open(changed, "ab") as file:
            file.write(b"\0")
        gone.unlink()
        with self.untouched(changed):
            outcome = self.do("undo", status=1)
        self.assert_line(outcome.stderr, changed, "has changed since")
        self.assert_line(outcome.stderr, gone, "not found")
        self.assertEqual([path.read_bytes() for path in others], old[2:])
        self.assertIn(f"{len(others)} put back, 2 failed", outcome.stdout)

    def test_nothing_to_undo(self):
        for arguments, text in ((["undo"], "no run"), (["undo", "7"], "no such run"), (["undo", "x"], "x")):
            self.assert_line(self.do(*arguments, status=2).stderr, text)
        self.do("preview", self.script(*SCRIPTS["edit"]), *self.files)
        self.assertEqual(self.do("runs").stdout, "")


class WritePlaces(ProgramCase):
    """Where files cannot simply be replaced."""

    def test_a_full_journal_disk_changes_nothing(self):
        files = self.copy_five()
        (self.folder / "state").mkdir()
        (self.folder / "state/vantaro").write_text("in the way")
        with self.untouched(*files):
            outcome = self.run_program("quorvex", "run", self.script(*SCRIPTS["edit"]), *files)
            told = self.run_program("quorvex", "run", "--json", self.script(*SCRIPTS["edit"]), *files).objects()
        why = f"{self.folder}/state/vantaro/runs: File not found"
        self.assertEqual((outcome.status, outcome.stdout), (1, summary(failed=5)))
        self.assertEqual(outcome.stderr, f"{why}\nNothing was written: {why}\n5 of 5 tracks failed.\n")
        self.assertEqual([row["error"] for row in told], [why] * 5)

    def test_file_size_limit_leaves_old_bytes(self):
        """As on a full disk: every write beyond a size fails."""
        files = self.copy_five()
        with self.untouched(*files):
            outcome = self.run_program("sh", "-c", 'ulimit -f 60; exec "$0" "$@"', os.environ["QUORVEX"],
                                       "run", self.script(*SCRIPTS["grow"]), *files)
        self.assertEqual(outcome.status, 1)
        for path in files:
            self.assert_line(outcome.stderr, path, "File too large")
        self.assertEqual({path.name for path in self.folder.glob(".*")}, set())

    def test_read_only_folder(self):
        files = [self.copy(number, f"music/{name}") for name, number in FIVE.items()]
        for path in files:
            path.chmod(0o666)
        old = [path.read_bytes() for path in files]
        files[0].parent.chmod(0o555)
        script = self.script(*SCRIPTS["grow"])
        self.assertEqual(self.run_as_ordinary_user("quorvex", "run", script, *files).status, 0)
        for path in files:
            self.assertEqual(read_tags(path)["LYRICS"], ["la " * 40000])
        self.assertEqual(self.run_as_ordinary_user("quorvex", "undo").status, 0)
        self.assertEqual([path.read_bytes() for path in files], old)
