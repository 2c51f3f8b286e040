#!/usr/bin/python3
"""Pulls the plug on runs at random moments, and looks whether anything was lost.

    sudo fuzz/power_loss.py build/release/bin/quorvex --rounds 1000 --file-system xfs --state-elsewhere

As kill_runs.py, but what counts is what had reached the medium: the files lie in a file system in an image, and the
image is copied while the run is under way. What the kernel had not written by then is lost; parts of files that it
could as well have written are written before, at random. In half of the rounds (--killed) the run is killed first,
another start puts things right, and the power fails behind that. The next start works on the copy, which is mounted
as systems do it: behind the check that the file system wants.

With --state-elsewhere the journals lie in a second file system, ext4, in an image that is copied at about the same
time: what reaches the one medium says nothing about the other.

Needs root, to mount the image, and what kill_runs.py needs. The folder should be in memory. Undos are cut off as well.
"""

import ctypes
import os
import random
import shutil
import signal
import subprocess
import sys
import time
from dataclasses import dataclass
from pathlib import Path

from kill_runs import KillRuns
from shared import SCRIPTS, Lost, digests, parse_options, work_folder

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


@dataclass
class FileSystem:
    """Commands that make, check and mount it; each gets a path of an image or a device at its end."""
    make: list
    check: list = None  # its exit status says what it found; everything up to `mended` is well
    mended: int = 1
    options: str = ""
    size: int = 128 << 20


FILE_SYSTEMS = {
    "ext4": FileSystem(["mkfs.ext4", "-q", "-b", "4096"]),
    "ext3": FileSystem(["mkfs.ext3", "-q"]),
    "ext4-no-journal": FileSystem(["mkfs.ext4", "-q", "-b", "4096", "-O", "^has_journal"], ["e2fsck", "-f", "-y"], 2),
    "ext2": FileSystem(["mkfs.ext2", "-q"], ["e2fsck", "-f", "-y"], 2),
    "xfs": FileSystem(["mkfs.xfs", "-q"], size=320 << 20),
    "btrfs": FileSystem(["mkfs.btrfs", "-q", "--mixed"], size=192 << 20),
    "vfat": FileSystem(["mkfs.vfat", "-F", "32"], ["fsck.vfat", "-a", "-w"], options="utf8,umask=077"),
    "exfat-fuse": FileSystem(["mkfs.exfat"], ["fsck.exfat", "-y"], options="umask=077"),
    "ntfs-3g": FileSystem(["mkfs.ntfs", "-q", "-F", "-f", "-s", "512", "-p", "0", "-H", "0", "-S", "0"], ["ntfsfix"], options="umask=077"),
    "overlay": FileSystem(["mkfs.ext4", "-q", "-b", "4096"]),  # both of its layers are in this one
}


class Medium:
    """A file system in an image."""

    def __init__(self, kind, options, folder, name):
        self.kind, self.system, self.folder, self.name = kind, FILE_SYSTEMS[kind], folder, name
        self.options = ",".join(filter(None, [self.system.options, options]))
        self.top, self.device = folder / name, None
        self.top.mkdir()
        self.layers = folder / f"{name} layers" if kind == "overlay" else None
        if self.layers:
            self.layers.mkdir()

    def image(self, name):
        return self.folder / f"{self.name} {name}.image"

    def make(self, image):
        image.touch()
        os.truncate(image, self.system.size)
        subprocess.run([*self.system.make, image], check=True, stdout=subprocess.DEVNULL)

    def mount(self, image, is_checked=False):
        if is_checked and self.system.check:
            result = subprocess.run([*self.system.check, image], capture_output=True, text=True)
            if result.returncode > self.system.mended:
                raise Lost(f"{self.system.check[0]} ended with {result.returncode}:\n{result.stdout}{result.stderr}")
        made = subprocess.run(["losetup", "--find", "--show", image], check=True, capture_output=True, text=True)
        self.device = made.stdout.strip()
        options = self.options
        if self.layers:
            subprocess.run(["mount", self.device, self.layers], check=True)
            lower, upper, work = (self.layers / layer for layer in ("lower", "upper", "work"))
            for layer in (lower, upper, work):
                layer.mkdir(exist_ok=True)
            options += f"lowerdir={lower},upperdir={upper},workdir={work}"
        options = ["-o", options] if options else []
        subprocess.run(["mount", "-t", self.kind.removesuffix("-no-journal"), *options, self.device, self.top], check=True)

    def make_lower(self):
        """What is in the file system becomes the lower layer, the upper one is empty. Unmounted afterwards."""
        if self.layers:
            subprocess.run(["umount", self.top], check=True)
            for path in (self.layers / "upper").iterdir():
                path.rename(self.layers / "lower" / path.name)
        self.unmount()

    def unmount(self):
        if not self.device:
            return
        for top in filter(None, (self.top, self.layers)):
            if os.path.ismount(top):
                subprocess.run(["umount", top], check=True)
        subprocess.run(["losetup", "--detach", self.device], check=True)
        self.device = None

    def counters(self):
        """What was written so far, and what is being written."""
        numbers = Path("/sys/block", Path(self.device).name, "stat").read_text().split()
        return numbers[4], numbers[8]

    def copy(self, image, to):
        """All of it at one moment: again when something was written meanwhile."""
        while True:
            before = self.counters()
            shutil.copyfile(image, to)
            if self.counters() == before and before[1] == "0":
                return


class PowerLoss(KillRuns):
    def __init__(self, options, folder):
        super().__init__(options, folder)
        self.killed, self.names = options.killed, []
        self.disk = Medium(options.file_system, options.mount_options, folder, "disk")
        self.media = [self.disk]
        if options.state_elsewhere:
            self.media.append(Medium("ext4", "", folder, "other disk"))
        self.keep_at(self.disk.top / "music", self.media[-1].top / "state")
        self.made = set()

    def mount(self, name, is_checked=False):
        for medium in self.media:
            medium.mount(medium.image(name), is_checked)

    def unmount(self):
        for medium in self.media:
            medium.unmount()

    def copy_images(self, name, to):
        for medium in self.media:
            shutil.copyfile(medium.image(name), medium.image(to))

    def make_images(self, start):
        """Returns their name."""
        if start not in self.made:
            for medium in self.media:
                medium.make(medium.image(start))
            self.mount(start)
            self.begin_at(start)
            for medium in self.media:
                medium.make_lower()
            self.made.add(start)
        return start

    def copy_media(self):
        for medium in self.random.sample(self.media, len(self.media)):
            medium.copy(medium.image("work"), medium.image("cut"))

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
            self.copy_images(self.make_images(start), "work")
            self.mount("work")
            begin = time.monotonic()
            self.do(*self.work(script))
            self.references[start, script] = digests(self.music), time.monotonic() - begin
            self.unmount()
        return self.references[start, script]

    def round(self):
        start = self.random.choice([None, "grow", "edit"])
        script = self.random.choice([*SCRIPTS, *(["undo"] if start else [])])
        new, seconds = self.reference(start, script)
        self.copy_images(self.make_images(start), "work")
        self.mount("work")
        old = digests(self.music)
        self.names = list(old)
        what = f"{script} after {start}"
        with self.quorvex.start(*self.work(script)) as process:
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
                self.copy_media()
            finally:
                process.kill()  # a stopped one would be waited for without end
        self.kills += not is_done
        self.unmount()
        self.copy_images("cut", "work")
        self.mount("work", is_checked=True)
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
    def add(parser):
        parser.add_argument("--killed", type=float, default=0.5, help="share of the runs that are killed first")
        parser.add_argument("--file-system", choices=FILE_SYSTEMS, default="ext4")
        parser.add_argument("--mount-options", default="", metavar="OPTIONS")
        parser.add_argument("--state-elsewhere", action="store_true", help="keep the journals in another file system")
        parser.add_argument("--go-on", action="store_true", help="after a loss, and count them")

    options = parse_options(__doc__, 1000, 60, add, folder="/dev/shm")
    folder = work_folder("power-loss", options)
    work = PowerLoss(options, folder)
    losses = 0
    for done in range(1, options.rounds + 1):
        try:
            work.round()
        except Lost as lost:
            losses += 1
            print(f"LOST, round {done}: {lost}", flush=True)
            if not options.go_on:
                print(f"The medium as it was cut off is {work.disk.image('cut')}")
                break
        finally:
            work.unmount()
    print(f"{done} rounds over {options.files} files on {options.file_system}: {work.kills} runs cut off at work, "
          f"{work.landed} of them between two files, {work.put_back} put right by a next start; "
          + (f"{losses} rounds with losses" if losses else "nothing lost"))
    if losses == 0 or options.go_on:
        shutil.rmtree(folder)
    return 1 if losses else 0


if __name__ == "__main__":
    sys.exit(main())
