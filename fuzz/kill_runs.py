#!/usr/bin/python3
"""Kills runs, and undos, at random moments, and looks whether anything was lost.

    fuzz/kill_runs.py build/release/bin/quorvex --rounds 1000

Each round starts a run over files of all formats and kills it (SIGKILL) at a moment anywhere within it. After the next
start, whatever it is for, every file has its old or its new bytes, no temporary file and no open journal is left, and
the cut-off run is listed with the files that it changed; undoing it gives every file its old bytes again. One round in
four kills that undo as well, and one start in four is killed while it puts things right.

--music-on and --state-on put the music and the journals into other folders, such as mounted file systems.

Prints what happened and ends with status 1, and keeps the folder, when something was lost; also when no kill landed
while files were being written. Needs ffmpeg and mutagen.
"""

import json
import random
import shutil
import subprocess
import sys
import time
from collections import Counter
from pathlib import Path

from shared import SCRIPTS, Lost, Quorvex, copy_masters, digests, make_masters, parse_options, places, ways, work_folder


class KillRuns:
    def __init__(self, options, folder):
        self.folder, self.random = folder, random.Random(options.seed)
        self.quorvex = Quorvex(options.quorvex, folder)
        self.music, self.state = folder / "music", folder / "state"
        self.kills = self.landed = self.put_back = self.undos_killed = self.starts_killed = 0
        self.methods = Counter()
        (folder / "masters").mkdir()
        copy_masters(make_masters(folder / "masters"), options.files, folder / "start")
        for name, actions in SCRIPTS.items():
            (folder / f"{name}.json").write_text(json.dumps({"actions": actions}))
        self.references = {}

    def keep_at(self, music, state):
        """Elsewhere than in the folder of the work."""
        self.music, self.state = music, state
        self.quorvex.keep_state_at(state)

    def do(self, *arguments):
        return self.quorvex.do(*arguments)

    def begin_at(self, start):
        """The music as it is after the script `start`, or as it was made; nothing else is remembered."""
        for path in (self.music, self.state):
            shutil.rmtree(path, ignore_errors=True)
        shutil.copytree(self.folder / "start", self.music)
        if start:
            self.do("run", self.folder / f"{start}.json", self.music)

    def reference(self, start, script):
        """What a whole run of the script makes, and how long it takes."""
        if (start, script) not in self.references:
            self.begin_at(start)
            old, where = digests(self.music), places(self.music)
            begin = time.monotonic()
            self.do("run", self.folder / f"{script}.json", self.music)
            seconds = time.monotonic() - begin
            new = digests(self.music)
            self.methods += ways(where, places(self.music), [name for name in new if new[name] != old[name]])
            self.references[start, script] = new, seconds
        return self.references[start, script]

    def kill(self, seconds, *arguments):
        """Returns whether it was still at work after so long."""
        with self.quorvex.start(*arguments) as process:
            time.sleep(seconds)
            process.kill()
            return process.wait() < 0

    def start_again(self):
        """Whatever is started puts things right first."""
        starts = [["runs"], ["kinds"], ["tags", self.music], ["preview", self.folder / "edit.json", self.music]]
        if self.random.random() < 0.25:
            self.starts_killed += self.kill(self.random.uniform(0, 0.05), *self.random.choice(starts))
        self.put_back += "was cut off" in self.do(*self.random.choice(starts)).stderr

    def check(self, old, new, number, what):
        """After the run `number` was killed; returns how many files are new."""
        self.start_again()
        found = digests(self.music)
        if found.keys() != old.keys():
            raise Lost(f"{what}: {found.keys() ^ old.keys()} is left or gone")
        lost = [name for name in found if found[name] not in (old[name], new[name])]
        if lost:
            raise Lost(f"{what}: neither old nor new: {lost}")
        if left := self.quorvex.left_open():
            raise Lost(f"{what}: {left} is left")
        changed = sum(found[name] != old[name] for name in found)
        listed = [json.loads(line) for line in self.do("runs", "--json").stdout.splitlines()]
        files = [run["files"] for run in listed if run["run"] == number]
        if files != ([changed] if changed else []):
            raise Lost(f"{what}: {changed} files are new, run {number} is listed with {files}")
        if 0 < changed < sum(new[name] != old[name] for name in new) and listed[0].get("state") != "cut off":
            raise Lost(f"{what}: run {number} is not listed as cut off")
        return changed

    def check_tidy(self, what):
        """What writes puts away whatever is left of journals that were being written anew."""
        if left := [path.name for path in self.state.glob("vantaro/runs/*.new")]:
            raise Lost(f"{what}: {left} is left")

    def round(self):
        start, script = self.random.choice([None, "grow", "edit"]), self.random.choice(list(SCRIPTS))
        new, seconds = self.reference(start, script)
        self.begin_at(start)
        number = 2 if start else 1
        old = digests(self.music)
        self.kills += self.kill(self.random.uniform(0, seconds), "run", self.folder / f"{script}.json", self.music)
        changed = self.check(old, new, number, f"{script} after {start}")
        self.landed += 0 < changed < sum(new[name] != old[name] for name in new)
        if changed == 0:
            return
        middle = digests(self.music)
        if self.random.random() < 0.25:
            self.undos_killed += self.kill(self.random.uniform(0, seconds * changed / len(old)), "undo", number)
            if self.check(middle, old, number + 1, f"undo of {script} after {start}"):
                self.do("undo", number + 1)  # the part of the undo that was done
                if digests(self.music) != middle:
                    raise Lost("the undone undo left other bytes")
        self.do("undo", number)
        if digests(self.music) != old:
            raise Lost(f"undo of {script} after {start} left other bytes")
        self.check_tidy(f"undo of {script} after {start}")


def main():
    def add(parser):
        parser.add_argument("--music-on", type=Path, metavar="FOLDER", help="where to keep the music")
        parser.add_argument("--state-on", type=Path, metavar="FOLDER", help="where to keep the journals")

    options = parse_options(__doc__, 1000, 200, add)
    folder = work_folder("kill-runs", options)
    work = KillRuns(options, folder)
    if options.music_on or options.state_on:
        work.keep_at(*(parent.resolve() / f"{folder.name}-{what}" if parent else folder / what
                       for parent, what in ((options.music_on, "music"), (options.state_on, "state"))))
    try:
        done = 0
        # A few rounds may all be killed too early or too late.
        while done < options.rounds or (work.landed == 0 and done < 5 * options.rounds):
            work.round()
            done += 1
            if sys.stdout.isatty():
                print(f"\r{done} of {options.rounds}", end="", flush=True)
    except Lost as lost:
        print(f"LOST: {lost}\nThe files are kept in {folder}")
        return 1
    print(f"{done} rounds over {options.files} files: {work.kills} runs killed at work, {work.landed} of them "
          f"between two files, {work.put_back} put right by the next start, {work.undos_killed} undos and "
          f"{work.starts_killed} next starts killed; nothing lost")
    print("Files written by whole runs:", ", ".join(f"{count} {how}" for how, count in work.methods.items()))
    for path in (folder, work.music, work.state):
        shutil.rmtree(path, ignore_errors=True)
    if work.landed == 0:
        print("No kill landed while files were being written: this says nothing.")
    return 0 if work.landed else 1


if __name__ == "__main__":
    sys.exit(main())
