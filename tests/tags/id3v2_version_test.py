"""Which version of ID3v2 is written, as the user chooses: a preview shows what is written and read again."""

import json
import os
import shutil
import subprocess
import unittest

from mutagen import apev2, id3

from tag_builders import append, id3v1, raw_id3, save_id3, text
from tag_samples import PROGRAMS, TagTestCase

POLICIES = ("as-needed", "keep", "2.3", "2.4")
SEPARATOR = "; "  # of edit_records
FRAMES = [id3.TIT2(encoding=1, text=["Kept é"]), id3.TPE1(encoding=0, text=["Old"]),
          id3.TCON(encoding=0, text=["Jazz"]),
          id3.TDRC(encoding=0, text=["2001-05-06"]), id3.TRCK(encoding=0, text=["3/9"]),
          id3.COMM(encoding=0, lang="eng", desc="", text=["Said"]), id3.TXXX(encoding=0, desc="My Own", text=["x"]),
          id3.TMCL(encoding=0, people=[["drums", "Ann"]]), id3.WOAR(url="http://a.example/"),
          id3.UFID(owner="http://musicbrainz.org", data=b"id"), id3.TDOR(encoding=0, text=["1999"]),
          id3.APIC(encoding=0, mime="image/png", type=3, desc="", data=b"\x89PNG")]
# A field, a value for it, and whether 2.3 has a form for several.
FIELDS = [("ARTIST", "New é", False), ("GENRE", "Rock", False), ("DATE", "2005", False), ("MY OWN", "New", False),
          ("ARTISTWEBPAGE", "http://b.example/", False), ("MUSICBRAINZ_TRACKID", "other", False),
          ("ORIGINALDATE", "1998", False), ("MOOD", "Calm", False), ("ALBUM ARTIST", "New", False),
          ("COMMENT", "New", True), ("COMMENT:X", "New", True), ("LYRICS", "New", True),
          ("PERFORMER:DRUMS", "Bea", True)]


class Versions(TagTestCase):
    def file(self, state, extension="mp3"):
        path = os.path.join(self.folder.name, f"{state}.{extension}")
        shutil.copyfile(self.sample(extension), path)
        if state in ("2.3", "2.3 and APE"):
            save_id3(path, FRAMES, 3)
        if state == "2.4":
            save_id3(path, FRAMES)
        if "APE" in state:
            tag = apev2.APEv2()
            tag["Artist"], tag["My Own"] = "Old", "x"
            tag.save(path)
        if state == "ID3v1":
            append(path, id3v1(title=b"Kept", artist=b"Old"))
        return path

    @staticmethod
    def answers(cases):
        lines = subprocess.run([os.path.join(PROGRAMS, "edit_records")], check=True, capture_output=True, text=True,
                               input="".join(json.dumps(case) + "\n" for case in cases)).stdout.splitlines()
        return list(zip(cases, map(json.loads, lines), strict=True))

    @staticmethod
    def version_after(state, policy, several):
        """The version that comes of a file, after a change that has no form in 2.3 or has one."""
        if policy == "2.4" or state == "2.4":
            return "2.4"
        if state.startswith("2.3"):
            return "2.4" if several and policy == "as-needed" else "2.3"
        return "2.3" if policy == "2.3" else "2.4"

    def test_previews_show_what_is_written(self):
        cases = []
        for state in ("2.3", "2.4", "none", "2.3 and APE", "APE", "ID3v1"):
            path = self.file(state)
            for policy in POLICIES:
                for name, value, has_form in FIELDS:
                    for edit in ("set", "add", "split"):
                        cases.append({"path": path, "id3v2": policy, "edit": edit, "name": name, "value": value,
                                      "state": state, "has_form": has_form})
        for case, answer in self.answers(cases):
            with self.subTest(case=case, answer=answer):
                self.assertEqual(answer["preview"], answer["file"])
                changed = answer["before"] != answer["file"]
                if not changed or (case["state"] in ("APE", "ID3v1") and "ID3v2" not in answer["tagtype"]):
                    continue
                before = answer["before"].get("ALBUMARTIST" if case["name"] == "ALBUM ARTIST" else case["name"], [])
                values = [case["value"]] if case["edit"] == "set" else before + [case["value"]]
                several = len(values) > 1 and not case["has_form"]
                after = self.version_after(case["state"], case["id3v2"], several)
                self.assertIn(f"ID3v2.{after[2]}", answer["tagtype"])
                joined = several and after == "2.3"
                name = "ALBUMARTIST" if case["name"] == "ALBUM ARTIST" else case["name"]
                self.assertEqual(answer["file"][name], [SEPARATOR.join(values)] if joined else values)
                others = [{field: values for field, values in fields.items() if field != name}
                          for fields in (answer["before"], answer["file"])]
                self.assertEqual(*others)
                changes = case["state"].startswith("2.3") and after == "2.4"
                self.assertEqual(answer.get("tag_version"), ["ID3v2.3", "ID3v2.4"] if changes else None)

    def test_numbers_are_not_joined(self):
        for state in ("2.3", "2.3 and APE"):
            path = self.file(state)
            for policy in ("keep", "2.3"):
                cases = [{"path": path, "id3v2": policy, "edit": "add", "name": name, "value": "7"}
                         for name in ("TRACKNUMBER", "TOTALTRACKS")]
                for case, answer in self.answers(cases):
                    with self.subTest(case=case):
                        self.assertIn("holds one number only", answer["preview_error"])
                        self.assertIn("holds one number only", answer["file_error"])

    def test_what_cannot_become_v24_is_refused(self):
        path = self.file("APE")
        raw_id3(path, 3, [(b"TIT2", text("Kept"))])
        with open(path, "r+b") as file:
            file.seek(10 + 9)
            file.write(b"\x40")  # encrypted
        answer = self.answers([{"path": path, "id3v2": "2.4", "edit": "set", "name": "ARTIST", "value": "x"}])[0][1]
        self.assertIn("encrypted frame", answer["file_error"])


if __name__ == "__main__":
    unittest.main()
