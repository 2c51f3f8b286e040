"""Components and where they are found: a folder of one's own, and an installation."""

import os
import shutil
import subprocess

from support import COMPONENT, ProgramCase, read_tags, set_value


class Components(ProgramCase):
    def setUp(self):
        super().setUp()
        self.components = self.folder / "components"
        self.components.mkdir()

    def edit(self):
        song = self.copy("06", "a.mp3")
        outcome = self.run_program("vantaro", "--components", self.components, "/tag:title=x", song)
        return outcome, read_tags(song)["TITLE"]

    def test_broken_one_is_named_and_left_out(self):
        contents = {"broken.dll": b"This is no library. " * 50, "empty.dll": b""}
        shutil.copy(COMPONENT, self.components)
        for name, content in contents.items():
            (self.components / name).write_bytes(content)
        (self.components / "folder.dll").mkdir()
        (self.components / "read me.txt").write_text("no component")
        outcome, title = self.edit()
        self.assertEqual((outcome.status, title), (0, ["x"]))
        for name in (*contents, "folder.dll"):
            self.assert_line(outcome.stderr, "Could not load component", self.components / name)
        self.assertNotIn("read me", outcome.stderr)
        kinds = self.run_program("quorvex", "--components", self.components, "kinds")
        self.assertEqual(kinds.status, 0)
        self.assert_line(kinds.stderr, self.components / "broken.dll")
        self.assertEqual(kinds.stdout.count("Set value..."), 1)

    def test_one_that_was_copied_in_part(self):
        shutil.copy(COMPONENT, self.components)
        (self.components / "cut.dll").write_bytes(COMPONENT.read_bytes()[:5000])
        outcome, title = self.edit()
        self.assertEqual((outcome.status, title), (0, ["x"]))
        self.assert_line(outcome.stderr, "Could not load component", "cut.dll")

    def test_no_component(self):
        for folder in (self.components, self.folder / "missing"):
            self.components = folder
            outcome, title = self.edit()
            self.assertEqual((outcome.status, title), (2, ["Lantern Room"]))
            self.assert_line(outcome.stderr, "Nothing to do")
        self.assertFalse(self.stored.exists())

    def test_component_under_another_name(self):
        shutil.copy(COMPONENT, self.components / "other.dll")
        for self.components in (self.components, "components", "components/"):
            self.assertEqual(self.edit()[0].stderr, f"{self.folder}/components/other.dll: this component is not "
                                                    "installed under the name that it should have.\n")


class Installation(ProgramCase):
    def test_installed_programs(self):
        place = self.folder / "place"
        subprocess.run([os.environ["CMAKE"], "--install", os.environ["BUILD_FOLDER"], "--prefix", place],
                       check=True, capture_output=True)
        self.assertTrue((place / "lib/vantaro/components/vnt_quorvex.dll").is_file())
        (self.folder / "link").symlink_to(place / "bin/vantaro")
        song = self.copy("06", "a.mp3")
        for program in (place / "bin/vantaro", self.folder / "link"):
            outcome = self.run_program(program, f"/tag:title={program.name}", song)
            self.assertEqual((outcome.status, outcome.stderr), (0, ""))
            self.assertEqual(read_tags(song)["TITLE"], [program.name])
        kinds = self.run_program(place / "bin/quorvex", "kinds")
        self.assertEqual((kinds.status, kinds.stderr), (0, ""))
        self.assert_line(kinds.stdout, "Set value...", "{C3DCFE2F-16F4-48B9-B0C4-961470019784}")
        script = self.script(set_value("TITLE", "by script"))
        self.assertEqual(self.run_program(place / "bin/quorvex", "run", script, song).status, 0)
        self.assertEqual(read_tags(song)["TITLE"], ["by script"])
