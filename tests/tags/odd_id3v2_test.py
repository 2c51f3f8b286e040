"""Tags that break the rules of ID3v2, as programs have written them: an edit loses nothing behind what is odd."""

import itertools
import os
import random
import struct
import unittest
import zlib

from mutagen.apev2 import APEv2
from mutagen.id3 import ID3

from tag_builders import PICTURE, text
from tag_samples import TagTestCase, edit, fields

IMAGE = b"\0image/png\0\3front\0" + PICTURE
PRIVATE = b"owner\0" + bytes(range(1, 200))


def synchsafe(size):
    return bytes(size >> shift & 0x7F for shift in (21, 14, 7, 0))


def plain(size):
    return struct.pack(">I", size)


def frame(name, body, size=plain, flags=b"\0\0"):
    return name + size(len(body)) + flags + body


def frame22(name, body):
    return name + plain(len(body))[1:] + body


class OddId3v2(TagTestCase):
    def setUp(self):
        super().setUp()
        self.path = self.sample("mp3")
        with open(self.path, "rb") as file:
            self.sound = file.read()

    def write(self, version, body):
        with open(self.path, "wb") as file:
            file.write(b"ID3" + bytes([version, 0, 0]) + synchsafe(len(body)) + body + self.sound)

    def tag(self):
        with open(self.path, "rb") as file:
            head = file.read(10)
            size = sum(byte << 7 * (3 - i) for i, byte in enumerate(head[6:]))
            return head + file.read(size)

    def check_whole(self, album):
        tags = ID3(self.path, translate=False)
        self.assertEqual([str(value) for value in tags["TALB"].text], [album])
        self.assertEqual(tags["TIT2"].text, ["Title"])
        self.assertEqual(tags["APIC:front"].data, PICTURE)
        self.assertEqual(tags.getall("PRIV")[0].data, PRIVATE.partition(b"\0")[2])
        with open(self.path, "rb") as file:
            self.assertTrue(file.read().endswith(self.sound))
        return tags

    # A frame's name, its body, and the fields that are read of it.
    NAMES = [
        (b"TP1\0", text("Somebody"), {"ARTIST": ["Somebody"]}),
        (b"TP1 ", text("Somebody"), {"ARTIST": ["Somebody"]}),
        (b"COM\0", b"\0eng\0About", {"COMMENT": ["About"]}),
        (b"TRK\0", text("3/9"), {"TRACKNUMBER": ["3"], "TOTALTRACKS": ["9"]}),
        (b"TXX\0", b"\0Key\0Value", {"KEY": ["Value"]}),
        (b"PIC\0", b"\0PNG\3old\0" + PICTURE, {}),
        (b"tcom", text("Somebody"), {}),
        (b"Tcom", text("x" * 300), {}),
        (b"TC  ", text("x"), {}),
        (b"XYZ\0", b"any", {}),
    ]

    def test_names(self):
        for version, (name, body, shown) in itertools.product((3, 4), self.NAMES):
            with self.subTest((version, name)):
                size = plain if version == 3 else synchsafe
                odd = frame(name, body, size)
                self.write(version, frame(b"TIT2", text("Title"), size) + odd + frame(b"APIC", IMAGE, size)
                           + frame(b"TALB", text("Old"), size) + frame(b"PRIV", PRIVATE, size) + bytes(50))
                self.assertEqual(fields(self.path), {"TITLE": ["Title"], "ALBUM": ["Old"]} | shown)
                for album in ("New", "x" * 5000):
                    edit(self.path, "ALBUM=" + album)
                    self.assertIn(odd, self.tag())
                    self.check_whole(album)
                self.assertEqual({key: value for key, value in fields(self.path).items() if key in shown}, shown)

    def test_odd_frame_edited(self):
        self.write(3, frame(b"TP1\0", text("Old")) + frame(b"tcom", text("kept")) + frame(b"PRIV", PRIVATE))
        edit(self.path, "ARTIST=New", "COMPOSER=C")
        self.assertEqual(fields(self.path), {"ARTIST": ["New"], "COMPOSER": ["C"]})
        tags = ID3(self.path)
        self.assertEqual((tags["TPE1"].text, tags["TCOM"].text), (["New"], ["C"]))
        self.assertIn(frame(b"tcom", text("kept")), self.tag())
        self.assertNotIn(b"Old", self.tag())
        edit(self.path, "COMPOSER")
        self.assertIn(frame(b"tcom", text("kept")), self.tag())

    def test_odd_frames_when_23_becomes_24(self):
        inner = frame(b"TT2\0", text("One")) + b"\1\2\3"
        chapter = frame(b"CHAP", b"c\0" + struct.pack(">4I", 0, 9, 0xFFFFFFFF, 0xFFFFFFFF) + inner)
        self.write(3, frame(b"TP1\0", text("A")) + frame(b"PIC\0", b"\0PNG\3front\0" + PICTURE) + chapter
                   + frame(b"TIT2", text("Title")) + frame(b"PRIV", PRIVATE))
        edit(self.path, "ALBUM=One\\Two")
        tags = ID3(self.path)
        self.assertEqual((tags.version[:2], tags["TPE1"].text, tags["TALB"].text), ((2, 4), ["A"], ["One", "Two"]))
        self.assertEqual((tags["APIC:front"].mime, tags["APIC:front"].data), ("image/png", PICTURE))
        self.assertEqual(tags["CHAP:c"].sub_frames["TIT2"].text, ["One"])
        self.assertIn(b"One\1\2\3", self.tag())

    def test_plain_sizes_in_24(self):
        """Pictures have zeros wherever one looks; their sizes are taken as they are meant all the same."""
        engine = random.Random(7)
        for size in (128, 129, 255, 256, 1000, 26_000, 70_000):
            for form in (plain, synchsafe):
                with self.subTest((size, form.__name__)):
                    data = bytes(engine.choice((0, 0, 0, 1, 255)) for _ in range(size))
                    body = frame(b"TIT2", text("Title"), form) + frame(b"APIC", b"\0image/png\0\3f\0" + data, form)
                    self.write(4, body + frame(b"PRIV", PRIVATE, form) + frame(b"TALB", text("Old"), form) + bytes(99))
                    edit(self.path, "ALBUM=New")
                    tags = ID3(self.path)
                    self.assertEqual((tags["APIC:f"].data, tags["TALB"].text), (data, ["New"]))
                    self.assertEqual(tags.getall("PRIV")[0].data, PRIVATE.partition(b"\0")[2])

    # What stands behind the last frame.
    RESTS = [b"\1\2\3", bytes(20) + b"left over", b"\xff\xfe\xfd\xfc\0\0\0\1\0\0x" + frame(b"TPE1", text("unseen")),
             b"TPE1\0\1\0\0\0\0\0cut off", b"PRIV\0\0\0\x70\0\0shorter than padding", b"tcom\0\0\7\x70\0\0x"]

    def test_rests(self):
        for version, rest, padding in itertools.product((3, 4), self.RESTS, (0, 40)):
            with self.subTest((version, rest, padding)):
                size = plain if version == 3 else synchsafe
                self.write(version, b"".join(frame(name, body, size) for name, body in (
                    (b"TIT2", text("Title")), (b"APIC", IMAGE), (b"PRIV", PRIVATE), (b"TALB", text("Old"))))
                    + rest + bytes(padding))
                # Libraries read what there is of a frame that is cut off.
                private = ID3(self.path).getall("PRIV")
                for album in ("New", "x" * 3000, "y"):
                    edit(self.path, "ALBUM=" + album)
                    self.assertEqual(self.check_whole(album).getall("PRIV"), private)
                    # Behind the last frame, as before.
                    self.assertIn(album.encode() + rest, self.tag())
                    self.assertEqual(self.tag().partition(album.encode() + rest)[2].strip(b"\0"), b"")

    def test_rest_alone(self):
        self.write(3, frame(b"TALB", text("Old")) + b"\1rest")
        edit(self.path, "ALBUM")
        self.assertIn(b"\1rest", self.tag())
        self.assertEqual(fields(self.path), {})

    def test_rest_that_would_change_its_meaning(self):
        for version, name, change in ((3, frame(b"TALB", text("Old")), "ALBUM=One\\Two"),
                                      (2, frame22(b"TAL", text("Old")), "ALBUM=New")):
            with self.subTest(version):
                self.write(version, name + b"\1\2\3")
                before = self.tag()
                with self.assertRaisesRegex(RuntimeError, "behind the frames"):
                    edit(self.path, change)
                self.assertEqual(self.tag(), before)
                self.assertEqual(os.path.getsize(self.path), len(before) + len(self.sound))

    def test_names_in_22(self):
        self.write(2, frame22(b"TT2", text("Title")) + frame22(b"tp1", text("odd")) + frame22(b"T1 ", b"any")
                   + frame22(b"PIC", b"\0PNG\3front\0" + PICTURE) + frame22(b"TAL", text("Old")) + bytes(30))
        edit(self.path, "ALBUM=New")
        self.assertEqual(fields(self.path), {"TITLE": ["Title"], "ALBUM": ["New"]})
        self.assertEqual(ID3(self.path)["APIC:front"].data, PICTURE)
        for kept in (frame(b"Xtp1", text("odd")), frame(b"XT1 ", b"any")):
            self.assertIn(kept, self.tag())
        edit(self.path, "ALBUM=x")
        self.assertIn(frame(b"Xtp1", text("odd")), self.tag())


    # Version, flags, and what stands before the compressed bytes of a frame that comes to 7 bytes.
    COMPRESSED = [(3, 0x80, plain(7)), (3, 0xA0, plain(7) + b"g"), (4, 0x09, plain(7)), (4, 0x49, b"g" + plain(7))]

    def compressed(self, version, flags, head, name=b"TPE1", body=text("Packed")):
        coded = head + zlib.compress(body)
        return name + (plain if version == 3 else synchsafe)(len(coded)) + bytes([0, flags]) + coded

    def test_compressed_frames(self):
        for version, flags, head in self.COMPRESSED:
            with self.subTest((version, flags)):
                packed = self.compressed(version, flags, head)
                self.write(version, packed + frame(b"TALB", text("Old")) + bytes(20))
                self.assertEqual(fields(self.path), {"ARTIST": ["Packed"], "ALBUM": ["Old"]})
                edit(self.path, "ALBUM=New")
                self.assertIn(packed, self.tag())
                edit(self.path, "ARTIST=Plain")
                self.assertIn(frame(b"TPE1", text("Plain")), self.tag())
                self.assertEqual(fields(self.path), {"ARTIST": ["Plain"], "ALBUM": ["New"]})

    def test_compressed_frames_when_23_becomes_24(self):
        for flags, head in ((0x80, plain(7)), (0xA0, plain(7) + b"g")):
            self.write(3, self.compressed(3, flags, head) + self.compressed(3, flags, plain(len(IMAGE)) + head[4:],
                                                                           b"APIC", IMAGE))
            edit(self.path, "ALBUM=One\\Two")
            self.assertEqual(fields(self.path), {"ARTIST": ["Packed"], "ALBUM": ["One", "Two"]})
            packed = zlib.compress(IMAGE)
            self.assertIn(synchsafe(len(IMAGE)) + packed, self.tag())
            if flags == 0x80:  # the other library does not know groups
                tags = ID3(self.path)
                self.assertEqual((tags["TPE1"].text, tags["APIC:front"].data), (["Packed"], PICTURE))

    def test_frames_that_cannot_be_expanded(self):
        """Encrypted, of another size than they say, larger than is sensible, no deflated bytes, cut off."""
        large = zlib.compress(bytes(18_000_000), 9)
        for version, flags, head, bytes_of in (
                (3, 0xC0, plain(7), zlib.compress(text("Packed"))), (4, 0x0D, plain(7), zlib.compress(text("Packed"))),
                (3, 0x80, plain(8), zlib.compress(text("Packed"))),
                (3, 0x80, plain(6), zlib.compress(text("Packed"))), (3, 0x80, plain(18_000_000), large),
                (4, 0x09, plain(7), b"anything"), (4, 0x08, plain(7), zlib.compress(text("Packed"))),
                (4, 0x09, b"", b"ab")):
            with self.subTest((version, flags, head)):
                coded = head + bytes_of
                kept = b"TPE1" + (plain if version == 3 else synchsafe)(len(coded)) + bytes([0, flags]) + coded
                self.write(version, kept + frame(b"TALB", text("Old")))
                self.assertEqual(fields(self.path), {"ALBUM": ["Old"]})
                edit(self.path, "ALBUM=New")
                self.assertIn(kept, self.tag())

    def test_compressed_frames_come_to_little_altogether(self):
        body = text("x" * 10_000_000)
        frames = [self.compressed(3, 0x80, plain(len(body)), name, body) for name in (b"TPE1", b"TIT2")]
        self.write(3, b"".join(frames))
        self.assertEqual(list(fields(self.path)), ["ARTIST"])

    def with_flags(self, version, flags, body):
        self.write(version, body)
        with open(self.path, "r+b") as file:
            file.seek(5)
            file.write(bytes([flags]))

    def test_a_tag_that_cannot_become_24_is_not_half_turned(self):
        """An APE tag takes the values; of the ID3v2 tag only the field is gone that it cannot hold."""
        title = frame(b"TIT2", text("Old"), flags=b"\x80\0")
        secret = frame(b"PRIV", b"\x42" + PRIVATE[:100], flags=b"\0\x40")
        self.write(3, title + secret + frame(b"TPE1", text("One")))
        ape = APEv2()
        ape["Artist"] = "One"
        ape.save(self.path)
        edit(self.path, "ARTIST=One\\Two")
        self.assertEqual(fields(self.path), {"TITLE": ["Old"], "ARTIST": ["One", "Two"]})
        self.assertEqual(self.tag()[10:].rstrip(b"\0")[:len(title + secret)], title + secret)

    def test_a_file_of_tags_alone_keeps_one(self):
        self.write(4, frame(b"TIT2", text("Old"), synchsafe))
        with open(self.path, "r+b") as file:
            file.truncate(10 + len(self.tag()[10:]))
        edit(self.path, "TITLE")
        self.assertEqual(fields(self.path), {})
        edit(self.path, "TITLE=New")
        self.assertEqual(fields(self.path), {"TITLE": ["New"]})

    def test_extended_headers(self):
        album = frame(b"TALB", text("Old")) + frame(b"PRIV", PRIVATE[:100])
        for version, header in ((3, plain(6) + bytes(6)), (3, plain(10) + b"\x80\0" + bytes(4) + b"crc!"),
                                (4, synchsafe(6) + b"\1\0"),
                                (4, synchsafe(12) + b"\1\x20\5\1\2\3\4\5"), (3, b""), (4, b"")):
            with self.subTest((version, header)):
                self.with_flags(version, 0x40, header + album)
                self.assertEqual(fields(self.path), {"ALBUM": ["Old"]})
                edit(self.path, "ALBUM=New")
                self.assertEqual(self.tag()[5], 0)
                tags = ID3(self.path)
                self.assertEqual((tags["TALB"].text, len(tags.getall("PRIV"))), (["New"], 1))
        self.with_flags(3, 0x40, plain(5000) + bytes(6) + album)
        with self.assertRaisesRegex(RuntimeError, "extended header"):
            edit(self.path, "ALBUM=New")


if __name__ == "__main__":
    unittest.main()
