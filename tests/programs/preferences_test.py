"""What the user has set for the host: how long runs are kept, and the times of files."""

import json
import time
from pathlib import Path

from support import LONG_AGO, ProgramCase, set_value


class Preferences(ProgramCase):
    def prefer(self, text):
        path = self.folder / "settings/vantaro/preferences.json"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return path

    def runs(self):
        return self.run_program("quorvex", "runs", "--json")

    def test_files_keep_their_times(self):
        for preferred in (False, True):
            with self.subTest(preferred):
                self.prefer(json.dumps({"keep_times": preferred}))
                files = self.copy_five()
                for value in ("short", "x" * 20000):  # in place, and by new files
                    self.run_program("quorvex", "run", self.script(set_value("COMMENT", value)), *files)
                    kept = [path.stat().st_mtime_ns == LONG_AGO for path in files]
                    self.assertEqual(kept, [preferred] * len(files))

    def test_kept_times_do_not_keep_an_undo_from_its_work(self):
        self.prefer('{"keep_times": true}')
        files = self.copy_five()
        states = []
        for title in ("first title", "other title", "third title"):  # the same length, in place
            states.append([path.read_bytes() for path in files])
            self.run_program("quorvex", "run", self.script(set_value("TITLE", title)), *files)
        for number in (3, 2, 1):
            outcome = self.run_program("quorvex", "undo", str(number))
            self.assertEqual((outcome.status, outcome.stderr), (0, ""))
            self.assertEqual([path.read_bytes() for path in files], states.pop())

    def test_room_for_runs_is_bounded(self):
        song = self.copy("06", "a.mp3")
        for title in "abcdef":
            self.run_program("quorvex", "run", self.script(set_value("TITLE", title)), song)
        runs = self.runs().objects()
        self.assertEqual([run["run"] for run in runs], [6, 5, 4, 3, 2, 1])
        bound = {"undo_bytes": sum(run["bytes"] for run in runs[:2]) + 10}

        def kept_after_a_run(title, *arguments):
            self.run_program("quorvex", *arguments, "run", self.script(set_value("TITLE", title)), song)
            return [run["run"] for run in self.runs().objects()]

        self.prefer(json.dumps(bound))
        self.assertEqual(len(self.runs().objects()), 6, "what only reads removes nothing")
        elsewhere = self.folder / "elsewhere"
        elsewhere.mkdir()
        (elsewhere / "preferences.json").write_text(json.dumps(bound))
        self.prefer("{}")
        self.assertEqual(kept_after_a_run("g", "--config-dir", elsewhere), [7, 6, 5, 4, 3, 2, 1])
        self.prefer(json.dumps(bound)[:-1] + ",}")  # a comma too many
        self.assertEqual(kept_after_a_run("h"), [8, 7, 6, 5, 4, 3, 2, 1])
        self.prefer(json.dumps(bound))
        self.assertEqual(kept_after_a_run("i"), [9, 8])
        self.prefer(json.dumps({"undo_days": 0}))
        self.assertEqual(kept_after_a_run("j"), [10, 9], "by the clock of the run before, too")
        self.assertEqual(kept_after_a_run("k"), [11, 10])

    def test_what_does_not_fit_is_named_and_has_no_effect(self):
        song = self.copy("06", "a.mp3")
        for text in ("{", "[]", '{"undo_days": -1}', '{"undo_days": "30"}', '{"undo_bytes": 1.5}', '{"keep_times": 1}',
                     '{"undo_days": 99999999999999999999}', '{"id3v2": "2.2"}', '{"id3v2": 2.4}',
                     '{"id3v2_separator": ""}', ""):
            with self.subTest(text):
                path = self.prefer(text)
                outcome = self.run_program("quorvex", "run", self.script(set_value("TITLE", text or "none")), song)
                self.assertEqual(outcome.status, 0)
                self.assert_line(outcome.stderr, path, "the defaults hold")
        self.assertEqual(len(self.runs().objects()), 11)

    def test_a_file_that_cannot_be_opened_is_named_once(self):
        path = self.folder / "settings/vantaro/preferences.json"
        path.mkdir(parents=True)
        outcome = self.run_program("quorvex", "tags", self.copy("06", "a.mp3"))
        self.assertEqual((outcome.status, outcome.stderr.count(str(path))), (0, 1))
        self.assert_line(outcome.stderr, path, "; the defaults hold.")

    def test_the_window_is_told_what_the_terminal_was(self):
        """With files only, the program starts over with a window; what it reported before goes along."""
        path = self.prefer("{")
        self.environment["QT_QPA_PLATFORM"] = "offscreen"
        with self.start("vantaro", self.copy("06", "a.mp3"), "--jobs", "2") as process:
            command = Path(f"/proc/{process.pid}/cmdline")
            for _ in range(300):
                arguments = command.read_bytes().decode().split("\0")
                if "--window" in arguments:
                    break
                time.sleep(0.1)
            time.sleep(2)
            self.assertIsNone(process.poll())
            process.terminate()
            outcome = self.outcome(process)
        (line,) = [line for line in outcome.stderr.split("\n") if "the defaults hold" in line]
        self.assertTrue(line.startswith(str(path)))
        self.assertEqual(arguments[1:3], ["--window", f"--reported={line}"])
        self.assertEqual(outcome.status, 130)
