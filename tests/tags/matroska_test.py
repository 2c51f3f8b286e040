"""Matroska files of all layouts keep their audio and every tag that an edit does not name, and hostile ones are refused."""

import json
import os
import subprocess
import unittest

from tag_builders import ebml, matroska_tag, simple_tag
from tag_samples import TagTestCase, audio, edit, fields, show

BLOCK = 4096
UNKNOWN = b"\x01" + b"\xff" * 7
HEAD = ebml("1A45DFA3", ebml("4282", b"matroska"))
INFO = ebml("1549A966", ebml("7BA9", b"Old title") + ebml("5741", b"Program"))
TRACKS = ebml("1654AE6B", ebml("AE", ebml("D7", b"\1") + ebml("73C5", b"\7") + ebml("83", b"\2")
                               + ebml("86", b"A_PCM/INT/LIT") + ebml("E1", ebml("9F", b"\2") + ebml("6264", b"\x10"))))
CLUSTER = ebml("1F43B675", ebml("E7", b"\0") + ebml("A3", b"\x81\0\0\x80" + b"sound" * 100))
# A checksum over what stands behind it: wrong, as nobody looks.
CHECKSUM = b"\xbf\x84abcd"
LAYOUTS = {
    "plain": [], "cues in front": ["-reserve_index_space", "2000"], "live": ["-live", "1"],
    "clusters": ["-cluster_time_limit", "50"],
}


def segment(*elements, size=None):
    body = b"".join(elements)
    return HEAD + (ebml("18538067", body) if size is None else b"\x18\x53\x80\x67" + size + body)


def tags(*tags_of_file, checksum=b""):
    return ebml("1254C367", checksum + b"".join(tags_of_file))


class Matroska(TagTestCase):
    def make(self, *elements, size=None):
        path = os.path.join(self.folder.name, "made.mka")
        with open(path, "wb") as file:
            file.write(segment(*elements, size=size))
        return path

    def content(self, path):
        with open(path, "rb") as file:
            return file.read()

    def test_layouts(self):
        """What has no room goes to the end, where it is found by the index, and stays there."""
        for name, arguments in LAYOUTS.items():
            with self.subTest(name):
                path = os.path.join(self.folder.name, "a.mka")
                subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "sine=duration=0.4", "-c:a", "flac",
                                "-metadata", "title=Old", "-metadata", "album=Al", *arguments, path], check=True)
                size, sound = os.path.getsize(path), audio(path)
                self.assertEqual((fields(path)["TITLE"], fields(path)["ALBUM"]), (["Old"], ["Al"]))
                edit(path, "ARTIST=One\\Two", "TITLE=" + "x" * 300)
                self.assertEqual(os.path.getsize(path), size + BLOCK)
                edit(path, "TITLE=New", "GENRE=Rock")
                self.assertEqual(os.path.getsize(path), size + BLOCK)
                edit(path, "COMMENT=" + "x" * 9000)
                self.assertEqual((os.path.getsize(path) - size) % BLOCK, 0)
                self.assertEqual(audio(path), sound)
                shown = json.loads(subprocess.run(
                    ["ffprobe", "-v", "error", "-show_entries", "format_tags", "-of", "json", path],
                    check=True, capture_output=True).stdout)["format"]["tags"]
                shown = {key.upper(): value for key, value in shown.items()}
                self.assertEqual([shown[key] for key in ("TITLE", "ARTIST", "ALBUM")], ["New", "Two", "Al"])
                self.assertEqual([fields(path)[key] for key in ("TITLE", "ARTIST", "ALBUM")],
                                 [["New"], ["One", "Two"], ["Al"]])

    def test_what_is_no_field(self):
        nested = ebml("67C8", ebml("45A3", b"SORT_WITH") + ebml("4487", b"sorted"))
        binary = ebml("67C8", ebml("45A3", b"PICTURE") + ebml("4485", b"\0\1"))
        kept = [
            simple_tag("TITLE", "Titel", ebml("447A", b"ger")), binary,
            matroska_tag(simple_tag("TITLE", "chapter"), targets=ebml("63C4", b"\5")),
            matroska_tag(simple_tag("TITLE", "other track"), targets=ebml("63C5", b"\6")),
            matroska_tag(simple_tag("BPS", "1"), level=0, targets=ebml("63C5", b"\7")),
            matroska_tag(simple_tag("TITLE", "set"), level=60), ebml("7374", b"unknown"),
        ]
        path = self.make(INFO, TRACKS, CLUSTER, tags(
            matroska_tag(simple_tag("TITLE", "T", nested) + kept[0] + kept[1], targets=ebml("63C5", b"\7")),
            *kept[2:], checksum=CHECKSUM))
        self.assertEqual(fields(path), {"TITLE": ["T"]})
        edit(path, "TITLE=New", "ALBUM=A", "TITLESORT=x")
        self.assertEqual(fields(path), {"TITLE": ["New"], "ALBUM": ["A"], "TITLESORT": ["x"]})
        data = self.content(path)
        for element in [nested, *kept]:
            self.assertIn(element, data)
        self.assertNotIn(CHECKSUM, data)

    def test_levels(self):
        """Of each: the tags in the file, what they are, an edit, and what they are then."""
        title = simple_tag("TITLE", "a")
        rows = [
            ([matroska_tag(title, 0)], {"TITLE": ["a"]}, "ALBUM=b", {"TITLE": ["a"], "ALBUM": ["b"]}),
            ([matroska_tag(title, 0), matroska_tag(simple_tag("TITLE", "t"))], {"ALBUM": ["a"], "TITLE": ["t"]},
             "TITLE", {"ALBUM": ["a"]}),
            ([matroska_tag(title, 50)], {"ALBUM": ["a"]}, "TITLE=b", {"ALBUM": ["a"], "TITLE": ["b"]}),
            ([matroska_tag(title, 0, ebml("63CA", b"ALBUM"))], {"ALBUM": ["a"]}, "ALBUM=c", {"ALBUM": ["c"]}),
            ([matroska_tag(simple_tag("PART_NUMBER", "3/12"))], {"TRACKNUMBER": ["3"], "TOTALTRACKS": ["12"]},
             "TRACKNUMBER=4", {"TRACKNUMBER": ["4"], "TOTALTRACKS": ["12"]}),
            ([matroska_tag(simple_tag("GENRE", "a"), 50)], {"GENRE": ["a"]}, "GENRE", {}),
            ([matroska_tag(simple_tag("DATE_RECORDED", "1") + simple_tag("DATE_RELEASED", "2"))],
             {"DATE_RECORDED": ["1"], "DATE": ["2"]}, "DATE=3", {"DATE_RECORDED": ["1"], "DATE": ["3"]}),
        ]
        for elements, before, change, after in rows:
            with self.subTest(before):
                path = self.make(TRACKS, CLUSTER, tags(*elements))
                self.assertEqual(fields(path), before)
                edit(path, change)
                self.assertEqual(fields(path), after)

    def test_title_of_the_segment(self):
        for title, stays in (("New", True), ("12345678", True), ("as long as nothing", False)):
            with self.subTest(title):
                path = self.make(CHECKSUM, INFO, TRACKS, CLUSTER)
                self.assertEqual((fields(path), show(path)["technical"]["tool"]), ({"TITLE": ["Old title"]}, "Program"))
                edit(path, "TITLE=" + title)
                data = self.content(path)
                self.assertEqual((fields(path), b"Old title" in data), ({"TITLE": [title]}, False))
                self.assertEqual((len(data) == len(segment(CHECKSUM, INFO, TRACKS, CLUSTER))), stays)
                edit(path, "TITLE")
                self.assertEqual(fields(path), {})

    def test_checksum_of_the_segment(self):
        path = self.make(CHECKSUM, TRACKS, CLUSTER)
        edit(path, "TITLE=T")
        self.assertNotIn(CHECKSUM, self.content(path))

    def test_refusals(self):
        rows = [
            ("digits", segment(ebml("EC", bytes(117)), size=b"\xfe"), "no digits"),
            ("not found again", segment(TRACKS, b"\x1f\x43\xb6\x75" + UNKNOWN + CLUSTER[12:], size=UNKNOWN), "index"),
        ]
        for name, data, text in rows:
            with self.subTest(name):
                path = os.path.join(self.folder.name, "a.mka")
                with open(path, "wb") as file:
                    file.write(data)
                with self.assertRaisesRegex(RuntimeError, text):
                    edit(path, "TITLE=" + "T" * 3000)
                self.assertEqual(self.content(path), data)

    def test_hostile_elements(self):
        # Each begins within the one before and ends with it.
        deep = b"".join(b"\x67\xc8" + (1 << 56 | 10 * left).to_bytes(8, "big") for left in range(99_999, -1, -1))
        path = self.make(TRACKS, tags(matroska_tag(simple_tag("TITLE", "T", deep))))
        edit(path, "ARTIST=A")
        self.assertIn(deep, self.content(path))
        many = simple_tag("X", "x") * 10_001
        rows = [
            ("huge", [TRACKS, b"\x12\x54\xc3\x67\x01" + b"\xff" * 6 + b"\xfe"], "larger than its segment"),
            ("unknown size", [TRACKS, b"\x12\x54\xc3\x67" + UNKNOWN], "larger than its segment"),
            ("no identifier", [TRACKS, bytes(20)], "larger than its segment"),
            ("too large a tag", [TRACKS, tags(b"\x73\x73\x90x")], "larger than the Tags element"),
            ("too large a text", [TRACKS, tags(ebml("7373", b"\x67\xc8\x90x"))], "larger than the tag"),
            ("many", [TRACKS, tags(matroska_tag(many))], "10,000"),
        ]
        for name, elements, text in rows:
            with self.subTest(name):
                path = self.make(*elements)
                for act in (show, lambda name: edit(name, "TITLE=x")):
                    with self.assertRaisesRegex(RuntimeError, text):
                        act(path)
        path = self.make(TRACKS, size=b"\x01" + b"\xff" * 6 + b"\xfe")
        with self.assertRaisesRegex(RuntimeError, "larger than the file"):
            show(path)


if __name__ == "__main__":
    unittest.main()
