#!/usr/bin/python3
"""Undoes older runs before newer ones, where sizes and times of change tell nothing, and looks whether "put back" is so.

    fuzz/older_runs.py build/release/bin/quorvex --rounds 100

Each round makes several runs over the same files: with times of change that are kept, with times in steps of a second
or two (as vfat and small inodes of ext4 have them), or with neither. Other programs edit some of the files in between,
and let them keep their times. Then the runs are undone in any order, some of them again. A file that is "put back" has
the bytes that it had before that run; any other is named, and is as it was. What only moved in time is put back.
In the end, undone from the newest to the oldest, all files that only runs have changed have their old bytes.

The steps come from a library around the program; --music-on FOLDER uses those of a mounted file system.

Prints what was wrong and ends with status 1, and keeps the folder. Needs ffmpeg, mutagen, and the target other_system.
"""

import json
import os
import random
import shutil
import sys
from collections import Counter
from pathlib import Path

from shared import (XFS, Faults, OtherSystem, Quorvex, copy_masters, digests, do_rounds, edit_elsewhere, make_masters,
                    parse_options, places, take_back, ways, work_folder)


def set_value(field, value):
    return {"kind": "Set value", "field": field, "value": value}


# Neighbours of one size, other fields, and what moves everything.
SCRIPTS = {
    "title b": [set_value("TITLE", "BBBBB")],
    "title c": [set_value("TITLE", "CCCCC")],
    "artist d": [set_value("ARTIST", "DDDDDD")],
    "long comment": [set_value("COMMENT", "grown " * 1900)],
    "other long comment": [set_value("COMMENT", "groan " * 1900)],
    "no comment": [{"kind": "Remove field", "field": "COMMENT"}],
    "genre": [{"kind": "Add value", "field": "GENRE", "value": "Ambient"}],
}
SECOND = 1_000_000_000
LONG_AGO = 1_500_000_000_123_456_789


class OlderRuns:
    def __init__(self, options, folder, faults):
        self.folder, self.random, self.faults = folder, random.Random(options.seed), faults
        self.music = (options.music_on.resolve() / folder.name if options.music_on else folder) / "music"
        self.music.parent.mkdir(exist_ok=True)
        self.quorvex = Quorvex(options.quorvex, folder)
        self.system, self.has_own_times = OtherSystem(options.library, self.music), options.music_on is not None
        for name, actions in SCRIPTS.items():
            self.script(name).write_text(json.dumps({"actions": actions}))
        (folder / "masters").mkdir()
        self.names = copy_masters(make_masters(folder / "masters"), options.files, folder / "start")
        self.done = self.put_back = self.refused = self.not_undone = 0
        self.modes, self.methods = Counter(), Counter()

    def script(self, name):
        return self.folder / f"{name}.json"

    def begin(self):
        for path in (self.music, self.quorvex.state):
            shutil.rmtree(path, ignore_errors=True)
        shutil.copytree(self.folder / "start", self.music, copy_function=shutil.copyfile)
        if self.random.random() < 0.5:
            for name in self.names:
                os.utime(self.music / name, ns=(LONG_AGO, LONG_AGO))

    def round(self):
        modes = ["times", "times kept"]
        if not self.has_own_times:
            modes += ["steps of 1 s", "steps of 2 s", "times kept and steps of 2 s"]
        mode = self.random.choice(modes)
        self.quorvex.keep_times("kept" in mode)
        step = SECOND * (1 if "1 s" in mode else 2) if "steps" in mode else None
        replaces = not self.has_own_times and self.random.random() < 0.5
        environment = self.system.environment(times=step, type=XFS if replaces else None)
        what = f"round {self.done}, {mode}{', replacing' if replaces else ''}"
        self.begin()
        old = digests(self.music)
        made, edited = {}, set()
        for number in range(1, self.random.randint(2, 4) + 1):
            name = self.random.choice(list(SCRIPTS))
            paths = self.music if self.random.random() < 0.6 else self.some(0.7)
            if (changes := self.run(name, paths, environment)) is None:
                continue
            made[len(made) + 1] = changes
            what += f", {name}"
            if self.random.random() < 0.4:
                edited |= self.edit_some(what)
        order = self.random.sample(list(made), len(made))
        what += f", undone: {order}"
        in_force = set(made)
        for number in [*order, *sorted(made, reverse=True)]:
            later = {name for other in in_force if other > number for name in made[other]}
            errors = take_back(self.quorvex, number, self.music, made[number], self.faults, f"{what}: {number}", later,
                               environment)
            self.put_back += sum(error is None for error in errors.values())
            self.refused += sum(error is not None for error in errors.values())
            if not any(errors.values()):
                in_force.discard(number)
        for name, now in digests(self.music).items():
            if now != old[name]:
                self.not_undone += 1
                if name not in edited:
                    self.faults.add("a file that only runs have changed cannot be put back", f"{what}: {name}",
                                    self.music / name)
        self.modes[mode] += 1
        self.done += 1

    def some(self, share):
        return [self.music / name for name in self.random.sample(self.names, max(1, int(share * len(self.names))))]

    def run(self, script, paths, environment):
        """{name: (digest before, digest after)} of what it wrote; None when that was nothing."""
        before, where = digests(self.music), places(self.music)
        paths = paths if isinstance(paths, list) else [paths]
        outcome = self.quorvex.do("run", "--json", self.script(script), *paths, environment=environment)
        after = digests(self.music)
        changes = {name: (before[name], after[name]) for name in before if before[name] != after[name]}
        said = {name for name, line in outcome.objects().items() if line["before"] != line["after"]}
        if said != changes.keys():
            self.faults.add("what a run says does not fit the files", f"{script}: {sorted(said ^ changes.keys())}")
        self.methods += ways(where, places(self.music), changes)
        return changes or None

    def edit_some(self, what):
        paths = self.some(0.1)
        for path in paths:
            edit_elsewhere(path, self.random.choice(["Edited", "Edited by another program"]), self.random.random() < 0.7)
        return {path.name for path in paths}

    def summary(self):
        modes = ", ".join(f"{count} with {mode}" for mode, count in self.modes.items())
        methods = ", ".join(f"{count} {how}" for how, count in self.methods.items())
        return (f"{modes}, over {len(self.names)} files; {self.put_back} put back, {self.refused} refused, "
                f"{self.not_undone} not to be undone\nFiles written: {methods}")


def main():
    options = parse_options(__doc__, 100, 120, lambda parser: parser.add_argument(
        "--music-on", type=Path, metavar="FOLDER", help="where to keep the music"))
    folder = work_folder("older-runs", options)
    faults = Faults(folder)
    work = OlderRuns(options, folder, faults)
    status = do_rounds(work, options.rounds, faults, folder)
    if options.music_on:
        shutil.rmtree(work.music.parent, ignore_errors=True)
    return status


if __name__ == "__main__":
    sys.exit(main())
