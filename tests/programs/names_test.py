"""Files beside tracks, and names that are odd."""

import os
import subprocess
from pathlib import Path

from support import ProgramCase, read_tags

EMBED_CUESHEET = "{AC6410DE-FE47-44FF-A5CA-29A42B5B6799}"


class CueSheets(ProgramCase):
    """Those of a FLAC file."""

    def embed(self):
        """(what the console says, the cue sheet in the tags)"""
        with self.start("quorvex", "run", self.script((EMBED_CUESHEET, "")), self.song) as process:
            try:
                stdout, stderr = process.communicate(timeout=60)
            except subprocess.TimeoutExpired:
                process.kill()
                self.fail("the run hangs")
        self.assertEqual(process.returncode, 0, stderr)
        return (stdout + stderr).decode(), read_tags(self.song).get("CUESHEET")

    def setUp(self):
        super().setUp()
        self.song = self.copy("07", "album/Album.flac")

    def test_a_pipe_in_its_place(self):
        os.mkfifo(self.folder / "album/Album.cue")
        said, sheet = self.embed()
        self.assert_line(said, 'Could not load external cuesheet for "', "album/Album.flac", "no regular file")
        self.assertIsNone(sheet)

    def test_in_another_case(self):
        (self.folder / "album/Album.flac.cue").write_text("third")
        for name, text in ("ALBUM.Cue", "second"), ("ALBUM.CUE", "first of them"), ("Album.cue", "exact"):
            (self.folder / "album" / name).write_text(text)
            with self.subTest(name):
                self.assertEqual(self.embed()[1], [text])

    def test_encodings(self):
        text = 'TITLE "Caf\u00e9 \u266b"\r\n'
        for encoding in ("utf-8", "utf-8-sig", "utf-16", "utf-16-be"):
            with self.subTest(encoding):
                mark = "\ufeff" if encoding == "utf-16-be" else ""
                (self.folder / "album/Album.cue").write_bytes((mark + text).encode(encoding))
                self.assertEqual(self.embed()[1], [text])


class Names(ProgramCase):
    """Of files: bytes, which need not be UTF-8."""

    def make(self, name):
        path = os.path.join(os.fsencode(self.folder), name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(self.copy("07", "sample.flac").read_bytes())
        return path

    def test_that_are_not_utf8(self):
        script = self.folder / "script.json"
        script.write_text("""{"actions": [
            {"kind": "Guess values from file names", "pattern": "%album%/%artist% - %title%"},
            {"kind": "Format value from other fields", "field": "MOOD", "pattern": "%directoryname%/%filename%"}]}""")
        for options, decoded in ([], "\u00e9"), (["--code-page", "koi8-r"], "\u0418"):
            album = "M\u00fcsik"  # is UTF-8, and stays as it is beside a name that is not
            path = self.make(f"{album}/".encode() + b"Caf\xe9 - Th\xe9.flac")
            caf, the = f"Caf{decoded}", f"Th{decoded}"
            preview = self.run_program("quorvex", "preview", "--json", *options, script, path)
            self.assertEqual(preview.status, 0, preview.stderr)
            after = preview.objects()[0]["after"]
            expected = {"ALBUM": [album], "ARTIST": [caf], "TITLE": [the], "MOOD": [f"{album}/{caf} - {the}"]}
            self.assertEqual({field: after[field] for field in expected}, expected)
            before = os.listdir(os.path.dirname(path))
            self.assertEqual(self.run_program("quorvex", "run", *options, script, path).status, 0)
            self.assertEqual(os.listdir(os.path.dirname(path)), before)
            self.check(path, expected)

            # The same through the component as hosts load it.
            outcome = self.run_program("vantaro", *options, "/tag:GUESS:%title% - %artist%:%_filename%", path)
            self.assertEqual(outcome.status, 0, outcome.stderr)
            outcome = self.run_program("vantaro", *options, "/tag:FORMAT:MOOD:%filename%", path)
            self.assertEqual(outcome.status, 0, outcome.stderr)
            self.check(path, {"ARTIST": [the], "TITLE": [caf], "MOOD": [f"{caf} - {the}"]})

    def check(self, path, expected):
        tags = read_tags(os.fsdecode(path))
        self.assertEqual({field: tags[field] for field in expected}, expected)

    def test_unknown_character_set(self):
        outcome = self.run_program("quorvex", "--code-page", "klingon", "tags", self.copy("07", "a.flac"))
        self.assertEqual((outcome.status, outcome.stdout), (2, ""))
        self.assert_line(outcome.stderr, "klingon")

    def test_order_of_files(self):
        names = ["2 \u00c9dith.flac", "10 Zappa.flac", "Eno.flac", "\u00c9tude.flac", "Zappa.flac"]
        for name in reversed(names):
            self.make(b"order/" + name.encode())
        outcome = self.run_program("quorvex", "tags", "--json", self.folder / "order")
        self.assertEqual([Path(entry["path"]).name for entry in outcome.objects()], names)
