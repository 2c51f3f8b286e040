"""Files keep their length while their tags fit the room that is there, and grow by whole blocks when not."""

import os
import shutil
import struct
import subprocess
import unittest

import mutagen
from mutagen import flac, id3, mp4, ogg, wave
from mutagen.id3 import ID3

from tag_samples import XIPH, TagTestCase, atoms, audio, differences, edit, fields, snapshot

BLOCK = 4096
# The title in the snapshot.
FORMATS = {
    "mp3": "id3/TIT2", "tta": "id3/TIT2", "wav": "id3/TIT2", "aiff": "id3/TIT2",
    "rf64": "id3/TIT2", "dff": "id3/TIT2", "dsf": "id3/TIT2", "flac": "vorbis/TITLE",
    "ogg": "vorbis/TITLE", "opus": "vorbis/TITLE", "spx": "vorbis/TITLE", "m4a": "mp4/\xa9nam", "wma": "asf/Title",
}
# The header of the padding: with less left over, though not with nothing, the tag does not fit.
HEADERS = {"mp3": 0, "flac": 4, "ogg": 0, "m4a": 8}


def content(path):
    with open(path, "rb") as file:
        return file.read()


def write(path, data):
    with open(path, "wb") as file:
        file.write(data)


class Padding(TagTestCase):
    def bare_sample(self, extension):
        path = self.sample(extension)
        if extension in XIPH:  # the others have no padding yet
            mutagen.File(path).save(padding=lambda info: 0)
        return path

    def edit_in_place(self, path, *changes):
        """The edit changes few bytes, all of them close to each other."""
        before = content(path)
        edit(path, *changes)
        after = content(path)
        self.assertEqual(len(after), len(before), changes)
        changed = [i for i, (old, new) in enumerate(zip(before, after)) if old != new]
        if changed:
            self.assertLess(changed[-1] - changed[0], 2 * BLOCK)

    def check_title(self, path, title):
        key = FORMATS[path.rpartition(".")[2]].partition("/")[2]
        if path.endswith(".rf64"):
            self.assertIn(title, snapshot(path)["id3/" + key])
        else:
            self.assertEqual([str(value) for value in mutagen.File(path)[key]], [title])

    def check_format(self, extension):
        path = self.bare_sample(extension)
        key = FORMATS[extension]
        sound = audio(path)
        empty = os.path.getsize(path)
        edit(path, "ARTIST=A", "TITLE=T", "COMMENT=text")
        size = os.path.getsize(path)
        self.assertGreater(size, empty)
        self.assertEqual((size - empty) % BLOCK, 0)
        first = snapshot(path)
        self.assertEqual(first["audio"], sound)

        for length in range(2, 21):
            self.edit_in_place(path, "TITLE=" + "T" * length)
            self.check_title(path, "T" * length)
        self.edit_in_place(path, "COMMENT")
        self.edit_in_place(path, "ALBUM=" + "a" * 200, "TITLE=T")
        self.edit_in_place(path, "COMMENT=text", "ALBUM")
        self.assertEqual(snapshot(path), first)

        edit(path, "TITLE=" + "x" * 9000)
        self.assertGreater(os.path.getsize(path), size)
        self.assertEqual((os.path.getsize(path) - size) % BLOCK, 0)
        self.assertEqual(differences(first, snapshot(path)), {key})
        size = os.path.getsize(path)
        edit(path, "TITLE=T")
        self.assertEqual(os.path.getsize(path), size)
        self.assertEqual(snapshot(path), first)

    def check_last_bytes(self, extension):
        """The last bytes of the room can be used, unless what is left is too small for padding."""
        path = self.bare_sample(extension)
        header = HEADERS[extension]
        edit(path, "ARTIST=A", "TITLE=T", "COMMENT=text")
        sound = audio(path)
        size = os.path.getsize(path)
        copy = os.path.join(self.folder.name, "copy." + extension)

        def growth(length):
            shutil.copy(path, copy)
            edit(copy, "TITLE=" + "x" * length)
            return os.path.getsize(copy) - size

        fitting, outgrown = 1, BLOCK
        while fitting + 1 < outgrown:
            middle = (fitting + outgrown) // 2
            if growth(middle) == 0:
                fitting = middle
            else:
                outgrown = middle
        most = max(length for length in range(fitting, fitting + header + 1) if growth(length) == 0)
        for length in range(most - header - 1, most + 2):
            left = most - length
            self.assertEqual(growth(length), 0 if left == 0 or left >= header and left > 0 else BLOCK, length)
            self.check_title(copy, "x" * length)
        self.assertEqual(audio(copy), sound)


class Flac(TagTestCase):
    def test_more_padding_than_one_block_holds(self):
        path = self.sample("flac")
        file = flac.FLAC(path)
        file["TITLE"], file["LYRICS"] = "T", "x" * 9_000_000
        # With that of the lyrics, two bytes more than the largest block: too few for a second one.
        file.save(padding=lambda info: 7_777_206)
        size = os.path.getsize(path)
        sound = audio(path)
        edit(path, "LYRICS")
        self.assertEqual((os.path.getsize(path), audio(path)), (size, sound))
        self.assertEqual([block.code for block in flac.FLAC(path).metadata_blocks][-2:], [1, 1])
        edit(path, "TITLE=New")
        self.assertEqual(os.path.getsize(path), size)

    def test_padding_between_other_blocks(self):
        path = self.sample("flac")
        file = flac.FLAC(path)
        application = flac.MetadataBlock(b"testabcd")
        application.code = 2
        file.metadata_blocks.append(application)
        file["TITLE"] = "T"
        file.save(padding=lambda info: 0)
        data = content(path)
        comment = data.index(b"\x04\0")
        data = data[:comment] + b"\1\0\1\0" + bytes(256) + data[comment:]
        write(path, data)
        self.check_edit(path, ["TITLE=New"], ["vorbis/TITLE", "block/2/3", "block/2/2"])
        self.assertEqual([block.code for block in flac.FLAC(path).metadata_blocks], [0, 4, 2, 1])
        self.assertEqual(os.path.getsize(path), len(data))


class Chunk(TagTestCase):
    def test_odd_chunk_with_bytes_behind_the_tag(self):
        path = self.sample("wav")
        file = wave.WAVE(path)
        file.add_tags()
        file.tags.add(id3.TIT2(encoding=3, text="Old"))
        file.save(padding=lambda info: 40)
        data = content(path)
        start = data.upper().index(b"ID3 ")
        size, = struct.unpack("<I", data[start + 4:start + 8])
        body = data[start + 8:start + 8 + size] + b"\0" * (7 if size % 2 == 0 else 8)
        data = data[:start + 4] + struct.pack("<I", len(body)) + body + b"\0" + b"test" + struct.pack("<I", 2) + b"ab"
        write(path, data[:4] + struct.pack("<I", len(data) - 8) + data[8:])
        self.check_edit(path, ["TITLE=A longer title"], ["id3/TIT2"])
        self.assertEqual(os.path.getsize(path), len(data))
        self.check_edit(path, ["TITLE=" + "x" * 100], ["id3/TIT2"])
        self.assertEqual(os.path.getsize(path), len(data) + BLOCK)

    def test_padding_ends_at_4_gib(self):
        """The chunk of this tag has 30 bytes; the file has no blocks on the disk."""
        path = os.path.join(self.folder.name, "large.wav")
        for left, grows in ((5000, BLOCK), (2000, 2000), (32, 32), (30, 30), (28, None), (-2000, None)):
            with self.subTest(left):
                size = 0xFFFFFFFE - left
                head = struct.pack("<4sI4s4sIHHIIHH4sI", b"RIFF", (size - 8) & 0xFFFFFFFF, b"WAVE", b"fmt ", 16, 1, 2,
                                   44100, 176400, 4, 16, b"data", (size - 44) & 0xFFFFFFFF)
                write(path, head)
                os.truncate(path, size)
                if grows is None:
                    with self.assertRaisesRegex(RuntimeError, "4 GiB"):
                        edit(path, "TITLE=T")
                else:
                    edit(path, "TITLE=T")
                    self.check_riff_size(path)
                    self.assertEqual([str(text) for text in wave.WAVE(path)["TIT2"].text], ["T"])
                    edit(path, "TITLE=U")
                    self.check_riff_size(path)
                self.assertEqual(os.path.getsize(path), size + (grows or 0))
                os.remove(path)

    def check_riff_size(self, path):
        with open(path, "rb") as file:
            self.assertEqual(struct.unpack("<4xI", file.read(8))[0], os.path.getsize(path) - 8)


def atom(name, body):
    return struct.pack(">I", len(body) + 8) + name + body


class Mp4(TagTestCase):
    @staticmethod
    def rebuild(path, change_moov):
        """Puts other content into "moov", which stands at the end of the file."""
        data = content(path)
        position = 0
        for name, body in atoms(data):
            if name == b"moov":
                write(path, data[:position] + atom(b"moov", change_moov(dict(atoms(body)), body)))
                return
            position += len(body) + 8

    @staticmethod
    def meta(path):
        moov = dict(atoms(content(path)))[b"moov"]
        return list(atoms(dict(atoms(dict(atoms(moov))[b"udta"]))[b"meta"][4:]))

    def test_free_atoms_on_both_sides(self):
        path = self.sample("m4a")
        file = mp4.MP4(path)
        file["\xa9nam"], file["\xa9ART"] = "Old", "A"
        file.save(padding=lambda info: 0)

        def surround(parts, body):
            meta = dict(atoms(parts[b"udta"]))[b"meta"]
            lists = dict(atoms(meta[4:]))
            new = atom(b"meta", meta[:4] + atom(b"hdlr", lists[b"hdlr"]) + atom(b"free", b"f" * 12)
                       + atom(b"free", b"") + atom(b"ilst", lists[b"ilst"]) + atom(b"free", b"f" * 30)
                       + atom(b"free", b"f" * 30) + atom(b"mine", b"kept"))
            return body[:body.index(parts[b"udta"]) - 8] + atom(b"udta", new)

        self.rebuild(path, surround)
        size = os.path.getsize(path)
        self.check_edit(path, ["TITLE=" + "x" * 60], ["mp4/\xa9nam"])
        self.assertEqual(os.path.getsize(path), size)
        self.assertEqual([name for name, _ in self.meta(path)], [b"hdlr", b"ilst", b"free", b"mine"])
        self.check_edit(path, ["TITLE=" + "x" * 200], ["mp4/\xa9nam"])
        self.assertEqual(os.path.getsize(path), size + BLOCK)
        self.assertEqual([name for name, _ in self.meta(path)], [b"hdlr", b"ilst", b"free", b"mine"])
        self.check_edit(path, ["TITLE=New"], ["mp4/\xa9nam"])
        self.assertNotIn(b"xxxx", content(path))

    def test_first_tag(self):
        for has_container in (False, True):
            with self.subTest(has_container):
                path = self.sample("m4a")
                self.rebuild(path, lambda parts, body: body.replace(
                    atom(b"udta", parts[b"udta"]), atom(b"udta", atom(b"abcd", b"kept")) if has_container else b""))
                size, sound = os.path.getsize(path), audio(path)
                edit(path, "TITLE=T")
                self.assertEqual((os.path.getsize(path), audio(path)), (size + BLOCK, sound))
                self.assertEqual(mp4.MP4(path)["\xa9nam"], ["T"])
                self.assertEqual(b"kept" in content(path), has_container)

    def test_audio_behind_the_tag(self):
        path = self.sample("m4a")
        fast = os.path.join(self.folder.name, "fast.m4a")
        subprocess.run(["ffmpeg", "-hide_banner", "-loglevel", "error", "-i", path, "-c", "copy", "-movflags",
                        "+faststart", fast], check=True)
        self.assertLess(content(fast).index(b"moov"), content(fast).index(b"mdat"))
        for title in ("T", "x" * 5000, "T" * 3):
            size = os.path.getsize(fast)
            self.check_edit(fast, ["TITLE=" + title], ["mp4/\xa9nam"])
            self.assertEqual((os.path.getsize(fast) - size) % BLOCK, 0)


    def test_padding_ends_where_offsets_do(self):
        """An offset of 32 bits moves with the audio. It is only a number here: there is no audio at that place."""
        path = self.sample("m4a")
        fast = os.path.join(self.folder.name, "fast.m4a")
        subprocess.run(["ffmpeg", "-hide_banner", "-loglevel", "error", "-i", path, "-c", "copy", "-movflags",
                        "+faststart", fast], check=True)
        for edited in (False, True):  # with little room and with much
            with self.subTest(edited):
                if edited:
                    edit(fast, "TITLE=T")
                self.check_last_offset(fast)

    def check_last_offset(self, fast):
        data = content(fast)
        table = data.index(b"stco") + 4
        self.assertEqual(data[table:table + 8], b"\0\0\0\0\0\0\0\1")

        def growth(left):
            write(fast, data[:table + 8] + struct.pack(">I", 0xFFFFFFFF - left) + data[table + 12:])
            edit(fast, "TITLE=" + "x" * 8000)
            grown = os.path.getsize(fast) - len(data)
            self.assertEqual(struct.unpack(">I", content(fast)[table + 8:table + 12])[0], 0xFFFFFFFF - left + grown)
            self.assertEqual(mp4.MP4(fast)["\xa9nam"], ["x" * 8000])
            return grown

        whole = growth(100_000)
        self.assertEqual(whole % BLOCK, 0)
        self.assertEqual(growth(whole), whole)
        self.assertLessEqual(growth(whole - 700), whole - 700)
        with self.assertRaisesRegex(RuntimeError, "32-bit"):
            growth(100)
        self.assertEqual(os.path.getsize(fast), len(data))
        write(fast, data)


class Ogg(TagTestCase):
    @staticmethod
    def pages(path):
        result = []
        with open(path, "rb") as file:
            while True:
                try:
                    result.append(ogg.OggPage(file))
                except EOFError:
                    return result

    def test_only_the_page_of_the_comment_changes(self):
        for extension in ("ogg", "opus", "spx"):
            with self.subTest(extension):
                path = self.sample(extension)
                edit(path, "TITLE=" + "x" * 5000, "ARTIST=A")
                before = self.pages(path)
                edit(path, "TITLE=New", "ALBUM=B")
                after = self.pages(path)
                self.assertEqual([i for i in range(len(before)) if before[i].write() != after[i].write()], [1])
                self.assertEqual(before[1].packets[1:], after[1].packets[1:])
                self.assertEqual(len(before[1].packets[0]), len(after[1].packets[0]))

    # What stands behind the comments, and whether it is padding.
    RESTS = [("ogg", b"\1", True), ("ogg", b"\1" + bytes(9), True), ("ogg", b"\1\0keep", False),
             ("opus", b"", True), ("opus", bytes(50), True), ("opus", b"\1keep\0", False), ("opus", b"\2x", False),
             ("spx", b"", True), ("spx", b"keep", False)]

    def test_bytes_behind_the_comments(self):
        for extension, rest, is_padding in self.RESTS:
            with self.subTest((extension, rest)):
                path = self.sample(extension)
                edit(path, "TITLE=T")
                pages = self.pages(path)
                packets = list(pages[1].packets)
                mark = b"\1" if extension == "ogg" else b""
                packets[0] = packets[0].rstrip(b"\0").removesuffix(mark) + rest
                with open(path, "r+b") as file:
                    ogg.OggPage.replace(file, [pages[1]], ogg.OggPage.from_packets(packets, 1))
                edit(path, "TITLE=" + "x" * 100)
                packet = self.pages(path)[1].packets[0]
                behind = packet[packet.index(b"x" * 100) + 100:]
                if is_padding:
                    self.assertEqual((behind.rstrip(b"\0"), len(behind) > 1024), (mark, True))
                else:
                    self.assertEqual(behind, rest)


class Id3v2(TagTestCase):
    def test_padding_of_others_is_kept(self):
        path = self.sample("mp3")
        tags = ID3()
        tags.add(id3.TIT2(encoding=3, text="x" * 100_000))
        tags.save(path, padding=lambda info: 77)
        size = os.path.getsize(path)
        self.check_edit(path, ["TITLE=T"], ["id3/TIT2"])
        self.assertEqual(os.path.getsize(path), size)


for extension_name in FORMATS:
    setattr(Padding, "test_" + extension_name,
            lambda self, extension=extension_name: self.check_format(extension))
for extension_name in HEADERS:
    setattr(Padding, "test_last_bytes_" + extension_name,
            lambda self, extension=extension_name: self.check_last_bytes(extension))


if __name__ == "__main__":
    unittest.main()
