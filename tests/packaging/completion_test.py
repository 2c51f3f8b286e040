"""Completion in bash and zsh: what is offered at the end of a line."""

import re
import shutil
from pathlib import Path

from installed import InstalledCase, options_in, verbs_in
from support import set_value

BASH_COMPLETION = "/usr/share/bash-completion/bash_completion"
HERE = Path(__file__).parent
# Words as readline takes them apart: "=" and ":" are words of their own.
WORD = re.compile(r"""(?:"[^"]*"?|'[^']*'?|\\.|[^\s=:"'\\])+|[=:]+""")

# What stands before the cursor, and what is offered there. Beside the saved scripts "Tidy up" and "Titles" there are
# script.qvx, song.mp3, notes.txt and the folder "set".
OFFERED = {
    "quorvex r": {"run", "runs"},
    "quorvex --jobs 5 scripts e": {"export"},
    "quorvex run ": {"Tidy up", "Titles", "script.qvx", "set"},
    "quorvex run Tid": {"Tidy up"},
    "quorvex preview --yes 'Tidy u": {"Tidy up"},
    r"quorvex preview Tidy\ ": {"Tidy up"},
    "quorvex run --json 'Tidy up' ": {"song.mp3", "set"},
    "quorvex run script.qvx song.mp3 s": {"song.mp3", "set"},
    "quorvex --config-dir elsewhere run T": set(),
    "quorvex --config-dir=elsewhere run T": set(),
    "quorvex format %title% s": {"song.mp3", "set"},
    "quorvex tags so": {"song.mp3"},
    "quorvex undo ": {"1", "2"},
    "quorvex runs ": {"1", "2"},
    "quorvex run --files-from no": {"notes.txt"},
    "quorvex run --files-from notes.txt 'Tidy up' s": {"song.mp3", "set"},
    "quorvex scripts show Tit": {"Titles"},
    "quorvex scripts export Titles s": {"script.qvx", "set"},
    "quorvex scripts import s": {"script.qvx", "set"},
    "quorvex scripts import --name Tid": {"Tidy up"},
    "quorvex --components s": {"set"},
    "quorvex --code-page windows-1250": {"windows-1250"},
    "quorvex run --id3v2 ": {"as-needed", "keep", "2.3", "2.4"},
    "quorvex run --id3v2 2.4 'Tidy up' s": {"song.mp3", "set"},
    "vantaro --id3v2 k": {"keep"},
    "vantaro s": {"song.mp3", "set"},
    "vantaro --jobs=6": {"6", "60", "61", "62", "63", "64"},
    "vantaro --menu Tagging/S": {"Tagging/Scripts/Tidy up", "Tagging/Scripts/Titles"},
    "vantaro --menu Tagging/M": {"Tagging/Manage scripts"},
    "vantaro /tag:F": {"FORMAT:"},
    "vantaro /tag:": {"help", "AUTOTRACKNUMBER", "FORMAT:", "GUESS:"},
}


def split(line):
    return WORD.findall(line) + ([""] if re.search(r"(?<!\\)[ =:]$", line) else [])


def plain(offer):
    """Without the marks by which folders and quoted names are told."""
    return re.sub(r"\\(.)", r"\1", offer).removesuffix("/")


class BashCompletion(InstalledCase):
    def offered(self, line):
        words = split(line)
        text = self.tool("bash", HERE / "complete.bash", BASH_COMPLETION, line, *words, needs=BASH_COMPLETION)
        return {plain(offer) for offer in text.splitlines()}

    def test_offers(self):
        set_up(self)
        for line, offers in OFFERED.items():
            with self.subTest(line):
                self.assertEqual(self.offered(line), offers)

    def test_every_verb_and_option(self):
        check_all(self)


class ZshCompletion(InstalledCase):
    def offered(self, line):
        if shutil.which("zsh") is None:
            self.skipTest("zsh is not installed")
        result = self.folder / "offers"
        result.write_text("")
        self.environment |= {"LINE": line, "OFFERS": str(result), "FUNCTIONS": str(self.share / "zsh/site-functions"),
                             "DUMP": str(self.prefix.parent / "functions")}
        # In a session of its own zsh leaves the terminal of the tests alone.
        shown = self.run_on_terminal("setsid", "--wait", "zsh", "-f", "-i",
                                     typed=f"source '{HERE}/complete.zsh'\n\x14")
        offers = result.read_text().splitlines()
        self.assertEqual(offers.pop() if offers else "", "done", shown)
        return {plain(offer) for offer in offers if offer}

    def test_offers(self):
        set_up(self)
        for line, offers in OFFERED.items():
            with self.subTest(line):
                # zsh completes a path part by part.
                self.assertEqual({offer.removeprefix("/tag:") for offer in self.offered(line)}, offers)

    def test_every_verb_and_option(self):
        check_all(self)


def set_up(case):
    script = case.script(set_value("TITLE", "x"))
    song = case.copy("06", "place/song.mp3")
    place = song.parent
    shutil.copy(script, place)
    (place / "notes.txt").write_text("no music")
    (place / "set").mkdir()
    case.environment["PLACE"] = str(place)
    for name in ("Tidy up", "Titles"):
        case.quorvex("scripts", "import", "--name", name, script)
    case.quorvex("run", "Titles", song)
    case.quorvex("undo")


def check_all(case):
    """What the programs say they have is what is offered."""
    case.environment["PLACE"] = str(case.folder)
    for program in ("quorvex", "vantaro"):
        text = case.run_program(program, "--help").stdout
        case.assertEqual(case.offered(f"{program} --"), options_in(text))
        if verbs := verbs_in(text):
            case.assertEqual(case.offered(f"{program} "), set(verbs))
    case.assertEqual(case.offered("quorvex scripts "), set(verbs_in(case.quorvex("scripts", "--help"))))
    common = options_in(case.quorvex("--help")) - {"--version"}
    for verb, options in case.all_verbs():
        case.assertEqual(case.offered(f"quorvex {' '.join(verb)} --"), common | options)
