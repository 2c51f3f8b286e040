"""Pages of Ogg: those of the comment are laid out anew, those of other streams and of the audio are kept."""

import os
import subprocess
import unittest

from mutagen import ogg

from tag_samples import TagTestCase, audio, edit, fields


def pages(path):
    result = []
    with open(path, "rb") as file:
        while True:
            try:
                result.append(ogg.OggPage(file))
            except EOFError:
                return result


class OggPages(TagTestCase):
    def check_pages(self, path):
        """Checksums are right, and each stream's pages are numbered without a gap."""
        with open(path, "rb") as file:
            data = file.read()
        numbers, written = {}, b""
        for page in pages(path):
            if page.first:
                numbers[page.serial] = 0
            self.assertEqual(page.sequence, numbers[page.serial])
            numbers[page.serial] += 1
            written += page.write()
        self.assertEqual(written, data)

    def test_growth_and_shrinking(self):
        for extension in ("ogg", "opus", "spx", "oga"):
            with self.subTest(extension):
                path = self.sample(extension)
                sound = audio(path)
                for size in (20_000, 100_000, 10):
                    wanted = {"TITLE": ["x" * size], "LYRICS": ["y" * size]}
                    edit(path, *(name + "=" + values[0] for name, values in wanted.items()))
                    self.check_pages(path)
                    self.assertEqual((fields(path), audio(path)), (wanted, sound))

    def test_video_beside_the_audio(self):
        path = os.path.join(self.folder.name, "video.ogg")
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc=size=64x64:duration=1", "-f", "lavfi", "-i",
                        "sine=duration=1", "-c:v", "libtheora", "-c:a", "libvorbis", path], check=True)
        others = [page.write() for page in pages(path) if page.serial != self.audio_serial(path)]
        self.assertTrue(others)
        sound = audio(path)
        edit(path, "TITLE=" + "x" * 100_000)
        self.check_pages(path)
        self.assertEqual([page.write() for page in pages(path) if page.serial != self.audio_serial(path)], others)
        self.assertEqual((fields(path)["TITLE"], audio(path)), (["x" * 100_000], sound))

    def test_chained_files(self):
        first, path = self.sample("opus"), self.sample("ogg")
        with open(first, "rb") as file:
            second = file.read()
        with open(path, "ab") as file:
            file.write(second)
        edit(path, "TITLE=" + "x" * 100_000)
        self.check_pages(path)
        with open(path, "rb") as file:
            self.assertTrue(file.read().endswith(second))

    # Where on the comment's page, what stands there, and what is said.
    DAMAGES = [(4, b"\1", "version"), (26, b"\xff", "longer than the file|should begin"), (5, b"\1", "no beginning"),
               (None, b"\xff\xff\xff\x7f", ".")]  # the length of the vendor's name

    def test_damaged_pages(self):
        path = self.sample("ogg")
        with open(path, "rb") as file:
            data = file.read()
        start = data.index(b"OggS", 4)
        vendor = data.index(b"\3vorbis") + 7 - start
        for at, content, reason in self.DAMAGES:
            at = vendor if at is None else at
            with self.subTest(at), open(path, "wb") as file:
                file.write(data[:start + at] + content + data[start + at + len(content):])
                file.flush()
                with self.assertRaisesRegex(RuntimeError, reason):
                    edit(path, "TITLE=x")

    @staticmethod
    def audio_serial(path):
        return next(page.serial for page in pages(path) if page.packets[0].startswith(b"\1vorbis"))


if __name__ == "__main__":
    unittest.main()
