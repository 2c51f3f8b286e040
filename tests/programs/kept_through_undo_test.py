"""What a run and its undo leave as it was besides the bytes."""

import os

from support import LONG_AGO, ProgramCase, set_value

GROW = [set_value("LYRICS", "la " * 40000)]


class KeptThroughUndo(ProgramCase):
    def do(self, *arguments):
        outcome = self.run_program("quorvex", *arguments)
        self.assertEqual((outcome.status, outcome.stderr), (0, ""))

    def state(self, path):
        found = path.stat()
        return found.st_uid, found.st_gid, found.st_mode, found.st_nlink, os.getxattr(path, "user.note")

    def test_owner_mode_and_attributes(self):
        files = self.copy_five()
        for path in files:
            os.setxattr(path, "user.note", b"kept")
            if os.getuid() == 0:
                os.chown(path, 1234, 4321)
            path.chmod(0o604)
        states = [self.state(path) for path in files]
        old = [path.read_bytes() for path in files]
        for arguments in (["run", self.script(*GROW), *files], ["undo"]):
            with self.subTest(arguments[0]):
                self.do(*arguments)
                self.assertEqual([self.state(path) for path in files], states)
        self.assertEqual([path.read_bytes() for path in files], old)

    def test_names_of_one_file(self):
        """It stays one file, whichever of them it was changed by."""
        files = self.copy_five()
        names = [path.with_stem(path.stem + " too") for path in files]
        for path, name in zip(files, names, strict=True):
            os.link(path, name)
        inodes = [path.stat().st_ino for path in files]
        old = [path.read_bytes() for path in files]
        for arguments in (["run", self.script(*GROW), *files], ["undo", "--times"]):
            with self.subTest(arguments[0]):
                self.do(*arguments)
                for group in (files, names):
                    self.assertEqual([path.stat().st_ino for path in group], inodes)
        self.assertEqual([path.read_bytes() for path in names], old)
        self.assertEqual({path.stat().st_mtime_ns for path in names}, {LONG_AGO})
