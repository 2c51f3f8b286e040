"""A record of tags is what a file makes of it: whatever name a script gives a field, a preview shows what a run writes
and what is read afterwards, and no value goes that the edit did not name."""

import json
import os
import re
import shutil
import subprocess
import unittest
from pathlib import Path

import mutagen
from mutagen import apev2, id3, mp4

from tag_builders import add_matroska_tag, append, id3v1, put_caf_entry, save_id3, simple_tag
from tag_samples import FORMATS, PROGRAMS, XIPH, TagTestCase, make_sample

SOURCES = Path(__file__).resolve().parents[2] / "vantaro" / "tags"
TABLES = {"xiph": "", "id3v2": "TXXX:", "ape": "", "mp4": "--:", "asf": "", "caf": "",
          "matroska": "30:"}
EDITS = ("set", "add", "remove", "remove value", "replace", "split", "copy", "keep")
NUMBERS = {"BPM", "TRACKNUMBER", "TOTALTRACKS", "DISCNUMBER", "TOTALDISCS", "MOVEMENTNUMBER", "MOVEMENTCOUNT",
           "TVSEASON", "TVEPISODE", "COMPILATION", "GAPLESSPLAYBACK", "PODCAST", "SHOWWORKMOVEMENT"}
# Neither is a text in every format.
OTHERS = {"TITLE": "Kept", "MY OWN": "kept as well"}


ODD_NAMES = ("TITLE", "GENRE", "DATE", "TRACKNUMBER", "TOTALTRACKS", "BPM", "COMPILATION", "COMMENT", "COMMENT:X",
             "PERFORMER:DRUMS", "LYRICS", "URL", "ORIGINALDATE", "MUSICBRAINZ_TRACKID", "A=B", "~", "é", "X", "ID3",
             "METADATA_BLOCK_PICTURE", "ARTISTWEBPAGE", "REPLAYGAIN_TRACK_GAIN")
ODD_VALUES = ("", "04", "0", "3/12", "/", "3/", "/12", "17", "(17)", "((x", "RX", "1999-05-06", "2001-05-06T10:20",
              "99999", "a value of more than thirty characters", "é", "語", " blanks ", "two\nlines", "a/b", "x\u0001")


def table_of(extension):
    if extension in XIPH:
        return "xiph"
    return {"m4a": "mp4", "wma": "asf", "wv": "ape", "ape": "ape", "mpc": "ape", "ac3": "ape", "eac3": "ape",
            "tak": "ape", "caf": "caf",
            "mka": "matroska", "webm": "matroska"}.get(extension, "id3v2")


def names_of(table):
    """(field, another name for it or None, whether it stands for it only where it is alone) of each row."""
    text = (SOURCES / table / f"{table}_places.h").read_text()
    prefix = TABLES[table]
    rows = re.findall(r'\{"([^"]+)", "((?:[^"\\]|\\.)+)"(, true)?\}', text)
    result = {(field, None, False) for field, _, _ in rows}
    for field, place, alone in rows:
        name = place.removeprefix(prefix)
        if place.startswith(prefix) and name.isascii() and "\\" not in name and name.upper() != field:
            result.add((field, name, bool(alone)))
    return sorted(result, key=str)


def put_raw(path, table, name, value):
    """As another program stores a field under a name that it gives it."""
    if table == "mp4":
        file = mp4.MP4(path)
        file[f"----:com.apple.iTunes:{name}"] = [value.encode()]
        file.save()
    elif table == "matroska":
        add_matroska_tag(path, simple_tag(name, value))
    elif path.endswith(".aac"):
        try:
            tags = id3.ID3(path)
        except id3.ID3NoHeaderError:
            tags = id3.ID3()
        tags.add(id3.TXXX(encoding=3, desc=name, text=[value]))
        tags.save(path)
    elif table == "id3v2":
        file = mutagen.File(path)
        tags = file.tags if isinstance(getattr(file, "tags", None), id3.ID3) else None
        if tags is None:
            file.add_tags()
            tags = file.tags
        tags.add(id3.TXXX(encoding=3, desc=name, text=[value]))
        file.save()
    elif table == "caf":
        put_caf_entry(path, name, value)
    elif table == "ape":
        try:
            file = apev2.APEv2(path)
        except apev2.APENoHeaderError:
            file = apev2.APEv2()
        file[name] = value
        file.save(path)
    else:
        file = mutagen.File(path)
        if file.tags is None:
            file.add_tags()
        file.tags[name] = [value]
        file.save()


class Faithful(TagTestCase):
    def edit_program(self, path, **values):
        changes = [f"{name}={value}" for name, value in values.items()]
        subprocess.run([os.path.join(PROGRAMS, "edit_tags"), path, *changes], check=True)

    def in_state(self, base, table, state, field, name, value):
        path = os.path.join(self.folder.name, f"state{os.path.splitext(base)[1]}")
        path = f"{os.path.splitext(path)[0]} {self.count}{os.path.splitext(base)[1]}"
        self.count += 1
        shutil.copyfile(base, path)
        if state in ("other", "both"):
            put_raw(path, table, name, value)
        if state in ("canonical", "both"):
            self.edit_program(path, **{field: value})
        return path

    def check(self, extension):
        self.count = 0
        table = table_of(extension)
        base = make_sample(self.folder.name, extension)
        self.edit_program(base, **OTHERS)
        cases = []
        for field, name, alone in names_of(table):
            value, new = ("7", "8") if field in NUMBERS else ("old", "new")
            if field in ("COMPILATION", "GAPLESSPLAYBACK", "PODCAST", "SHOWWORKMOVEMENT"):
                value, new = "1", "1"
            if field in OTHERS:
                continue
            for state in ("absent", "canonical", "other", "both") if name else ("absent", "canonical"):
                path = self.in_state(base, table, state, field, name, value)
                for edit in EDITS:
                    for given in {field, name or field}:
                        cases.append({"path": path, "edit": edit, "name": given, "value": new, "field": field,
                                      "other": name, "alone": alone, "state": state})
        self.assertGreater(len(cases), 500)
        for case, answer in self.answers(cases):
            with self.subTest(extension=extension, case=case, answer=answer):
                self.check_answer(case, answer)

    @staticmethod
    def answers(cases):
        lines = subprocess.run([os.path.join(PROGRAMS, "edit_records")], check=True, capture_output=True, text=True,
                               input="".join(json.dumps(case) + "\n" for case in cases)).stdout.splitlines()
        assert len(lines) == len(cases)
        return [(case, json.loads(line)) for case, line in zip(cases, lines)]

    def check_odd_values(self, path):
        cases = [{"path": path, "edit": edit, "name": name, "value": value}
                 for edit in ("set", "add", "replace", "split") for name in ODD_NAMES for value in ODD_VALUES]
        for case, answer in self.answers(cases):
            with self.subTest(case=case, answer=answer):
                self.assertEqual("preview_error" in answer, "file_error" in answer)
                self.assertEqual(answer.get("preview"), answer.get("file"))

    def test_odd_values(self):
        """What formats change or refuse; the last files have several tags, or one that holds little."""
        for extension in FORMATS:
            path = make_sample(self.folder.name, extension)
            self.edit_program(path, **OTHERS, GENRE="Rock", DATE="2001", TRACKNUMBER="2", COMMENT="c")
            self.check_odd_values(path)
        mp3 = make_sample(self.folder.name, "mp3")
        flac = make_sample(self.folder.name, "flac")
        for path in (mp3, flac):
            append(path, id3v1(title=b"old", artist=b"One", track=3, genre=17))
            self.check_odd_values(path)
        save_id3(mp3, [id3.TIT2(encoding=3, text=["old"]), id3.TCON(encoding=3, text=["Rock"])], version=3)
        save_id3(flac, [id3.TIT2(encoding=3, text=["of ID3v2"]), id3.TPE1(encoding=3, text=["One"])])
        for path in (mp3, flac):
            self.check_odd_values(path)

    def check_answer(self, case, answer):
        self.assertEqual(answer.get("preview_error"), answer.get("file_error"))
        self.assertEqual(answer.get("preview"), answer.get("file"))
        if "preview" not in answer:
            return
        before, after = answer["before"], answer["preview"]
        named = self.field_named(case, before)
        if case["edit"] != "keep":
            for name, values in before.items():
                if name != named:
                    self.assertEqual(after.get(name), values, name)
        elif named in before:
            self.assertEqual(after.get(named), before[named])
        if case["edit"] == "add":
            self.assertEqual(after.get(named), before.get(named, []) + [case["value"]])
        elif case["edit"] == "set":
            self.assertEqual(after.get(named), [case["value"]])
        elif case["edit"] == "remove":
            self.assertNotIn(named, after)
            if case["state"] != "both":
                self.assertEqual(after.keys(), before.keys() - {named})

    def test_a_second_action_finds_what_the_first_has_made(self):
        """Under the same name, also under one that stands for a field only where that is missing."""
        for extension in FORMATS:
            table = table_of(extension)
            base = make_sample(self.folder.name, extension)
            others = sorted({name for field, name, _ in names_of(table) if name and field not in NUMBERS})
            cases = [{"path": base, "edit": "set", "name": name, "value": "first", "then": "add"} for name in others]
            for case, answer in self.answers(cases):
                with self.subTest(extension=extension, case=case, answer=answer):
                    self.assertEqual(answer.get("preview_error"), answer.get("file_error"))
                    self.assertEqual(answer.get("preview"), answer.get("file"))
                    made = {name: values for name, values in answer.get("preview", {}).items()
                            if name not in answer["before"]}
                    self.assertIn(list(made.values()), ([["first", "second"]], []))

    @staticmethod
    def field_named(case, before):
        """The field, as it is read, that the edit is about."""
        given = case["name"].upper()
        if given in before or not case["other"] or given != case["other"].upper():
            return given
        own = case["alone"] and case["state"] == "canonical"
        return given if own else case["field"]


for _extension in FORMATS:
    if _extension == "rf64":  # nobody else writes a tag there; it is WAV in all else
        continue
    setattr(Faithful, f"test_{_extension}", lambda self, extension=_extension: self.check(extension))


if __name__ == "__main__":
    unittest.main()
