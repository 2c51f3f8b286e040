"""Mistakes in scripts: told before anything is done where the script is text, and while it is run otherwise."""

import json

from support import ADD_VALUE, SET_VALUE, ProgramCase, read_tags, set_value

FORMAT = "Format value from other fields"
NAME = "Please enter a valid field name. Allowed: ASCII characters without = % < >."
# Each action, and what is said of it.
MISTAKES = [
    ({"kind": FORMAT, "field": "GENRE", "pattern": "$upper(%artist%"},
     f'({FORMAT}): "pattern": The parenthesis of $upper is not closed (character 1)'),
    ({"kind": FORMAT, "field": "GENRE", "pattern": "é $foo(%album%)"},
     f'({FORMAT}): "pattern": There is no function $foo (character 3)'),
    ({"kind": FORMAT, "field": "GENRE", "pattern": "$if(%a%,$left(x),$foo())"},
     f'({FORMAT}): "pattern": $left takes 2 arguments, not 1 (character 9)'),
    ({"kind": FORMAT, "field": "GENRE"}, f'({FORMAT}): "pattern" is missing; this kind needs "field", "pattern"'),
    ({"kind": "Auto track number", "pattern": "[%album%"},
     '(Auto track number): "pattern": '),
    ({"kind": "Guess values from other fields", "pattern": "%a%", "source": "$foo()"},
     '(Guess values from other fields): "source": There is no function $foo (character 1)'),
    ({"kind": "Guess values from file names", "pattern": ""},
     '(Guess values from file names): "pattern": Please enter a pattern. Allowed: a text that is not empty.'),
    ({"kind": "Set value", "value": "x"}, '(Set value): "field" is missing; this kind needs "field", "value"'),
    ({"kind": "Set value", "field": "GENRE"}, '(Set value): "value" is missing; this kind needs "field", "value"'),
    ({"kind": "Set value", "field": "GENRE=", "value": "x"}, f'(Set value): "field": {NAME}'),
    ({"kind": "Set value", "field": "", "value": "x"}, f'(Set value): "field": {NAME}'),
    ({"kind": "Set value", "parameters": "CAFÉ\nx"}, f'(Set value): "field": {NAME}'),
    ({"kind": "Set value", "field": "GENRE", "value": 5}, '(Set value): "value" is no text'),
    ({"kind": "Set value", "field": "GENRE", "vaule": "x"},
     '(Set value): this kind has no setting "vaule"; it has "field", "value"'),
    ({"kind": "Split field by separator", "field": "ARTIST", "separator": ""},
     '(Split field by separator): "separator": Please enter a separator string. '),
    ({"kind": "Remove values", "field": "GENRE", "values": "x", "case-sensitive": "no"},
     '(Remove values): "case-sensitive" is neither true nor false'),
    ({"kind": "Set valeu", "field": "GENRE", "value": "x"},
     ': there is no kind of action "Set valeu"; did you mean "Set value"?'),
    ({"kind": "Jump"}, ': there is no kind of action "Jump"; "quorvex kinds" lists them'),
]


class ScriptChecks(ProgramCase):
    def test_text_forms_with_mistakes(self):
        songs = self.copy_five()
        script = self.folder / "tidy.json"
        good = {"kind": "Set value", "field": "TITLE", "value": "x"}
        verbs = ["run"], ["preview"], ["run", "--dry-run", "--json"], ["scripts", "import"]
        for mistake, said in MISTAKES:
            script.write_text(json.dumps({"actions": [good, mistake]}))
            with self.subTest(mistake), self.untouched(*songs):
                for verb in verbs:
                    outcome = self.run_program("quorvex", *verb, script, *([] if "import" in verb else songs))
                    self.assertEqual((outcome.status, outcome.stdout), (2, ""), verb)
                    place = f"Error loading quorvex script {script} (action 2 "
                    self.assertIn(place.strip() + (said if said[0] == ":" else f" {said}"), outcome.stderr)
        for verb in ["scripts", "list"], ["runs"]:
            self.assertEqual(self.run_program("quorvex", *verb).stdout, "")

    def test_other_forms_are_run_as_they_stand(self):
        warnings = f'action 1 (Set value): "field": {NAME}\n', f'action 3 (Add value): "field": {NAME}\n'
        script = self.script((SET_VALUE, "GENRE=\nx"), set_value("TITLE", "x"), (ADD_VALUE, "\nx"))
        self.assertEqual(self.run_program("quorvex", "scripts", "import", script, "--name", "Saved").stderr,
                         "".join(f"Warning: {script}: {warning}" for warning in warnings))
        for given in str(script), "saved":
            song = self.copy("06", "a.mp3")
            tags = read_tags(song)
            outcome = self.run_program("quorvex", "run", given, song)
            self.assertEqual((outcome.status, outcome.stderr),
                             (0, "".join(f"Warning: {given}: {warning}" for warning in warnings)))
            self.assertEqual(read_tags(song), tags | {"TITLE": ["x"]})

    def test_many_faults_are_counted(self):
        script = self.script(*[(SET_VALUE, "=\nx")] * 1000)
        outcome = self.run_program("quorvex", "preview", script, self.copy("06", "a.mp3"))
        lines = outcome.stderr.splitlines()
        self.assertEqual((outcome.status, len(lines)), (0, 11))
        self.assertEqual(lines[-1], f"Warning: {script}: and so in 990 more actions")

    def test_kinds_lists_what_text_forms_need(self):
        """By what the list says alone, scripts can be written that hold."""
        example = {"ASCII characters without = % < >": "GENRE", "any text": "", "a text that is not empty": "x"}
        song = self.copy("06", "a.mp3")
        kinds = self.run_program("quorvex", "kinds", "--json").objects()
        for kind in kinds:
            required = {row["name"]: example[row["allowed"]] for row in kind["settings"] if row["required"]}
            flags = {row["name"]: row["default"] for row in kind["settings"] if not row["required"]}
            self.assertEqual(flags, dict.fromkeys(flags, False))
            action = {"kind": kind["name"]} | required
            cases = [(0, action), (0, action | flags)]
            cases += [(2, {name: action[name] for name in action if name != left}) for left in required]
            for status, each in cases:
                script = self.folder / "kind.json"
                script.write_text(json.dumps({"actions": [each]}))
                outcome = self.run_program("quorvex", "preview", script, song)
                self.assertEqual(outcome.status, status, f"{each}: {outcome.stderr}")
        shown = self.run_program("quorvex", "kinds").stdout
        for kind in kinds:
            lines = [line.split()[0] for line in shown.partition(kind["guid"])[2].split("{")[0].splitlines()[1:]
                     if line.startswith("    ")]
            self.assertEqual(lines, [row["name"] for row in kind["settings"]], kind["name"])


class Imports(ProgramCase):
    def setUp(self):
        super().setUp()
        for name, value in ("a", "first"), ("b", "second"):
            (self.folder / f"{name}.json").write_text(json.dumps(
                {"name": "Inner", "actions": [{"kind": "Set value", "field": "TITLE", "value": value}]}))
        self.do("import", "a.json")

    def do(self, *arguments, status=0, **options):
        outcome = self.run_program("quorvex", "scripts", *arguments, **options)
        self.assertEqual(outcome.status, status, outcome.stderr)
        return outcome

    def saved(self):
        names = self.do("list").stdout.splitlines()
        return {name: json.loads(self.do("show", name).stdout)["actions"][0]["value"] for name in names}

    def test_names_are_those_of_the_files(self):
        self.do("import", "b.json")
        with open(self.folder / "a.json", "rb") as script:
            for unnamed in "-", "/dev/stdin":
                self.assert_line(self.do("import", unnamed, status=2, stdin=script).stderr, "--name")
            self.do("import", "-", "--name", "c", stdin=script)
        self.assertEqual(self.saved(), {"a": "first", "b": "second", "c": "first"})

    def test_a_saved_script_is_replaced_only_where_somebody_says_so(self):
        (self.folder / "sub").mkdir()
        (self.folder / "sub/A.json").write_bytes((self.folder / "b.json").read_bytes())
        stored = self.stored.read_bytes()
        for arguments in ["b.json", "--name", "A"], ["sub/A.json"]:
            outcome = self.do("import", *arguments, status=2)
            self.assert_line(outcome.stderr, 'There is a saved script "A" already; --replace replaces it.')
            for typed in "n\n", "\x04":
                outcome = self.run_on_terminal("quorvex", "scripts", "import", *arguments, typed=typed)
                self.assertEqual(outcome.status, 2)
                self.assert_line(outcome.stderr, 'There is a saved script "A". Replace it ?')
            self.assertEqual(self.stored.read_bytes(), stored)
        self.assertEqual(self.run_on_terminal("quorvex", "scripts", "import", "sub/A.json", typed="y\n").status, 0)
        self.assertEqual(self.saved(), {"A": "second"})
        self.do("import", "--replace", "a.json")
        self.assertEqual(self.saved(), {"a": "first"})
