"""Lists of chunks as programs write them and as nobody should: what is read, what is refused and why."""

import hashlib
import os
import struct
import subprocess
import unittest

from tag_samples import TagTestCase, audio, chunks, edit, fields, long_chunk, show, synthetic_dff, synthetic_dsf

FORMAT = struct.pack("<4sIHHIIHH", b"fmt ", 16, 1, 1, 8000, 8000, 1, 8)
SOUND = b"\x80\x90" * 400


def wav(data_size, outer_size, sound=SOUND, behind=b""):
    body = b"WAVE" + FORMAT + struct.pack("<4sI", b"data", data_size) + sound + behind
    return b"RIFF" + struct.pack("<I", len(body) if outer_size is None else outer_size) + body


def rf64(ds64, data_size=0xFFFFFFFF):
    return b"RF64\xff\xff\xff\xffWAVE" + struct.pack("<4sI", b"ds64", len(ds64)) + ds64 + FORMAT + struct.pack(
        "<4sI", b"data", data_size) + SOUND


def caf(data_size, behind=b""):
    description = struct.pack(">d4sIIIII", 8000.0, b"lpcm", 0, 1, 1, 1, 8)
    return (b"caff\0\1\0\0" + long_chunk(b"desc", description, False) + struct.pack(">4sQ", b"data", data_size)
            + bytes(4) + SOUND + behind)


def dsf(pointer):
    data = synthetic_dsf()
    return data[:20] + struct.pack("<Q", pointer) + data[28:]


class Chunks(TagTestCase):
    def file(self, name, data):
        path = os.path.join(self.folder.name, name)
        with open(path, "wb") as file:
            file.write(data)
        return path

    def content(self, path):
        with open(path, "rb") as file:
            return file.read()

    def test_sizes_that_streams_leave_open(self):
        """What is put behind the audio is no part of it."""
        open_size, open_size64 = 0xFFFFFFFF, 0xFFFFFFFFFFFFFFFF
        rows = [("a.wav", wav(open_size, open_size)), ("a.wav", wav(0, 0)), ("a.wav", wav(0, 36)),
                ("a.wav", wav(5000, 5036)), ("a.wav", wav(open_size, open_size, SOUND[:-1])),
                ("a.rf64", rf64(struct.pack("<QQQI", open_size64, open_size64, 0, 0))),
                ("a.rf64", rf64(struct.pack("<QQQI", 0, 0, 0, 0))),
                ("a.caf", caf(open_size64))]
        for name, data in rows:
            with self.subTest(name=name, head=data[:60]):
                path = self.file(name, data)
                self.assertAlmostEqual(show(path)["length"], 0.1, delta=0.0011)
                sound = audio(path) if name != "a.rf64" else None  # which others do not read yet
                edit(path, "TITLE=T", "MOOD=m")
                edit(path, "TITLE=" + "x" * 6000)
                self.assertEqual(fields(path), {"TITLE": ["x" * 6000], "MOOD": ["m"]})
                if sound:
                    self.assertEqual(audio(path), sound)
                else:
                    self.assertEqual(chunks(path)["chunk/data"], hashlib.md5(SOUND).hexdigest())
                self.assertTrue(chunks(path).get("outer size", True))

    def test_odd_chunks_and_what_is_no_chunk(self):
        """An odd chunk may have no byte that pads it; what stands behind the last one stays there."""
        info = b"LIST" + struct.pack("<I", 14) + b"INFOINAM\2\0\0\0O\0"
        id3v1 = b"TAG" + bytes(125)
        for pad in (b"", b"\0", b"\x07"):
            for rest in (b"", id3v1, b"??"):
                with self.subTest(pad=pad, rest=rest):
                    path = self.file("a.wav", wav(799, None, SOUND[:799] + pad, info + rest))
                    self.assertEqual(fields(path), {"TITLE": ["O"]})
                    edit(path, "TITLE=N", "GENRE=Jazz")
                    self.assertEqual(fields(path), {"TITLE": ["N"], "GENRE": ["Jazz"]})
                    data = self.content(path)
                    self.assertTrue(data.endswith(rest))
                    self.assertIn(SOUND[:799] + pad + info.replace(b"O\0", b"N\0"), data)
                    self.assertEqual(struct.unpack("<I", data[4:8])[0], len(data) - 8)

    def test_table_of_sizes(self):
        """A chunk whose size stands in the table of "ds64"."""
        info = b"INFOINAM\2\0\0\0O\0"
        table = struct.pack("<4sQ4sQ", b"LIST", len(info), b"abcd", 77)
        head = struct.pack("<QQQI", 0, len(SOUND), len(SOUND), 2) + table
        path = self.file("a.rf64", rf64(head) + b"LIST\xff\xff\xff\xff" + info)
        edit(path, "TITLE=longer")
        place = 20 + 28
        self.assertEqual(struct.unpack("<4sQ4sQ", self.content(path)[place:place + 24]),
                         (b"LIST", len(info) + 6, b"abcd", 77))
        self.assertEqual(fields(path), {"TITLE": ["longer"]})
        edit(path, "TITLE")
        self.assertEqual(self.content(path)[place - 4:place + 24],
                         struct.pack("<I4sQ", 1, b"abcd", 77) + bytes(12))

    def test_audio_that_has_an_index(self):
        """The places that it names would move with a tag in front of them."""
        tag = long_chunk(b"ID3 ", b"ID3\4\0\0\0\0\0\x0cTIT2\0\0\0\2\0\0\3O")
        sound = long_chunk(b"DST ", long_chunk(b"FRTE", struct.pack(">IH", 75, 75)))
        data = synthetic_dff()
        head = data[16:data.index(b"DSD " + struct.pack(">Q", 8192))]
        for parts, refused in (([tag, sound], True), ([sound, tag], False)):
            body = b"DSD " + head + b"".join(parts) + long_chunk(b"DSTI", bytes(12))
            path = self.file("a.dff", b"FRM8" + struct.pack(">Q", len(body)) + body)
            self.assertEqual((fields(path), show(path)["length"]), ({"TITLE": ["O"]}, 1))
            if refused:
                with self.assertRaisesRegex(RuntimeError, "index"):
                    edit(path, "TITLE=longer")
            edit(path, "TITLE=N" if refused else "TITLE=longer")
            self.assertNotEqual(fields(path), {"TITLE": ["O"]})

    def test_refusals(self):
        huge = 0xFFFFFFFFFFFFFFFF
        dff = synthetic_dff()
        rows = [
            ("a.wav", b"nothing of it", "does not begin with"),
            ("a.wav", wav(800, None)[:16] + b"\xff\xff\xff\x7f" + bytes(99), "\"fmt \".* missing"),
            ("a.wav", wav(800, None, SOUND, b"ID3 \xff\xff\0\0" + bytes(20)), "longer than the file"),
            ("a.wav", wav(800, None, SOUND, b"AAAA\0\0\0\0" * 11000), "more chunks"),
            ("a.rf64", rf64(bytes(20)), "too short"),
            ("a.rf64", rf64(struct.pack("<QQQI", 0, 0, 0, 9)), "table"),
            ("a.rf64", rf64(b"").replace(b"ds64", b"JUNK"), "not \"ds64\""),
            ("a.dff", dff.replace(struct.pack(">4sI", b"FS  ", 0), b"FSxx\xff\xff\xff\xff"), "sampling rate"),
            ("a.dff", dff[:32] + b"PROP" + b"\xff" * 8 + dff[44:], "PROP"),
            ("a.dsf", dsf(10 ** 6), "beyond"), ("a.dsf", dsf(huge), "beyond"), ("a.dsf", dsf(100), "in its audio"),
            ("a.dsf", dsf(92 + 8192) + b"no tag", "no whole ID3v2"),
            ("a.caf", caf(804, struct.pack(">4sQ", b"info", huge)), "longer than the file"),
            ("a.caf", caf(804, long_chunk(b"info", b"\0\0", False)), "too short"),
        ]
        for name, data, reason in rows:
            with self.subTest(name=name, reason=reason):
                path = self.file(name, data)
                for act in (show, lambda file: edit(file, "TITLE=x")):
                    with self.assertRaisesRegex(RuntimeError, reason):
                        act(path)
                self.assertEqual(self.content(path), data)


class Caf(TagTestCase):
    def test_information_of_others(self):
        """In front of the audio: what an edit does not name stays, and the second edit moves nothing."""
        path = os.path.join(self.folder.name, "a.caf")
        subprocess.run(["ffmpeg", "-loglevel", "error", "-f", "lavfi", "-i", "sine=duration=0.1", "-metadata",
                        "title=Old", "-metadata", "comment=c", "-metadata", "odd key=v", path], check=True)
        self.assertEqual(fields(path)["COMMENT"], ["c"])
        self.check_edit(path, ["TITLE=New one"], ["info/title"])
        size = os.path.getsize(path)
        self.check_edit(path, ["COMMENT=something longer"], ["info/comment"])
        self.assertEqual(os.path.getsize(path), size)


if __name__ == "__main__":
    unittest.main()
