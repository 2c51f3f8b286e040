#!/usr/bin/python3
"""Lets two programs write the same files at once, and looks whether every file is what one of them, or one after the
other, makes of it, and whether everything that was said is true.

    fuzz/two_at_once.py build/release/bin/quorvex --rounds 100

By turns: two runs; a run beside the undo of an earlier one; a run, or an undo, beside another tagger. The runs share
their journals or have journals of their own (as two users have), files keep their times of change or do not, and some are
written as on a file system that replaces what it cannot write in place. A
file that a run reports as written has that run's change, unless the other one changed it later; one that it reports
as failed has not; the exit status fits. Undone in any order, every file has its old bytes again or is refused.

The other tagger knows of no locks: it edits a file while the run is stopped (SIGSTOP), and lets the file keep its time
of change, or not. It leaves alone the file that the run is just about to write, since nothing can be done about that.

Prints what was wrong and ends with status 1, and keeps the folder. Needs ffmpeg and mutagen; uses metaflac.
"""

import itertools
import json
import random
import re
import shutil
import signal
import sys
import time
from collections import Counter

from shared import (XFS, Faults, OtherSystem, Quorvex, copy_masters, digest, digests, do_rounds, edit_elsewhere, make_masters,
                    parse_options, places, take_back, ways, work_folder)


def set_value(field, value):
    return {"kind": "Set value", "field": field, "value": value}


SCRIPTS = {
    "longer title": [set_value("TITLE", "A title that takes more room " * 4)],
    "shorter artist": [set_value("ARTIST", "A")],
    "much longer comment": [set_value("COMMENT", "grown " * 1900)],
    "less": [{"kind": "Remove field", "field": "GENRE"}, set_value("DATE", "1999")],
    "long lyrics": [set_value("LYRICS", "la " * 20000)],
    "same length": [set_value("TITLE", "eltiT")],
}
TRUE_REASONS = re.compile("written by another program|changed since|changed while|has changed the file since", re.I)
IN_WORK = 12  # neighbours in the list of files that a run may have in work at a time


def run_without(errors):
    """The files that were written."""
    return {name for name, error in errors.items() if error is None}


class TwoAtOnce:
    def __init__(self, options, folder, faults):
        self.folder, self.random, self.faults = folder, random.Random(options.seed), faults
        self.music = folder / "music"
        self.first, self.second = (Quorvex(options.quorvex, folder, f"config {n}", f"state {n}") for n in (1, 2))
        self.replacing = OtherSystem(options.library, self.music).environment(type=XFS)
        for name, actions in SCRIPTS.items():
            self.script(name).write_text(json.dumps({"actions": actions}))
        (folder / "masters").mkdir()
        self.names = copy_masters(make_masters(folder / "masters"), options.files, folder / "start")
        # Half of the files as an encoder leaves them, half with room.
        (folder / "rooms.json").write_text(json.dumps({"actions": [set_value("COMMENT", "room " * 300)]}))
        (folder / "roomy.json").write_text(json.dumps({"actions": [set_value("COMMENT", "No room")]}))
        for script in ("rooms.json", "roomy.json"):
            roomy = [folder / "start" / name for name in self.names[len(self.names) // 2:]]
            self.first.do("run", folder / script, *roomy)
        self.old = digests(folder / "start")
        tags = self.first.do("tags", "--json", folder / "start").objects()
        self.old_tags = {name: line["fields"] for name, line in tags.items()}
        self.made, self.modes, self.methods, self.done = {}, Counter(), Counter(), 0
        self.written = self.refused = self.both = self.edited = self.not_undone = 0

    def script(self, name):
        return self.folder / f"{name}.json"

    def begin_at_old(self):
        for path in (self.music, self.first.state, self.second.state):
            shutil.rmtree(path, ignore_errors=True)
        shutil.copytree(self.folder / "start", self.music, copy_function=shutil.copyfile)

    def result(self, *scripts):
        """{name: digest} of what these scripts make, one after the other."""
        if not scripts:
            return self.old
        key = bool(self.first.around), *scripts
        if key not in self.made:
            self.begin_at_old()
            for script in scripts:
                before = places(self.music)
                self.first.do("run", self.script(script), self.music)
                self.methods += ways(before, places(self.music), before)
            self.made[key] = digests(self.music)
        return self.made[key]

    def wrong(self, kind, what, name=None):
        self.faults.add(kind, what, self.music / name if name else None)

    def check_words(self, outcome, what):
        """The exit status, and the reasons. Returns {name: error, or None}."""
        errors = outcome.errors()
        if outcome.status != (1 if any(errors.values()) else 0):
            self.wrong("an exit status does not fit", f"{what}: {outcome}")
        for name, error in errors.items():
            if error is not None and not TRUE_REASONS.search(error):
                self.wrong("a file failed for another reason than the other program", f"{what}: {name}: {error}", name)
        self.written += sum(error is None for error in errors.values())
        self.refused += sum(error is not None for error in errors.values())
        return errors

    def check_names(self, what):
        found = digests(self.music)
        if found.keys() != self.old.keys():
            self.wrong("files are left or gone", f"{what}: {found.keys() ^ self.old.keys()}")
        return found

    def side_by_side(self, *commands):
        """Starts both, by turns the one or the other first: at once, a moment apart, or (so that some files are
        written by both, however the system shares out its time) when the first has begun to write."""
        begun = {}
        ends = [self.music / self.names[n] for n in (0, -1)]
        old = [digest(path) for path in ends]
        for place in self.random.sample([0, 1], 2):
            quorvex, *arguments = commands[place]
            files = self.folder / f"output {place}"
            process = quorvex.start_into(files, *arguments)
            begun[place] = files, process
            if self.done // 3 % 2:
                while process.poll() is None and [digest(path) for path in ends] == old:
                    time.sleep(0.001)
            else:
                time.sleep(self.random.choice([0, self.random.uniform(0, 0.1)]))
        return [Quorvex.outcome_in(*begun[place]) for place in (0, 1)]

    def round(self):
        mode = [self.two_runs, self.run_beside_undo, self.beside_tagger][self.done % 3]
        keeps, is_shared = self.random.random() < 0.5, self.random.random() < 0.5
        around = self.random.choice([{}, self.replacing])
        for quorvex in (self.first, self.second):
            quorvex.keep_times(keeps)
            quorvex.around = around
        one, other = self.random.sample(list(SCRIPTS), 2)
        what = f"round {self.done}, {mode.__name__}, {one} / {other}"
        what += (", replacing" if around else "") + (", times kept" if keeps else "") + ("" if is_shared else ", two users")
        mode(what, one, other, self.first if is_shared else self.second)
        self.modes[mode.__name__] += 1
        self.done += 1

    def two_runs(self, what, one, other, second):
        results = {order: self.result(*order)
                   for order in ((), (one,), (other,), (one, other), (other, one))}
        self.begin_at_old()
        outcomes = self.side_by_side((self.first, "run", "--json", self.script(one), self.music),
                                     (second, "run", "--json", self.script(other), self.music))
        written = [run_without(self.check_words(outcome, what)) for outcome in outcomes]
        said = [outcome.objects() for outcome in outcomes]
        self.both += len(written[0] & written[1])
        found = self.check_names(what)
        changes = {one: {}, other: {}}
        tangled = set()
        for name, now in found.items():
            by = {script: tags[name]["before"] for script, tags, names in zip((one, other), said, written)
                  if name in names}
            # Both orders may come to the same; the one that saw the old tags was the first then.
            orders = [order for order in itertools.permutations(by) if results[order].get(name) == now]
            order = next((order for order in orders if not order or by[order[0]] == self.old_tags[name]), None)
            if order is None:
                is_known = any(result.get(name) == now for result in results.values())
                self.wrong("a change that was reported as written is lost" if is_known else
                           "a file has bytes that neither run makes", f"{what}: {name}, written by {list(by)}", name)
                tangled.add(name)
                continue
            before = ()
            for script in order:
                changes[script][name] = results[before][name], results[before + (script,)][name]
                before += (script,)
        if tangled:
            return  # what an undo of that should say nobody knows
        self.undo_all(what, [(self.first, one), (second, other)], changes)

    def undo_all(self, what, runs, changes):
        """In any order, and the first once more: all that the other order forbade is possible then."""
        order = self.random.sample(runs, 2)
        numbers = {script: quorvex.number_of(self.script(script)) for quorvex, script in runs}
        undone = []
        for quorvex, script in [*order, order[0]]:
            if (numbers[script] is None) != (not changes[script]):
                self.wrong("a run is listed without files, or not listed with files",
                           f"{what}: {script}, {len(changes[script])} files")
            if numbers[script] is None:
                continue
            others = [made for other, made in changes.items() if other != script and other not in undone]
            errors = take_back(quorvex, numbers[script], self.music, changes[script], self.faults,
                               f"{what}: undo of {script}", {name for made in others for name in made})
            if not any(errors.values()):
                undone.append(script)
        self.not_undone += sum(now != self.old.get(name) for name, now in digests(self.music).items())

    def run_beside_undo(self, what, one, other, second):
        undone, both, alone, middle = self.old, self.result(one, other), self.result(other), self.result(one)
        self.begin_at_old()
        self.first.do("run", self.script(one), self.music)
        undo, run = self.side_by_side((self.first, "undo", "--json", 1),
                                      (second, "run", "--json", self.script(other), self.music))
        put_back = run_without(self.check_words(undo, what))
        written = run_without(self.check_words(run, what))
        self.both += len(put_back & written)
        for name, now in self.check_names(what).items():
            expected = {(True, True): alone, (True, False): undone, (False, True): both, (False, False): middle}
            said = name in put_back, name in written
            if now != expected[said].get(name):
                is_known = any(now == result.get(name) for result in expected.values())
                self.wrong("what run and undo say does not fit the file" if is_known else
                           "a file has bytes that neither the run nor the undo makes",
                           f"{what}: {name}, put back: {said[0]}, written: {said[1]}", name)

    def beside_tagger(self, what, one, other, second):
        is_undo = self.random.random() < 0.3
        before, after = (self.result(one), self.old) if is_undo else (self.old, self.result(one))
        self.begin_at_old()
        arguments = ["run", "--json", self.script(one), self.music]
        if is_undo:
            second.do(*arguments)
            arguments = ["undo", "--json", 1]
            what += ", undo"
        files = self.folder / "output"
        process = second.start_into(files, *arguments)
        edits = {}
        for _ in range(self.random.randrange(1, 6)):
            time.sleep(self.random.uniform(0, 0.1))
            if process.poll() is not None:
                break
            process.send_signal(signal.SIGSTOP)
            self.edit_in_between(edits, before, after, is_undo)
            process.send_signal(signal.SIGCONT)
        errors = self.check_words(Quorvex.outcome_in(files, process), what)
        self.edited += len(edits)
        found = self.check_names(what)
        for name, now in found.items():
            is_written = errors.get(name, "") is None
            if name not in edits:
                if now != (after if is_written else before).get(name):
                    self.wrong("what was said of a file that nobody else wrote does not fit",
                               f"{what}: {name}, {errors.get(name)}", name)
                continue
            was, edited, keeps = edits[name]
            # A run that came to the file after the edit wrote the edited one.
            allowed = {digest(edited)} if was == after[name] or not is_written else {self.edited_and_run(edited, one)}
            if is_undo and is_written and was != after[name]:
                allowed = set()
            if now not in allowed:
                self.wrong("the edit of another tagger is lost or mixed",
                           f"{what}: {name}, written: {is_written}, time kept by it: {keeps}", name)
        shutil.rmtree(self.folder / "edited", ignore_errors=True)

    def edit_in_between(self, edits, before, after, is_undo):
        now = {name: digest(self.music / name) for name in self.names}
        # How far it has come: runs write in the order of the list, an undo goes back. Times do not tell: the
        # system counts them in steps that many files fit in.
        written = [n for n, name in enumerate(self.names) if name not in edits and now[name] == after[name]]
        front = min(written, default=len(self.names)) if is_undo else max(written, default=-1)
        choice = [n for n, name in enumerate(self.names)
                  if name not in edits and now[name] in (before[name], after[name]) and abs(n - front) > IN_WORK]
        if not choice:
            return
        name = self.names[self.random.choice(choice)]
        keeps = self.random.random() < 0.6
        edit_elsewhere(self.music / name, f"Edited {self.done}", keeps)
        (self.folder / "edited").mkdir(exist_ok=True)
        edits[name] = now[name], shutil.copyfile(self.music / name, self.folder / "edited" / name), keeps

    def edited_and_run(self, path, script):
        copy = path.with_stem(path.stem + " and run")
        shutil.copyfile(path, copy)
        self.first.do("run", self.script(script), copy)
        return digest(copy)

    def summary(self):
        modes = ", ".join(f"{count} {mode.replace('_', ' ')}" for mode, count in self.modes.items())
        methods = ", ".join(f"{count} {how}" for how, count in self.methods.items())
        return (f"{modes} over {len(self.names)} files; {self.written} written or put back, {self.both} of them by "
                f"both, {self.refused} refused, {self.edited} edited in between, {self.not_undone} not to be undone\n"
                f"Files written by runs alone: {methods}")


def main():
    options = parse_options(__doc__, 100, 120)
    folder = work_folder("two-at-once", options)
    faults = Faults(folder)
    work = TwoAtOnce(options, folder, faults)
    status = do_rounds(work, options.rounds, faults, folder)
    if status == 0 and not work.both:
        print("No file was written by both: this says nothing.")
        return 1
    return status


if __name__ == "__main__":
    sys.exit(main())
