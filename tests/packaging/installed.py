"""An installation of the present build in a folder of its own, for the tests of a class."""

import os
import re
import shutil
import subprocess
import tempfile
from pathlib import Path

from support import ProgramCase

SOURCE = Path(os.environ["SOURCE_FOLDER"])
BUILD = os.environ["BUILD_FOLDER"]


def install(place, *options):
    command = [os.environ["CMAKE"], "--install", BUILD, "--prefix", place, *options]
    subprocess.run(command, check=True, capture_output=True)


def files_in(folder):
    return {str(path.relative_to(folder)) for path in folder.rglob("*") if not path.is_dir()}


def options_in(help_text):
    return set(re.findall(r"--[a-z0-9-]+", re.sub(r"(?s)^.*?\nOptions:", "", help_text)))


def verbs_in(help_text):
    return re.findall(r"(?m)^  ([a-z]+)  ", help_text.partition("Subcommands:")[2])


class InstalledCase(ProgramCase):
    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory(prefix="installed-")
        cls.addClassCleanup(temporary.cleanup)
        cls.prefix = Path(temporary.name).resolve() / "prefix"
        install(cls.prefix)
        cls.share = cls.prefix / "share"

    def setUp(self):
        super().setUp()
        self.environment["PATH"] = f"{self.prefix}/bin:{os.environ['PATH']}"
        self.environment["XDG_DATA_DIRS"] = str(self.share)
        self.environment["LC_ALL"] = "C.UTF-8"

    def tool(self, *command, needs=None):
        """The output of another program, which must be content. Skips the test where it is missing."""
        needs = needs or command[0]
        if shutil.which(needs) is None and not Path(needs).exists():
            self.skipTest(f"{needs} is not installed")
        done = subprocess.run(command, cwd=self.folder, env=self.environment, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=120)
        self.assertEqual((done.returncode, done.stderr), (0, ""), done.stdout)
        return done.stdout

    def quorvex(self, *arguments):
        outcome = self.run_program(self.prefix / "bin/quorvex", *arguments)
        self.assertEqual((outcome.status, outcome.stderr), (0, ""))
        return outcome.stdout

    def all_verbs(self):
        """Every verb, as a list of words, with its options."""
        verbs = [[verb] for verb in verbs_in(self.quorvex("--help"))]
        verbs += [["scripts", verb] for verb in verbs_in(self.quorvex("scripts", "--help"))]
        self.assertGreater(len(verbs), 10)
        return [(verb, options_in(self.quorvex(*verb, "--help"))) for verb in verbs]
