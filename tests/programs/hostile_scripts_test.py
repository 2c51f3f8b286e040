"""Scripts and arguments made to do harm: an answer in bounded time, and never a crash."""

import json
import os
import struct

from support import (ADD_VALUE, SCRIPT_FILE, SET_VALUE, ProgramCase, guid, read_tags, script_bytes, set_value)

FORMAT_VALUE = "{48F67226-8A33-409F-A0DF-FFB157DF1B7E}"
AUTO_TRACK_NUMBER = "{F6D34BCA-5E3D-441B-A76F-39CA11802245}"
NOT_UTF8 = b"a\xc3 \xff;\xed\xa0\x80,\xf8%\x80%"
STATUSES = {0, 1, 2}


class HostileScripts(ProgramCase):
    def write(self, content, name="hostile.qvx"):
        (self.folder / name).write_bytes(content)
        return self.folder / name

    def ends(self, *arguments):
        """With one of the statuses there are, and with texts that can be shown."""
        outcome = self.run_program(*arguments)
        self.assertIn(outcome.status, STATUSES, outcome.stderr)
        self.assertNotRegex(outcome.stdout + outcome.stderr, "[\x00-\x09\x0b-\x1f\x7f]")
        return outcome

    def test_a_hundred_thousand_actions(self):
        song = self.copy("07", "a.flac")
        count = 100_000
        actions = [set_value("TITLE", str(n)) for n in range(count - 1)] + [set_value("ALBUM", "last")]
        script = self.script(*actions)
        (row,) = self.run_program("quorvex", "preview", "--json", script, song).objects()
        self.assertEqual((row["after"]["TITLE"], row["after"]["ALBUM"]), ([str(count - 2)], ["last"]))
        self.assertEqual(self.ends("quorvex", "run", script, song).status, 0)
        self.assertEqual(read_tags(song)["ALBUM"], ["last"])
        self.assertEqual(self.ends("quorvex", "scripts", "import", script).status, 0)
        self.assertEqual(self.ends("quorvex", "scripts", "export", "script", "out.json").status, 0)
        self.assertEqual(len(json.loads((self.folder / "out.json").read_bytes())["actions"]), count)
        self.assertEqual(self.ends("quorvex", "preview", "out.json", song).status, 0)

    def test_texts_that_are_not_utf8(self):
        song = self.copy("07", "a.flac")
        forms = (NOT_UTF8, NOT_UTF8 + b"\n" + NOT_UTF8, b"TITLE\n" + NOT_UTF8, b"TITLE\n" + NOT_UTF8 + b"\nn",
                 b"TITLE\n" + NOT_UTF8 + b"\n" + NOT_UTF8 + b"\nc")
        kinds = [row["guid"] for row in self.run_program("quorvex", "kinds", "--json").objects()]
        stored = [guid(kind) + struct.pack("<I", len(text)) + text for kind in kinds for text in forms]
        name = struct.pack("<I", len(NOT_UTF8)) + NOT_UTF8
        script = self.write(guid(SCRIPT_FILE) + name + struct.pack("<I", len(stored)) + b"".join(stored))
        (row,) = self.run_program("quorvex", "preview", "--yes", "--json", script, song).objects()
        self.assertIn("no valid UTF-8", row["error"])
        with self.untouched(song):
            outcome = self.ends("quorvex", "run", "--yes", script, song)
        self.assertEqual(outcome.status, 1, "no format keeps such texts")
        self.assert_line(outcome.stderr, song, "no valid UTF-8")
        self.assertEqual(self.ends("quorvex", "scripts", "import", script, "--name", NOT_UTF8).status, 0)
        refused = self.ends("quorvex", "scripts", "export", NOT_UTF8, "out.json")
        self.assertEqual(refused.status, 2, "the text form would lose bytes")
        self.assertFalse((self.folder / "out.json").exists())
        for verb in (["list"], ["show", NOT_UTF8], ["export", NOT_UTF8, "out.qvx"], ["delete", NOT_UTF8]):
            self.assertEqual(self.ends("quorvex", "scripts", *verb).status, 0, verb)
        self.ends("quorvex", "preview", "--yes", "out.qvx", song)

    def test_arguments_that_are_not_utf8(self):
        song = os.fsencode(self.copy("07", "a.flac"))
        bad = NOT_UTF8.replace(b";", b"")
        for command in (b"/tag:" + bad, b"/tag:" + bad + b"=" + bad, b"/tag:FORMAT:" + bad + b":" + bad,
                        b"/tag:GUESS:%a%" + bad + b"%b%:" + bad, b"/tag:FORMAT:A:$upper(" + bad + b")"):
            self.ends("vantaro", command, song)
        for verb in ([b"--menu", bad], [b"--menu", b"Tagging/Scripts/" + bad], [bad]):
            self.assertEqual(self.ends("vantaro", *verb, song).status, 2, verb)
        for verb in (["format", bad], ["run", bad], ["preview", bad], ["tags"]):
            self.ends("quorvex", *verb, song, bad)

    def test_deep_and_endless_patterns(self):
        song = self.copy("07", "a.flac")
        for pattern in ("[" * 100_000, "(" * 100_000, "$if(" * 25_000, "'" * 100_001,
                        "$upper(" * 199 + "x" + ")" * 199, "$repeat($repeat($repeat(x,9999),9999),9999)",
                        "$while(1,x)"):
            self.ends("vantaro", f"/tag:FORMAT:A:{pattern}", song)
            self.ends("quorvex", "format", pattern, song)
            actions = [(FORMAT_VALUE, "A\n" + pattern * 4), (AUTO_TRACK_NUMBER, pattern * 4)]
            self.assertEqual(self.ends("quorvex", "preview", self.script(*actions), song).status, 0, pattern[:20])
            script = self.write(json.dumps({"actions": [
                {"kind": "Format value from other fields", "field": "A", "pattern": pattern * 4},
                {"kind": "Auto track number", "pattern": pattern * 4}]}).encode(), "deep.json")
            compiles = not pattern.startswith(("[", "$if("))
            self.assertEqual(self.ends("quorvex", "preview", script, song).status, 0 if compiles else 2, pattern[:20])
        subject = " " * 100_000 + "x"
        self.ends("vantaro", f"/tag:A={subject}", f"/tag:GUESS:{'%b% ' * 20_000}-%c%:%a%", song)

    def test_text_forms(self):
        song = self.copy("07", "a.flac")
        contents = [
            b'{"actions": ' + b"[" * 1_000_000,
            b'{"actions": ' + b'{"a":' * 200_000 + b"1" + b"}" * 200_001,
            b'{"actions": [' + b"[" * 100_000 + b"]" * 100_000 + b"]}",
            b'{"actions": [{"kind": "' + NOT_UTF8 + b'"}]}',
            b'{"actions": [{"kind": "\\ud800"}]}',
            b'{"actions": [{"kind": "\\u001b[2J"}]}',
            b'{"actions": [], "name": "' + b"x" * 5_000_000 + b'", "x": 1}',
            b'\xef\xbb\xbf{"actions": 1}',
            b"{" + b" " * 5_000_000,
            b"{\0}",
            b"   ",
            b"\n" * 1_000_000,
        ]
        for content in contents:
            with self.untouched(song):
                outcome = self.ends("quorvex", "run", self.write(content, "hostile.json"), song)
            self.assertEqual(outcome.status, 2, content[:40])
            self.assertRegex(outcome.stderr, r"\AError loading quorvex script .+hostile\.json \(.+\)\.\n\Z")

    def test_names_end_where_they_are_stored(self):
        for name in ("b", "b\0c"):
            script = self.write(json.dumps({"name": name, "actions": []}).encode(), "name.json")
            self.run_program("quorvex", "scripts", "import", script)
            self.run_program("quorvex", "scripts", "import", script, "--name", name.replace("\0", "\n"))
        self.assertEqual(self.run_program("quorvex", "scripts", "list").stdout, "name\nb\n")

    def test_large_texts(self):
        large = "x" * 10_000_000
        content = script_bytes((SET_VALUE, f"TITLE\n{large}"), (ADD_VALUE, f"NEW\n{large}"), name=large)
        song = self.copy("07", "a.flac")
        script = self.write(guid(SCRIPT_FILE) + content)
        outcome = self.ends("quorvex", "preview", script, song)
        self.assertLess(len(outcome.stdout), 1000)
