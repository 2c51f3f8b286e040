"""Each kind by its edges: a script file of one or more actions on a FLAC file, before and after as mutagen sees it."""

import mutagen.flac

from support import SET_VALUE, ProgramCase, add_value, set_value

NUMBER = "{F6D34BCA-5E3D-441B-A76F-39CA11802245}"
CUE = "{AC6410DE-FE47-44FF-A5CA-29A42B5B6799}"
INPUT = "{5A2336D8-45E4-4E5A-97EF-DF28CB113BE3}"
REMOVE_VALUES = "{CB1F5EF2-7865-40E7-8DDE-D51C3721AC79}"
REMOVE_ALL = "{ADF2441C-9F27-4E39-BCE5-323AC91F9975}"
REMOVE = "{C3BDD536-670A-4AFE-9C7C-BD72BAE9AA89}"
REMOVE_MOST = "{58712BE7-4248-4AC6-9734-F3AD3D6CBA4E}"
REPLACE = "{B194C3FE-DACE-4816-A230-A09921D55674}"
GUESS_NAME = "{7D1706A9-F5D6-4307-987C-ED46FB09CF2A}"
GUESS_FIELDS = "{CCC40077-8D24-4136-87A5-639B34168336}"
SPLIT_ARTISTS = "{32485E7A-35F7-488B-92FC-726C75059CED}"
SPLIT = "{52D8A1D3-C2AE-4A28-9B37-0B711A8A24AD}"
FORMAT = "{48F67226-8A33-409F-A0DF-FFB157DF1B7E}"
COPY = "{CE928A7A-4793-4797-AEBD-60DE490E4AF1}"

# What it shows, the fields before, the actions, the fields after.
ROWS = [
    ("set replaces all values", {"ARTIST": ["a", "b", "c"]}, [set_value("ARTIST", "x")], {"ARTIST": ["x"]}),
    ("a value is not split or trimmed", {}, [set_value("MOOD", " a;b\\c, d ")], {"MOOD": [" a;b\\c, d "]}),
    ("add creates", {}, [add_value("GENRE", "x")], {"GENRE": ["x"]}),
    ("add appends, also the same", {"GENRE": ["a", "b"]}, [add_value("GENRE", "a")], {"GENRE": ["a", "b", "a"]}),
    ("names that are none do nothing", {"A": ["a"]},
     [set_value("", "x"), set_value("50%", "x"), add_value("<A>", "x"), set_value("CAFÉ", "x")], {"A": ["a"]}),
    ("a text of three lines is left out", {"A": ["a"]}, [(SET_VALUE, "A\nb\nc"), set_value("B", "b")],
     {"A": ["a"], "B": ["b"]}),
    ("remove takes every value", {"A": ["1", "2", "3"], "B": ["b"]}, [(REMOVE, "a"), (REMOVE, "C")], {"B": ["b"]}),
    ("remove all", {"A": ["1"], "B": ["b"]}, [(REMOVE_ALL, "whatever")], {}),
    ("remove most", {"ARTIST": ["a"], "TITLE": ["t"], "ALBUM": ["l"]}, [(REMOVE_MOST, "artist;Title")],
     {"ARTIST": ["a"], "TITLE": ["t"]}),
    ("kept names are not trimmed", {"ARTIST": ["a"], "TITLE": ["t"]}, [(REMOVE_MOST, "artist; title")],
     {"ARTIST": ["a"]}),
    ("kept names match whole", {"ART": ["a"], "ARTISTS": ["b"]}, [(REMOVE_MOST, "ARTIST")], {}),
    ("nothing is kept by an empty list", {"A": ["a"]}, [(REMOVE_MOST, "")], {}),
    ("values go in any case", {"ARTIST": ["A", "B", "C"]}, [(REMOVE_VALUES, "ARTIST\na;c\nn")], {"ARTIST": ["B"]}),
    ("values go by case", {"ARTIST": ["A", "B", "C"]}, [(REMOVE_VALUES, "ARTIST\na;C\nc")], {"ARTIST": ["A", "B"]}),
    ("values match whole, untrimmed", {"G": ["Rock & Roll", "B"]}, [(REMOVE_VALUES, "G\nRock; B\nn")],
     {"G": ["Rock & Roll", "B"]}),
    ("a field without values is gone", {"G": ["x", "X"]}, [(REMOVE_VALUES, "G\nx\nn")], {}),
    ("replace in any case", {"GENRE": ["Rock", "rock", "Pop"]}, [(REPLACE, "GENRE\nROCK\nRock & Roll\nn")],
     {"GENRE": ["Rock & Roll", "Rock & Roll", "Pop"]}),
    ("replace by case", {"GENRE": ["Rock", "rock", "Pop"]}, [(REPLACE, "GENRE\nrock\nx\nc")],
     {"GENRE": ["Rock", "x", "Pop"]}),
    ("a flag that is none is left out", {"G": ["a"]}, [(REPLACE, "G\na\nb\nx"), (REPLACE, "G\na\nb\ncc"),
                                                        (REPLACE, "G\na\nb\n")], {"G": ["a"]}),
    ("format sees the actions before", {"TITLE": ["t"], "ARTIST": ["a", "b"]},
     [set_value("TITLE", "new"), (FORMAT, "C\n$upper(%title%) - %artist%")],
     {"TITLE": ["new"], "ARTIST": ["a", "b"], "C": ["NEW - a, b"]}),
    ("format of nothing removes", {"C": ["x"]}, [(FORMAT, "C\n[%no such field%]")], {}),
    ("format knows the run", {}, [(FORMAT, "C\n%_quorvex_index% of %LIST_TOTAL%")], {"C": ["1 of 1"]}),
    ("copy takes all values", {"A": ["1", "2", "3"], "B": ["x"]}, [(COPY, "A\nB")],
     {"A": ["1", "2", "3"], "B": ["1", "2", "3"]}),
    ("copy of nothing removes", {"B": ["x"]}, [(COPY, "A\nB")], {}),
    ("copy onto itself keeps", {"A": ["1", "2"]}, [(COPY, "A\na")], {"A": ["1", "2"]}),
    ("split artists", {"ARTIST": ["A, B & C"]}, [(SPLIT_ARTISTS, "")], {"ARTIST": ["A", "B", "C"]}),
    ("split keeps blanks behind the last", {"A": [" x ; y "]}, [(SPLIT, "A\n;")], {"A": ["x", "y "]}),
    ("split drops empty parts", {"A": [";", " ; x;; y"]}, [(SPLIT, "A\n;")], {"A": ["x", "y"]}),
    ("split of separators only does nothing", {"A": ["; ;"]}, [(SPLIT, "A\n;")], {"A": ["; ;"]}),
    ("split by several characters", {"A": ["a / b/c"]}, [(SPLIT, "A\n / ")], {"A": ["a", "b/c"]}),
    ("guess from the name", {}, [(GUESS_NAME, "%album%|%tracknumber% - %title%")],
     {"ALBUM": ["Record"], "TRACKNUMBER": ["07"], "TITLE": ["So.ng"]}),
    ("guess from the folder", {}, [(GUESS_NAME, "%artist%/%album%/")], {"ALBUM": ["Record"], "ARTIST": ["Band"]}),
    ("white space of any length", {"S": ["Band  -   Song  "]}, [(GUESS_FIELDS, "%a% - %b%\n%s%")],
     {"S": ["Band  -   Song  "], "A": ["Band"], "B": ["Song"]}),
    ("no match gives the rest", {"S": ["Band-Song"]}, [(GUESS_FIELDS, "%a% - %b%\n%s%")],
     {"S": ["Band-Song"], "A": ["Band-Song"]}),
    ("a leading text is passed over", {"S": ["2"]}, [(GUESS_FIELDS, "CD %d%\n%s%")], {"S": ["2"], "D": ["2"]}),
    ("a nameless one discards", {"S": ["01 - Song"]}, [(GUESS_FIELDS, "%% - %t%\n%s%")],
     {"S": ["01 - Song"], "T": ["Song"]}),
    ("case counts", {"S": ["a x b"]}, [(GUESS_FIELDS, "%f%X%g%\n%s%")], {"S": ["a x b"], "F": ["a x b"]}),
    ("the later reference wins", {"S": ["1-2"]}, [(GUESS_FIELDS, "%f%-%f%\n%s%")], {"S": ["1-2"], "F": ["2"]}),
    ("input data", {}, [(INPUT, "%n%. %t%\n01. Intro\r\n02. x")], {"N": ["01"], "T": ["Intro"]}),
    ("an empty line is a line", {"A": ["a"]}, [(INPUT, "%t%\n\nx")], {"A": ["a"]}),
    ("numbers are plain", {"TRACKNUMBER": ["03"]}, [(NUMBER, "")], {"TRACKNUMBER": ["1"], "TOTALTRACKS": ["1"]}),
    ("a pattern that does not compile", {}, [(NUMBER, "$upper("), (FORMAT, "C\n$upper(")],
     {"TRACKNUMBER": ["1"], "TOTALTRACKS": ["1"], "C": ["<ERROR>"]}),
]


class Kinds(ProgramCase):
    def song(self, fields):
        path = self.copy("02", "Band/Record/07 - So.ng.flac")
        file = mutagen.flac.FLAC(path)
        file.tags.clear()
        for name, values in fields.items():
            file.tags[name] = values
        file.save()
        return path

    def test_edges(self):
        for what, before, actions, after in ROWS:
            with self.subTest(what):
                song = self.song(before)
                self.run_program("quorvex", "run", "--yes", self.script(*actions), song)
                found = {name.upper(): values for name, values in dict(mutagen.flac.FLAC(song).tags).items()}
                if total := found.pop("TRACKTOTAL", None):
                    found["TOTALTRACKS"] = total
                self.assertEqual(found, after)

    def test_cue_sheets(self):
        song = self.song({"CUESHEET": ["old"]})
        script = self.script((CUE, ""))
        latin = self.folder / "Band/Record/07 - So.ng.cue"
        beside = self.folder / "Band/Record/07 - So.ng.flac.cue"
        outcome = self.run_program("quorvex", "run", script, song)
        self.assert_line(outcome.stderr, "Could not load external cuesheet for", song, "File not found")
        for path, content, text in ((beside, b"caf\xc3\xa9\r\nx", "café\r\nx"), (latin, b"caf\xe9", "café"),
                                    (latin, b"\xef\xbb\xbfcaf\xc3\xa9\0rest", "café")):
            path.write_bytes(content)
            self.run_program("quorvex", "run", script, song)
            self.assertEqual(mutagen.flac.FLAC(song).tags["CUESHEET"], [text])
        tagged = self.copy("01", "a.mp3")
        outcome = self.run_program("quorvex", "run", script, tagged)
        self.assert_line(outcome.stderr, "Embedded cuesheets not supported for this file format: ", tagged)
