"""Each test is a pitfall of ID3v2: one field is edited, and everything else in the file is what it was."""

import unittest

from mutagen import id3
from mutagen.id3 import ID3

from tag_builders import PICTURE, raw_id3, save_id3, text
from tag_samples import TagTestCase, edit, fields


class Id3v2(TagTestCase):
    # What an edit of ALBUM has to leave alone: frames in the forms that other programs write them.
    BINARY = [
        id3.POPM(email="someone@example.com", rating=196, count=7),
        id3.PRIV(owner="WM/MediaClassSecondaryID", data=b"\0\1\2\xff"),
        id3.GEOB(encoding=0, mime="application/octet-stream", filename="f", desc="d", data=b"\0\xff\xfe"),
        id3.UFID(owner="http://www.id3.org/dummy", data=b"12\0\xff"),
        id3.APIC(encoding=0, mime="image/png", type=3, desc="front", data=PICTURE),
        id3.SYLT(encoding=3, lang="eng", format=2, type=1, desc="", text=[("la", 1)]),
        id3.PCNT(count=3),
        id3.MCDI(data=b"\0\4\2"),
        id3.CHAP(element_id="c1", start_time=0, end_time=100, start_offset=0xFFFFFFFF, end_offset=0xFFFFFFFF,
                 sub_frames=[id3.TIT2(encoding=3, text="One"), id3.APIC(encoding=0, mime="image/png", type=3,
                                                                         desc="", data=PICTURE)]),
        id3.CTOC(element_id="toc", flags=3, child_element_ids=["c1"], sub_frames=[]),
    ]

    def check(self, frames, version, changes=("ALBUM=New",), changed=("id3/TALB",)):
        path = self.sample("mp3")
        save_id3(path, frames, version)
        self.check_edit(path, changes, changed)
        return path

    def test_binary_frames_in_24(self):
        self.check(self.BINARY + [id3.RVA2(desc="track", channel=1, gain=-3, peak=0.5)], 4)

    def test_binary_frames_in_23(self):
        self.check(self.BINARY, 3)

    def test_chapters_and_pictures_when_23_becomes_24(self):
        # mutagen shows the same frames in both versions.
        path = self.check(self.BINARY, 3, ["ARTIST=One\\Two"], ["id3/version", "id3/TPE1"])
        self.assertEqual(fields(path)["ARTIST"], ["One", "Two"])

    def test_involved_people_of_24(self):
        self.check([id3.TIPL(encoding=3, people=[["producer", "Last, First"], ["PRODUCER", "B"], ["mastering", "C"]]),
                    id3.TMCL(encoding=3, people=[["Guitar", "D, E"], ["guitar", "F"]])], 4)

    def test_involved_people_of_23(self):
        self.check([id3.IPLS(encoding=1, people=[["producer", "Last, First"], ["guitar", "D, E"]])], 3)

    def test_other_people_of_the_list(self):
        path = self.check([id3.TIPL(encoding=3, people=[["Producer", "A, B"], ["mix", "C"]])], 4,
                          ["MIXER=D\\E"], ["id3/TIPL"])
        self.assertEqual(ID3(path)["TIPL"].people, [["Producer", "A, B"], ["mix", "D"], ["mix", "E"]])

    def test_comments_of_several_languages_and_descriptions(self):
        self.check([id3.COMM(encoding=3, lang="eng", desc="", text=["one"]),
                    id3.COMM(encoding=3, lang="deu", desc="", text=["eins"]),
                    id3.COMM(encoding=3, lang="eng", desc="iTunNORM", text=[" 0000"]),
                    id3.COMM(encoding=1, lang="XXX", desc="Über", text=["x"])], 4)

    def test_language_of_a_changed_comment(self):
        path = self.check([id3.COMM(encoding=3, lang="deu", desc="", text=["eins"]),
                           id3.COMM(encoding=3, lang="fra", desc="Note", text=["un"])], 4,
                          ["COMMENT=zwei", "COMMENT:NOTE=deux"], ["id3/COMM::deu", "id3/COMM:Note:fra"])
        self.assertEqual(ID3(path)["COMM:Note:fra"].text, ["deux"])

    def test_one_of_several_comments_changed(self):
        self.check([id3.COMM(encoding=3, lang="eng", desc="", text=["one"]),
                    id3.COMM(encoding=3, lang="deu", desc="", text=["eins"])], 4,
                   ["COMMENT=one\\zwei"], ["id3/COMM::deu"])

    def test_lyrics_with_language_and_description(self):
        path = self.check([id3.USLT(encoding=3, lang="deu", desc="Text", text="la\nla"),
                           id3.USLT(encoding=3, lang="eng", desc="", text="lu")], 4,
                          ["LYRICS=le"], ["id3/USLT::eng"])
        self.assertEqual(fields(path)["LYRICS:TEXT"], ["la\nla"])

    def test_spelling_of_user_frames(self):
        frames = [id3.TXXX(encoding=3, desc="MusicBrainz Album Id", text=["a"]),
                  id3.TXXX(encoding=3, desc="my Thing", text=["a"]),
                  id3.TXXX(encoding=3, desc="replaygain_track_gain", text=["-1 dB"])]
        path = self.check(frames, 4, ["MUSICBRAINZ_ALBUMID=b", "MY THING=b", "REPLAYGAIN_TRACK_GAIN=-2 dB"],
                          ["id3/TXXX:MusicBrainz Album Id", "id3/TXXX:my Thing", "id3/TXXX:replaygain_track_gain"])
        self.assertEqual(ID3(path)["TXXX:my Thing"].text, ["b"])

    def test_user_frame_without_description(self):
        path = self.sample("mp3")
        raw_id3(path, 4, [(b"TXXX", b"\x03\0value"), (b"TALB", text("Old")), (b"TIT2", text("T"))])
        self.check_edit(path, ["ALBUM=New"], ["id3/TALB"])

    def test_full_dates_in_24(self):
        self.check([id3.TDRC(encoding=3, text=["2001-05-06T07:08:09"]), id3.TDOR(encoding=3, text=["1999-03-02"]),
                    id3.TDRL(encoding=3, text=["2002-01"])], 4)

    def test_full_dates_in_23(self):
        path = self.sample("mp3")
        raw_id3(path, 3, [(b"TYER", text("2001")), (b"TDAT", text("0605")), (b"TIME", text("0708")),
                          (b"TORY", text("1999")), (b"TRDA", text("June 3")), (b"TSIZ", text("12345"))])
        self.assertEqual(fields(path)["DATE"], ["2001-05-06T07:08"])
        self.check_edit(path, ["ALBUM=New"], ["id3/TALB"])

    def test_frames_of_24_in_23(self):
        path = self.sample("mp3")
        raw_id3(path, 3, [(b"TDRL", text("2002-03-04")), (b"TMOO", text("sad")), (b"TSST", text("Side A")),
                          (b"TDTG", text("2020-01-02")), (b"TPRO", text("2001 X")), (b"TDRC", text("2001-05"))])
        self.check_edit(path, ["ALBUM=New"], ["id3/TALB"])
        self.check_edit(path, ["MOOD=glad"], ["id3/TMOO"])

    def test_volume_frames_of_23(self):
        path = self.sample("mp3")
        raw_id3(path, 3, [(b"RVAD", b"\x03\x10\0\1\0\2\0\0\0\0"), (b"EQUA", b"\x10\0\1\0\2"), (b"TALB", text("Old"))])
        with open(path, "rb") as file:
            before = file.read()
        edit(path, "ALBUM=New")
        with open(path, "rb") as file:
            after = file.read()
        for frame in (b"RVAD\0\0\0\x0a\0\0\x03\x10\0\1\0\2\0\0\0\0", b"EQUA\0\0\0\5\0\0\x10\0\1\0\2"):
            self.assertIn(frame, before)
            self.assertIn(frame, after)

    def test_genres_in_23(self):
        path = self.sample("mp3")
        raw_id3(path, 3, [(b"TCON", text("(17)(8)Own kind")), (b"TALB", text("Old"))])
        self.assertEqual(fields(path)["GENRE"], ["Rock", "Jazz", "Own kind"])
        self.check_edit(path, ["ALBUM=New"], ["id3/TALB"])
        self.check_edit(path, ["ARTIST=A\\B"], ["id3/version", "id3/TPE1", "id3/TCON"])
        self.assertEqual(ID3(path)["TCON"].text, ["Rock", "Jazz", "Own kind"])

    def test_genres_in_24(self):
        self.check([id3.TCON(encoding=3, text=["Rock", "My own", "17"])], 4)

    def test_several_values_of_a_23_file(self):
        path = self.sample("mp3")
        raw_id3(path, 3, [(b"TPE1", text("A\0B")), (b"TALB", text("Old"))])
        self.assertEqual(fields(path)["ARTIST"], ["A", "B"])
        self.check_edit(path, ["ALBUM=New"], ["id3/TALB"])

    def test_dates_and_people_when_23_becomes_24(self):
        path = self.sample("mp3")
        raw_id3(path, 3, [(b"TYER", text("2001")), (b"TDAT", text("0605")), (b"TORY", text("1999")),
                          (b"IPLS", text("producer\0P, Q\0guitar\0G\0")), (b"TPE1", text("A"))])
        before = fields(path)
        edit(path, "ARTIST=A\\B")
        before["ARTIST"] = ["A", "B"]
        self.assertEqual(fields(path), before)
        tags = ID3(path, translate=False)
        self.assertEqual(tags.version[:2], (2, 4))
        self.assertEqual(str(tags["TDRC"]), "2001-05-06")
        self.assertEqual(str(tags["TDOR"]), "1999")
        self.assertEqual((tags["TIPL"].people, tags["TMCL"].people), ([["producer", "P, Q"]], [["guitar", "G"]]))

    def test_version_22_becomes_23(self):
        path = self.sample("mp3")
        raw_id3(path, 2, [(b"TT2", text("T")), (b"TAL", text("Old")), (b"TYE", text("2001")), (b"COM", b"\0deu\0c"),
                          (b"PIC", b"\0PNG\3front\0" + PICTURE), (b"TXX", b"\0k\0v"), (b"ULT", b"\0eng\0l")])
        edit(path, "ALBUM=New")
        tags = ID3(path, translate=False)
        self.assertEqual(tags.version[:2], (2, 3))
        self.assertEqual({key: str(frame) for key, frame in tags.items() if key[0] == "T"},
                         {"TIT2": "T", "TALB": "New", "TYER": "2001", "TXXX:k": "v"})
        self.assertEqual((tags["APIC:front"].data, tags["APIC:front"].mime), (PICTURE, "image/png"))
        self.assertEqual((tags["COMM::deu"].text, tags["USLT::eng"].text), (["c"], "l"))

    def test_encrypted_and_unknown_frames(self):
        path = self.sample("mp3")
        frame = b"TKEY\0\0\0\x06\0\x44\x01\x80secr"  # encrypted and grouped
        body = frame + b"XYZ1\0\0\0\3\x20\0abc" + b"TALB\0\0\0\4\0\0\0Old"
        with open(path, "rb") as file:
            audio = file.read()
        with open(path, "wb") as file:
            file.write(b"ID3\4\0\0\0\0\0" + bytes([len(body)]) + body + audio)
        edit(path, "ALBUM=New")
        with open(path, "rb") as file:
            data = file.read()
        self.assertIn(frame, data)
        self.assertIn(b"XYZ1\0\0\0\3\x20\0abc", data)
        self.assertEqual(fields(path), {"ALBUM": ["New"]})

    def test_unsynchronisation(self):
        body = b"TALB\0\0\0\4\0\0\0Old"
        for version, size in ((3, 5), (4, 6)):
            with self.subTest(version):
                path = self.sample("mp3")
                frame = b"PRIV\0\0\0" + bytes([size]) + b"\0\0o\0\xff\0\xe0!"
                with open(path, "rb") as file:
                    sound = file.read()
                tag = frame + body
                with open(path, "wb") as file:
                    file.write(b"ID3" + bytes([version]) + b"\0\x80\0\0\0" + bytes([len(tag)]) + tag + sound)
                self.assertEqual(ID3(path)["PRIV:o:\xff\xe0!"].data, b"\xff\xe0!")
                self.check_edit(path, ["ALBUM=New"], ["id3/TALB"])

    def test_removed_field_is_gone_everywhere(self):
        path = self.sample("mp3")
        save_id3(path, [id3.TPE2(encoding=3, text="A"), id3.TXXX(encoding=3, desc="ALBUM ARTIST", text="A"),
                        id3.TXXX(encoding=3, desc="ALBUMARTIST", text="A"), id3.TIT2(encoding=3, text="T")])
        edit(path, "ALBUMARTIST", "ALBUM ARTIST")
        self.assertEqual(fields(path), {"TITLE": ["T"]})


if __name__ == "__main__":
    unittest.main()
