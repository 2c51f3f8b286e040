#!/usr/bin/python3
"""Kills runs while another one has started already, and lets that one edit the same files.

    fuzz/late_recovery.py build/release/bin/quorvex --rounds 100

Each round starts a run that waits for its script, which comes through a pipe, as an open window waits for its user.
Then another run (or an undo) over the same files is killed at a call that changes a file, often with half of a write
done. The waiting one gets its script and does its work; every file then has the bytes that the two, or one of them,
make. Whatever is started next lists the run that was cut off, and undoing both, in any order, gives every file its old
bytes. A journal may only go with every file of its run known; a file that is neither is named.

Prints what was wrong and ends with status 1, and keeps the folder. Needs ffmpeg, mutagen, and the target other_system.
"""

import contextlib
import json
import os
import random
import shutil
import subprocess
import sys
import time

from shared import (RUN_TIME, XFS, Faults, Lost, OtherSystem, Outcome, Quorvex, copy_masters, digests, do_rounds,
                    make_masters, parse_options, take_back, work_folder)


def set_value(field, value):
    return {"kind": "Set value", "field": field, "value": value}


FIRST = {
    "fits": [set_value("TITLE", "Of another length")],
    "two places": [set_value("TITLE", "eltiT"), set_value("COMMENT", "tnemmoc A")],
    "grow": [set_value("COMMENT", "grown " * 1900)],
    "much": [set_value("LYRICS", "la " * 20000)],
}
# Of other fields: what both make tells that both made it.
SECOND = {
    "fits": [set_value("ALBUM", "An album")],
    "grow": [set_value("ARTIST", "An artist whose name takes room " * 60)],
    "less": [{"kind": "Remove field", "field": "GENRE"}],
}


class LateRecovery:
    def __init__(self, options, folder, faults):
        self.folder, self.random, self.faults = folder, random.Random(options.seed), faults
        self.music = folder / "music"
        self.quorvex = Quorvex(options.quorvex, folder)
        self.system = OtherSystem(options.library, self.music)
        for order, scripts in (("first", FIRST), ("second", SECOND)):
            for name, actions in scripts.items():
                (folder / f"{order} {name}.json").write_text(json.dumps({"actions": actions}))
        (folder / "masters").mkdir()
        self.names = copy_masters(make_masters(folder / "masters"), options.files, folder / "start")
        self.old = digests(folder / "start")
        self.made, self.calls, self.done = {}, {}, 0
        self.killed = self.between = self.failed = self.not_undone = 0

    def begin_at_old(self):
        for path in (self.music, self.quorvex.state):
            shutil.rmtree(path, ignore_errors=True)
        shutil.copytree(self.folder / "start", self.music, copy_function=shutil.copyfile)

    def result(self, *scripts):
        """{name: digest} of what these scripts make, one after the other."""
        key = bool(self.quorvex.around), *scripts
        if key not in self.made:
            self.begin_at_old()
            for script in scripts:
                self.quorvex.do("run", self.folder / script, self.music)
            self.made[key] = digests(self.music)
        return self.made[key]

    def count_calls(self, script, is_undo):
        """How many calls of a whole run change something; from there on nothing is killed."""
        key = bool(self.quorvex.around), script, is_undo
        if key not in self.calls:
            low, high = 1, 16 * len(self.names)
            while low < high:
                middle = (low + high + 1) // 2
                if self.kill(script, is_undo, middle):
                    low = middle
                else:
                    high = middle - 1
            self.calls[key] = low
        return self.calls[key]

    def kill(self, script, is_undo, call):
        """Begins at the old files. Returns whether the run came so far."""
        self.begin_at_old()
        if is_undo:
            self.quorvex.do("run", self.folder / script, self.music)
        return self.kill_beside(script, is_undo, call)

    def kill_beside(self, script, is_undo, call):
        arguments = ["undo", 1] if is_undo else ["run", self.folder / script, self.music]
        with self.quorvex.start(*arguments, environment=self.system.environment(kill=call)) as process:
            return process.wait(RUN_TIME) < 0

    @contextlib.contextmanager
    def waiting_run(self):
        """A run that has looked after what earlier ones left, and waits for its script."""
        pipe = self.folder / "script.json"
        os.mkfifo(pipe)
        process = self.quorvex.start("run", "--json", pipe, self.music, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                     text=True, errors="replace")
        try:
            yield process, self.when_read(pipe, process)
        finally:
            process.kill()
            process.communicate()
            pipe.unlink()

    @staticmethod
    def when_read(pipe, process):
        """The pipe's writing end, which can be opened when somebody reads."""
        end = time.monotonic() + RUN_TIME
        while time.monotonic() < end and process.poll() is None:
            with contextlib.suppress(OSError):
                return os.open(pipe, os.O_WRONLY | os.O_NONBLOCK)
            time.sleep(0.002)
        raise Lost("a run does not read its script from a pipe")

    def round(self):
        one, other = f"first {self.random.choice(list(FIRST))}.json", f"second {self.random.choice(list(SECOND))}.json"
        is_undo = self.random.random() < 0.25
        what = f"round {self.done}, {'undo of ' if is_undo else ''}{one} killed, then {other}"
        self.quorvex.around = self.random.choice([{}, self.system.environment(type=XFS)])
        what += ", replacing" if self.quorvex.around else ""
        states = {order: self.result(*order) for order in ((), (one,), (other,), (one, other))} | {(): self.old}
        calls = self.count_calls(one, is_undo)
        self.begin_at_old()
        if is_undo:
            self.quorvex.do("run", self.folder / one, self.music)
        before = digests(self.music)
        with self.waiting_run() as (process, pipe):
            self.killed += self.kill_beside(one, is_undo, self.random.randint(1, calls))
            cut_off = digests(self.music)
            half = {name for name, now in cut_off.items()
                    if name in self.old and now not in (states[()][name], states[one,][name])}
            self.between += len(half)
            os.set_blocking(pipe, True)
            os.write(pipe, (self.folder / other).read_bytes())
            os.close(pipe)
            outcome = Outcome(None, *process.communicate(timeout=RUN_TIME))
            outcome.status = process.returncode
        self.check(what, one, other, is_undo, states, half, before, outcome)
        self.done += 1

    def check(self, what, one, other, is_undo, states, half, before, outcome):
        errors = outcome.errors()
        self.failed += sum(error is not None for error in errors.values())
        if outcome.status != (1 if any(errors.values()) else 0):
            self.faults.add("an exit status does not fit", f"{what}: {outcome}")
        said = outcome.stderr + self.quorvex.do(self.random.choice(["runs", "kinds"])).stderr
        found = digests(self.music)
        if found.keys() != self.old.keys():
            self.faults.add("files are left or gone", f"{what}: {found.keys() ^ self.old.keys()}")
        made = {one: {}, other: {}}  # what each run changed, as it is now
        for name, now in found.items():
            if name not in self.old:
                continue
            is_written = errors.get(name, "") is None
            orders = [(other,), (one, other)] if is_written else [(), (one,)]
            order = next((order for order in orders if states[order][name] == now), None)
            if order is None and str(self.music / name) not in said:
                self.faults.add("a file is neither, and nobody says so" + (", left half-written" * (name in half)),
                                f"{what}: {name}, written: {is_written}", self.music / name)
            if order is None:
                continue
            for place, script in enumerate(order):
                made[script][name] = states[order[:place]][name], states[order[:place + 1]][name]
        if left := self.quorvex.left_open():
            self.faults.add("a journal is open for ever", f"{what}: {left}")
        runs = self.quorvex.runs()
        numbers = {script: self.quorvex.number_of(self.folder / script if script == one else self.folder / "script.json")
                   for script in made}
        for script, number in numbers.items():
            # The first run may lie whole behind the undo that was cut off.
            count = sum(states[one,][name] != self.old[name] for name in self.old) if is_undo and script == one \
                else len(made[script])
            listed = runs[number]["files"] if number else 0
            if listed < count:
                self.faults.add("a run is listed with too few files, or not at all",
                                f"{what}: {script} wrote {count} files, {listed} are listed")
        self.undo_all(what, one, other, is_undo, numbers, made)

    def undo_all(self, what, one, other, is_undo, numbers, made):
        """The newer run first, and what is refused so or so is named."""
        named = set()
        for script in (other, one):
            if numbers[script] is None:
                continue
            changes = made[script]
            if is_undo and script == one:  # files that the undo had put back count as such
                changes = {name: (self.old[name], now) for name, now in self.result(one).items()}
            errors = take_back(self.quorvex, numbers[script], self.music, changes, self.faults,
                               f"{what}: undo of {script}")
            named |= {name for name, error in errors.items() if error is not None}
        for name, now in digests(self.music).items():
            if now != self.old.get(name):
                self.not_undone += 1
                if name not in named:
                    self.faults.add("the old bytes are lost, and nobody says so", f"{what}: {name}", self.music / name)

    def summary(self):
        return (f"{self.killed} runs killed over {len(self.names)} files, {self.between} files left half-written; "
                f"{self.failed} refused by the run that waited, {self.not_undone} not to be undone")


def main():
    options = parse_options(__doc__, 100, 120)
    folder = work_folder("late-recovery", options)
    faults = Faults(folder)
    work = LateRecovery(options, folder, faults)
    status = do_rounds(work, options.rounds, faults, folder)
    if status == 0 and not work.between:
        print("No file was left half-written: this says nothing.")
        return 1
    return status


if __name__ == "__main__":
    sys.exit(main())
