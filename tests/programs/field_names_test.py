"""A field is one field, whatever a script calls it, and what a preview shows is what a run writes."""

import random

import mutagen.flac

from support import FIVE, ProgramCase, add_value, read_tags, set_value

REMOVE = "{C3BDD536-670A-4AFE-9C7C-BD72BAE9AA89}"
REMOVE_MOST = "{58712BE7-4248-4AC6-9734-F3AD3D6CBA4E}"
REMOVE_VALUES = "{CB1F5EF2-7865-40E7-8DDE-D51C3721AC79}"
REPLACE = "{B194C3FE-DACE-4816-A230-A09921D55674}"
SPLIT = "{52D8A1D3-C2AE-4A28-9B37-0B711A8A24AD}"
FORMAT = "{48F67226-8A33-409F-A0DF-FFB157DF1B7E}"
COPY = "{CE928A7A-4793-4797-AEBD-60DE490E4AF1}"

FIELDS = ("TITLE", "ARTIST", "ALBUMARTIST", "ALBUM ARTIST", "TRACKNUMBER", "TRACK", "TOTALTRACKS", "TRACKTOTAL",
          "DISC", "DISCTOTAL", "YEAR", "DATE", "LABEL", "PUBLISHER", "ORGANIZATION", "DESCRIPTION", "COMMENT",
          "VERSION", "SUBTITLE", "TEMPO", "BPM", "KEY", "INITIALKEY", "GENRE", "LYRICS", "UNSYNCEDLYRICS", "MY OWN")
VALUES = ("", "7", "04", "3/12", "17", "Rock; Pop", "ä", "a longer value, of more than thirty characters", "2001-02-03")


class FieldNames(ProgramCase):
    def flac(self, name, fields):
        path = self.copy("07", name)
        file = mutagen.flac.FLAC(path)
        file.tags.clear()
        file.tags.update(fields)
        file.save()
        return path

    def after(self, fields, *actions):
        path = self.flac("a.flac", fields)
        self.assertEqual(self.run_program("quorvex", "run", self.script(*actions), path).status, 0)
        return {key.upper(): values for key, values in mutagen.flac.FLAC(path).tags.as_dict().items()}

    def test_other_names_meet_the_field(self):
        own, other = "ALBUMARTIST", "ALBUM ARTIST"
        self.assertEqual(self.after({own: ["x"]}, add_value(other, "new")), {own: ["x", "new"]})
        self.assertEqual(self.after({other: ["x"]}, add_value(own, "new")), {other: ["x", "new"]})
        for action in ((REMOVE, other), (REMOVE_VALUES, f"{other}\nx\nn"), set_value(other, "")):
            self.assertIn(self.after({other: ["x"], "A": ["a"]}, action), ({"A": ["a"]}, {other: [""], "A": ["a"]}))
        self.assertEqual(self.after({other: ["x"]}, (REPLACE, f"{other}\nx\ny\nn")), {other: ["y"]})
        self.assertEqual(self.after({other: ["x;y"]}, (SPLIT, f"{other}\n;")), {other: ["x", "y"]})
        self.assertEqual(self.after({"DISCNUMBER": ["2"], "TITLE": ["t"]}, (REMOVE_MOST, "disc")),
                         {"DISCNUMBER": ["2"]})
        # With more than one meaning: one field where it is alone, two beside the customary name.
        self.assertEqual(self.after({"YEAR": ["1999"]}, set_value("DATE", "2001")), {"YEAR": ["2001"]})
        self.assertEqual(self.after({"COMMENT": ["kept"]}, set_value("DESCRIPTION", "new")),
                         {"COMMENT": ["kept"], "DESCRIPTION": ["new"]})
        self.assertEqual(self.after({"COMMENT": ["kept"]}, (REMOVE, "DESCRIPTION")), {"COMMENT": ["kept"]})
        path = self.flac("b.flac", {other: ["x"], "A": ["a"]})
        self.assertEqual(self.run_program("vantaro", f"/tag:{other}=", path).status, 0)
        self.assertEqual(read_tags(path), {"A": ["a"]})

    def random_action(self, choose):
        field, other = choose.sample(FIELDS, 2)
        value = choose.choice(VALUES)
        return choose.choice([
            set_value(field, value), add_value(field, value), (REMOVE, field), (REMOVE_VALUES, f"{field}\n{value}\nn"),
            (REPLACE, f"{field}\n{value}\nnew\nn"), (SPLIT, f"{field}\n; "), (COPY, f"{field}\n{other}"),
            (FORMAT, f"{field}\n%{other.lower()}%"), (REMOVE_MOST, f"{field};{other};title"),
        ])

    def test_preview_run_and_reading_agree(self):
        seed = random.randrange(1 << 32)
        choose = random.Random(seed)
        for n in range(40):
            with self.subTest(seed=seed, script=n):
                files = self.copy_five() if n % 4 == 0 else [self.folder / name for name in FIVE]
                actions = [self.random_action(choose) for _ in range(choose.randrange(1, 6))]
                script = self.script(*actions)
                shown = self.run_program("quorvex", "preview", "--json", script, *files).objects()
                bytes_before = [path.read_bytes() for path in files]
                said = self.run_program("quorvex", "run", "--json", script, *files).objects()
                read = self.run_program("quorvex", "tags", "--json", *files).objects()
                run = {line["path"]: line for line in said}
                for path, old, preview, tags in zip(files, bytes_before, shown, read, strict=True):
                    if (line := run.get(str(path))) is None:
                        self.assertEqual(preview.get("after"), preview["before"], actions)
                        self.assertEqual(path.read_bytes(), old)
                    elif "error" in line:
                        self.assertEqual(preview.get("error"), line["error"], actions)
                        self.assertEqual(path.read_bytes(), old)
                    else:
                        self.assertEqual(preview["after"], line["after"], actions)
                        self.assertEqual(preview["after"], tags["fields"], actions)
