#!/usr/bin/python3
"""Makes the album and the script on which people try the program out.

    /usr/bin/python3 make_samples.py [FOLDER]

Writes FOLDER/album and FOLDER/scripts; without FOLDER, beside this file. Files of the same name are replaced,
all others stay. Needs ffmpeg (with libmp3lame, libvorbis and libopus) and python3-mutagen.

The same versions of ffmpeg, its encoders, mutagen and zlib give the same bytes every time: nothing comes from
the clock or from chance, so a sample changes only with this file or with those tools.
"""

import argparse
import base64
import math
import struct
import subprocess
import uuid
import zlib
from dataclasses import dataclass, field
from pathlib import Path

from mutagen import id3
from mutagen.flac import FLAC, Picture
from mutagen.mp3 import MP3
from mutagen.mp4 import MP4, AtomDataType, MP4Cover, MP4FreeForm
from mutagen.oggopus import OggOpus
from mutagen.oggvorbis import OggVorbis

ALBUM = "A Slow Harbour"
ARTIST = "Tidewright Ensemble"
YEAR = "2019"
GUESTS = f"{ARTIST}, Mara Quillon & Osk Fennimore"

FRONT_COVER = 3
COVER_SIDE = 64  # pixels
CODEC_OPTIONS = {
    "mp3": ["-c:a", "libmp3lame", "-b:a", "32k", "-f", "mp3", "-id3v2_version", "0"],
    "flac": ["-c:a", "flac", "-f", "flac"],
    "ogg": ["-c:a", "libvorbis", "-q:a", "0", "-f", "ogg"],
    "opus": ["-c:a", "libopus", "-b:a", "24k", "-f", "opus"],
    "m4a": ["-c:a", "aac", "-b:a", "32k", "-f", "ipod"],
}


@dataclass
class Track:
    number: int  # place on the album; whether a tag says so is up to the fields
    title: str
    suffix: str
    chord: list[float]  # hertz
    seconds: float
    fields: dict[str, str]
    cover: bool = False
    padding: int = 0  # bytes, FLAC only
    id3_minor: int = 4  # MP3 only
    id3v1: bool = False  # MP3 only
    frames: list[id3.Frame] = field(default_factory=list)  # MP3 only: what no field can express

    @property
    def file_name(self) -> str:
        return f"{self.number:02} - {self.title}.{self.suffix}"


# The tags are untidy on purpose: each untidiness is something a script can put right.
TRACKS = [
    Track(1, "Morning Tide", "mp3", [261.63, 329.63, 392.00], 1.8, cover=True, fields={
        "TITLE": "Morning Tide", "ARTIST": ARTIST, "ALBUM": ALBUM, "TRACKNUMBER": "1",
        "DATE": "2019-05-17", "GENRE": "Ambient", "COMPOSER": "Mara Quillon"}),
    Track(2, "Gulls over Slate", "flac", [293.66, 349.23, 440.00], 1.4, cover=True, padding=4096, fields={
        "TITLE": "Gulls over Slate", "ARTIST": ARTIST, "ALBUM": ALBUM, "TRACKNUMBER": "2",
        "DATE": YEAR, "GENRE": "ambient"}),
    Track(3, "Rope and Tar", "ogg", [246.94, 293.66, 392.00], 1.6, cover=True, fields={
        "TITLE": "Rope and Tar", "ARTIST": GUESTS, "ALBUM": ALBUM, "TRACKNUMBER": "3/10",
        "DATE": YEAR, "GENRE": "Ambient / Electronic"}),
    Track(4, "The Ferryman's Song", "opus", [220.00, 261.63, 329.63], 2.0, fields={
        "TITLE": "The ferryman's song", "ARTIST": GUESTS, "ALBUM": ALBUM,
        "DATE": YEAR, "GENRE": "AMBIENT", "R128_TRACK_GAIN": "-512"}),
    Track(5, "Low Water", "m4a", [174.61, 220.00, 261.63], 1.8, cover=True, fields={
        "TITLE": "Low Water", "ARTIST": ARTIST, "ALBUM": ALBUM, "TRACKNUMBER": "5",
        "DATE": YEAR, "GENRE": "Electronica", "RECORDINGPLACE": "Old Net Loft"}),
    Track(6, "Lantern Room", "mp3", [329.63, 392.00, 493.88], 1.6, id3_minor=3, id3v1=True, fields={
        "TITLE": "Lantern Room", "ARTIST": ARTIST, "ALBUM": ALBUM, "TRACKNUMBER": "06",
        "DATE": YEAR, "GENRE": "Ambient", "COMMENT": "Ripped by HarbourRip 0.3"},
          frames=[id3.PRIV(owner="tidewright.example/shelf", data=b"\x01\x00shelf 7\xff"),
                  id3.POPM(email="listener@tidewright.example", rating=196, count=12)]),
    Track(7, "Café at the Pier", "flac", [349.23, 440.00, 523.25], 1.4, cover=True, fields={
        "TITLE": "Café at the Pier", "ARTIST": "Mara Quillon, Osk Fennimore", "ALBUM": ALBUM,
        "TRACKNUMBER": "7", "DATE": YEAR, "GENRE": "Ambient", "REPLAYGAIN_TRACK_GAIN": "-3.20 dB",
        "REPLAYGAIN_TRACK_PEAK": "0.700000",
        "LYRICS": "Two cups on the sill,\nthe window white with salt,\nand nobody in a hurry."}),
    Track(8, "Fog Signal", "ogg", [196.00, 246.94, 293.66], 2.0, fields={
        "TITLE": "  Fog Signal ", "ARTIST": f"{ARTIST} ", "TRACKNUMBER": "8",
        "DATE": YEAR, "GENRE": " Ambiant"}),
    Track(9, "Harbour Lights", "opus", [261.63, 349.23, 440.00], 1.8, fields={
        "TITLE": "harbour lights", "ARTIST": ARTIST, "ALBUM": f"{ALBUM} ",
        "DATE": YEAR, "GENRE": "electronic", "COMMENT": "Ripped by HarbourRip 0.3"}),
    Track(10, "Night Crossing", "m4a", [130.81, 196.00, 261.63, 329.63], 2.0, fields={
        "TITLE": "Night Crossing", "ARTIST": f"{ARTIST} & Mara Quillon", "ALBUM": ALBUM.upper(),
        "TRACKNUMBER": "10", "GENRE": "Ambient"}),
]


def sample_rate(track: Track) -> int:
    """Low to keep the files small; Opus takes only a few rates, and 24 kHz is among them."""
    return 24000 if track.suffix == "opus" else 22050


def tone(track: Track) -> bytes:
    """The chord as 16-bit little-endian mono samples, each note entering a little after the one below it."""
    rate = sample_rate(track)
    count = round(track.seconds * rate)
    fade = 0.25 * track.seconds
    level = 0.7 * 32767 / (1.25 * len(track.chord))  # the overtone adds a quarter to each note
    samples = []
    for index in range(count):
        now = index / rate
        value = 0.0
        for place, hertz in enumerate(track.chord):
            since_start = now - 0.12 * place
            if since_start > 0:
                angle = 2 * math.pi * hertz * since_start
                value += min(1.0, since_start / 0.1) * (math.sin(angle) + 0.25 * math.sin(2 * angle))
        edge = min(now, (count - 1) / rate - now, fade) / fade
        samples.append(round(level * value * math.sin(edge * math.pi / 2) ** 2))
    return struct.pack(f"<{count}h", *samples)


def encode(track: Track, path: Path) -> None:
    serial = ["-serial_offset", str(track.number)] if track.suffix in ("ogg", "opus") else []
    subprocess.run(
        ["ffmpeg", "-hide_banner", "-loglevel", "error", "-y",
         "-f", "s16le", "-ar", str(sample_rate(track)), "-ac", "1", "-i", "pipe:0",
         *CODEC_OPTIONS[track.suffix], *serial, "-threads", "1", "-map_metadata", "-1", "-bitexact",
         f"file:{path}"],
        input=tone(track), check=True)


def cover_png() -> bytes:
    """A low sun over the sea."""

    def chunk(kind: bytes, data: bytes) -> bytes:
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    def pixel(x: int, y: int) -> tuple[int, int, int]:
        horizon = COVER_SIDE * 5 // 8
        if y >= horizon:
            return (20, 60 + (COVER_SIDE - y) * 2, 110 + (COVER_SIDE - y) * 2)
        if (x - COVER_SIDE // 2) ** 2 + (y - horizon) ** 2 < (COVER_SIDE // 5) ** 2:
            return (255, 214, 120)
        return (150 + y * 2, 170 + y, 210 - y)

    rows = b"".join(b"\0" + bytes(part for x in range(COVER_SIDE) for part in pixel(x, y))
                    for y in range(COVER_SIDE))
    eight_bit_rgb = struct.pack(">IIBBBBB", COVER_SIDE, COVER_SIDE, 8, 2, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", eight_bit_rgb) + chunk(b"IDAT", zlib.compress(rows, 9))
            + chunk(b"IEND", b""))


def cover_block(png: bytes) -> Picture:
    picture = Picture()
    picture.type = FRONT_COVER
    picture.mime = "image/png"
    picture.width = picture.height = COVER_SIDE
    picture.depth = 24
    picture.data = png
    return picture


def tag_mp3(track: Track, path: Path, png: bytes) -> None:
    frames = {"TITLE": id3.TIT2, "ARTIST": id3.TPE1, "ALBUM": id3.TALB, "TRACKNUMBER": id3.TRCK,
              "DATE": id3.TDRC, "GENRE": id3.TCON, "COMPOSER": id3.TCOM}
    audio = MP3(path)
    audio.add_tags()
    for name, value in track.fields.items():
        if name == "COMMENT":
            audio.tags.add(id3.COMM(encoding=id3.Encoding.UTF8, lang="eng", desc="", text=[value]))
        else:
            audio.tags.add(frames[name](encoding=id3.Encoding.UTF8, text=[value]))
    for frame in track.frames:
        audio.tags.add(frame)
    if track.cover:
        audio.tags.add(id3.APIC(encoding=id3.Encoding.UTF8, mime="image/png", type=FRONT_COVER,
                                desc="", data=png))
    if track.id3_minor == 3:
        audio.tags.update_to_v23()  # texts become UTF-16 when saved, as 2.3 knows no UTF-8
    version_1 = id3.ID3v1SaveOptions.CREATE if track.id3v1 else id3.ID3v1SaveOptions.REMOVE
    audio.save(v1=version_1, v2_version=track.id3_minor)


def tag_flac(track: Track, path: Path, png: bytes) -> None:
    audio = FLAC(path)
    audio.update(track.fields)
    if track.cover:
        audio.add_picture(cover_block(png))
    audio.save(padding=lambda info: track.padding)


def tag_ogg(track: Track, path: Path, png: bytes) -> None:
    audio = OggOpus(path) if track.suffix == "opus" else OggVorbis(path)
    audio.delete()  # the encoder leaves a field with its own name
    audio.update(track.fields)
    if track.cover:
        audio["METADATA_BLOCK_PICTURE"] = base64.b64encode(cover_block(png).write()).decode("ascii")
    audio.save(padding=lambda info: 0)


def tag_m4a(track: Track, path: Path, png: bytes) -> None:
    atoms = {"TITLE": "\xa9nam", "ARTIST": "\xa9ART", "ALBUM": "\xa9alb", "DATE": "\xa9day",
             "GENRE": "\xa9gen"}
    audio = MP4(path)
    for name, value in track.fields.items():
        if name == "TRACKNUMBER":
            audio["trkn"] = [(int(value), 0)]
        elif name in atoms:
            audio[atoms[name]] = [value]
        else:
            text = MP4FreeForm(value.encode("utf-8"), AtomDataType.UTF8)
            audio[f"----:com.apple.iTunes:{name}"] = [text]
    if track.cover:
        audio["covr"] = [MP4Cover(png, MP4Cover.FORMAT_PNG)]
    audio.save()


TAGGERS = {"mp3": tag_mp3, "flac": tag_flac, "ogg": tag_ogg, "opus": tag_ogg, "m4a": tag_m4a}


def playlist() -> str:
    lines = ["#EXTM3U"]
    for track in TRACKS:
        lines += [f"#EXTINF:{round(track.seconds)},{ARTIST} - {track.title}", track.file_name]
    return "\n".join(lines) + "\n"


def script_file() -> bytes:
    """Magic bytes, an empty name, the count of actions, then each action's kind and parameter text."""
    magic = bytes.fromhex("ecb0580c9f7a9248beb052845beb0c4b")
    set_value = uuid.UUID("{C3DCFE2F-16F4-48B9-B0C4-961470019784}")
    add_value = uuid.UUID("{A59C4F2C-223F-413C-A62B-8BB363DE7AB0}")
    actions = [
        (set_value, "ALBUM", ALBUM),
        (set_value, "ALBUMARTIST", ARTIST),
        (set_value, "DATE", YEAR),
        (add_value, "GENRE", "Ambient"),
    ]

    def text(value: str) -> bytes:
        data = value.encode("utf-8")
        return struct.pack("<I", len(data)) + data

    records = b"".join(kind.bytes_le + text(f"{name}\n{value}") for kind, name, value in actions)
    return magic + text("") + struct.pack("<I", len(actions)) + records


def main() -> None:
    parser = argparse.ArgumentParser(description="Makes the sample album and the sample script.")
    parser.add_argument("folder", nargs="?", type=Path, default=Path(__file__).resolve().parent)
    folder = parser.parse_args().folder

    album = folder / "album"
    scripts = folder / "scripts"
    album.mkdir(parents=True, exist_ok=True)
    scripts.mkdir(exist_ok=True)

    png = cover_png()
    for track in TRACKS:
        path = album / track.file_name
        encode(track, path)
        TAGGERS[track.suffix](track, path, png)
    (album / "Album.m3u8").write_text(playlist(), encoding="utf-8", newline="\n")
    (scripts / "first-steps.qvx").write_bytes(script_file())


if __name__ == "__main__":
    main()
