"""Small audio files of every format, the two programs over the library, and an independent look at a file.

The programs stand in the folder that the environment variable TAG_PROGRAMS names.
"""

import hashlib
import io
import json
import os
import struct
import subprocess
import tempfile
import unittest

import mutagen
import mutagen.apev2
import mutagen.asf
import mutagen.flac
import mutagen.id3
import mutagen.mp4
from mutagen.id3 import ID3

PROGRAMS = os.environ.get("TAG_PROGRAMS", "")

# Extension: arguments of ffmpeg.
ENCODERS = {
    "mp3": ["-c:a", "libmp3lame", "-id3v2_version", "0", "-write_id3v1", "0"],
    "flac": ["-c:a", "flac"],
    "ogg": ["-c:a", "libvorbis"],
    "opus": ["-c:a", "libopus"],
    "spx": ["-ar", "16000", "-c:a", "libspeex"],
    "oga": ["-c:a", "flac", "-f", "ogg"],
    "m4a": ["-c:a", "aac"],
    "wv": ["-c:a", "wavpack"],
    "tta": ["-c:a", "tta"],
    "wav": [],
    "aiff": [],
    "rf64": ["-rf64", "always", "-f", "wav"],
    "caf": [],
    "wma": ["-c:a", "wmav2"],
    "aac": ["-c:a", "aac"],
    "ac3": ["-c:a", "ac3"],
    "eac3": ["-c:a", "eac3"],
    "mka": ["-c:a", "flac"],
    # With a tag that tells no level, as most programs write them.
    "webm": ["-c:a", "libopus", "-metadata", "SOURCE=here"],
}


def synthetic_ape():
    """A Monkey's Audio file of one frame: no encoder is at hand, and nobody decodes it here."""
    frames = bytes(range(256)) * 8
    descriptor = struct.pack("<4sHHIIIIIII16s", b"MAC ", 3990, 0, 52, 24, 4, 0, len(frames), 0, 0, bytes(16))
    header = struct.pack("<HHIIIHHI", 2000, 0, 73728, 44100, 1, 16, 2, 44100)
    return descriptor + header + bytes(4) + frames


def synthetic_mpc():
    """A Musepack file (stream version 8): header, gain and an empty end."""
    header = struct.pack(">IB", 0, 8) + bytes([0x82, 0xD8, 0x44, 0x00, 0x00, 0x10])
    gain = struct.pack(">BHHHH", 1, 0, 0, 0, 0)
    packets = b""
    for name, body in ((b"SH", header), (b"RG", gain), (b"AP", bytes(100)), (b"AP", bytes(100)), (b"AP", bytes(100)),
                       (b"SE", b"")):
        packets += name + bytes([len(body) + 3]) + body
    return b"MPCK" + packets


def synthetic_dsf():
    """Two channels of DSD, a block each."""
    head = struct.pack("<4sQQQ", b"DSD ", 28, 92 + 8192, 0)
    head += struct.pack("<4sQIIIIIIQII", b"fmt ", 52, 1, 0, 2, 2, 2822400, 1, 4096 * 8, 4096, 0)
    return head + struct.pack("<4sQ", b"data", 12 + 8192) + bytes(range(256)) * 32


def long_chunk(name, body, even=True):
    return name + struct.pack(">Q", len(body)) + body + bytes(len(body) % 2 if even else 0)


def synthetic_dff():
    """Two channels of DSD, with a chunk behind it that nobody knows."""
    properties = (b"SND " + long_chunk(b"FS  ", struct.pack(">I", 2822400))
                  + long_chunk(b"CHNL", struct.pack(">H", 2) + b"SLFTSRGT") + long_chunk(b"CMPR", b"DSD \x00\0"))
    chunks = (long_chunk(b"FVER", b"\1\5\0\0") + long_chunk(b"PROP", properties)
              + long_chunk(b"DSD ", bytes(range(256)) * 32) + long_chunk(b"TEST", b"odd"))
    return b"FRM8" + struct.pack(">Q", len(chunks) + 4) + b"DSD " + chunks


def synthetic_tak():
    """What begins as a TAK file does: its audio is described by nobody here."""
    return b"tBaK" + bytes(range(256)) * 8


XIPH = ("flac", "ogg", "opus", "spx", "oga")
SYNTHETIC = {"ape": synthetic_ape, "mpc": synthetic_mpc, "dsf": synthetic_dsf, "dff": synthetic_dff, "tak": synthetic_tak}
# No decoder is at hand, or it takes the tag for audio.
UNDECODED = ("ape", "mpc", "tak", "ac3", "eac3")
# Formats with one value a field.
SINGLE = ("caf",)
FORMATS = list(ENCODERS) + list(SYNTHETIC)


def make_sample(folder, extension):
    path = os.path.join(folder, "sample." + extension)
    if extension in SYNTHETIC:
        with open(path, "wb") as file:
            file.write(SYNTHETIC[extension]())
        return path
    subprocess.run(
        ["ffmpeg", "-hide_banner", "-loglevel", "error", "-y", "-f", "lavfi", "-i", "sine=frequency=440:duration=0.4",
         "-ac", "2", "-map_metadata", "-1", "-fflags", "+bitexact", "-flags:a", "+bitexact"]
        + ENCODERS[extension] + [path], check=True)
    if extension in XIPH:
        file = mutagen.File(path)
        file.tags.clear()
        file.save()
    return path


def edit(path, *changes):
    """Changes of the form NAME=VALUE\\VALUE, or NAME for removal. Raises RuntimeError with the library's text."""
    result = subprocess.run([os.path.join(PROGRAMS, "edit_tags"), path, *changes], capture_output=True)
    if result.returncode != 0:
        raise RuntimeError(result.stderr.decode(errors="replace").strip())


def show(path):
    result = subprocess.run([os.path.join(PROGRAMS, "show_tags"), path], capture_output=True)
    if result.returncode != 0:
        raise RuntimeError(result.stderr.decode(errors="replace").strip())
    return json.loads(result.stdout)


def fields(path):
    return show(path)["fields"]


def audio(path):
    if path.rpartition(".")[2] in UNDECODED:
        with open(path, "rb") as file:
            return hashlib.md5(file.read(256)).hexdigest()
    return subprocess.run(["ffmpeg", "-hide_banner", "-loglevel", "error", "-i", path, "-map", "0:a", "-f", "md5", "-"],
                          check=True, capture_output=True).stdout.decode()


def id3_part(tags):
    result = {"id3/version": tags.version[:2]}
    for frame in tags.values():
        result["id3/" + frame.HashKey] = repr(frame)
    return result


def ape_part(path):
    try:
        tags = mutagen.apev2.APEv2(path)
    except mutagen.apev2.error:
        return {}
    return {"ape/" + key: (value.kind, repr(value.value)) for key, value in tags.items()}


def id3v1_part(path):
    with open(path, "rb") as file:
        tail = file.read()[-128:]
    if not tail.startswith(b"TAG") or tail.startswith(b"TAGEX"):
        return {}
    slots = {"title": (3, 33), "artist": (33, 63), "album": (63, 93), "year": (93, 97), "comment": (97, 125),
             "track": (125, 127), "genre": (127, 128)}
    return {"id3v1/" + name: tail[start:end] for name, (start, end) in slots.items()}


def xiph_part(tags):
    result = {"vorbis/vendor": tags.vendor}
    for name, value in tags:
        result.setdefault("vorbis/" + name, []).append(value)
    result["vorbis/order"] = [name for name, _ in tags]
    return result


# Start of the first chunk, width of the sizes, byte order, whether odd chunks are padded.
CHUNKED = {"wav": (12, 4, "little", True), "rf64": (12, 4, "little", True), "aiff": (12, 4, "big", True),
           "dff": (16, 8, "big", True), "caf": (8, 8, "big", False)}


def chunks(path):
    """Chunks that are no tags, the entries of INFO and "info", and the ID3v2 tag."""
    start, width, byte_order, padded = CHUNKED[path.rpartition(".")[2]]
    result = {}
    with open(path, "rb") as file:
        data = file.read()
    position = start
    size64 = int.from_bytes(data[28:36], "little")
    while position + 4 + width <= len(data):
        name = data[position:position + 4]
        position += 4 + width
        size = int.from_bytes(data[position - width:position], byte_order)
        if width == 4 and size == 0xFFFFFFFF and name == b"data":
            size = size64
        if width == 8 and size == 0xFFFFFFFFFFFFFFFF:
            size = len(data) - position
        body = data[position:position + size]
        if name == b"LIST" and body.startswith(b"INFO"):
            entry = 4
            while entry + 8 <= len(body):
                length = int.from_bytes(body[entry + 4:entry + 8], "little")
                result["info/" + body[entry:entry + 4].decode()] = body[entry + 8:entry + 8 + length]
                entry += 8 + length + length % 2
        elif name == b"info":
            texts = body[4:].split(b"\0")
            for key, value in zip(texts[:-1:2], texts[1:-1:2]):
                result["info/" + key.decode()] = value
            result["info count"] = int.from_bytes(body[:4], "big") * 2 == len(texts) - 1
        elif name.upper() == b"ID3 ":
            result.update(id3_part(ID3(io.BytesIO(body), translate=False)))
        elif name == b"ds64":
            result["ds64"] = (int.from_bytes(body[:8], "little") == len(data) - 8, body[8:])
        elif name != b"free":
            result["chunk/" + name.decode()] = hashlib.md5(body).hexdigest()
        position += size + (size % 2 if padded else 0)
    if start > 8:
        outer = int.from_bytes(data[4:4 + width], byte_order)
        result["outer size"] = outer == 0xFFFFFFFF or outer == len(data) - 4 - width
    return result


def dsf_part(path):
    """The tag, and everything else with its pointers checked."""
    with open(path, "rb") as file:
        data = file.read()
    size, pointer = struct.unpack("<QQ", data[12:28])
    end = pointer or size
    result = {"size": size == len(data), "head": data[:12], "rest": hashlib.md5(data[28:end]).hexdigest()}
    if pointer:
        result.update(id3_part(ID3(io.BytesIO(data[pointer:]), translate=False)))
    return result


def atoms(data):
    position = 0
    while position + 8 <= len(data):
        size = int.from_bytes(data[position:position + 4], "big")
        yield data[position + 4:position + 8], data[position + 8:position + size]
        position += size


def mp4_part(path):
    """The raw atoms of the item list: a library's view would hide those that it does not know."""
    with open(path, "rb") as file:
        content = file.read()
    for name, skip in ((b"moov", 0), (b"udta", 0), (b"meta", 0), (b"ilst", 4)):
        content = next((body for atom, body in atoms(content[skip:]) if atom == name), b"")
    result = {}
    for name, body in atoms(content):
        key = name.decode("latin-1")
        if name == b"----":
            mean, freeform = [part[1][4:].decode() for part in list(atoms(body))[:2]]
            key = "----:" + mean + ":" + freeform
        result.setdefault("mp4/" + key, []).append(body)
    return result


def asf_part(path):
    tags = mutagen.asf.ASF(path).tags
    result = {}
    for name, value in tags:
        if value.value == "":  # the content description always has all of its parts
            continue
        result.setdefault("asf/" + name, []).append((type(value).__name__, value.value))
    return result


def snapshot(path):
    """Everything that mutagen, or a plain look at the bytes, finds in a file beside the audio."""
    extension = path.rpartition(".")[2]
    result = {"audio": audio(path)}
    if extension in ("mp3", "tta", "flac"):
        try:
            result.update(id3_part(ID3(path, translate=False, load_v1=False)))
        except mutagen.id3.ID3NoHeaderError:
            pass
    if extension in ("mp3", "tta", "wv", "ape", "mpc"):
        result.update(ape_part(path))
    if extension in ("mp3", "tta", "wv", "ape", "mpc", "flac"):
        result.update(id3v1_part(path))
    if extension in CHUNKED:
        result.update(chunks(path))
    if extension == "dsf":
        result.update(dsf_part(path))
    if extension == "flac":
        for number, block in enumerate(mutagen.flac.FLAC(path).metadata_blocks):
            if block.code not in (1, 4):
                result["block/%d/%d" % (block.code, number)] = hashlib.md5(block.write()).hexdigest()
    if extension in XIPH:
        tags = mutagen.File(path).tags
        if tags is not None:
            result.update(xiph_part(tags))
    if extension == "m4a":
        result.update(mp4_part(path))
    if extension == "wma":
        result.update(asf_part(path))
    return result


def differences(before, after):
    return {key for key in before.keys() | after.keys() if before.get(key) != after.get(key)}


class TagTestCase(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def sample(self, extension):
        return make_sample(self.folder.name, extension)

    def check_edit(self, path, changes, changed):
        """After the edit exactly the keys `changed` of the snapshot differ."""
        before = snapshot(path)
        edit(path, *changes)
        after = snapshot(path)
        self.assertEqual(differences(before, after), set(changed),
                         {key: (before.get(key), after.get(key)) for key in differences(before, after)})
        return after
