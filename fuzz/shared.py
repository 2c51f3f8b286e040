"""What the programs of this folder share: files of all formats, scripts, the program as a process, and a list of what
was found wrong.

    masters = make_masters(folder)
    quorvex = Quorvex(program, folder)
    outcome = quorvex.do("run", "--json", script, music, statuses=(0, 1))
    errors = outcome.errors()                     # {name: text, or None where it went well}
"""

import argparse
import hashlib
import json
import os
import random
import shutil
import signal
import subprocess
import sys
import tempfile
from collections import Counter
from pathlib import Path
from zlib import crc32

import mutagen
from mutagen import id3
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
    "aiff": ("plain.aiff", ["-write_id3v2", "1"]),
    "wma": ("plain.wma", ["-c:a", "wmav2"]),
    "wavpack": ("plain.wv", []),
    "true audio": ("plain.tta", []),
    "speex": ("plain.spx", ["-c:a", "libspeex", "-ar", "16000"]),
    "flac in ogg": ("plain.oga", ["-c:a", "flac"]),
}
# Each of them changes every file, whichever of the others came before.
SCRIPTS = {
    "grow": [{"kind": "Set value", "field": "COMMENT", "value": "grown " * 900},
             {"kind": "Add value", "field": "GENRE", "value": "Ambient"}],
    "edit": [{"kind": "Set value", "field": "TITLE", "value": "Another title"},
             {"kind": "Format value from other fields", "field": "ARTIST", "pattern": "%list_index% of %list_total%"}],
    "shrink": [{"kind": "Remove field", "field": "COMMENT"}, {"kind": "Set value", "field": "TITLE", "value": "T"}],
    "strip": [{"kind": "Remove all fields"}],
}
RUN_TIME = 120  # seconds that no run takes


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


def copy_masters(masters, count, folder):
    """`count` copies of them by turns. Returns the names."""
    folder.mkdir()
    for n in range(count):
        master = masters[n % len(masters)]
        shutil.copyfile(master, folder / f"{n:04} {master.name}")
    return sorted(path.name for path in folder.iterdir())


def digest(path):
    return hashlib.sha1(path.read_bytes()).digest()


def digests(folder):
    return {path.name: digest(path) for path in folder.iterdir()}


def places(folder):
    """What tells how a file was written: a new one took its place, it was moved within, or neither."""
    return {path.name: (path.stat().st_ino, path.stat().st_size) for path in folder.iterdir()}


def ways(old, new, written):
    """How these files were written, by what places() said before and afterwards."""
    return Counter("replaced" if new[name][0] != old[name][0] else
                   "of another size" if new[name][1] != old[name][1] else "of the same size" for name in written)


def edit_elsewhere(path, value, keeps_time):
    """Another program sets ALBUM."""
    before = path.stat()
    if path.suffix == ".flac" and shutil.which("metaflac"):
        keep = ["--preserve-modtime"] if keeps_time else []
        subprocess.run(["metaflac", *keep, "--remove-tag=ALBUM", f"--set-tag=ALBUM={value}", path], check=True)
        return
    file = mutagen.File(path)
    if file.tags is None:
        file.add_tags()
    if isinstance(file.tags, id3.ID3):
        file.tags.setall("TALB", [id3.TALB(encoding=3, text=[value])])
    else:
        names = {".m4a": "\xa9alb", ".wma": "WM/AlbumTitle"}
        file.tags[names.get(path.suffix, "Album")] = [value]
    file.save()
    if keeps_time:
        os.utime(path, ns=(before.st_atime_ns, before.st_mtime_ns))


class Outcome:
    def __init__(self, status, stdout, stderr):
        self.status, self.stdout, self.stderr = status, stdout, stderr

    def objects(self):
        """Of each file, by its name, what was printed with --json."""
        lines = [json.loads(line) for line in self.stdout.splitlines()]
        return {Path(line["path"]).name: line for line in lines}

    def errors(self):
        return {name: line.get("error") for name, line in self.objects().items()}

    def __str__(self):
        return f"status {self.status}\n{self.stdout[-300:]}{self.stderr[-1000:]}"


class Quorvex:
    """The program, with settings and journals of its own below `folder`."""

    def __init__(self, program, folder, config="config", state="state"):
        self.program, self.config = program, folder / config
        self.environment = os.environ | {"XDG_CONFIG_HOME": str(self.config)}
        self.keep_state_at(folder / state)
        self.around = {}  # what else is in its environment for now

    def keep_state_at(self, folder):
        self.state = folder
        self.environment["XDG_STATE_HOME"] = str(folder)

    def keep_times(self, keeps):
        """The preference."""
        file = self.config / "vantaro" / "preferences.json"
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(json.dumps({"keep_times": keeps}))

    def start(self, *arguments, environment=None, **options):
        streams = {"stdin": subprocess.DEVNULL, "stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        around = self.around | (environment or {})
        return subprocess.Popen([self.program, *map(str, arguments)],
                                env=self.environment | {name: str(value) for name, value in around.items()},
                                **(streams | options))

    def start_into(self, files, *arguments, **options):
        """The same, its output in files of this name; outcome_in() waits for it."""
        with open(f"{files}.out", "wb") as out, open(f"{files}.err", "wb") as err:
            return self.start(*arguments, stdout=out, stderr=err, **options)

    @staticmethod
    def outcome_in(files, process):
        status = process.wait(RUN_TIME)
        return Outcome(status, *(Path(f"{files}.{end}").read_text(errors="replace") for end in ("out", "err")))

    def do(self, *arguments, statuses=(0,), environment=None):
        with self.start(*arguments, environment=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                        text=True, errors="replace") as process:
            outcome = Outcome(None, *process.communicate(timeout=RUN_TIME))
            outcome.status = process.returncode
        if statuses and outcome.status not in statuses:
            raise Lost(f"{arguments[0]} ended with {outcome}")
        return outcome

    def runs(self):
        """Number: what is known of it."""
        lines = self.do("runs", "--json").stdout.splitlines()
        return {run["run"]: run for run in map(json.loads, lines)}

    def number_of(self, script):
        """The newest run of this script; nothing when none is listed."""
        return next((number for number, run in self.runs().items() if run["activity"] == f"run {script}"), None)

    def left_open(self):
        """Journals of runs that nobody has looked after."""
        return [path.name for path in self.state.glob("vantaro/runs/*.open")]


# What statfs says of file systems.
SMB = 0xFE534D42
XFS = 0x58465342  # a journal, and no way to shift blocks: files are replaced


class OtherSystem:
    """Environments in which the system behaves otherwise below a folder; other_system.cpp tells how."""

    def __init__(self, library, folder):
        if not library.exists():
            raise SystemExit(f"{library} is missing: build the target other_system")
        self.always = {"LD_PRELOAD": library, "OTHER_FOLDER": folder.resolve(),
                       "ASAN_OPTIONS": f"verify_asan_link_order=0:{os.environ.get('ASAN_OPTIONS', '')}"}

    def environment(self, **settings):
        """`kill=3` sets OTHER_KILL."""
        return self.always | {f"OTHER_{name.upper()}": value for name, value in settings.items() if value is not None}


class Faults:
    """What was found wrong: how often each kind of it, and the first of each with the file."""

    def __init__(self, folder):
        self.folder, self.counts, self.first = folder / "faults", Counter(), {}

    def add(self, kind, what, path=None):
        self.counts[kind] += 1
        if kind in self.first:
            return
        self.first[kind] = what
        if path and path.exists():
            self.folder.mkdir(exist_ok=True)
            shutil.copy2(path, self.folder / f"{len(self.first)} {path.name}")

    def print(self):
        for kind, count in self.counts.most_common():
            print(f"WRONG, {count} times: {kind}\n    first: {self.first[kind]}")


def take_back(quorvex, number, music, changes, faults, what, later=(), environment=None):
    """Undoes the run and looks whether what it says is so. `changes`: {name: (digest before the run, digest after
    it)}; files of other names may not be touched; `later`: names of files that may be refused whatever they hold.
    Returns {name: error, or None}."""
    before = digests(music)
    as_objects = crc32(f"{number} {what}".encode()) % 2 == 0  # what programs read, or what people read
    outcome = quorvex.do("undo", *(["--json"] if as_objects else []), number, statuses=(0, 1), environment=environment)
    after = digests(music)
    if as_objects:
        errors = outcome.errors()
    else:
        named = {}
        for line in outcome.stderr.splitlines():
            for name in changes:
                if line.startswith(f"{music / name}: "):
                    named[name] = line.removeprefix(f"{music / name}: ")
        errors = {name: named.get(name) for name in changes}
        put_back = sum(error is None for error in errors.values())
        files = f"{len(changes)} file" + ("" if len(changes) == 1 else "s")
        if changes and f"Run {number}: {files}: {put_back} put back, {len(named)} failed" not in outcome.stdout:
            faults.add("an undo counts wrongly", f"{what}: {len(named)} of {files} named, {outcome.stdout}")
    if outcome.status != (1 if any(errors.values()) else 0):
        faults.add("an undo's exit status does not fit", f"{what}: {outcome}")
    for name in changes.keys() | errors.keys():
        if name not in errors:
            faults.add("a file of the run is not mentioned by its undo", f"{what}: {name}", music / name)
        elif name not in changes:
            faults.add("an undo mentions a file that the run had not written", f"{what}: {name}", music / name)
        elif errors[name] is None and after.get(name) != changes[name][0]:
            faults.add('"put back", and the file does not have its old bytes', f"{what}: {name}", music / name)
        elif errors[name] is not None and after.get(name) != before.get(name):
            faults.add("an undo refused a file and changed it", f"{what}: {name}: {errors[name]}", music / name)
        elif errors[name] is not None and before.get(name) == changes[name][1] and name not in later:
            faults.add("an undo refused a file that holds the bytes of the run", f"{what}: {name}: {errors[name]}",
                       music / name)
    for name in before.keys() | after.keys():
        if name not in changes and before.get(name) != after.get(name):
            faults.add("an undo touched a file that the run had not written", f"{what}: {name}", music / name)
    return errors


def parse_options(description, rounds, files, add=None, folder=None):
    """The options that all of the programs have; `add` adds others to the parser."""
    parser = argparse.ArgumentParser(description=description.split("\n")[0])
    parser.add_argument("quorvex", type=Path)
    parser.add_argument("--rounds", type=int, default=rounds)
    parser.add_argument("--files", type=int, default=files)
    parser.add_argument("--seed", type=int, default=random.randrange(1 << 32))
    parser.add_argument("--folder", default=folder, help="where to make the folder that the work is done in")
    if add:
        add(parser)
    options = parser.parse_args()
    options.quorvex = options.quorvex.resolve()
    options.library = options.quorvex.parent.parent / "tests" / "libother_system.so"
    return options


def work_folder(name, options):
    """A new folder, told to whoever wants to do the same once more."""
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(1))  # by way of what cleans up
    folder = Path(tempfile.mkdtemp(prefix=f"{name}-", dir=options.folder))
    print(f"seed {options.seed}, {folder}", flush=True)
    return folder


def do_rounds(work, rounds, faults, folder):
    """Calls work.round() so often. Returns the exit status; the folder is kept when something was wrong."""
    done = 0
    try:
        while done < rounds:
            work.round()
            done += 1
            if sys.stdout.isatty():
                print(f"\r{done} of {rounds}", end="", flush=True)
    except (Lost, subprocess.TimeoutExpired) as lost:
        faults.add("the work could not go on", str(lost))
    print(f"{done} rounds: {work.summary()}")
    if faults.counts:
        faults.print()
        print(f"The first files of each are kept in {faults.folder}")
        return 1
    shutil.rmtree(folder)
    return 0
