"""Damaged files of every format neither crash the library nor come out of it as something that is no file."""

import os
import resource
import shutil
import subprocess
import unittest

from tag_samples import FORMATS, PROGRAMS, TagTestCase, edit

# Most damage goes to the ends of a file. At this end padding would take it, behind the tag.
TAG_AT_THE_END = ("m4a", "wav", "aiff", "rf64", "dff", "dsf", "mka", "webm")


def fill_padding(path):
    """Makes the first field as long as it can be without the file becoming longer."""
    size, length = os.path.getsize(path), 1
    copy = path + ".copy." + path.rpartition(".")[2]
    shutil.copy(path, copy)
    while os.path.getsize(copy) == size:
        shutil.copy(copy, path)
        length += 40
        edit(copy, "ALBUM=" + "x" * length)


class Hostile(TagTestCase):
    def check_format(self, extension):
        path = self.sample(extension)
        edit(path, "ALBUM=x", "TITLE=Title", "ARTIST=A", "COMMENT=text", "GENRE=Rock", "TRACKNUMBER=3/12", "LYRICS=la",
             "DATE=2001-02-03", "PRODUCER=P", "MY FIELD=x")
        if extension in TAG_AT_THE_END:
            fill_padding(path)
        result = subprocess.run([os.path.join(PROGRAMS, "hostile_bytes"), "300", path],
                                capture_output=True, timeout=140)
        self.assertEqual(result.returncode, 0, result.stderr.decode(errors="replace")[-4000:])
        # In KiB, and far below what the sizes in damaged headers name.
        self.assertLess(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss, 1 << 20)


for extension_name in FORMATS:
    setattr(Hostile, "test_" + extension_name, lambda self, extension=extension_name: self.check_format(extension))


if __name__ == "__main__":
    unittest.main()
