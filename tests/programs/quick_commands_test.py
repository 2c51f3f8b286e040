"""The command line of vantaro: commands, and what they are for."""

import mutagen
from mutagen import id3
from mutagen.mp4 import MP4

from support import ProgramCase, audio_digest, read_all, read_tags, summary


class QuickCommands(ProgramCase):
    def add_what_edits_must_keep(self, mp3, ogg, opus, m4a):
        """The samples have pictures, a private frame, a rating and lyrics, but not each in each format."""
        tags = id3.ID3(mp3)
        tags.add(id3.APIC(mime="image/png", type=3, data=b"\x89PNG not quite" * 9))
        tags.add(id3.USLT(encoding=1, lang="eng", desc="", text="First line\nsecond line"))
        tags.save(v2_version=3)
        for path, more in ((ogg, {"RATING": "80", "LYRICS": "Heave\nho"}), (opus, {"LYRICS": "Lights"})):
            file = mutagen.File(path)
            file.update(more | {"COMMENT": "To be removed"})
            file.save()
        file = MP4(m4a)
        file.update({"\xa9cmt": "To be removed", "\xa9lyr": "Low", "rtng": [2]})
        file["----:example:Private"] = [b"\0\1"]
        file.save()

    def test_edits_every_format_and_nothing_else(self):
        files = mp3, flac, ogg, opus, m4a = self.copy_five()
        self.add_what_edits_must_keep(mp3, ogg, opus, m4a)
        before = [read_all(path) for path in files]
        audio = [audio_digest(path) for path in files]
        self.assertEqual({key[:4] for key in before[0][1]}, {"APIC", "PRIV", "POPM"})

        outcome = self.run_program("vantaro", r"/tag:artist=A\B;comment=;AUTOTRACKNUMBER", *files)

        self.assertEqual((outcome.status, outcome.stdout.splitlines(True)[-1], outcome.stderr),
                         (0, summary(written=5), ""))
        for number, path in enumerate(files):
            with self.subTest(path.name):
                fields, rest = before[number]
                fields |= {"ARTIST": ["A", "B"], "TRACKNUMBER": [str(number + 1)]}
                fields.pop("COMMENT", None)
                self.assertEqual(read_all(path), (fields, rest))
                self.assertEqual(audio_digest(path), audio[number])

    def test_takes_several_batches_folders_and_playlists(self):
        song, other = self.copy("01", "songs/a.mp3"), self.copy("07", "songs/deep/b.flac")
        listed = self.copy("08", "c.ogg")
        (self.folder / "list.m3u8").write_text("c.ogg\n")
        outcome = self.run_program("vantaro", "/tag:title=One;AUTOTRACKNUMBER", "songs", "list.m3u8",
                                   "/TAG:genre=Two/Too", "songs/a.mp3")
        self.assertEqual((outcome.status, outcome.stdout, outcome.stderr),
                         (0, summary(written=3) + summary(written=1), ""))
        for number, path in enumerate((song, other, listed), 1):
            tags = read_tags(path)
            self.assertEqual((tags["TITLE"], tags["TRACKNUMBER"]), (["One"], [str(number)]))
        self.assertEqual([read_tags(path)["GENRE"] for path in (song, other)], [["Two/Too"], ["Ambient"]])
        self.assertEqual([run["activity"] for run in self.run_program("quorvex", "runs", "--json").objects()],
                         ["/TAG:genre=Two/Too", "/tag:title=One;AUTOTRACKNUMBER"])

    def test_says_what_is_not_done(self):
        song, other = self.copy("06", "a.mp3"), self.copy("07", "b.flac")
        (self.folder / "empty").mkdir()
        no_files, no_tracks = "No files are named after it.", "There are no tracks in what is named after it."
        not_named_before = "Nothing was done here, since no command is named before."
        cases = [
            (["/tag:title=x"], 2, [f"/tag:title=x: {no_files}"]),
            (["/tag:title=x", "empty"], 2, [f"/tag:title=x: {no_tracks}"]),
            (["a.mp3", "/tag:title=x"], 2, [f"/tag:title=x: {no_files}", f"a.mp3: {not_named_before}"]),
            (["/tag:;", "a.mp3"], 2, ['"/tag:" names no command for the files after it, see /tag:help for more info.']),
            (["/tag:title", "a.mp3"], 1, ['Unknown command: "title", see /tag:help for more info.']),
            (["/tag:title=x", "nowhere"], 1, ["Path evaluation failure: nowhere: File not found"]),
        ]
        with self.untouched(song, other):
            for arguments, status, lines in cases:
                with self.subTest(arguments):
                    outcome = self.run_program("vantaro", *arguments)
                    self.assertEqual((outcome.status, outcome.stderr.splitlines()), (status, lines))
        outcome = self.run_program("vantaro", "x", "a.mp3", "/tag:title=y", "/tag:title=z", "b.flac")
        self.assertEqual((outcome.status, outcome.stdout, outcome.stderr.splitlines()), (1, summary(written=1), [
            f"/tag:title=y: {no_files}", f"x and 1 more: {not_named_before}"]))
        self.assertEqual((read_tags(song)["TITLE"], read_tags(other)["TITLE"]), (["Lantern Room"], ["z"]))

    def test_prints_help(self):
        for argument in ("/tag:help", "/TAG:Help", "/help", "/?"):
            outcome = self.run_program("vantaro", argument)
            self.assertEqual((outcome.status, outcome.stderr), (0, ""), argument)
            self.assert_line(outcome.stdout, "/tag:<command1>[;<command2>;<command3>...] <file1>")

    def test_arguments_come_through_as_they_are(self):
        names = ["[x]", "[2001] A, B [FLAC]", "[a, b]/c [d]", "[]", "[x]\x01", "%%"]
        bystanders = [self.copy("06", name) for name in ("x", "A", "a", "2001")]
        for named in (names, ["{}"], ["[x]"]):
            songs = [self.copy("06", name) for name in named]
            with self.untouched(*bystanders):
                outcome = self.run_program("vantaro", "/tag:comment=[a, b];title=x", *named)
            self.assertEqual((outcome.status, outcome.stderr), (0, ""))
            for song in songs:
                self.assertEqual((read_tags(song)["COMMENT"][0], read_tags(song)["TITLE"]), ("[a, b]", ["x"]))
        outcome = self.run_program("vantaro", "--config-dir", "[set, tings]", "--menu", "[a, b]", "[x]")
        self.assertEqual((outcome.status, outcome.stderr),
                         (2, "[a, b]: there is no such command; --list-menu lists them.\n"))

    def test_names_what_it_does_not_know(self):
        songs = self.copy_five()[:3]
        outcome = self.run_program("vantaro", "/tag:title=New;bogus", *songs, "nowhere.mp3")
        self.assertEqual(outcome.status, 1)
        self.assertEqual(outcome.stderr.count('Unknown command: "bogus", see /tag:help for more info.\n'), 3)
        self.assert_line(outcome.stderr, "Path evaluation failure: ", "nowhere.mp3", "not found")
        self.assertEqual([read_tags(song)["TITLE"] for song in songs], [["New"]] * 3)


class ShownTexts(ProgramCase):
    """Files come from anywhere: what stands in them must not act on the terminal."""

    def test_control_characters_are_shown_as_underscores(self):
        song = self.copy("06", "a\x1b[2J.mp3")
        tags = id3.ID3(song)
        tags["TIT2"] = id3.TIT2(encoding=3, text="x\x1b[2Jy\x07\x7fz\u009b1m")
        tags.save()
        broken = self.garbage("b\x1b]0;c\x07.mp3")
        outcome = self.run_program("quorvex", "tags", song, broken, self.folder / "c\x1b[1m.mp3")
        self.assertEqual(outcome.status, 1)
        self.assert_line(outcome.stdout, "a_[2J.mp3")
        self.assert_line(outcome.stdout, "TITLE", "x_[2Jy__z_1m")
        self.assert_line(outcome.stderr, "b_]0;c_.mp3")
        self.assert_line(outcome.stderr, "c_[1m.mp3")
        self.assertNotRegex(outcome.stdout + outcome.stderr, "[\x00-\x09\x0b-\x1f\x7f-\x9f]")
