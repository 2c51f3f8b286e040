"""What the programs print: that it arrives, or is missed, and that it does nothing to the terminal."""

import json
import os

from support import ProgramCase, read_tags, set_value

# Direction marks, overrides and isolates, line separators, and control characters of both kinds.
ACTING = "\u061c\u200e\u200f\u2028\u2029\u202a\u202e\u2066\u2069\u0080\u009b\x7f\x1b"


class Output(ProgramCase):
    def setUp(self):
        super().setUp()
        self.song = self.copy("06", "a.mp3")
        self.edit = self.script(set_value("TITLE", "x"))
        self.assertEqual(self.run_program("quorvex", "scripts", "import", self.edit).status, 0)

    def commands(self):
        """Whatever prints on standard output. The first one changes the song."""
        return [
            ["quorvex", "run", self.edit, self.song],
            ["quorvex", "run", "--json", self.edit, self.song],
            ["quorvex", "preview", self.edit, self.song],
            ["quorvex", "tags", "--json", self.song],
            ["quorvex", "format", "%title%", self.song],
            ["quorvex", "runs"],
            ["quorvex", "kinds"],
            ["quorvex", "scripts", "list"],
            ["quorvex", "scripts", "show", "script"],
            ["quorvex", "undo", "--json"],
            ["quorvex", "--help"],
            ["quorvex", "--version"],
            ["vantaro", "--help"],
            ["vantaro", "--version"],
            ["vantaro", "--list-menu"],
            ["vantaro", "/tag:help"],
        ]

    def test_output_that_cannot_be_written(self):
        for arguments in self.commands():
            with self.subTest(arguments[:3]), open("/dev/full", "wb") as full:
                outcome = self.run_program(*arguments, stdout=full)
                self.assertEqual(outcome.status, 1)
                self.assert_line(outcome.stderr, "Not everything could be printed: No space left on device")
            if arguments[1] == "run":
                self.assertEqual(read_tags(self.song)["TITLE"], ["x"])

    def test_output_that_nobody_reads(self):
        for arguments in self.commands()[:-6]:
            with self.subTest(arguments[:3]):
                reader, writer = os.pipe()
                os.close(reader)
                outcome = self.run_program(*arguments, stdout=writer)
                os.close(writer)
                self.assertEqual((outcome.status, outcome.stderr), (0, ""))

    def test_closed_standard_streams(self):
        """What is opened next must not take their places, and be written into."""
        for closed, status in (("<&-", 0), (">&-", 1), ("2>&-", 0), ("<&- >&- 2>&-", 1)):
            with self.subTest(closed):
                song = self.copy("06", "a.mp3")
                missing = self.folder / "missing.mp3"
                command = f'exec "$0" "$@" {closed}'
                outcome = self.run_program("sh", "-c", command, os.environ["QUORVEX"], "run", self.edit, song)
                self.assertEqual(outcome.status, status)
                self.run_program("sh", "-c", command, os.environ["QUORVEX"], "run", self.edit, song, missing)
                self.assertEqual(read_tags(song)["TITLE"], ["x"])
                self.assertEqual(self.run_program("quorvex", "undo").status, 0)
                self.assertEqual(song.read_bytes(), self.copy("06", "b.mp3").read_bytes())

    def test_nothing_acts_on_the_terminal(self):
        name = f"song{ACTING}.mp3"
        song = self.copy("06", name)
        bad = self.garbage(f"bad{ACTING}.mp3")
        text = {"kind": "Set value", "field": "A", "value": f"[{ACTING}]"}
        script = self.folder / f"script{ACTING}.json"
        script.write_text(json.dumps({"actions": [text]}))
        self.assertEqual(self.run_program("quorvex", "scripts", "import", script).status, 0)
        commands = [
            ["quorvex", "preview", script, song],
            ["quorvex", "preview", "--json", script, song],
            ["quorvex", "run", "--json", script, song, bad],
            ["quorvex", "run", script, song, bad],
            ["quorvex", "tags", song, bad],
            ["quorvex", "tags", "--json", song, bad],
            ["quorvex", "format", "%title% %path%", song],
            ["quorvex", "runs"],
            ["quorvex", "runs", "--json"],
            ["quorvex", "undo", "--json"],
            ["quorvex", "run", ACTING, song],
            ["quorvex", ACTING],
            ["quorvex", "scripts", "list"],
            ["quorvex", "scripts", "show", f"script{ACTING}"],
            ["vantaro", "--list-menu"],
            ["vantaro", f"/tag:{ACTING}", song],
            ["vantaro", ACTING, song],
        ]
        for arguments in commands:
            with self.subTest(arguments[:3]):
                outcome = self.run_program(*arguments)
                for stream in outcome.stdout, outcome.stderr:
                    self.assertEqual(sorted(set(stream) & set(ACTING)), [])
                if "--json" in arguments and arguments[1] in ("preview", "run", "tags"):
                    self.assertEqual(outcome.objects()[0]["path"], str(song))
        shown = self.run_program("quorvex", "scripts", "show", f"script{ACTING}").stdout
        self.assertEqual(json.loads(shown)["actions"][0]["value"], text["value"])
