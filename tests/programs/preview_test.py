"""What a preview announces is what a run makes."""

import json
import os
import signal

from support import ALBUM, ProgramCase, summary

CUE = b'PERFORMER "Tidewright Ensemble"\r\nFILE "x.wav" WAVE\r\n  TITLE "caf\xe9"\r\n'
LINES = "".join(f"{n}. Line {n}\r\n" if n != 3 else "\r\n" for n in range(1, 10))


def action(kind, **settings):
    return {"kind": kind} | {name.replace("_", "-"): value for name, value in settings.items()}


# One script at least for each kind.
SCRIPTS = {
    "add": [action("Add value", field=field, value="é; x") for field in ("GENRE", "NEW")],
    "number": [action("Auto track number", pattern="")],
    "number by format": [action("Auto track number", pattern="%codec%")],
    "copy": [action("Copy values between fields", **{"from": "GENRE", "to": "COMMENT"}),
             action("Copy values between fields", **{"from": "NOT THERE", "to": "DATE"}),
             action("Copy values between fields", **{"from": "ARTIST", "to": "artist"})],
    "cue": [action("Embed cuesheet")],
    "format": [action("Format value from other fields", field="TITLE",
                      pattern="%list_index%/%list_total% $upper(%title%) [%no such field%]%codec%"),
               action("Format value from other fields", field="COMMENT", pattern="[%composer%]")],
    "guess from names": [action("Guess values from file names", pattern="%album%/%tracknumber% - %title%")],
    "guess from fields": [action("Guess values from other fields", pattern="%a% %b%", source="%artist%")],
    "input": [action("Input data (one line per track)", pattern="%n%. %title%", data=LINES),
              action("Input data (one line per track)", pattern="%n%. %subtitle%", data=LINES)],
    "remove field": [action("Remove field", field="artist"), action("Remove field", field="LYRICS")],
    "remove all": [action("Remove all fields")],
    "remove most": [action("Remove all fields except for", fields="title;Artist;genre")],
    "remove values": [action("Split multiple artist fields"),
                      action("Remove values", field="ARTIST", values="mara quillon;x", case_sensitive=False),
                      action("Remove values", field="GENRE", values="Ambient", case_sensitive=True)],
    "replace": [action("Replace value", field="GENRE", old="AMBIENT", new="More", case_sensitive=False),
                action("Replace value", field="ALBUM", old="a slow harbour", new="x", case_sensitive=True)],
    "set": [action("Set value", field=field, value=" “x” ") for field in ("MOOD", "title")],
    "set numbers": [action("Set value", field=field, value="7") for field in ("TRACKNUMBER", "TOTALTRACKS")],
    "split": [action("Split field by separator", field="TITLE", separator=" ")],
    "split artists": [action("Split multiple artist fields")],
}
TEN = [
    action("Set value", field="ALBUM", value="One and the same"),
    action("Auto track number", pattern="%album%"),
    action("Split multiple artist fields"),
    action("Add value", field="ARTIST", value="Guest"),
    action("Format value from other fields", field="SORT", pattern="%album%: %tracknumber% of %totaltracks%"),
    action("Guess values from other fields", pattern="%word% %%", source="%title%"),
    action("Copy values between fields", **{"from": "ARTIST", "to": "PERFORMER"}),
    action("Remove values", field="PERFORMER", values="guest"),
    action("Replace value", field="GENRE", old="ambient", new="Calm"),
    action("Remove field", field="COMMENT"),
]
EMPTY = [action("Set value", field="EMPTY", value=""), action("Add value", field="GENRE", value="")]


def upper(fields):
    return {name.upper(): values for name, values in fields.items()}


class Previews(ProgramCase):
    def save(self, actions, name="script.json"):
        path = self.folder / name
        path.write_text(json.dumps({"actions": actions}))
        return path

    def album(self):
        names = sorted(sample.name for sample in ALBUM.glob("?? - *"))
        files = [self.copy(name[:2], f"album/{name}") for name in names]
        for track in ("02 - Gulls over Slate", "07 - Café at the Pier"):
            (files[0].parent / f"{track}.cue").write_bytes(CUE)
        return files

    def previewed(self, script, files):
        """The objects that `preview` prints, having written nothing."""
        others = [script, *files[0].parent.glob("*.cue")]
        names = sorted(self.folder.rglob("*"))
        with self.untouched(*files, *others):
            outcome = self.run_program("quorvex", "preview", "--json", script, *files)
        self.assertEqual(outcome.status, 0, outcome.stderr)
        self.assertEqual([name for name in sorted(self.folder.rglob("*")) if name not in names], [])
        rows = outcome.objects()
        self.assertEqual([row["path"] for row in rows], [str(path) for path in files])
        return rows

    def tags(self, files):
        outcome = self.run_program("quorvex", "tags", "--json", *files)
        return [upper(row["fields"]) for row in outcome.objects()]

    def announced_and_made(self, script, files):
        """(before, announced, made) of each file."""
        before = self.tags(files)
        rows = self.previewed(script, files)
        self.assertEqual([upper(row["before"]) for row in rows], before)
        outcome = self.run_program("quorvex", "run", script, *files)
        self.assertEqual((outcome.status, outcome.stdout.splitlines()[-1].split()[0]), (0, str(len(files))))
        return list(zip(before, [upper(row["after"]) for row in rows], self.tags(files), strict=True))

    def test_runs_make_what_previews_announce(self):
        listed = self.run_program("quorvex", "kinds", "--json").objects()
        kinds = {row["name"].removesuffix("...") for row in listed}
        used = {step["kind"] for script in SCRIPTS.values() for step in script}
        self.assertEqual(len(kinds), 16)
        self.assertLessEqual(kinds, used)
        for name, script in (SCRIPTS | {"ten": TEN}).items():
            files = self.album()
            tracks = self.announced_and_made(self.save(script), files)
            self.assertTrue(any(before != after for before, after, _ in tracks), f"{name} does nothing")
            for path, (_, announced, made) in zip(files, tracks, strict=True):
                with self.subTest(script=name, file=path.name):
                    self.assertEqual(made, announced)

    def test_empty_values(self):
        files = self.album()[:5]
        tracks = self.announced_and_made(self.save(EMPTY), files)
        for path, (_, announced, made) in zip(files, tracks, strict=True):
            with self.subTest(path.name):
                self.assertEqual(announced.get("EMPTY"), None if path.suffix == ".mp3" else [""])
                self.assertEqual(made, announced)

    def test_numbers_by_the_albums_before_the_run(self):
        songs = {"a.mp3": "01", "b.flac": "07", "c.ogg": "03", "d.m4a": "05"}
        files = [self.copy(number, name) for name, number in songs.items()]
        for path, album in zip(files, "AABA", strict=True):
            self.assertEqual(self.run_program("vantaro", f"/tag:album={album}", path).status, 0)
        script = self.save(TEN)
        rows = self.previewed(script, files)
        numbers = [("1", "2"), ("2", "2"), ("1", "1"), ("1", "1")]
        for row, (number, total), word in zip(rows, numbers, ("Morning", "Café", "Rope", "Low"), strict=True):
            after = upper(row["after"])
            self.assertEqual((after["TRACKNUMBER"], after["TOTALTRACKS"]), ([number], [total]))
            self.assertEqual(after["SORT"], [f"One and the same: 0{number} of {total}"])
            self.assertEqual((after["WORD"], after["PERFORMER"]), ([word], after["ARTIST"][:-1]))
            self.assertIn('ALBUM = "One and the same"', row["changes"])
        self.assertEqual(self.run_program("quorvex", "run", script, *files).stdout, summary(written=4))
        for row, made in zip(rows, self.tags(files), strict=True):
            self.assertEqual(made, upper(row["after"]))

    def test_listed_twice(self):
        one, two = self.album()[:2]
        script = self.save([action("Format value from other fields", field="N", pattern="%list_index%")])
        rows = self.previewed(script, [one, two, one])
        self.assertEqual([row["after"]["N"] for row in rows], [["1"], ["2"], ["3"]])

    def test_several_names_of_one_file(self):
        one, two = self.album()[:2]
        names = [one.with_stem("hard"), one.with_stem("symbolic")]
        os.link(one, names[0])
        os.symlink(one, names[1])
        files = [one, two, *names]
        pattern = "%list_index% %filename%"
        script = self.save([action("Format value from other fields", field="N", pattern=pattern)])
        tracks = self.announced_and_made(script, files)
        for _, announced, made in tracks:
            self.assertEqual(announced["N"], made["N"])
        rows = [f"1 {one.stem}", f"2 {two.stem}", f"1 {one.stem}", f"1 {one.stem}"]
        self.assertEqual([made["N"] for _, _, made in tracks], [[row] for row in rows])

    def test_texts_and_failures(self):
        song, bad = self.copy("06", "a.mp3"), self.garbage("bad.mp3")
        script = self.save([action("Set value", field="TITLE", value="x"),
                            action("Remove field", field="COMMENT")])
        with self.untouched(song, bad):
            for verb in (["preview"], ["run", "--dry-run"]):
                outcome = self.run_program("quorvex", *verb, script, song, bad, "nowhere")
                self.assertEqual(outcome.status, 1)
                self.assertEqual(outcome.stdout, f'{song}: COMMENT removed; TITLE = "x"\n')
                self.assert_line(outcome.stderr, bad, "The first frame of MPEG audio is missing")
            row, failed = self.run_program("quorvex", "preview", "--json", script, song, bad).objects()
            self.assertEqual(failed.keys(), {"path", "subsong", "error"})
            self.assertEqual(failed["path"], str(bad))
            self.assertIn("MPEG audio", failed["error"])
            self.assertNotIn("error", row)


class SavedScripts(ProgramCase):
    NAMES = ["Tidy up", "Café", "x/y"]

    def setUp(self):
        super().setUp()
        self.song = self.copy("06", "a.mp3")
        for name, title in zip(self.NAMES, "abc"):
            (self.folder / "in.json").write_text(json.dumps(
                {"name": "not used", "actions": [action("Set value", field="TITLE", value=title)]}))
            self.assertEqual(self.scripts("import", "in.json", "--name", name).status, 0)

    def scripts(self, *arguments):
        return self.run_program("quorvex", "scripts", *arguments)

    def title(self, path=None):
        (row,) = self.run_program("quorvex", "tags", "--json", path or self.song).objects()
        return row["fields"]["TITLE"]

    def command(self, *arguments, typed=None, answer=None):
        if typed is None:
            return self.run_program("vantaro", "--menu", *arguments)
        return self.run_on_terminal("vantaro", "--menu", *arguments, typed=typed, answer=answer)

    def test_verbs(self):
        self.assertEqual(self.scripts("list").stdout, "".join(f"{name}\n" for name in self.NAMES))
        self.assertEqual(json.loads(self.scripts("show", "tidy UP").stdout),
                         {"name": "Tidy up", "actions": [action("Set value", field="TITLE", value="a")]})
        for form in ("out.qvx", "out.json"):
            self.assertEqual(self.scripts("export", "café", form).status, 0)
            self.assertEqual(self.scripts("import", form, "--name", f"from {form}").status, 0)
            shown = json.loads(self.scripts("show", f"from {form}").stdout)
            self.assertEqual(shown["actions"], [action("Set value", field="TITLE", value="b")])
        self.assertEqual(json.loads((self.folder / "out.json").read_text())["name"], "Café")
        self.assertEqual(self.scripts("import", "out.qvx").status, 0)
        self.assertEqual(self.scripts("import", "out.json", "--replace", "--name", "TIDY UP").status, 0)
        self.assertEqual(self.scripts("delete", "X/Y").status, 0)
        self.assertEqual(self.scripts("list").stdout, "TIDY UP\nCafé\nfrom out.qvx\nfrom out.json\nout\n")
        self.assertEqual(self.run_program("quorvex", "run", "Tidy up", self.song).status, 0)
        self.assertEqual(self.title(), ["b"])
        with self.untouched(self.stored):
            for verb in (["show", "gone"], ["delete", "gone"], ["export", "gone", "x.qvx"],
                         ["import", "gone.qvx"], ["export", "Café", "no/folder.qvx"], ["import", self.song],
                         ["show"]):
                outcome = self.scripts(*verb)
                self.assertEqual((outcome.status, outcome.stdout), (2, ""), verb)
                self.assertNotEqual(outcome.stderr, "")
        self.assertFalse((self.folder / "x.qvx").exists())

    def test_several_at_once(self):
        names = [f"script {n}" for n in range(12)]
        source = self.folder / "source.json"
        source.write_text(json.dumps({"actions": [action("Set value", field="TITLE", value="x")]}))
        before = self.scripts("list").stdout.splitlines()

        def all_at_once(*arguments):
            processes = [self.start("quorvex", "scripts", *arguments, name) for name in names]
            for process in processes:
                outcome = self.outcome(process)
                self.assertEqual((outcome.status, outcome.stderr), (0, ""))

        all_at_once("import", source, "--name")
        self.assertEqual(sorted(self.scripts("list").stdout.splitlines()), sorted(before + names))
        all_at_once("delete")
        self.assertEqual(self.scripts("list").stdout.splitlines(), before)
        self.assertEqual(list(self.stored.parent.glob("*conflict*")), [])

    def test_both_forms_do_the_same(self):
        files = [self.copy(number, f"{n}.flac") for n, number in enumerate(("02", "07"))]
        steps = [step for script in SCRIPTS.values() for step in script]
        (self.folder / "all.json").write_text("\n\t " + json.dumps({"actions": steps}))
        self.assertEqual(self.scripts("import", "all.json").status, 0)
        for name in ("again.json", "again.qvx"):
            self.assertEqual(self.scripts("export", "all", name).status, 0)
        self.assertEqual(json.loads((self.folder / "again.json").read_text())["actions"], steps)
        outcomes = [self.run_program("quorvex", "preview", "--json", script, *files).stdout
                    for script in ("all.json", "again.json", "again.qvx", "all")]
        self.assertEqual(outcomes[1:], outcomes[:1] * 3)
        self.assertGreater(len(outcomes[0]), 500)

    def test_menu(self):
        listed = self.run_program("vantaro", "--list-menu")
        self.assertEqual((listed.status, listed.stderr), (0, ""))
        commands = dict(line.rsplit("  ", 1) for line in listed.stdout.splitlines())
        self.assertEqual(set(commands),
                         {"Tagging/Manage scripts"} | {f"Tagging/Scripts/{name}" for name in self.NAMES})
        self.assertEqual(len(set(commands.values())), 4)
        for name, title in zip(self.NAMES, "abc"):
            path = f"Tagging/Scripts/{name}"
            for spelled in (path, commands[path], commands[path].lower()):
                self.run_program("vantaro", "/tag:title=none", self.song)
                outcome = self.command(spelled, self.song)
                self.assertEqual((outcome.status, outcome.stdout, outcome.stderr), (0, summary(written=1), ""), spelled)
                self.assertEqual(self.title(), [title])
        gone = commands["Tagging/Scripts/Café"]
        self.scripts("delete", "Café")
        with self.untouched(self.song):
            for wrong in (gone, "Tagging/Scripts/Café", "Tagging/Scripts", "tagging/scripts/tidy up",
                          "Tidy up", "{00000000-0000-0000-0000-000000000000}", ""):
                self.assertEqual(self.command(wrong, self.song).status, 2, wrong)
            outcome = self.command("Tagging/Scripts/Tidy up")
            self.assertEqual((outcome.status, outcome.stdout), (2, ""))
            self.assert_line(outcome.stderr, "No files were named")
            outcome = self.command("Tagging/Manage scripts", self.song)
            self.assertEqual((outcome.status, outcome.stderr), (2, "The script editor needs a window.\n"))
        self.assertEqual(self.command("Tagging/Scripts/Tidy up", self.song, "nowhere").status, 1)
        self.assertEqual(self.title(), ["a"])

    def test_question_above_the_threshold(self):
        files = self.copy_many(101)
        question = "Warning: You're about to update tags of 101 tracks. Continue?"
        cases = [
            # typed before, then; the options; the status; the title
            ("n\n", None, [], 2, None), ("y\n", None, [], 0, "a"), ("x\nYes\n", None, [], 0, "a"),
            ("\x04", None, [], 2, None), (None, None, [], 2, None), (None, None, ["--yes"], 0, "a"),
            ("", "\n", [], 0, "a"), ("\n", "\x04", [], 2, None), ("\n\n", "n\n", [], 2, None),
            ("", "\x03", [], 130, None), ("", signal.SIGTERM, [], 130, None), ("", signal.SIGHUP, [], 130, None)]
        for typed, answer, options, status, title in cases:
            with self.subTest(typed=typed, answer=answer, options=options):
                self.copy_many(101)
                before = [self.title(files[0]), self.title(files[-1])]
                outcome = self.command("Tagging/Scripts/Tidy up", *options, "many", typed=typed, answer=answer)
                self.assertEqual(outcome.status, status)
                self.assertEqual(question in outcome.stderr, not options)
                self.assertEqual("Nothing was done." in outcome.stderr, status == 2)
                after = [self.title(files[0]), self.title(files[-1])]
                self.assertEqual(after, before if title is None else [[title], [title]])
        self.assertEqual(len(self.run_program("quorvex", "runs").stdout.splitlines()), 4)
        outcome = self.command("Tagging/Scripts/Tidy up", *files[:100], typed="n\n")
        self.assertNotIn("You're about to", outcome.stderr)
