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
