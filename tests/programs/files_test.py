"""What becomes of files beside their tags: untouched ones, links, permissions, odd names and folders."""

import os

from support import ProgramCase, add_value, audio_digest, read_tags, set_value, summary


class RepeatedEdits(ProgramCase):
    def run_over(self, files, *actions):
        outcome = self.run_program("quorvex", "run", self.script(*actions), *files)
        self.assertEqual((outcome.status, outcome.stderr), (0, ""))
        return outcome.stdout

    def test_equal_tags_are_not_written(self):
        files = self.copy_five()
        files[3] = self.copy("04", "d.opus")  # the album of the other one ends in a blank
        album = "A Slow Harbour"
        scripts = {
            "the same value": [set_value("ALBUM", album), set_value("date", "2019")],
            "there and back": [set_value("ALBUM", "x"), add_value("ALBUM", "y"), set_value("ALBUM", album)],
        }
        for name, actions in scripts.items():
            with self.subTest(name), self.untouched(*files):
                self.assertEqual(self.run_over(files, *actions), summary(unchanged=5))
        with self.subTest("quick command"), self.untouched(*files):
            self.assertEqual(self.run_program("vantaro", "/tag:ALBUM=" + album, *files).status, 0)

    def test_setting_again_writes_nothing(self):
        """Also where a format keeps the value in another form than the script has it."""
        cases = [("ALBUM", "Ä – 2"), ("OWN FIELD", "y"), ("COMMENT", " "), ("DATE", "2020-01-02"),
                 ("GENRE", "Rock"), ("TRACKNUMBER", "7"), ("TRACKNUMBER", "3/9"), ("TRACKNUMBER", "03"),
                 ("MOOD", "")]
        for field, value in cases:
            with self.subTest(field, value=value):
                files = self.copy_five()
                self.run_over(files, set_value(field, value))
                with self.untouched(*files):
                    self.assertEqual(self.run_over(files, set_value(field, value)), summary(unchanged=5))

    def test_adding_again_adds_again(self):
        for field in ("ARTIST", "GENRE", "COMPOSER", "OWN FIELD"):
            with self.subTest(field):
                files = self.copy_five()
                old = [read_tags(path).get(field, []) for path in files]
                self.run_over(files, add_value(field, "New"), add_value(field, "New"))
                now = [read_tags(path)[field] for path in files]
                self.assertEqual(now, [[*values, "New", "New"] for values in old])


class FileNames(ProgramCase):
    def test_one_file_by_several_names(self):
        script = self.script(add_value("ARTIST", "New"))
        aliases = {
            "the same": lambda path: path,
            "roundabout": lambda path: path.parent / "settings" / ".." / path.name,
            "symbolic": lambda path: self.link(os.symlink, path),
            "hard": lambda path: self.link(os.link, path),
        }
        (self.folder / "settings").mkdir()
        for kind, alias in aliases.items():
            with self.subTest(kind):
                files = self.copy_five()
                for path in files:
                    path.chmod(0o640)
                names = [name for path in files for name in (path, alias(path))]
                states = [self.state(name) for name in names]
                old = [(read_tags(path), audio_digest(path)) for path in files]
                outcome = self.run_program("quorvex", "run", "--jobs", "8", script, *names)
                self.assertEqual((outcome.status, outcome.stderr), (0, ""))
                self.assertEqual([self.state(name) for name in names], states)
                for first, second in zip(names[::2], names[1::2], strict=True):
                    self.assertTrue(os.path.samefile(first, second), second)
                for path, (tags, audio) in zip(files, old, strict=True):
                    artist = tags.pop("ARTIST")
                    found = read_tags(path)
                    self.assertEqual(found.pop("ARTIST"), [*artist, "New"])
                    self.assertEqual((found, audio_digest(path)), (tags, audio))

    @staticmethod
    def state(name):
        status = os.lstat(name)
        return status.st_mode, status.st_nlink

    def link(self, make, path):
        name = path.with_stem(f"{path.stem} {make.__name__}")
        name.unlink(missing_ok=True)
        make(path, name)
        return name

    def test_name_that_is_not_utf8(self):
        song = self.copy("06", os.fsdecode(b"caf\xe9.mp3"))
        script = self.script(set_value("TITLE", "Bar"))
        for arguments in ([song], ["."]):
            os.utime(song)
            outcome = self.run_program("quorvex", "run", "--json", script, *arguments)
            self.assertEqual((outcome.status, outcome.stderr), (0, ""))
            self.assertEqual([track["path"] for track in outcome.objects()], [f"{self.folder}/caf\ufffd.mp3"])
        self.assertEqual(read_tags(song)["TITLE"], ["Bar"])

    def test_folders_that_lead_to_themselves(self):
        songs = [self.copy("06", "music/a.mp3"), self.copy("07", "music/deep/b.flac")]
        (self.folder / "music/deep/loop").symlink_to("..")
        (self.folder / "music/self").symlink_to("self")
        outcome = self.run_program("quorvex", "tags", "--json", "music")
        self.assertEqual([track["path"] for track in outcome.objects()], [str(song) for song in songs])
        self.assert_line(outcome.stderr, "music/self")

    def test_playlist_that_names_a_missing_file(self):
        songs = [self.copy("06", "music/a.mp3"), self.copy("07", "Ça va.flac")]
        playlist = self.folder / "list.m3u8"
        playlist.write_text("#EXTM3U\nmusic\\a.mp3\r\nmusic/gone.mp3\nÇa va.flac\n", newline="")
        outcome = self.run_program("quorvex", "run", self.script(set_value("TITLE", "x")), playlist)
        self.assertEqual((outcome.status, outcome.stdout), (1, summary(written=2)))
        self.assert_line(outcome.stderr, "music/gone.mp3: File not found", "list.m3u8")
        self.assertEqual([read_tags(song)["TITLE"] for song in songs], [["x"], ["x"]])

    def test_folder_without_music(self):
        (self.folder / "empty").mkdir()
        outcome = self.run_program("quorvex", "run", self.script(set_value("TITLE", "x")), "empty")
        self.assertEqual((outcome.status, outcome.stdout), (2, ""))
        self.assertEqual(outcome.stderr, "Nothing to do: there are no music files.\n")
