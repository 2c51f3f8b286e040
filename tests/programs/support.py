"""What the tests of the programs share: starting them, files to work on, and a second opinion about tags.

    class Titles(ProgramCase):
        def test_title(self):
            song = self.copy("06", "a.mp3")
            self.assertEqual(self.run_program("vantaro", "/tag:title=x", song).status, 0)
            self.assertEqual(read_tags(song)["TITLE"], ["x"])

Every test works in a folder of its own, in which the programs also keep their settings. ctest passes what the
tests need to know in the environment (CMakeLists.txt).
"""

import contextlib
import fcntl
import json
import os
import pty
import shutil
import struct
import subprocess
import tempfile
import termios
import threading
import unittest
import uuid
from dataclasses import dataclass
from pathlib import Path

import mutagen
from mutagen import id3

ALBUM = Path(os.environ["ALBUM"])
COMPONENT = Path(os.environ["COMPONENT"])
FIVE = {"a.mp3": "06", "b.flac": "07", "c.ogg": "03", "d.opus": "09", "e.m4a": "05"}
ORDINARY_USER = 65534
LONG_AGO = 1_500_000_000_123_456_789  # nanoseconds

SET_VALUE = "{C3DCFE2F-16F4-48B9-B0C4-961470019784}"
ADD_VALUE = "{A59C4F2C-223F-413C-A62B-8BB363DE7AB0}"
NO_KIND = "{7D6E0F53-1C0B-4B0A-9E0E-3C1F55A2B1D4}"
SCRIPT_FILE = "{0C58B0EC-7A9F-4892-BEB0-52845BEB0C4B}"


def guid(text):
    return uuid.UUID(text).bytes_le


def text_bytes(text):
    data = text.encode()
    return struct.pack("<I", len(data)) + data


def script_bytes(*actions, name=""):
    """A script as files and the library hold it. An action: (kind, parameter text)."""
    stored = b"".join(guid(kind) + text_bytes(parameters) for kind, parameters in actions)
    return text_bytes(name) + struct.pack("<I", len(actions)) + stored


def set_value(field, value):
    return SET_VALUE, f"{field}\n{value}"


def add_value(field, value):
    return ADD_VALUE, f"{field}\n{value}"


def summary(*, written=0, unchanged=0, failed=0):
    """What the programs print at the end of a run."""
    total = written + unchanged + failed
    return f"{total} track{'' if total == 1 else 's'}: {written} written, {unchanged} unchanged, {failed} failed\n"


@dataclass
class Outcome:
    status: int
    stdout: str
    stderr: str

    def objects(self):
        """Standard output as JSON, an object a line; strict about the encoding."""
        lines = self.stdout.encode().decode().split("\n")
        assert lines.pop() == "", "the last line has no end"
        return [json.loads(line) for line in lines]


# ID3 frames and MP4 atoms by the names that fields have in Vorbis comments.
NAMES = {
    "TIT2": "TITLE", "TPE1": "ARTIST", "TALB": "ALBUM", "TPE2": "ALBUMARTIST", "TRCK": "TRACKNUMBER",
    "TDRC": "DATE", "TCON": "GENRE", "TCOM": "COMPOSER", "COMM": "COMMENT", "USLT": "LYRICS",
    "\xa9nam": "TITLE", "\xa9ART": "ARTIST", "\xa9alb": "ALBUM", "aART": "ALBUMARTIST", "trkn": "TRACKNUMBER",
    "\xa9day": "DATE", "\xa9gen": "GENRE", "\xa9wrt": "COMPOSER", "\xa9cmt": "COMMENT", "\xa9lyr": "LYRICS",
}
FREE_FORM = "----:com.apple.iTunes:"


def read_all(path):
    """({field: values}, {what is no field: its content}) as mutagen sees them. The total is TOTALTRACKS,
    wherever the file has it: with the track number ("3/10"), or under either of its names."""
    file = mutagen.File(path)
    fields, rest = {}, {}
    for key, value in (file.tags or {}).items():
        if isinstance(value, id3.TXXX):
            fields[value.desc.upper()] = list(value.text)
        elif isinstance(value, id3.Frame):
            if name := NAMES.get(value.FrameID):
                texts = [value.text] if isinstance(value, id3.USLT) else value.text
                fields[name] = [str(text) for text in texts]
            else:
                rest[key] = repr(value)
        elif key.startswith(FREE_FORM):
            fields[key.removeprefix(FREE_FORM)] = [bytes(text).decode() for text in value]
        elif key == "trkn":
            fields["TRACKNUMBER"] = ["/".join(str(number) for number in value[0] if number)]
        elif key in NAMES:
            fields[NAMES[key]] = list(value)
        elif key.upper() == "METADATA_BLOCK_PICTURE" or "mp4" in file.mime[0]:
            rest[key.upper()] = repr(value)
        else:
            fields[key.upper()] = list(value)
    if pictures := getattr(file, "pictures", None):
        rest["pictures"] = [picture.write() for picture in pictures]
    number, _, total = "".join(fields.get("TRACKNUMBER", [])).partition("/")
    if total:
        fields |= {"TRACKNUMBER": [number], "TOTALTRACKS": [total]}
    elif "TRACKTOTAL" in fields:
        fields["TOTALTRACKS"] = fields.pop("TRACKTOTAL")
    return fields, rest


def read_tags(path):
    return read_all(path)[0]


def audio_digest(path):
    command = ["ffmpeg", "-v", "error", "-i", f"file:{path}", "-map", "0:a", "-f", "md5", "-"]
    return subprocess.run(command, check=True, capture_output=True, stdin=subprocess.DEVNULL).stdout


class ProgramCase(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="programs-")
        self.addCleanup(temporary.cleanup)
        self.folder = Path(temporary.name).resolve()
        self.stored = self.folder / "settings" / "vantaro" / "vnt_quorvex.dll.cfg"
        own = {"HOME": "", "XDG_CONFIG_HOME": "settings", "XDG_STATE_HOME": "state"}
        self.environment = os.environ | {name: str(self.folder / place) for name, place in own.items()}

    def copy(self, number, name):
        """A copy of the album's track of that number, changed long ago."""
        (sample,) = ALBUM.glob(f"{number} - *")
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(sample, path)
        os.utime(path, ns=(LONG_AGO, LONG_AGO))
        return path

    def copy_five(self):
        """A track of each format."""
        return [self.copy(number, name) for name, number in FIVE.items()]

    def copy_many(self, count):
        """MP3 and FLAC by turns, in one folder."""
        kinds = ("01", "mp3"), ("07", "flac")
        return [self.copy(kinds[n % 2][0], f"many/{n}.{kinds[n % 2][1]}") for n in range(count)]

    def script(self, *actions):
        path = self.folder / "script.qvx"
        path.write_bytes(guid(SCRIPT_FILE) + script_bytes(*actions))
        return path

    def garbage(self, name):
        path = self.folder / name
        path.write_bytes(b"This is no music. " * 200)
        return path

    def start(self, program, *arguments, **options):
        """`program`: "vantaro", "quorvex", or the path of one."""
        program = os.environ.get(str(program).upper(), program)
        streams = {"stdin": subprocess.DEVNULL, "stdout": subprocess.PIPE, "stderr": subprocess.PIPE}
        settings = {"cwd": self.folder, "env": self.environment} | streams | options
        return subprocess.Popen([program, *arguments], **settings)

    def run_program(self, program, *arguments, **options):
        with self.start(program, *arguments, **options) as process:
            return self.outcome(process)

    def run_as_ordinary_user(self, program, *arguments):
        """Permissions mean nothing to root."""
        if os.getuid() != 0:
            return self.run_program(program, *arguments)
        os.chown(self.folder, ORDINARY_USER, ORDINARY_USER)
        # The build folder may lie where only its owner gets.
        copied = shutil.copy(os.environ[program.upper()], self.folder)
        return self.run_program(copied, *arguments, user=ORDINARY_USER, group=ORDINARY_USER, extra_groups=[])

    def run_on_terminal(self, program, *arguments, typed="", answer=None):
        """With standard input and standard error on a terminal of its own; what is shown there comes as stderr.
        `typed` is there before the program starts; `answer`, a text or a signal, comes when a question ends."""
        master, slave = pty.openpty()
        shown = bytearray()

        def listen(process, left=answer):
            with contextlib.suppress(OSError):  # the other end is closed
                while part := os.read(master, 65536):
                    shown.extend(part)
                    if left is not None and shown.endswith(b"] "):
                        if isinstance(left, str):
                            os.write(master, left.encode())
                        else:
                            process.send_signal(left)
                        left = None

        os.write(master, typed.encode())
        with self.start(program, *arguments, stdin=slave, stderr=slave, start_new_session=True,
                        preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0)) as process:
            os.close(slave)
            listener = threading.Thread(target=listen, args=[process])
            listener.start()
            outcome = self.outcome(process)
        listener.join()
        os.close(master)
        outcome.stderr = shown.decode()
        return outcome

    @staticmethod
    def outcome(process):
        stdout, stderr = process.communicate(timeout=240)
        return Outcome(process.returncode, (stdout or b"").decode(errors="surrogateescape"),
                       (stderr or b"").decode(errors="surrogateescape"))

    def assert_line(self, text, *parts):
        """Some line has all the parts."""
        if not any(all(str(part) in line for part in parts) for line in text.split("\n")):
            self.fail(f"no line with {parts} in:\n{text}")

    @contextlib.contextmanager
    def untouched(self, *paths):
        def states():
            return [(p.read_bytes(), p.stat().st_mtime_ns, p.stat().st_ino, p.stat().st_mode) for p in paths]

        before = states()
        yield
        for path, old, new in zip(paths, before, states(), strict=True):
            self.assertTrue(old == new, f"{path} was written")
