"""MP4 files with other audio than usual, and those whose atoms are not what they say."""

import os
import struct
import subprocess
import unittest

from mutagen import mp4

from tag_samples import TagTestCase, audio, edit, fields, show


def atom(name, body=b""):
    return struct.pack(">I", len(body) + 8) + name + body


TEXT = atom(b"\xa9nam", atom(b"data", bytes([0, 0, 0, 1, 0, 0, 0, 0]) + b"Old"))
HANDLER = atom(b"hdlr", bytes(8) + b"mdirappl" + bytes(9))
FIRST = atom(b"ftyp", b"M4A " + bytes(4))


def tags(meta):
    return atom(b"udta", atom(b"meta", meta))


def file_of(*atoms):
    return FIRST + atom(b"moov", b"".join(atoms)) + atom(b"mdat", bytes(100))


class Mp4Atoms(TagTestCase):
    # Arguments of ffmpeg, and what is then known.
    CODECS = [
        (["-c:a", "alac"], "ALAC", "lossless", {"channels": "2", "bitspersample": "16"}),
        (["-c:a", "flac", "-strict", "-2"], "FLAC", "lossless", {"channels": "2", "bitspersample": "16"}),
        (["-c:a", "libopus"], "Opus", "lossy", {"channels": "2", "samplerate": "48000"}),
        (["-c:a", "ac3", "-ac", "6", "-b:a", "448k"], "AC-3", "lossy", {"channels": "6", "bitrate": "448"}),
        (["-c:a", "eac3", "-ac", "6", "-b:a", "384k"], "E-AC-3", "lossy", {"channels": "6", "bitrate": "384"}),
        (["-c:a", "libmp3lame", "-b:a", "128k"], "MP3", "lossy", {"channels": "2"}),
        (["-c:a", "aac", "-ar", "96000"], "AAC", "lossy", {"samplerate": "96000"}),
    ]

    def write(self, data, name="odd.m4a"):
        path = os.path.join(self.folder.name, name)
        with open(path, "wb") as file:
            file.write(data)
        return path

    def content(self, path):
        with open(path, "rb") as file:
            return file.read()

    def test_codecs(self):
        for arguments, codec, encoding, known in self.CODECS:
            for front in ([], ["-movflags", "faststart"]):
                with self.subTest(codec, front=front):
                    path = os.path.join(self.folder.name, "sample.mp4")
                    subprocess.run(["ffmpeg", "-loglevel", "error", "-y", "-f", "lavfi", "-i",
                                    "sine=frequency=440:duration=1:sample_rate=48000", "-ac", "2", *arguments, *front,
                                    path], check=True)
                    shown, heard = show(path), audio(path)
                    expected = {"codec": codec, "encoding": encoding, "samplerate": "48000", **known}
                    self.assertEqual({name: shown["technical"].get(name) for name in expected}, expected)
                    self.assertAlmostEqual(shown["length"], 1, delta=0.08)
                    for title in ("T", "x" * 9000, "U"):
                        edit(path, "TITLE=" + title)
                        self.assertEqual(audio(path), heard)
                        self.assertEqual(mp4.MP4(path).tags["\xa9nam"], [title])
                    self.assertEqual(show(path)["technical"], shown["technical"] | {"tagtype": "MP4"})

    def test_where_lists_stand(self):
        """None of these has audio; all are edited like any other."""
        rows = {
            "a list": tags(bytes(4) + HANDLER + atom(b"ilst", TEXT)),
            "QuickTime's form": tags(HANDLER + atom(b"ilst", TEXT)),
            "QuickTime's form without a handler": tags(atom(b"ilst", TEXT)),
            "no handler": tags(bytes(4) + atom(b"ilst", TEXT)),
            "no list": tags(bytes(4) + HANDLER + atom(b"free", bytes(40)) + atom(b"mine", b"kept")),
            "nothing": b"",
            "a container that goes on to the end": struct.pack(">I", 0) + tags(bytes(4) + atom(b"ilst", TEXT))[4:],
            "an item that does": tags(bytes(4) + atom(b"ilst", TEXT + bytes(4) + b"minekept")),
        }
        for what, inner in rows.items():
            for file in (file_of(inner), FIRST + atom(b"moov", inner)):
                with self.subTest(what):
                    path = self.write(file)
                    self.assertEqual(show(path)["technical"].get("codec"), None)
                    self.assertEqual(fields(path), {"TITLE": ["Old"]} if b"Old" in file else {})
                    for title in ("New", "x" * 5000, "T"):
                        edit(path, "TITLE=" + title, "ALBUM=A")
                        self.assertEqual(fields(path), {"TITLE": [title], "ALBUM": ["A"]})
                        self.assertEqual(b"kept" in self.content(path), b"kept" in file)
                        self.assertEqual(self.content(path).endswith(atom(b"mdat", bytes(100))), b"mdat" in file)

    def test_impossible_atoms(self):
        """They are refused when the tags have to grow, most of them at once, and nothing is written."""
        nested = b"".join(struct.pack(">I4s", 8 * (100_000 - i), b"trak") for i in range(100_000))
        sound = tags(bytes(4) + HANDLER + atom(b"ilst", TEXT))

        def table(body):
            return file_of(sound, atom(b"trak", atom(b"mdia", atom(b"minf", atom(b"stbl", body)))))

        impossible = "is less than its header or more than what holds it"
        fragments = bytes([0, 0, 0, 0]) + struct.pack(">III", 1, 0b111111, 9)
        rows = [
            ("nested", file_of(nested), "nested too deeply"),
            ("many", FIRST + atom(b"moov", atom(b"free") * 20_000), "too many atoms"),
            ("many fragments", file_of(sound) + atom(b"moof") * (1 << 20), "too many atoms"),
            *((f"size {size}", file_of(sound, struct.pack(">I4s", size, b"free"), bytes(8)), impossible)
              for size in range(1, 8)),
            ("64 bits", file_of(sound, struct.pack(">I4sQ", 1, b"free", (1 << 64) - 8)), impossible),
            ("64 bits, small", file_of(sound, struct.pack(">I4sQ", 1, b"free", 15)), impossible),
            ("list", file_of(tags(bytes(4) + struct.pack(">I4s", 1000, b"ilst") + TEXT)), impossible),
            ("no index", FIRST + atom(b"mdat", bytes(9)), 'no "moov"'),
            ("stco", table(atom(b"stco", bytes(4) + struct.pack(">II", 1 << 30, 9))), "more entries than it has"),
            ("co64", table(atom(b"co64", bytes(4) + struct.pack(">IQ", 2, 9))), "more entries than it has"),
            ("stco without a count", table(atom(b"stco", bytes(4))), "is too short"),
            ("tfra", file_of(sound) + atom(b"mfra", atom(b"tfra", fragments + bytes(9 * 20 - 1))),
             "more entries than it has"),
            ("tfhd", file_of(sound) + atom(b"moof", atom(b"traf", atom(b"tfhd", b"\0\0\0\1" + bytes(8)))),
             "is too short"),
            ("track", file_of(sound, atom(b"trak", atom(b"mdia", atom(b"hdlr", bytes(8) + b"soun" + bytes(12))))),
             "description of the audio"),
        ]
        for what, data, reason in rows:
            with self.subTest(what):
                path = self.write(data)
                with self.assertRaisesRegex(RuntimeError, reason):
                    edit(path, "TITLE=" + "x" * 5000)
                self.assertEqual(self.content(path), data)


if __name__ == "__main__":
    unittest.main()
