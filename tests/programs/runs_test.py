"""Scripts over many files: the work, what is said of it, and its early end."""

import contextlib
import os
import pty
import random
import re
import signal
import time

from support import ADD_VALUE, SET_VALUE, ProgramCase, add_value, audio_digest, read_tags, set_value, summary

AUTO_TRACK_NUMBER = "{F6D34BCA-5E3D-441B-A76F-39CA11802245}"
TIDY = [set_value("ALBUM", "x"), set_value("GENRE", "a"), add_value("GENRE", "b")]


def edited(tags):
    return tags | {"ALBUM": ["x"], "GENRE": ["a", "b"]}


class ManyFiles(ProgramCase):
    def assert_edited(self, files, folder):
        for path in files[::50]:
            self.assertEqual(read_tags(path), edited(read_tags(path)), path)
        tracks = self.run_program("quorvex", "tags", "--json", folder).objects()
        shown = [track for track in tracks if "error" not in track]
        self.assertEqual([track["path"] for track in shown], [str(path) for path in files])
        for track in shown:
            self.assertEqual(track["fields"], edited(track["fields"]), track["path"])

    def test_edits_a_thousand_files(self):
        files = self.copy_many(1000)
        outcome = self.run_program("quorvex", "run", self.script(*TIDY), "many")
        self.assertEqual(outcome.status, 0)
        self.assertEqual(outcome.stdout, summary(written=1000))
        self.assertEqual(outcome.stderr, "")
        self.assert_edited(files, "many")

    def test_goes_on_behind_bad_files(self):
        files = self.copy_many(999)
        bad = self.garbage("many/500 bad.mp3")
        paths = [*files[:600], bad, "nowhere.flac", *files[600:]]
        outcome = self.run_program("quorvex", "run", self.script(*TIDY), *paths)
        self.assertEqual(outcome.status, 1)
        self.assertEqual(outcome.stdout, summary(written=999, failed=1))
        self.assert_line(outcome.stderr, bad, "The first frame of MPEG audio is missing")
        self.assert_line(outcome.stderr, "nowhere.flac", "not found")
        self.assert_edited(files, "many")

    def test_shows_progress_on_a_terminal(self):
        self.copy_many(1000)
        start = time.monotonic()
        outcome = self.run_on_terminal("quorvex", "run", self.script(*TIDY), "many")
        seconds = time.monotonic() - start
        self.assertEqual(outcome.status, 0)
        counts = [int(count) for count in re.findall(r"Updating: (\d+) of 1000 \(\d+ %\)", outcome.stderr)]
        self.assertEqual(counts, sorted(counts))
        self.assertEqual(counts[-1], 1000)
        self.assertIn("(100 %)", outcome.stderr)
        self.assertLess(len(counts), 3 + 10 * seconds, "drawn too often")


class Interrupts(ProgramCase):
    def interrupt(self, files, process, talking, number):
        """Reads no further than the first byte before the signal: the program has more to say than the pipe
        holds, and cannot have finished then."""
        with process:
            first = getattr(process, talking).read(1)
            process.send_signal(number)
            outcome = self.outcome(process)
        setattr(outcome, talking, first.decode() + getattr(outcome, talking))
        self.assertEqual(outcome.status, 130)
        written = 0
        for n, path in enumerate(files):
            tags = read_tags(path)
            is_written = tags["TITLE"] == ["New"]
            self.assertEqual(tags, self.old[n % 2] | ({"TITLE": ["New"]} if is_written else {}), path)
            written += is_written
            if n % 300 < 2:
                self.assertEqual(audio_digest(path), self.audio[n % 2], path)
        self.assertLess(written, len(files))
        done = f"Interrupted: {written} of {len(files)} tracks are done, the others were not touched."
        self.assert_line(outcome.stderr, done)
        return outcome, written

    def interrupt_reading(self, files):
        """The groups need all tags before the first file is written."""
        script = self.script(set_value("TITLE", "New"), (AUTO_TRACK_NUMBER, "%album%"))
        master, slave = pty.openpty()
        with self.start("quorvex", "run", "--jobs", "1", script, "many", stderr=slave) as process:
            os.close(slave)
            shown = os.read(master, 1)  # the progress of the reading
            process.send_signal(signal.SIGINT)
            outcome = self.outcome(process)
        with contextlib.suppress(OSError):  # the other end is closed
            while part := os.read(master, 65536):
                shown += part
        os.close(master)
        self.assertEqual((outcome.status, outcome.stdout), (130, ""))
        self.assert_line(shown.decode(), f"Interrupted: none of {len(files)} tracks was touched.")
        self.assertNotIn(b"Updating", shown)

    def test_ends_between_two_files(self):
        files = self.copy_many(1500)
        self.old = [read_tags(path) for path in files[:2]]
        self.audio = [audio_digest(path) for path in files[:2]]
        script = self.script(set_value("TITLE", "New"))
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(number.name):
                self.copy_many(1500)
                process = self.start("quorvex", "run", "--json", "--jobs", "8", script, "many", bufsize=0)
                outcome, written = self.interrupt(files, process, "stdout", number)
                self.assertEqual(len(outcome.objects()), written)
                self.assertGreater(written, 0)
        with self.subTest("while it reads"):
            self.copy_many(1500)
            with self.untouched(*files):
                self.interrupt_reading(files)
        with self.subTest("vantaro"):
            self.copy_many(1500)
            talk = "/tag:title=New;" + "unheard" * 300
            process = self.start("vantaro", talk, "many", "/tag:album=Never", "many", bufsize=0)
            self.interrupt(files, process, "stderr", signal.SIGINT)


class JsonLines(ProgramCase):
    def test_run_tells_of_each_track_in_list_order(self):
        files = self.copy_many(600)
        random.Random(7).shuffle(files)
        bad = self.garbage("bad.ogg")
        before = [read_tags(path) for path in files]
        listed = files[:300] + [bad] + files[300:]
        outcome = self.run_program("quorvex", "run", "--json", "--jobs", "8", self.script(*TIDY), *listed)
        self.assertEqual(outcome.status, 1)
        tracks = outcome.objects()
        self.assertEqual([track["path"] for track in tracks], [str(path) for path in listed])
        failed = tracks.pop(300)
        self.assertEqual(failed.keys(), {"path", "subsong", "error"})
        self.assertIn("No page of Ogg", failed["error"])
        for tags, track in zip(before, tracks, strict=True):
            self.assertEqual(track, {
                "path": track["path"], "subsong": 0, "before": tags, "after": edited(tags),
                "changes": 'ALBUM = "x"; GENRE = "a"; "b"'})

    def test_changes_tell_of_nothing_done(self):
        song = self.copy("06", "a.mp3")
        script = self.script(set_value("TITLE", "Lantern Room"))
        (track,) = self.run_program("quorvex", "run", "--json", script, song).objects()
        self.assertEqual(track["changes"], "No changes")
        self.assertEqual(track["before"], track["after"])

    def test_tags_and_kinds(self):
        files = self.copy_five()
        bad = self.garbage("bad.mp3")
        outcome = self.run_program("quorvex", "tags", "--json", *files, bad)
        self.assertEqual(outcome.status, 1)
        *tracks, failed = outcome.objects()
        self.assertEqual(failed.keys(), {"path", "subsong", "error"})
        for path, track in zip(files, tracks, strict=True):
            tags = read_tags(path)
            self.assertEqual((track["path"], track["subsong"], track["fields"]), (str(path), 0, tags))
            self.assertEqual(track["technical"]["channels"], "2" if path.suffix == ".m4a" else "1")
            self.assertAlmostEqual(track["technical"]["length"], 1.7, delta=0.4)
        kinds = self.run_program("quorvex", "kinds", "--json").objects()
        guids = {kind["name"]: kind["guid"] for kind in kinds}
        self.assertEqual((guids["Set value..."], guids["Add value..."]), (SET_VALUE, ADD_VALUE))
