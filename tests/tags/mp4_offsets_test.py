"""What an MP4 file names by its position is found at its new place when the tags have outgrown their room."""

import os
import struct
import subprocess
import unittest

from mutagen import mp4

from tag_samples import TagTestCase, audio, edit

KEY = "76a6c65c5ea762046bd749a2e632ccbb"
CONTAINERS = (b"moov", b"trak", b"mdia", b"minf", b"stbl", b"udta", b"moof", b"traf", b"mfra", b"mvex")
SOME = 16  # bytes at a position


def content(path):
    with open(path, "rb") as file:
        return file.read()


def write(path, data):
    with open(path, "wb") as file:
        file.write(data)


def walk(data, start=0, end=None, parents=()):
    """All atoms: the names from the top, and where the content starts and ends."""
    end = len(data) if end is None else end
    while start + 8 <= end:
        size, name = struct.unpack_from(">I4s", data, start)
        head = 8
        if size == 1:
            size, head = struct.unpack_from(">Q", data, start + 8)[0], 16
        if size < head:
            raise ValueError("an atom without a size")
        yield parents + (name,), start + head, start + size
        if name in CONTAINERS:
            yield from walk(data, start + head, start + size, parents + (name,))
        start += size


def numbers(data, start, widths):
    for width in widths:
        yield int.from_bytes(data[start:start + width], "big")
        start += width


def positions(data):
    """Kind and value of every absolute position that the file names; those of an index of segments computed."""
    for path, start, end in walk(data):
        name, version, flags = path[-1], data[start], data[start + 3] if start + 3 < len(data) else 0
        width = 4 if version == 0 else 8
        if name in (b"stco", b"co64"):
            count, = numbers(data, start + 4, [4])
            for value in numbers(data, start + 8, [4 if name == b"stco" else 8] * count):
                yield name, value
        elif name == b"saio" and path[-2] == b"stbl":
            for value in numbers(data, end - width, [width]):
                yield name, value
        elif name == b"tfhd" and flags & 1:
            yield name, next(numbers(data, start + 8, [8]))
        elif name == b"tfra":
            track, widths, count = numbers(data, start + 4, [4, 4, 4])
            entry = [width, width] + [(widths >> shift & 3) + 1 for shift in (4, 2, 0)]
            for i in range(count):
                yield name, list(numbers(data, start + 16 + i * sum(entry), entry))[1]
        elif name == b"sidx":
            yield name, end + list(numbers(data, start + 12, [width, width]))[1]


def found(data):
    """What stands at each position."""
    return [(name, data[value:value + SOME]) for name, value in positions(data)]


def atom(name, body):
    return struct.pack(">I", len(body) + 8) + name + body


class Mp4Offsets(TagTestCase):
    # Arguments of ffmpeg, and the kinds of positions that the file then has.
    FRAGMENTED = ["-frag_duration", "500000", "-movflags"]
    KINDS = [
        ("moved to the front", ["-movflags", "faststart"], {b"stco"}),
        ("based on their place", FRAGMENTED + ["frag_keyframe+empty_moov"], {b"tfhd", b"tfra"}),
        ("audio beside the first atom", FRAGMENTED[:2], {b"stco", b"tfhd", b"tfra"}),
        ("based on themselves", FRAGMENTED + ["frag_keyframe+empty_moov+default_base_moof"], {b"tfra"}),
        ("with an index of segments", FRAGMENTED + ["dash+frag_keyframe+global_sidx"], {b"sidx", b"tfra"}),
        ("each with an index", FRAGMENTED + ["dash+frag_keyframe"], {b"sidx", b"tfra"}),
        ("for streaming", FRAGMENTED + ["cmaf+frag_keyframe"], {b"tfra"}),
    ]

    def encode(self, arguments):
        path = os.path.join(self.folder.name, "sample.m4a")
        subprocess.run(["ffmpeg", "-hide_banner", "-loglevel", "error", "-y", "-f", "lavfi", "-i",
                        "anoisesrc=duration=3:seed=1", "-c:a", "aac", *arguments, path], check=True)
        return path

    def check_edits(self, path, sound=audio):
        before = found(content(path))
        heard = sound(path)
        # Outgrows the room, fits, outgrows it by more than a block, and gives it all back.
        for title in ("T", "U" * 50, "x" * 70_000, "V"):
            edit(path, "TITLE=" + title)
            self.assertEqual(found(content(path)), before)
            self.assertEqual(sound(path), heard)
            self.assertEqual(mp4.MP4(path)["\xa9nam"], [title])

    def test_kinds_of_files(self):
        for name, arguments, kinds in self.KINDS:
            with self.subTest(name):
                path = self.encode(arguments)
                self.assertGreaterEqual({kind for kind, _ in positions(content(path))}, kinds)
                for kind, there in found(content(path)):
                    if kind in (b"tfra", b"tfhd", b"sidx"):
                        self.assertIn(there[4:8], (b"moof", b"sidx"))
                self.check_edits(path)

    def test_places_of_keys(self):
        """Encrypted audio, though the file does not say so: only its keys are of interest."""
        path = self.encode(["-movflags", "faststart", "-encryption_scheme", "cenc-aes-ctr", "-encryption_key", KEY,
                            "-encryption_kid", KEY])
        data = content(path).replace(b"enca", b"mp4a", 1)
        place = data.index(b"saio") + 8
        count, offset = struct.unpack_from(">II", data, place)
        self.assertEqual(count, 1)
        for target in (offset, data.index(b"mdat") + 200):  # in front of the tags, and behind
            write(path, data[:place + 4] + struct.pack(">I", target) + data[place + 8:])
            self.assertIn((b"saio", data[target:target + SOME]), found(content(path)))
            self.check_edits(path, self.packets)

    @staticmethod
    def packets(path):
        return subprocess.run(["ffmpeg", "-hide_banner", "-loglevel", "error", "-i", path, "-map", "0:a", "-c", "copy",
                               "-f", "md5", "-"], check=True, capture_output=True).stdout

    def test_indexes_in_other_forms(self):
        """Wide and narrow positions, beside numbers of any width."""
        path = self.encode(self.FRAGMENTED + ["frag_keyframe+empty_moov"])
        data = content(path)
        name, start, end = next(entry for entry in walk(data) if entry[0][-1] == b"tfra")
        moofs = [value for kind, value in positions(data) if kind == b"tfra"]
        for version, widths in ((0, 0b000000), (0, 0b100111), (1, 0b000000), (1, 0b110001)):
            with self.subTest((version, widths)):
                width = 4 if version == 0 else 8
                body = bytes([version, 0, 0, 0]) + struct.pack(">III", 1, widths, len(moofs))
                for moof in moofs:
                    body += (0).to_bytes(width, "big") + moof.to_bytes(width, "big")
                    body += b"".join((1).to_bytes((widths >> shift & 3) + 1, "big") for shift in (4, 2, 0))
                index = atom(b"tfra", body)
                # Nothing but the index may be at the end of the file.
                for last in (atom(b"mfro", bytes(4) + struct.pack(">I", len(index) + 24)), b""):
                    mfra = next(start - 8 for names, start, _ in walk(data) if names == (b"mfra",))
                    write(path, data[:mfra] + atom(b"mfra", index + last))
                    self.assertTrue(all(there[4:8] == b"moof" for _, there in found(content(path))))
                    self.check_edits(path)

    def test_container_with_a_long_header(self):
        path = self.encode([])
        data = content(path)
        (_, start, end), = [entry for entry in walk(data) if entry[0] == (b"moov",)]
        (_, tags, _), = [entry for entry in walk(data) if entry[0] == (b"moov", b"udta")]
        self.assertEqual(end, len(data))
        for moov in (data[start:], data[start:tags - 8]):  # with a list of tags and without
            write(path, data[:start - 8] + struct.pack(">I4sQ", 1, b"moov", len(moov) + 16) + moov)
            self.check_edits(path)

    def refusals(self):
        items = atom(b"meta", bytes(4) + atom(b"hdlr", bytes(8) + b"pict" + bytes(13))
                     + atom(b"iloc", bytes(4) + b"\x44\0" + struct.pack(">HHHHIIH", 1, 1, 0, 1, 400, 20, 0)[:16]))
        fragments = self.encode(self.FRAGMENTED + ["frag_keyframe+empty_moov"])
        data = content(fragments)
        yield "items", items + data
        (_, start, _), *_ = [entry for entry in walk(data) if entry[0][-1] == b"tfhd"]
        yield "fragments", data[:start + 8] + bytes(8) + data[start + 16:]
        index = atom(b"sidx", bytes(4) + struct.pack(">IIIIHHIII", 1, 44100, 0, 0, 0, 1, len(data), 44100, 0))
        yield "index of segments", index + data

    def test_what_cannot_be_moved(self):
        """Such a file is edited as long as nothing has to move, and refused otherwise."""
        for what, data in list(self.refusals()):
            with self.subTest(what):
                path = os.path.join(self.folder.name, "odd.m4a")
                write(path, data)
                with self.assertRaisesRegex(RuntimeError, what + " cannot be moved"):
                    edit(path, "TITLE=T" * 100)
                self.assertEqual(content(path), data)
                # The file's own list of tags is the room there is.
                edit(path, "ENCODEDBY", "TITLE=T")
                self.assertEqual(len(content(path)), len(data))
                self.assertEqual(mp4.MP4(path)["\xa9nam"], ["T"])


if __name__ == "__main__":
    unittest.main()
