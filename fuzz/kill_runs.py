#!/usr/bin/python3
"""Kills runs, and undos, at random moments, and looks whether anything was lost.

    fuzz/kill_runs.py build/release/bin/quorvex --rounds 1000

Each round starts a run over files of six formats and kills it (SIGKILL) at a moment anywhere within it. After the next
start, whatever it is for, every file has its old or its new bytes, no temporary file and no open journal is left, and
the cut-off run is listed with the files that it changed; undoing it gives every file its old bytes again. One round in
four kills that undo as well, and one start in four is killed while it puts things right.

Prints what happened and ends with status 1, and keeps the folder, when something was lost; also when no kill landed
while files were being written. Needs ffmpeg and mutagen.
"""

import argparse
import hashlib
import json
import os
import random
import shutil
import subprocess
import sys
import tempfile
import time
from collections import Counter
from pathlib import Path

from mutagen.flac import FLAC, Picture
from mutagen.id3 import APIC, ID3
from mutagen.mp4 import MP4, MP4Cover

PICTURE_SIZE = 60_000
SECONDS = 6
# Name, ffmpeg's options.
MASTERS = {
    "mp3": ("plain.mp3", []),
    "flac": ("plain.flac", []),
    "ogg": ("plain.ogg", ["-c:a", "libvorbis"]),
    "opus": ("plain.opus", ["-c:a", "libopus"]),
    "m4a": ("plain.m4a", ["-c:a", "aac"]),
    "m4a in front": ("front.m4a", ["-c:a", "aac", "-movflags", "faststart"]),
    "wav": ("plain.wav", []),
}
SCRIPTS = {
    "grow": [{"kind": "Set value", "field": "COMMENT", "value": "grown " * 900},
             {"kind": "Add value", "field": "GENRE", "value": "Ambient"}],
    "edit": [{"kind": "Set value", "field": "TITLE", "value": "Another title"},
             {"kind": "Format value from other fields", "field": "ARTIST", "pattern": "%list_index% of %list_total%"}],
    "shrink": [{"kind": "Remove field", "field": "COMMENT"}, {"kind": "Set value", "field": "TITLE", "value": "T"}],
    "strip": [{"kind": "Remove all fields"}],
}


class Lost(Exception):
    pass


def make_masters(folder):
    """One file of each kind, and those that can hold one with a picture."""
    picture = random.Random(1).randbytes(PICTURE_SIZE)
    masters = []
    for name, options in MASTERS.values():
        path = folder / name
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"anoisesrc=duration={SECONDS}:amplitude=0.3",
                        "-metadata", "title=Title", "-metadata", "artist=Artist", "-metadata", "genre=Noise",
                        "-metadata", "comment=A comment", *options, path], check=True, stdin=subprocess.DEVNULL)
        masters.append(path)
        if path.suffix in (".mp3", ".flac", ".m4a"):
            pictured = path.with_stem(path.stem + " pictured")
            shutil.copyfile(path, pictured)
            add_picture(pictured, picture)
            masters.append(pictured)
    return masters


def add_picture(path, data):
    if path.suffix == ".mp3":
        tag = ID3(path)
        tag.add(APIC(encoding=3, mime="image/jpeg", type=3, desc="", data=data))
        tag.save()
    elif path.suffix == ".flac":
        file = FLAC(path)
        picture = Picture()
        picture.data, picture.mime, picture.type = data, "image/jpeg", 3
        file.add_picture(picture)
        file.save()
    else:
        file = MP4(path)
        file["covr"] = [MP4Cover(data)]
        file.save()


def digests(folder):
    return {path.name: hashlib.sha1(path.read_bytes()).digest() for path in folder.iterdir()}


def places(folder):
    """What tells how a file was written: a new one took its place, it was moved within, or neither."""
    return {path.name: (path.stat().st_ino, path.stat().st_size) for path in folder.iterdir()}


class KillRuns:
    def __init__(self, quorvex, files, seed, folder):
        self.quorvex, self.folder, self.random = quorvex, folder, random.Random(seed)
        self.music, self.state = folder / "music", folder / "state"
        self.environment = os.environ | {"XDG_CONFIG_HOME": str(folder / "config"), "XDG_STATE_HOME": str(self.state)}
        self.kills = self.landed = self.put_back = self.undos_killed = self.starts_killed = 0
        self.methods = Counter()
        (folder / "masters").mkdir()
        (folder / "start").mkdir()
        masters = make_masters(folder / "masters")
        for n in range(files):
            master = masters[n % len(masters)]
            shutil.copyfile(master, folder / "start" / f"{n:04} {master.name}")
        for name, actions in SCRIPTS.items():
            (folder / f"{name}.json").write_text(json.dumps({"actions": actions}))
        self.references = {}

    def command(self, *arguments):
        return [self.quorvex, *map(str, arguments)]

    def do(self, *arguments):
        result = subprocess.run(self.command(*arguments), env=self.environment, capture_output=True, text=True,
                                stdin=subprocess.DEVNULL, timeout=120)
        if result.returncode != 0:
            raise Lost(f"{arguments[0]} ended with {result.returncode}:\n{result.stdout}{result.stderr}")
        return result

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
            for name, (inode, size) in places(self.music).items():
                if new[name] != old[name]:
                    self.methods["replaced" if inode != where[name][0] else
                                 "of another size" if size != where[name][1] else "of the same size"] += 1
            self.references[start, script] = new, seconds
        return self.references[start, script]

    def kill(self, seconds, *arguments):
        """Returns whether it was still at work after so long."""
        with subprocess.Popen(self.command(*arguments), env=self.environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
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
        if left := [path.name for path in self.state.glob("vantaro/runs/*") if path.suffix in (".open", ".new")]:
            raise Lost(f"{what}: {left} is left")
        changed = sum(found[name] != old[name] for name in found)
        listed = [json.loads(line) for line in self.do("runs", "--json").stdout.splitlines()]
        files = [run["files"] for run in listed if run["run"] == number]
        if files != ([changed] if changed else []):
            raise Lost(f"{what}: {changed} files are new, run {number} is listed with {files}")
        if 0 < changed < sum(new[name] != old[name] for name in new) and listed[0].get("state") != "cut off":
            raise Lost(f"{what}: run {number} is not listed as cut off")
        return changed

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


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("quorvex", type=Path)
    parser.add_argument("--rounds", type=int, default=1000)
    parser.add_argument("--files", type=int, default=200)
    parser.add_argument("--seed", type=int, default=random.randrange(1 << 32))
    parser.add_argument("--folder", help="where to make the folder that the work is done in")
    options = parser.parse_args()
    folder = Path(tempfile.mkdtemp(prefix="kill-runs-", dir=options.folder))
    print(f"seed {options.seed}, {folder}", flush=True)
    work = KillRuns(options.quorvex.resolve(), options.files, options.seed, folder)
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
    shutil.rmtree(folder)
    if work.landed == 0:
        print("No kill landed while files were being written: this says nothing.")
    return 0 if work.landed else 1


if __name__ == "__main__":
    sys.exit(main())
