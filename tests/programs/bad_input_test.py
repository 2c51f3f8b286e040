"""Input that cannot be used: a line that says so, the right exit status, and nothing changed."""

import json
import os
import signal
import subprocess
import time

from support import (NO_KIND, SCRIPT_FILE, SET_VALUE, ProgramCase, guid, read_tags, script_bytes, set_value,
                     summary)

# An unknown kind, and texts with too few and too many lines, among actions that can be carried out.
MIXED = [set_value("TITLE", "x"), (NO_KIND, "whatever"), (SET_VALUE, "GENRE"), set_value("GENRE", "y\nz"),
         set_value("ALBUM", "y")]


class BadInput(ProgramCase):
    def test_scripts(self):
        song = self.copy("06", "a.mp3")
        whole = guid(SCRIPT_FILE) + script_bytes(set_value("TITLE", "x"))
        cases = {f"cut at {end}": whole[:end] for end in (0, 7, 16, 18, 22, 30, 40, 46, len(whole) - 1)}
        cases["other magic"] = b"\0" + whole[1:]
        cases["text"] = b"TITLE=x\n" * 20
        cases["endless name"] = whole[:16] + b"\xff\xff\xff\xff" + whole[20:]
        cases["endless script"] = whole[:20] + b"\xff\xff\xff\xff" + whole[24:]
        for name, content in cases.items():
            with self.subTest(name), self.untouched(song):
                (self.folder / "bad.qvx").write_bytes(content)
                outcome = self.run_program("quorvex", "run", "bad.qvx", song)
                self.assertEqual((outcome.status, outcome.stdout), (2, ""))
                self.assertRegex(outcome.stderr, r"\AError loading quorvex script bad\.qvx \(.+\)\.\n\Z")

    def test_arguments(self):
        song = self.copy("06", "a.mp3")
        script = self.script(set_value("TITLE", "x"))
        os.mkfifo(self.folder / "pipe.mp3")
        cases = [
            ("a folder as script", 2, self.folder.name, ["quorvex", "run", self.folder, song]),
            ("no such script", 2, "tidy up", ["quorvex", "run", "tidy up", song]),
            ("no path", 2, "PATH", ["quorvex", "run", script]),
            ("wrong verb", 2, '"walk"', ["quorvex", "walk", script, song]),
            ("wrong option", 2, "--bogus", ["quorvex", "run", "--bogus", script, song]),
            ("no jobs", 2, "--jobs", ["quorvex", "--jobs", "0", "run", script, song]),
            ("many jobs", 2, "--jobs", ["quorvex", "run", "--jobs", "65", script, song]),
            ("nonsense jobs", 2, "--jobs", ["quorvex", "run", "--jobs", "two", script, song]),
            ("nowhere", 1, "nowhere: File not found", ["quorvex", "run", script, "nowhere"]),
            ("below a file", 1, "script.qvx/a.mp3", ["quorvex", "run", script, f"{script}/a.mp3"]),
            ("pipe", 1, "pipe.mp3", ["quorvex", "run", script, "pipe.mp3"]),
            ("empty path", 1, "Invalid path", ["quorvex", "run", script, ""]),
            ("URL", 1, "http://example.com/a.mp3", ["quorvex", "run", script, "http://example.com/a.mp3"]),
            ("script as music", 2, "script.qvx: passed over", ["quorvex", "run", script, script]),
            ("vantaro: nothing", 2, "Nothing to do", ["vantaro"]),
            ("vantaro: no command", 2, "Nothing to do", ["vantaro", song]),
            ("vantaro: wrong option", 2, "--bogus", ["vantaro", "--bogus", "/tag:title=x", song]),
            ("vantaro: no jobs", 2, "--jobs", ["vantaro", "--jobs", "0", "/tag:title=x", song]),
            ("vantaro: pipe", 1, "pipe.mp3", ["vantaro", "/tag:title=x", "pipe.mp3"]),
        ]
        for name, status, named, arguments in cases:
            with self.subTest(name), self.untouched(song, script):
                outcome = self.run_program(*arguments)
                self.assertEqual(outcome.status, status, outcome.stderr)
                self.assert_line(outcome.stderr, named)

    def test_question_about_unknown_kinds(self):
        question = "Some parts of the script failed to load. Continue ?"
        script = self.script(*MIXED)
        cases = [
            ("nobody to ask", None, [], 2),
            ("--yes", None, ["--yes"], 0),
            ("cancel", "c\n", [], 2),
            ("Cancel, written out", "Cancel\n", [], 2),
            ("ok", "o\n", [], 0),
            ("asked again", "x\n\nO\n", [], 0),
            ("end of input", "\x04", [], 2),
            ("interrupted", "", [], 130),
        ]
        for name, typed, options, status in cases:
            with self.subTest(name):
                song = self.copy("06", "a.mp3")
                arguments = ["quorvex", "run", *options, script, song]
                if typed is None:
                    outcome = self.run_program(*arguments)
                else:
                    outcome = self.run_on_terminal(*arguments, typed=typed, answer=None if typed else "\x03")
                self.assertEqual(outcome.status, status)
                self.assertEqual(question in outcome.stderr, not options)
                tags = read_tags(song)
                expected = ("x", "y") if status == 0 else ("Lantern Room", "A Slow Harbour")
                self.assertEqual((*tags["TITLE"], *tags["ALBUM"]), expected)
                if status != 0:
                    self.assertEqual(outcome.stdout, "")

    def test_files_that_may_not_be_written(self):
        read_only, unreadable, free = (self.copy("06", f"{name}.mp3") for name in ("fixed", "secret", "free"))
        script = self.script(set_value("TITLE", "x"))
        for path, mode in ((read_only, 0o444), (unreadable, 0o000), (free, 0o666), (script, 0o644)):
            path.chmod(mode)
        with self.untouched(read_only):
            outcome = self.run_as_ordinary_user("quorvex", "run", script, read_only, unreadable, free)
        self.assertEqual((outcome.status, outcome.stdout), (1, summary(written=1, failed=1)))
        for path in (read_only, unreadable):
            self.assert_line(outcome.stderr, f"{path}: Access denied")
        self.assertEqual(read_tags(free)["TITLE"], ["x"])


class Pipes(ProgramCase):
    """Scripts may come through pipes; one without another end keeps nobody waiting who has had enough."""

    def setUp(self):
        super().setUp()
        self.song = self.copy("06", "a.mp3")
        actions = [{"kind": "Set value", "field": "TITLE", "value": "x"}]
        text = json.dumps({"actions": actions}).encode()
        self.forms = [b" " * 100_000 + text, guid(SCRIPT_FILE) + script_bytes(set_value("TITLE", "x" * 100_000))]
        self.pipe = self.folder / "pipe.qvx"
        os.mkfifo(self.pipe)

    def test_scripts_through_pipes(self):
        preview = f"{os.environ['QUORVEX']} preview --json"
        commands = [f"{preview} <(sleep 0.2; cat form) a.mp3", f"{preview} /dev/stdin a.mp3 < form",
                    f"{preview} /dev/stdin a.mp3 < <(cat form)",
                    f"(sleep 0.2; cat form > pipe.qvx) & {preview} pipe.qvx a.mp3"]
        for form in self.forms:
            (self.folder / "form").write_bytes(form)
            for command in commands:
                with self.subTest(command, form=form[:3]):
                    outcome = self.run_program("bash", "-c", command)
                    self.assertEqual((outcome.status, outcome.stderr), (0, ""))
                    self.assertEqual(set(outcome.objects()[0]["after"]["TITLE"][0]), {"x"})

    def test_interrupts_at_standard_input(self):
        script = self.script(set_value("TITLE", "x"))
        for arguments in (["run", "-", self.song], ["scripts", "import", "-", "--name", "x"],
                          ["run", script, "--files-from", "-"]):
            with self.subTest(arguments[:2]), self.untouched(self.song):
                with self.start("quorvex", *arguments, stdin=subprocess.PIPE) as process:
                    process.stdin.write(bytes(self.song))
                    process.stdin.flush()
                    time.sleep(0.5)
                    self.assertIsNone(process.poll())
                    process.send_signal(signal.SIGINT)
                    self.assertEqual(process.wait(60), 130)

    def test_interrupts(self):
        script = self.script(set_value("TITLE", "x"))
        self.assertEqual(self.run_program("quorvex", "scripts", "import", script).status, 0)
        for arguments in (["run", self.pipe, self.song], ["preview", self.pipe, self.song],
                          ["scripts", "import", self.pipe], ["scripts", "export", "script", self.pipe]):
            for number in (signal.SIGINT, signal.SIGTERM):
                with self.subTest(arguments[:2], number=number), self.untouched(self.song):
                    with self.start("quorvex", *arguments) as process:
                        time.sleep(0.5)
                        self.assertIsNone(process.poll())
                        process.send_signal(number)
                        self.assertEqual(self.outcome(process).status, 130)
