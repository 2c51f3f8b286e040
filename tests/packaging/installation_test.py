"""Where things are after an installation, and in the packages."""

import os
import shutil
import subprocess

from installed import BUILD, InstalledCase, files_in, install
from support import ALBUM, summary

TERMINAL = {
    "bin/quorvex",
    "share/bash-completion/completions/quorvex",
    "share/doc/quorvex/LICENSE",
    "share/doc/quorvex/examples/first-steps.qvx",
    "share/doc/quorvex/run-journal.md",
    "share/doc/quorvex/script-format.md",
    "share/doc/quorvex/script-text.md",
    "share/doc/quorvex/title-formatting.md",
    "share/man/man1/quorvex.1",
    "share/zsh/site-functions/_quorvex",
}
DESKTOP = {
    "bin/vantaro",
    "lib/vantaro/components/vnt_quorvex.dll",
    "share/applications/org.vantaro.Vantaro.desktop",
    "share/bash-completion/completions/vantaro",
    "share/doc/vantaro/help/1.0/Quorvex/5EC79881-4BB0-44DB-8825-50A57E3621DE/Main",
    "share/icons/hicolor/scalable/apps/org.vantaro.Vantaro.svg",
    "share/man/man1/vantaro.1",
    "share/metainfo/org.vantaro.Vantaro.metainfo.xml",
}


class Installation(InstalledCase):
    def album(self):
        return shutil.copytree(ALBUM, self.folder / "album")

    def test_everything_is_in_its_place(self):
        self.assertEqual(files_in(self.prefix), TERMINAL | DESKTOP)

    def test_command_for_terminals_alone(self):
        place = self.folder / "terminal"
        install(place, "--component", "quorvex")
        self.assertEqual(files_in(place), TERMINAL)
        self.assertIn("Set value...", self.run_program(place / "bin/quorvex", "kinds").stdout)

    def test_run_and_undo(self):
        album = self.album()
        script = self.share / "doc/quorvex/examples/first-steps.qvx"
        before = {path: path.read_bytes() for path in album.iterdir()}
        # A file of the album has a 2.3 tag, and a field of it gets two values.
        version, name, counts = self.quorvex("run", script, album).splitlines()
        self.assertEqual((version, counts + "\n"), ("ID3v2.3 became ID3v2.4 in 1 file:", summary(written=10)))
        self.assertTrue(name.endswith(".mp3"), name)
        self.assertNotEqual({path: path.read_bytes() for path in album.iterdir()}, before)
        self.assertEqual(self.quorvex("undo").splitlines()[1:], ["Run 1: 10 files: 10 put back, 0 failed"])
        self.assertEqual({path: path.read_bytes() for path in album.iterdir()}, before)

    def test_host_finds_its_component(self):
        outcome = self.run_program(self.prefix / "bin/vantaro", "--list-menu")
        self.assertEqual((outcome.status, outcome.stderr), (0, ""))
        self.assert_line(outcome.stdout, "Tagging/Manage scripts")


class DebianPackages(InstalledCase):
    """The packages have the same files as an installation, but for what Debian wants otherwise."""

    def test_packages(self):
        for tool in ("dpkg-deb", "dpkg-shlibdeps", "file"):
            if shutil.which(tool) is None:
                self.skipTest(f"{tool} is not installed")
        subprocess.run([os.environ["CPACK"], "-G", "DEB", "--config", f"{BUILD}/CPackConfig.cmake", "-B", self.folder],
                       check=True, capture_output=True, cwd=self.folder)
        renamed = {
            "share/zsh/site-functions/_quorvex": "share/zsh/vendor-completions/_quorvex",
            "share/man/man1/quorvex.1": "share/man/man1/quorvex.1.gz",
            "share/man/man1/vantaro.1": "share/man/man1/vantaro.1.gz",
        }
        needs = {}
        for name, files in (("quorvex", TERMINAL), ("vantaro", DESKTOP)):
            (package,) = self.folder.glob(f"{name}_*.deb")
            self.tool("dpkg-deb", "-x", package, self.folder / name)
            own = {f"share/doc/{name}/copyright", f"share/doc/{name}/changelog.gz"}
            expected = {renamed.get(file, file) for file in files - {"share/doc/quorvex/LICENSE"}} | own
            self.assertEqual(files_in(self.folder / name), {f"usr/{file}" for file in expected})
            needs[name] = self.tool("dpkg-deb", "-f", package, "Depends")
        # Servers have no use for windows.
        self.assertNotRegex(needs["quorvex"], "libqt6(gui|widgets)")
        self.assertIn("libqt6core6", needs["quorvex"])
        self.assertIn("quorvex (= ", needs["vantaro"])
        outcome = self.run_program(self.folder / "vantaro/usr/bin/vantaro", "--list-menu")
        self.assert_line(outcome.stdout, "Tagging/Manage scripts")
