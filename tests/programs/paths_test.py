"""What names the tracks: paths with any bytes, lists of paths, and files that are no music."""

import json
import os
import subprocess

from support import ProgramCase, read_tags, set_value, summary

# Names that mean something to whoever takes a command line apart.
ODD_NAMES = ["[x]", "[2001] A, B [FLAC]", "[]", "{}", "++", "%%", "run", "a,b", "'quoted'", '"quoted"', "\x01", "$HOME",
             "@file", "=", "x=y", "caf\xe9 \u2028", " ", b"\xff\xfe"]


class Paths(ProgramCase):
    def setUp(self):
        super().setUp()
        self.edit = self.script(set_value("TITLE", "New"))

    def title(self, path):
        return read_tags(path)["TITLE"][0]

    def test_every_path_comes_through_whole(self):
        bystanders = [self.copy("06", f"{name}/song.mp3") for name in ("x", "2001", " B [FLAC", "2001] A")]
        with self.untouched(*bystanders):
            for name in ODD_NAMES:
                name = os.fsdecode(name)
                with self.subTest(name):
                    song = self.copy("06", f"{name}/song.mp3")
                    outcome = self.run_program("quorvex", "run", self.edit, name)
                    self.assertEqual((outcome.status, outcome.stdout), (0, summary(written=1).replace("s:", ":")))
                    self.assertEqual(self.title(song), "New")
                    for verb in ["tags"], ["preview", self.edit], ["format", "%path%"]:
                        outcome = self.run_program("quorvex", *verb, name)
                        self.assertEqual((outcome.status, outcome.stderr), (0, ""), verb)
            listed = [f"{os.fsdecode(name)}/song.mp3" for name in ODD_NAMES]
            outcome = self.run_program("quorvex", "tags", "--json", *listed)
            self.assertEqual(len(outcome.objects()), len(ODD_NAMES))

    def test_other_arguments_come_through_whole(self):
        song = self.copy("06", "a.mp3")
        for text in "[x]", "++", "{}", "\x01y":
            self.assertEqual(self.run_program("quorvex", "format", f"'{text}'", song).stdout.strip("_\n"),
                             text.strip("\x01"))
            self.assertEqual(self.run_program("quorvex", "scripts", "import", self.edit, "--name", text).status, 0)
            self.assertEqual(self.run_program("quorvex", "run", text, song).status, 0)
            self.assertEqual(self.run_program("quorvex", "scripts", "delete", text).status, 0)

    def test_lists_of_paths(self):
        songs = [self.copy("06", os.fsdecode(name)) for name in ("a.mp3", "[b].mp3", "c\nd.mp3", b"\xff.mp3", "e.mp3")]
        lines = [songs[0], songs[1], songs[3]]
        (self.folder / "lines").write_bytes(b"\n" + b"\n".join(map(os.fsencode, lines)))
        (self.folder / "nulls").write_bytes(b"\0".join(map(os.fsencode, songs[:4])) + b"\0")
        for arguments, expected in [(["--files-from", "lines"], lines), (["--files-from=nulls", "-0"], songs[:4]),
                                    (["--files-from", "nulls", "--null", songs[4]], [songs[4], *songs[:4]])]:
            outcome = self.run_program("quorvex", "preview", "--json", self.edit, *arguments)
            # What is not UTF-8 is shown with replacement characters.
            names = [os.fsencode(path).decode(errors="replace") for path in expected]
            self.assertEqual([row["path"] for row in outcome.objects()], names, arguments)
        with open(self.folder / "nulls", "rb") as listed:
            outcome = self.run_program("quorvex", "run", self.edit, "--files-from", "-", "-0", stdin=listed)
        self.assertEqual((outcome.status, outcome.stdout), (0, summary(written=4)))
        self.assertEqual([self.title(song) for song in songs], ["New"] * 4 + ["Lantern Room"])

    def test_found_files_through_a_pipe(self):
        songs = [self.copy("06", f"in/{name}.mp3") for name in "abc"]
        with subprocess.Popen(["find", "in", "-name", "*.mp3", "-print0"], cwd=self.folder,
                              stdout=subprocess.PIPE) as find:
            outcome = self.run_program("quorvex", "run", self.edit, "--files-from", "-", "--null", stdin=find.stdout)
        self.assertEqual((outcome.status, outcome.stdout), (0, summary(written=3)))
        self.assertEqual({self.title(song) for song in songs}, {"New"})

    def test_lists_that_cannot_be_used(self):
        song = self.copy("06", "a.mp3")
        (self.folder / "nulls").write_bytes(os.fsencode(song) + b"\0gone\0")
        cases = [([self.edit, "--files-from", "nulls"], "--null"), (["-", "--files-from", "-"], "Standard input"), ([self.edit, "--files-from", "gone"], "gone"),
                 ([self.edit, "--files-from", ""], "FILE"), ([self.edit, "-0", song], "--files-from"),
                 ([self.edit, "--files-from", "/dev/null"], "Nothing to do")]
        with self.untouched(song):
            for arguments, named in cases:
                outcome = self.run_program("quorvex", "run", *arguments)
                self.assertEqual((outcome.status, outcome.stdout), (2, ""), arguments)
                self.assert_line(outcome.stderr, named)

    def test_what_is_no_music_is_passed_over(self):
        song = self.copy("06", "a.mp3")
        bare = self.copy("06", "01. Intro")
        others = [self.folder / name for name in ("folder.jpg", "a.nfo", "x.qvx")]
        for path in others:
            path.write_text("x")
        with self.untouched(*others):
            outcome = self.run_program("quorvex", "run", self.edit, others[0], song, *others[1:], bare)
            self.assertEqual((outcome.status, outcome.stdout), (0, summary(written=2)))
            self.assertEqual(outcome.stderr.count("\n"), 1)
            self.assert_line(outcome.stderr, f"{others[0]} and 2 other files: passed over")
            self.assertEqual((self.title(song), self.title(bare)), ("New", "New"))
            for verb in ["run", self.edit], ["preview", self.edit], ["tags"], ["format", "x"], ["tags", "--json"]:
                outcome = self.run_program("quorvex", *verb, others[0])
                self.assertEqual((outcome.status, outcome.stdout), (2, ""), verb)
                self.assertEqual(outcome.stderr, f"{others[0]}: passed over, since it is no music file\n"
                                                 "Nothing to do: there are no music files.\n")

    def test_scripts_on_standard_input(self):
        text = json.dumps({"actions": [{"kind": "Set value", "field": "TITLE", "value": "New"},
                                       {"kind": "Remove all fields except for", "fields": "title"}]})
        for form in text.encode(), self.edit.read_bytes():
            song = self.copy("06", "a.mp3")
            (self.folder / "form").write_bytes(form)
            # In parts, as slow writers send them.
            command = '(head -c 9 form; sleep 0.1; tail -c +10 form) | "$0" run - "$1"'
            outcome = self.run_program("sh", "-c", command, os.environ["QUORVEX"], song)
            self.assertEqual((outcome.status, outcome.stderr), (0, ""))
            self.assertEqual(self.title(song), "New")
        asked = [run["activity"] for run in self.run_program("quorvex", "runs", "--json").objects()]
        self.assertEqual(asked, ['run Set "TITLE" = "New"', 'run Set "TITLE" = "New" and 1 more'])
        self.assert_line(self.run_program("quorvex", "undo").stdout, 'Undoing run 2 of', 'run Set "TITLE" = "New"')


class Words(ProgramCase):
    def test_verbs(self):
        for arguments, shown in ([], "preview"), (["scripts"], "import"):
            outcome = self.run_program("quorvex", *arguments)
            self.assertEqual((outcome.status, outcome.stderr), (2, ""))
            self.assert_line(outcome.stdout, shown)
        outcome = self.run_program("quorvex", "--jobs", "0")
        self.assertEqual((outcome.status, outcome.stdout), (2, ""))
        self.assert_line(outcome.stderr, "--jobs")
        for arguments, meant in [(["rnu", "s", "a.mp3"], "run"), (["tag"], "tags"), (["UNDO"], "undo"),
                                 (["scripts", "improt", "x"], "import")]:
            outcome = self.run_program("quorvex", *arguments)
            self.assertEqual((outcome.status, outcome.stdout), (2, ""))
            self.assertRegex(outcome.stderr, rf'\Aquorvex: There is no verb "\w+"; did you mean "{meant}"\?\n\Z')
        self.assert_line(self.run_program("quorvex", "[walkabout]").stderr, 'no verb "[walkabout]"; "quorvex --help"')

    def test_previews_of_changes_only(self):
        songs = [self.copy("06", "a.mp3"), self.copy("07", "b.flac")]
        bad = self.garbage("bad.mp3")
        script = self.script(set_value("TITLE", "Lantern Room"))
        for verb in ["preview"], ["run", "--dry-run"]:
            outcome = self.run_program("quorvex", *verb, "--changed", script, *songs)
            self.assertEqual((outcome.status, outcome.stdout), (0, f'{songs[1]}: TITLE = "Lantern Room"\n'))
        outcome = self.run_program("quorvex", "preview", "--changed", "--json", script, *songs, bad)
        self.assertEqual([row["path"] for row in outcome.objects()], [str(songs[1]), str(bad)])

    def test_equal_failures_are_summed_up_for_people(self):
        song = self.copy("06", "a.mp3")
        for n in range(30):
            self.garbage(f"bad {n}.mp3")
        script = self.script(set_value("TITLE", "New"))
        outcome = self.run_on_terminal("quorvex", "run", script, self.folder)
        self.assertEqual(outcome.status, 1)
        self.assertEqual(outcome.stderr.count("bad "), 5)
        self.assert_line(outcome.stderr, "and 25 more: ")
        self.assertEqual(read_tags(song)["TITLE"], ["New"])
        for arguments in [script, self.folder], ["--json", script, self.folder]:
            outcome = self.run_program("quorvex", "run", *arguments)
            self.assertEqual(outcome.stderr.count("bad "), 30)
        outcome = self.run_on_terminal("quorvex", "run", "--json", script, self.folder)
        self.assertEqual(outcome.stderr.count("bad "), 30)

    def test_thrown_away_edits_are_not_shown(self):
        """No format keeps what is not UTF-8, which the script would set."""
        song = self.copy("06", "a.mp3")
        script = self.script(set_value("TITLE", "New"))
        script.write_bytes(script.read_bytes().replace(b"New", b"\xff\xfe\xfd"))
        with self.untouched(song):
            outcome = self.run_program("quorvex", "run", "--json", script, song)
        self.assertEqual(outcome.status, 1)
        (row,) = outcome.objects()
        self.assertEqual(row.keys(), {"path", "subsong", "before", "error"})
        self.assertEqual(row["before"]["TITLE"], ["Lantern Room"])
