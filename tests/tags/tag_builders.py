"""Tags as other programs write them, in forms that a library would refuse."""

import struct

from mutagen.id3 import ID3

PICTURE = b"\x89PNG\r\n\x1a\n" + bytes(range(256)) * 20


def save_id3(path, frames, version=4, **options):
    tags = ID3()
    for frame in frames:
        tags.add(frame)
    if version == 3:
        tags.update_to_v23()
    tags.save(path, v2_version=version, **options)


def raw_id3(path, version, frames):
    """Puts a tag of raw frames in front of the file: what libraries refuse to write."""
    body = b""
    for name, content in frames:
        size = len(content)
        if version == 4:
            size = (size & 0x7F) | (size & 0x3F80) << 1 | (size & 0x1FC000) << 2
        body += name + (struct.pack(">I", size)[1:] if version == 2 else struct.pack(">IH", size, 0)) + content
    size = len(body)
    header = b"ID3" + bytes([version, 0, 0]) + bytes(size >> shift & 0x7F for shift in (21, 14, 7, 0))
    with open(path, "rb") as file:
        audio = file.read()
    with open(path, "wb") as file:
        file.write(header + body + audio)


def text(value):
    return b"\x00" + value.encode("latin-1")


def id3v1(**values):
    sizes = {"title": 30, "artist": 30, "album": 30, "year": 4, "comment": 28}
    tag = b"TAG" + b"".join(values.get(name, b"").ljust(size, b"\0") for name, size in sizes.items())
    return tag + b"\0" + bytes([values.get("track", 0), values.get("genre", 255)])


def ebml(name, body):
    """An element; the identifier in hexadecimal digits."""
    return bytes.fromhex(name) + struct.pack(">Q", 1 << 56 | len(body)) + body


def simple_tag(name, value, further=b""):
    return ebml("67C8", ebml("45A3", name.encode()) + ebml("4487", value.encode()) + further)


def matroska_tag(simples, level=30, targets=b""):
    return ebml("7373", ebml("63C0", (ebml("68CA", bytes([level])) if level else b"") + targets) + simples)


def add_matroska_tag(path, simples):
    """To those of the track, in a file whose Tags element is the last one but for what is free behind it."""
    with open(path, "rb") as file:
        data = file.read()
    start = data.rindex(b"\x12\x54\xc3\x67")
    width = 9 - data[start + 4].bit_length()
    size = int.from_bytes(data[start + 4:start + 4 + width], "big") ^ 1 << 7 * width
    body = data[start + 4 + width:start + 4 + width + size]
    element = ebml("1254C367", body + matroska_tag(simples))
    free = len(data) - start - len(element) - 9
    assert free >= 0
    with open(path, "wb") as file:
        file.write(data[:start] + element + ebml("EC", bytes(free)))


def append(path, data):
    with open(path, "ab") as file:
        file.write(data)


def put_caf_entry(path, key, value):
    """One more entry in the chunk "info", which the file has."""
    with open(path, "rb") as file:
        data = file.read()
    start = data.index(b"info") + 4
    size, count = struct.unpack(">QI", data[start:start + 12])
    entry = key.encode() + b"\0" + value.encode() + b"\0"
    with open(path, "wb") as file:
        file.write(data[:start] + struct.pack(">QI", size + len(entry), count + 1) + entry + data[start + 12:])
