#!/usr/bin/python3
"""Runs where a rename onto a file deletes that file and is refused, and looks whether anything was lost.

    fuzz/smb_rename.py build/release/bin/quorvex --rounds 100

So does the kernel's client of SMB mounts with files that anybody holds open; here a library around the program does it:
with files that the program itself holds open or with any (a player holds them), every time or only sometimes, and
renames onto the name that is gone then may fail as well. The file system says that it is SMB, or does not, and knows
files without a name, or does not; some runs are killed in addition. After a run, an undo or any other start each file
has its old or its new bytes, or a temporary file has them that the program has named; as soon as renames work again, the
next start puts that in place. Undoing gives every file its old bytes.

Prints what was wrong and ends with status 1, and keeps the folder. Needs ffmpeg, mutagen, and the target other_system.
"""

import json
import random
import shutil
import sys

from shared import (SCRIPTS, SMB, XFS, Faults, OtherSystem, Quorvex, copy_masters, digest, digests, do_rounds, make_masters,
                    parse_options, places, ways, work_folder)


class SmbRename:
    def __init__(self, options, folder, faults):
        self.folder, self.random, self.faults = folder, random.Random(options.seed), faults
        self.music = folder / "music"
        self.quorvex = Quorvex(options.quorvex, folder)
        self.system = OtherSystem(options.library, self.music)
        for name, actions in SCRIPTS.items():
            (folder / f"{name}.json").write_text(json.dumps({"actions": actions}))
        (folder / "masters").mkdir()
        self.names = copy_masters(make_masters(folder / "masters"), options.files, folder / "start")
        self.old = digests(folder / "start")
        self.made = {}
        self.done = self.failed = self.kept = self.killed = 0
        self.methods = {False: ways({}, {}, []), True: ways({}, {}, [])}

    def result(self, script, is_smb, has_unnamed):
        """{name: digest} of what the script makes where renames work: room may be left otherwise there."""
        key = script, is_smb, has_unnamed
        if key not in self.made:
            self.begin()
            before = places(self.music)
            self.quorvex.do("run", self.folder / script, self.music, environment=self.environment(is_smb, has_unnamed))
            after = digests(self.music)
            self.methods[is_smb] += ways(before, places(self.music),
                                         [name for name in after if after[name] != self.old[name]])
            self.made[key] = after
        return self.made[key]

    def begin(self):
        for path in (self.music, self.quorvex.state):
            shutil.rmtree(path, ignore_errors=True)
        shutil.copytree(self.folder / "start", self.music, copy_function=shutil.copyfile)

    def environment(self, is_smb, has_unnamed, **settings):
        return self.system.environment(type=SMB if is_smb else XFS, unnamed=None if has_unnamed else "no", **settings)

    def refusing(self, is_smb, has_unnamed, may_kill):
        pick = self.random.choice
        settings = {"rename": pick(["held", "every"]), "spared": pick([None, self.random.randrange(30)]),
                    "limit": pick([None, 1, 5]), "again": pick([None, None, 1, 3, 1000])}
        if may_kill and self.random.random() < 0.3:
            settings["kill"] = self.random.randint(1, 200)
        return self.environment(is_smb, has_unnamed, **settings), settings

    def check(self, what, new, said):
        """Returns whether each file is there."""
        found = digests(self.music)
        temporary = {name: now for name, now in found.items() if name not in self.old}
        is_whole = True
        for name, old in self.old.items():
            if found.get(name) in (old, new[name]):
                continue
            is_whole = False
            if name in found:
                self.faults.add("a file is neither old nor new", f"{what}: {name}", self.music / name)
            elif not any(now in (old, new[name]) for now in temporary.values()):
                self.faults.add("a file is gone", f"{what}: {name}")
            elif not any(now in (old, new[name]) and str(self.music / where) in said
                         for where, now in temporary.items()):
                self.faults.add("a file is gone, and nobody says where its bytes are", f"{what}: {name}\n{said[-1000:]}")
            else:
                self.kept += 1
        return is_whole

    def start_again(self, environment=None):
        start = self.random.choice([["runs"], ["kinds"], ["tags", self.music], ["preview", self.folder / "edit.json",
                                                                                self.music]])
        # A file that is gone has no tags.
        return self.quorvex.do(*start, statuses=(0, 1), environment=environment).stderr

    def settle(self, what, new):
        """Renames work again."""
        said = self.start_again()
        self.check(f"{what}, started again", new, said)
        found = digests(self.music)
        if found.keys() != self.old.keys():
            self.faults.add("files are left or gone when renames work again",
                            f"{what}: {sorted(found.keys() ^ self.old.keys())}")
        if left := self.quorvex.left_open():
            self.faults.add("a journal is open for ever", f"{what}: {left}")
        return found

    def round(self):
        script = f"{self.random.choice(list(SCRIPTS))}.json"
        kind = self.random.random() < 0.5, self.random.random() < 0.5
        new = self.result(script, *kind)
        self.begin()
        environment, settings = self.refusing(*kind, may_kill=True)
        what = f"round {self.done}, {script}, SMB: {kind[0]}, unnamed files: {kind[1]}, {settings}"
        outcome = self.quorvex.do("run", self.folder / script, self.music, statuses=(), environment=environment)
        self.killed += outcome.status < 0
        said = outcome.stderr
        if outcome.status not in (0, 1, -9):
            self.faults.add("a run ended otherwise", f"{what}: {outcome}")
        if outcome.status < 0:
            said += self.start_again(self.refusing(*kind, may_kill=False)[0])
        self.check(what, new, said)
        self.failed += outcome.stderr.count(f"{self.music}/")
        for _ in range(self.random.randrange(2)):
            said += self.start_again(self.refusing(*kind, may_kill=False)[0])
            self.check(f"{what}, started again where renames fail", new, said)
        found = self.settle(what, new)
        runs = self.quorvex.runs()
        changed = sum(found.get(name) != old for name, old in self.old.items() if name in found)
        if sum(run["files"] for run in runs.values()) != changed:
            self.faults.add("a run is listed with other files", f"{what}: {changed} files are new, {runs}")
        if runs:
            self.undo(what, new, kind)
        self.done += 1

    def undo(self, what, new, kind):
        environment, settings = self.refusing(*kind, may_kill=True)
        what += f", undone {settings}"
        outcome = self.quorvex.do("undo", 1, statuses=(), environment=environment)
        said = outcome.stderr
        if outcome.status < 0:
            said += self.start_again(self.refusing(*kind, may_kill=False)[0])
        self.check(what, new, said)
        self.settle(what, new)
        self.quorvex.do("undo", 1, statuses=(0, 1))
        for name, old in self.old.items():
            path = self.music / name
            if not path.exists() or digest(path) != old:
                self.faults.add("a file does not get its old bytes back", f"{what}: {name}", path)

    def summary(self):
        methods = "; ".join(f"{'where it is SMB' if is_smb else 'elsewhere'}: "
                            + ", ".join(f"{count} {how}" for how, count in methods.items())
                            for is_smb, methods in self.methods.items())
        return (f"{len(self.names)} files, {self.failed} lines about files that failed, {self.kept} kept in temporary "
                f"files for a while, {self.killed} runs killed\nFiles written where renames work, {methods}")


def main():
    options = parse_options(__doc__, 100, 120)
    folder = work_folder("smb-rename", options)
    faults = Faults(folder)
    work = SmbRename(options, folder, faults)
    status = do_rounds(work, options.rounds, faults, folder)
    if status == 0 and not work.methods[False]["replaced"]:
        print("No file was replaced: this says nothing.")
        return 1
    return status


if __name__ == "__main__":
    sys.exit(main())
