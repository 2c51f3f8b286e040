"""Manual pages and what desktops read: valid, and in step with the programs."""

import configparser
import re
from pathlib import Path
from xml.etree import ElementTree

from installed import SOURCE, InstalledCase, options_in

NAME = "org.vantaro.Vantaro"
MIME_NAMES = Path("/usr/share/mime/globs2")


class ManualPages(InstalledCase):
    def page(self, program):
        """The page as a reader sees it, on one line, without hyphenation."""
        file = self.share / f"man/man1/{program}.1"
        self.tool("man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", file)
        text = self.tool("man", "-E", "ascii", "-P", "cat", "--no-hyphenation", "--no-justification", "-l", file)
        return re.sub(r"\s+", " ", re.sub(r".\x08", "", text))

    def test_quorvex(self):
        page = self.page("quorvex")
        for verb, options in self.all_verbs():
            self.assertIn(f"quorvex [option ...] {' '.join(verb)}".removesuffix(" scripts"), page)
            for option in options:
                self.assertIn(option, page)

    def test_vantaro(self):
        page = self.page("vantaro")
        for option in options_in(self.run_program("vantaro", "--help").stdout):
            self.assertIn(option, page)
        summary = self.run_program("vantaro", "/tag:help").stdout
        for command in re.findall(r"(?m)^([A-Z]{2,})(?::|$)", summary):
            self.assertIn(command, page)

    def test_versions(self):
        for program in ("quorvex", "vantaro"):
            version = self.run_program(program, "--version").stdout.strip()
            heading = (self.share / f"man/man1/{program}.1").read_text().splitlines()[0]
            self.assertIn(f'"{version}"', heading)


class DesktopFiles(InstalledCase):
    def setUp(self):
        super().setUp()
        self.desktop = self.share / f"applications/{NAME}.desktop"
        self.metadata = self.share / f"metainfo/{NAME}.metainfo.xml"

    def entry(self):
        parser = configparser.ConfigParser(interpolation=None)
        parser.optionxform = str
        parser.read(self.desktop)
        return parser["Desktop Entry"]

    def test_desktop_file(self):
        self.assertEqual(self.tool("desktop-file-validate", self.desktop), "")

    def test_metadata(self):
        self.tool("appstreamcli", "validate", "--no-net", self.metadata)

    def test_names_agree(self):
        entry, metadata = self.entry(), ElementTree.parse(self.metadata)
        self.assertTrue((self.prefix / "bin" / entry["Exec"].split()[0]).is_file())
        icon = self.share / f"icons/hicolor/scalable/apps/{entry['Icon']}.svg"
        self.assertEqual(ElementTree.parse(icon).getroot().tag, "{http://www.w3.org/2000/svg}svg")
        self.assertEqual(metadata.findtext("launchable"), self.desktop.name)
        self.assertEqual(metadata.findtext("id"), NAME)

    def test_every_format_of_sound_is_offered(self):
        if not MIME_NAMES.exists():
            self.skipTest(f"{MIME_NAMES} is not installed")
        offered = set(self.entry()["MimeType"].split(";"))
        source = (SOURCE / "vantaro/tags/formats.cpp").read_text()
        extensions = " ".join(re.findall(r'\.extensions = "([^"]+)"', source)).split()
        self.assertGreater(len(extensions), 20)
        kinds = {}
        for line in MIME_NAMES.read_text().splitlines():
            if not line.startswith("#"):
                _, kind, pattern, *_ = line.split(":")
                if kind.startswith("audio/"):
                    kinds.setdefault(pattern, set()).add(kind)
        for extension in extensions:
            if known := kinds.get(f"*.{extension}"):
                self.assertTrue(known & offered, f"{extension}: {known}")
        of_rows = set(" ".join(re.findall(r'\.mime_types = "([^"]+)"', source)).split())
        self.assertEqual(of_rows - offered, set())
