"""Which version of ID3v2 is written: as the command line or the preferences say, seen from outside."""

import json
import subprocess

import mutagen
from mutagen import id3
from support import ProgramCase, add_value, read_tags, set_value, summary

FRAMES = [id3.TIT2(encoding=0, text=["A title"]), id3.TPE1(encoding=0, text=["One"]),
          id3.TDRC(encoding=0, text=["2001-05-06"])]
# What becomes of an artist added to a tag of 2.3, to one of 2.4, and to none.
TWO = ["One", "Twö"]
OUTCOMES = {
    "as-needed": [(4, TWO), (4, TWO), (4, ["Twö"])],
    "keep": [(3, ["One/Twö"]), (4, TWO), (4, ["Twö"])],
    "2.3": [(3, ["One/Twö"]), (4, TWO), (3, ["Twö"])],
    "2.4": [(4, TWO), (4, TWO), (4, ["Twö"])],
}


class Id3v2Versions(ProgramCase):
    def tagged(self, number, name, version):
        """A track with a tag of that version, or without a tag."""
        path = self.copy(number, name)
        tags = id3.ID3()
        for frame in FRAMES:
            tags.add(frame)
        mutagen.File(path).delete()
        if version == 3:
            tags.update_to_v23()
        if version is not None:
            tags.save(path, v2_version=version)
        return path

    def three(self):
        return [self.tagged("06", f"{version}.mp3", version) for version in (3, 4, None)]

    def check(self, path, version, artists):
        tags = id3.ID3(path, translate=False)
        self.assertEqual(tags.version[1], version)
        # The library itself takes "/" of 2.3 for a sign between values.
        self.assertEqual("/".join(tags["TPE1"].text), "/".join(artists))
        encoding = id3.Encoding.UTF8 if version == 4 else id3.Encoding.UTF16
        self.assertEqual(tags["TPE1"].encoding, encoding)
        if "TIT2" in tags:
            dates = {"TDRC"} if version == 4 else {"TYER", "TDAT"}
            self.assertEqual({"TDRC", "TYER", "TDAT"} & set(tags.keys()), dates)

    def test_previews_runs_and_files_agree(self):
        script = self.script(add_value("ARTIST", "Twö"))
        for policy, outcomes in OUTCOMES.items():
            with self.subTest(policy):
                files = self.three()
                old = [path.read_bytes() for path in files]
                previewed = self.run_program("quorvex", "preview", "--id3v2", policy, "--json", script, *files)
                run = self.run_program("quorvex", "run", "--id3v2", policy, "--json", script, *files)
                self.assertEqual((run.status, run.stderr), (0, ""))
                read = self.run_program("quorvex", "tags", "--json", *files).objects()
                for number, (path, (version, artists)) in enumerate(zip(files, outcomes, strict=True)):
                    preview, written = previewed.objects()[number], run.objects()[number]
                    change = written.pop("tag_version", None)
                    self.assertEqual(preview, written)
                    self.assertEqual(written["after"], read[number]["fields"])
                    self.assertEqual(written["after"]["ARTIST"], artists)
                    self.check(path, version, artists)
                    is_changed = number == 0 and version == 4
                    self.assertEqual(change, {"before": "ID3v2.3", "after": "ID3v2.4"} if is_changed else None)
                self.assertEqual(self.run_program("quorvex", "undo").status, 0)
                self.assertEqual([path.read_bytes() for path in files], old)

    def test_preferences_and_other_formats(self):
        path = self.folder / "settings/vantaro/preferences.json"
        path.parent.mkdir(parents=True)
        path.write_text(json.dumps({"id3v2": "keep", "id3v2_separator": "; "}))
        song = self.tagged("06", "a.mp3", 3)
        add = self.script(add_value("ARTIST", "Two"))
        self.assertEqual(self.run_program("quorvex", "run", add, song).stdout, summary(written=1))
        self.assertEqual(id3.ID3(song).version[1], 3)
        self.assertEqual(read_tags(song)["ARTIST"], ["One; Two"])
        self.assertEqual(self.run_program("vantaro", "--id3v2=2.4", "/tag:genre=Jazz", song).stdout,
                         f"ID3v2.3 became ID3v2.4 in 1 file:\n  {song}\n{summary(written=1)}")
        self.assertEqual(id3.ID3(song).version[1], 4)

    def test_files_of_another_version_are_counted(self):
        files = [self.tagged("06", f"{number}.mp3", 3) for number in range(7)]
        outcome = self.run_program("quorvex", "run", "--id3v2", "2.4", self.script(set_value("TITLE", "x")), *files)
        named = "".join(f"  {path}\n" for path in files[:5])
        self.assertEqual(outcome.stdout,
                         f"ID3v2.3 became ID3v2.4 in 7 files:\n{named}  and 2 more\n{summary(written=7)}")

    def test_other_words_are_refused(self):
        song = self.copy("06", "a.mp3")
        with self.untouched(song):
            outcome = self.run_program("quorvex", "run", "--id3v2", "2.2", self.script(set_value("TITLE", "x")), song)
        self.assertEqual(outcome.status, 2)
        self.assert_line(outcome.stderr, '"2.2"', "keep")

    def test_in_chunks(self):
        add = self.script(add_value("ARTIST", "Two"))
        for extension in ("wav", "aiff"):
            song = self.folder / f"a.{extension}"
            make = ["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "sine=duration=0.1", "-map_metadata", "-1"]
            subprocess.run([*make, "-fflags", "+bitexact", "-flags:a", "+bitexact", song], check=True)
            for policy, version, artists in ("2.3", 3, "Two"), ("keep", 3, "Two/Two"), ("2.4", 4, "Two/Two/Two"):
                with self.subTest(extension=extension, policy=policy):
                    run = self.run_program("quorvex", "run", "--id3v2", policy, "--json", add, song).objects()[0]
                    tags = mutagen.File(song).tags
                    self.assertEqual(tags.version[1], version)
                    self.assertEqual("/".join(tags["TPE1"].text), artists)
                    self.assertEqual("/".join(run["after"]["ARTIST"]), artists)
