"""Damaged files of every format neither crash the library nor come out of it as something that is no file."""

import os
import resource
import subprocess
import unittest

from tag_samples import FORMATS, PROGRAMS, TagTestCase, edit

# TagLib's reader of ASF allocates so much that a sanitizer makes it slow.
ROUNDS = {"wma": "60"}


class Hostile(TagTestCase):
    def check_format(self, extension):
        path = self.sample(extension)
        edit(path, "TITLE=Title", "ARTIST=A", "COMMENT=text", "GENRE=Rock", "TRACKNUMBER=3/12", "LYRICS=la",
             "DATE=2001-02-03", "PRODUCER=P", "MY FIELD=x")
        result = subprocess.run([os.path.join(PROGRAMS, "hostile_bytes"), ROUNDS.get(extension, "300"), path],
                                capture_output=True, timeout=140)
        self.assertEqual(result.returncode, 0, result.stderr.decode(errors="replace")[-4000:])
        # In KiB, and far below what the sizes in damaged headers name.
        self.assertLess(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss, 1 << 20)


for extension_name in FORMATS:
    setattr(Hostile, "test_" + extension_name, lambda self, extension=extension_name: self.check_format(extension))


if __name__ == "__main__":
    unittest.main()
