#!/usr/bin/python3
"""Pulls the plug on runs at random moments, and looks whether anything was lost.

    sudo fuzz/power_loss.py build/release/bin/quorvex --rounds 1000

As kill_runs.py, but what counts is what had reached the medium: the files lie in a file system (ext4) in an image, and
the image is copied while the run is under way. What the kernel had not written by then is lost; parts of files that it
could as well have written are written before, at random. In half of the rounds (--killed) the run is killed first,
another start puts things right, and the power fails behind that. The next start works on the copy.

Needs root, to mount the image, and what kill_runs.py needs. The folder should be in memory. Undos are cut off as well.
"""

import argparse
import ctypes
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

from kill_runs import SCRIPTS, KillRuns, Lost, digests

IMAGE_SIZE = 96 << 20
WRITE_AND_WAIT = 7  # flags of sync_file_range
LIBC = ctypes.CDLL(None, use_errno=True)


def write_a_part(path, chance):
    """Writes some of the file to the medium, as the kernel may do at any time."""
    try:
        descriptor = os.open(path, os.O_RDONLY)
    except FileNotFoundError:
        return
    size = os.fstat(descriptor).st_size
    start = chance.randrange(size + 1) if chance.random() < 0.5 else 0
    offset, count = (ctypes.c_int64(number) for number in (start, chance.randrange(1, 1 << 16)))
    LIBC.sync_file_range(descriptor, offset, count, WRITE_AND_WAIT)
    os.close(descriptor)


class PowerLoss(KillRuns):
    def __init__(self, quorvex, files, seed, folder, killed):
        super().__init__(quorvex, files, seed, folder)
        self.killed, self.names = killed, []
        self.disk, self.device = folder / "disk", None
        self.disk.mkdir()
        self.music, self.state = self.disk / "music", self.disk / "state"
        self.environment["XDG_STATE_HOME"] = str(self.state)
        self.images = {}

    def mount(self, image):
        made = subprocess.run(["losetup", "--find", "--show", image], check=True, capture_output=True, text=True)
        self.device = made.stdout.strip()
        subprocess.run(["mount", self.device, self.disk], check=True)

    def unmount(self):
        if self.device:
            subprocess.run(["umount", self.disk], check=True)
            subprocess.run(["losetup", "--detach", self.device], check=True)
            self.device = None

    def image(self, start):
        if start not in self.images:
            path = self.folder / f"{start}.image"
            path.touch()
            os.truncate(path, IMAGE_SIZE)
            subprocess.run(["mkfs.ext4", "-q", "-b", "4096", path], check=True)
            self.mount(path)
            self.begin_at(start)
            self.unmount()
            self.images[start] = path
        return self.images[start]

    def copy_medium(self, to):
        """All of it at one moment: again when something was written meanwhile."""
        counters = Path("/sys/block", Path(self.device).name, "stat")

        def writes():
            numbers = counters.read_text().split()
            return numbers[4], numbers[8]

        while True:
            before = writes()
            shutil.copyfile(self.folder / "work.image", to)
            if writes() == before and before[1] == "0":
                return

    def wait(self, seconds):
        """The kernel writes what it likes to meanwhile."""
        end = time.monotonic() + seconds
        is_writing = self.random.random() < 0.7
        while (left := end - time.monotonic()) > 0:
            time.sleep(min(left, 0.002))
            if is_writing:
                write_a_part(self.music / self.random.choice(self.names), self.random)

    def work(self, script):
        """The arguments; "undo" takes back what was there from the start."""
        return ["undo", 1] if script == "undo" else ["run", self.folder / f"{script}.json", self.music]

    def reference(self, start, script):
        if (start, script) not in self.references:
            shutil.copyfile(self.image(start), self.folder / "work.image")
            self.mount(self.folder / "work.image")
            begin = time.monotonic()
            self.do(*self.work(script))
            self.references[start, script] = digests(self.music), time.monotonic() - begin
            self.unmount()
        return self.references[start, script]

    def round(self):
        start = self.random.choice([None, "grow", "edit"])
        script = self.random.choice([*SCRIPTS, *(["undo"] if start else [])])
        new, seconds = self.reference(start, script)
        shutil.copyfile(self.image(start), self.folder / "work.image")
        self.mount(self.folder / "work.image")
        old = digests(self.music)
        self.names = list(old)
        what = f"{script} after {start}"
        with subprocess.Popen(self.command(*self.work(script)), env=self.environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
            try:
                self.wait(self.random.uniform(0, 1.1 * seconds))
                is_done = process.poll() is not None
                process.send_signal(signal.SIGSTOP)  # it would never leave the medium alone for as long as a copy takes
                if is_put_right := self.random.random() < self.killed:
                    what += ", killed and put right"
                    process.kill()
                    process.wait()
                    self.start_again()
                    self.wait(self.random.uniform(0, 0.05))
                    kept = digests(self.music)
                self.copy_medium(self.folder / "cut.image")
            finally:
                process.kill()  # a stopped one would be waited for without end
        self.kills += not is_done
        self.unmount()
        shutil.copyfile(self.folder / "cut.image", self.folder / "work.image")
        self.mount(self.folder / "work.image")
        changed = self.check(old, new, 2 if start else 1, what)
        everything = sum(new[name] != old[name] for name in new)
        if is_done and changed != everything:
            raise Lost(f"{what}: the run had ended, and only {changed} of {everything} files are new")
        if is_put_right and digests(self.music) != kept:
            raise Lost(f"{what}: what was found right is not so on the medium")
        self.landed += 0 < changed < everything
        if changed:
            self.do("undo", 2 if start else 1)
        if digests(self.music) != old:
            raise Lost(f"undo of {what} left other bytes")
        self.unmount()


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    parser.add_argument("quorvex", type=Path)
    parser.add_argument("--rounds", type=int, default=1000)
    parser.add_argument("--files", type=int, default=60)
    parser.add_argument("--seed", type=int, default=random.randrange(1 << 32))
    parser.add_argument("--killed", type=float, default=0.5, help="share of the runs that are killed first")
    parser.add_argument("--folder", default="/dev/shm", help="where to make the folder that the work is done in")
    options = parser.parse_args()
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # by way of what unmounts
    folder = Path(tempfile.mkdtemp(prefix="power-loss-", dir=options.folder))
    print(f"seed {options.seed}, {folder}", flush=True)
    work = PowerLoss(options.quorvex.resolve(), options.files, options.seed, folder, options.killed)
    try:
        for _ in range(options.rounds):
            work.round()
    except Lost as lost:
        print(f"LOST: {lost}\nThe medium as it was cut off is {folder}/cut.image")
        return 1
    finally:
        work.unmount()
    print(f"{options.rounds} rounds over {options.files} files: {work.kills} runs cut off at work, {work.landed} of "
          f"them between two files, {work.put_back} put right by a next start; nothing lost")
    shutil.rmtree(folder)
    return 0


if __name__ == "__main__":
    sys.exit(main())
