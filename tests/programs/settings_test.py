"""What the programs keep from one run to the next: the file of the component's variables, byte for byte."""

import struct
from unittest import mock

from support import ProgramCase, guid, read_tags, script_bytes, set_value

SAVED_SCRIPTS = "{3AECC5FD-82C9-488B-8181-0875A387FF3E}"
NOWHERE = -2**31
INITIAL = [
    ("{0E2E173C-E752-46AB-809B-2080A838547D}", b"artist;title;album;tracknumber;genre;disc;date"),
    ("{37051D2A-B0D1-4CA4-9EBF-EA7E75EF004B}", b"%tracknumber%. %title%"),
    ("{8497DA86-68A5-47C0-9A46-9B145498776D}", b"%tracknumber%. %artist% - %title%"),
    ("{CAEF3051-63BA-44E0-9BEF-5CE834C3F280}", b"%artist% - %title%"),
    ("{CBE217C3-9292-4E33-9641-44166011C433}", b""),
    ("{10BFF836-94B2-43F0-8915-795FEE2FC2FC}", b""),
    ("{D9E9BCF9-3ECB-4CB2-9BF8-D4BCF7166EDE}",
     b"ARTIST\nTITLE\nALBUM\nGENRE\nTRACKNUMBER\nCOMPOSER\nDATE\nCOMMENT\nPERFORMER"),
    ("{FFC41DB0-9FA9-4ACD-B4E5-EDBA212B943E}", b""),
    ("{D7969AFC-98EC-4EF2-9771-A4655E05F4A1}", struct.pack("<6i", -1, -1, NOWHERE, NOWHERE, 0, 0)),
    (SAVED_SCRIPTS, struct.pack("<I", 0)),
    ("{EB68F415-9F69-4FF0-8642-C4B81024A911}", struct.pack("<i", 0)),
    ("{3DBB31E7-F054-44D1-B3C8-F53DF2814987}", struct.pack("<Q", 100)),
]
FOREIGN = ("{11111111-2222-3333-4444-555555555555}", b"of a newer version")


def parse(content):
    records = []
    while len(content) >= 16:
        (size,) = struct.unpack_from("<I", content, 16)
        assert len(content) >= 20 + size, "a record is longer than the file"
        records.append((content[:16], content[20:20 + size]))
        content = content[20 + size:]
    return records


def record(variable, data):
    return guid(variable) + struct.pack("<I", len(data)) + data


def library(*scripts):
    return record(SAVED_SCRIPTS, struct.pack("<I", len(scripts)) + b"".join(scripts))


class Settings(ProgramCase):
    def edit(self):
        outcome = self.run_program("vantaro", "/tag:title=x", self.copy("06", "a.mp3"))
        self.assertEqual(outcome.status, 0)
        self.assertEqual(read_tags(self.folder / "a.mp3")["TITLE"], ["x"])
        return outcome

    def store(self, content):
        self.stored.parent.mkdir(parents=True, exist_ok=True)
        self.stored.write_bytes(content)

    def files(self):
        return {path: (path.read_bytes(), path.stat().st_mtime_ns, path.stat().st_ino)
                for path in self.stored.parent.glob("*")}

    def test_initial_values(self):
        self.edit()
        content = self.stored.read_bytes()
        self.assertEqual(parse(content), [(guid(variable), data) for variable, data in INITIAL])
        self.assertEqual(len(content), sum(20 + len(data) for _, data in INITIAL))
        with self.untouched(self.stored):
            self.edit()

    def test_keeps_what_it_finds(self):
        changed = list((dict(INITIAL) | {"{CAEF3051-63BA-44E0-9BEF-5CE834C3F280}": b"%title%"}).items())
        self.store(b"".join(record(*entry) for entry in [FOREIGN, *changed[::-1]]))
        self.edit()
        kept = parse(self.stored.read_bytes())
        self.assertCountEqual(kept, [(guid(variable), data) for variable, data in [*changed, FOREIGN]])

    def test_damaged_file_is_set_aside(self):
        whole = b"".join(record(*entry) for entry in INITIAL)
        cases = {
            "truncated record": whole[:-3],
            "truncated size": whole[:-10],
            "endless record": whole + guid(FOREIGN[0]) + b"\xff\xff\xff\xff",
            "library of scripts that are not there": record(SAVED_SCRIPTS, struct.pack("<I", 9)),
            "short number": record(INITIAL[-1][0], b"\1"),
            "no records at all": b"[settings]\ntitle = something else\n",
        }
        damaged_ones = []
        for name, damaged in cases.items():
            with self.subTest(name):
                self.store(damaged)
                damaged_ones.append(damaged)
                outcome = self.edit()
                self.assert_line(outcome.stderr, self.stored, "is kept as")
                kept_as = outcome.stderr.split("is kept as ")[1].rstrip("\n")
                with open(kept_as, "rb") as file:
                    self.assertEqual(file.read(), damaged)
                self.assertEqual(len(parse(self.stored.read_bytes())), len(INITIAL))
                self.assertEqual(self.edit().stderr, "")
        kept = [content for content, *_ in self.files().values()]
        for damaged in damaged_ones:
            self.assertIn(damaged, kept, "an earlier one was overwritten")

    def test_reading_leaves_the_folder_as_it_is(self):
        song = self.copy("06", "a.mp3")
        verbs = (["kinds"], ["kinds", "--json"], ["tags", song])
        for verb in verbs:
            self.assertEqual(self.run_program("quorvex", *verb).status, 0)
        self.assertFalse(self.stored.parent.parent.exists())
        for content in (b"".join(record(*entry) for entry in INITIAL[3:]), record(*FOREIGN)):
            self.store(content)
            before = self.files()
            for verb in verbs:
                outcome = self.run_program("quorvex", *verb)
                self.assertEqual((outcome.status, outcome.stderr), (0, ""))
                self.assertEqual(self.files(), before)

    def test_where_settings_lie(self):
        song = self.copy("06", "a.mp3")
        name = self.stored.name
        cases = [
            (["--config-dir", self.folder / "own"], "home", "unused", f"own/{name}"),
            ([], "home", "", f"home/.config/vantaro/{name}"),
            ([], "house", "relative", f"house/.config/vantaro/{name}"),
        ]
        for options, home, config, place in cases:
            with mock.patch.dict(self.environment, HOME=str(self.folder / home), XDG_CONFIG_HOME=config):
                self.assertEqual(self.run_program("vantaro", *options, "/tag:title=x", song).status, 0)
            self.assertTrue((self.folder / place).is_file(), place)
        self.assertFalse(self.stored.exists())

    def test_saved_scripts_by_name(self):
        song = self.copy("06", "a.mp3")
        self.store(library(script_bytes(set_value("TITLE", "first"), name="Tidy Up"),
                           script_bytes(set_value("TITLE", "second"), name="Café"),
                           script_bytes(set_value("TITLE", "third"), name="TIDY UP")))
        names = {"tidy up": "first", "TIDY up": "first", "CAFÉ": "second", "café": "second"}
        for name, title in names.items():
            with self.subTest(name):
                self.run_program("vantaro", "/tag:title=none", song)
                outcome = self.run_program("quorvex", "run", name, song)
                self.assertEqual((outcome.status, outcome.stderr), (0, ""))
                self.assertEqual(read_tags(song)["TITLE"], [title])
        with self.untouched(song):
            self.assertEqual(self.run_program("quorvex", "run", "Tidy", song).status, 2)


class SharedLibrary(ProgramCase):
    """Saved scripts of several processes."""

    def names(self):
        return self.run_program("quorvex", "scripts", "list").stdout.splitlines()

    def test_many_at_once(self):
        """Each is there in the end, whoever saved it when."""
        script = self.script(set_value("TITLE", "x"))
        names = []
        for turn in range(12):
            batch = [f"{turn}.{n}" for n in range(4)]
            processes = [self.start("quorvex", "scripts", "import", "--name", name, script) for name in batch]
            gone = names[-1] if names else None
            if gone:
                processes.append(self.start("quorvex", "scripts", "delete", gone))
                names.remove(gone)
            names += batch
            for process in processes:
                self.assertEqual(self.outcome(process).status, 0)
        self.assertCountEqual(self.names(), names)
        self.assertEqual([path.name for path in self.stored.parent.glob("*.conflict*")], [])

    def test_a_variable_that_stands_twice(self):
        script = self.script(set_value("TITLE", "x"))
        self.run_program("quorvex", "scripts", "import", "--name", "one", script)
        twice = self.stored.read_bytes() + library(script_bytes(set_value("TITLE", "y"), name="two"))
        self.stored.write_bytes(twice)
        self.assertEqual(self.names(), ["two"])
        outcome = self.run_program("quorvex", "scripts", "import", "--name", "three", script)
        self.assertEqual(outcome.status, 0)
        self.assertEqual(self.names(), ["two", "three"])
        (kept,) = self.stored.parent.glob("*.conflict-*")
        self.assert_line(outcome.stderr, "twice", kept)
        self.assertEqual(kept.read_bytes(), twice)
