"""Fields that are written are read back as they are, and stand where other programs look for them."""

import json
import os
import shutil
import subprocess
import unittest
from pathlib import Path

import mutagen
from mutagen import aiff, apev2, asf, dsdiff, dsf, id3, mp4, wave

from tag_samples import FORMATS, PROGRAMS, SINGLE, SYNTHETIC, TagTestCase, audio, edit, fields, show, snapshot

# Field and values; what every format has to hold.
FIELDS = {
    "TITLE": ["Täst – 標題"],
    "ARTIST": ["One", "Two", "AC/DC"],
    "ALBUM": ["Album"],
    "ALBUMARTIST": ["Various"],
    "GENRE": ["Rock", "My own"],
    "DATE": ["2001-05-06"],
    "ORIGINALDATE": ["1999-03-02"],
    "COMMENT": ["first line\nsecond line"],
    "LYRICS": ["la\nlö"],
    "COMPOSER": ["A", "B"],
    "PRODUCER": ["Last, First", "Other"],
    "PERFORMER:GUITAR": ["D, E"],
    "MOOD": ["sad"],
    "BPM": ["120"],
    "GROUPING": ["g"],
    "WORK": ["w"],
    "COMPILATION": ["1"],
    "INITIALKEY": ["Am"],
    "ISRC": ["DEABC0000001"],
    "LABEL": ["L"],
    "COPYRIGHT": ["© 2001"],
    "DISCSUBTITLE": ["Side A"],
    "RELEASEDATE": ["2002-01"],
    "MUSICBRAINZ_TRACKID": ["11111111-2222-3333-4444-555555555555"],
    "MUSICBRAINZ_ALBUMID": ["a", "b"],
    "ACOUSTID_ID": ["x"],
    "RELEASECOUNTRY": ["DE"],
    "REPLAYGAIN_TRACK_GAIN": ["-6.54 dB"],
    "REPLAYGAIN_ALBUM_PEAK": ["0.987"],
    "CUESHEET": ["FILE \"a\" WAVE\n"],
    "ARTISTWEBPAGE": ["http://example.com/a"],
    "MY FIELD !#$&'()*+,-./:;?@[]^_{|}": ["own", "values"],
}

ID3V2_PLACES = {
    "TIT2": FIELDS["TITLE"], "TPE1": FIELDS["ARTIST"], "TALB": ["Album"], "TPE2": ["Various"],
    "TCON": FIELDS["GENRE"], "TDRC": ["2001-05-06"], "TDOR": ["1999-03-02"], "TDRL": ["2002-01"],
    "COMM::eng": FIELDS["COMMENT"], "TCOM": ["A", "B"], "TIPL": [["producer", "Last, First"], ["producer", "Other"]],
    "TMCL": [["guitar", "D, E"]], "TMOO": ["sad"], "TBPM": ["120"], "TIT1": ["g"], "TXXX:WORK": ["w"],
    "TCMP": ["1"], "TKEY": ["Am"], "TSST": ["Side A"], "TXXX:MusicBrainz Album Id": ["a", "b"],
    "TXXX:Acoustid Id": ["x"], "TXXX:MusicBrainz Album Release Country": ["DE"],
    "TXXX:REPLAYGAIN_TRACK_GAIN": ["-6.54 dB"], "TXXX:CUESHEET": FIELDS["CUESHEET"], "TRCK": ["3/12"],
    "TPOS": ["1/2"], "TCOP": FIELDS["COPYRIGHT"],
}
# Version 2.3 has no lists, and other frames.
ID3V23_PLACES = {
    "TIT2": FIELDS["TITLE"], "TYER": ["2001"], "TDAT": ["0605"], "TORY": ["1999-03-02"], "TXXX:MOOD": ["sad"],
    "TXXX:DISCSUBTITLE": ["Side A"], "IPLS": [["producer", "Last, First"], ["producer", "Other"], ["guitar", "D, E"]],
    "TXXX:RELEASEDATE": ["2002-01"],
}
APE_PLACES = {
    "Title": FIELDS["TITLE"], "Artist": FIELDS["ARTIST"], "Album Artist": ["Various"], "Year": ["2001-05-06"],
    "Track": ["3/12"], "Disc": ["1/2"], "Genre": FIELDS["GENRE"], "KEY": ["Am"], "Weblink": FIELDS["ARTISTWEBPAGE"],
    "MUSICBRAINZ_ALBUMID": ["a", "b"], "CUESHEET": FIELDS["CUESHEET"],
}
XIPH_PLACES = {
    "TITLE": FIELDS["TITLE"], "ARTIST": FIELDS["ARTIST"], "DATE": ["2001-05-06"], "TRACKNUMBER": ["3"],
    "TOTALTRACKS": ["12"], "DISCNUMBER": ["1"], "TOTALDISCS": ["2"], "KEY": ["Am"],
    "WEBSITE": FIELDS["ARTISTWEBPAGE"], "MUSICBRAINZ_ALBUMID": ["a", "b"], "PRODUCER": FIELDS["PRODUCER"],
}
MP4_PLACES = {
    "\xa9nam": FIELDS["TITLE"], "\xa9ART": FIELDS["ARTIST"], "aART": ["Various"], "\xa9day": ["2001-05-06"],
    "\xa9gen": FIELDS["GENRE"], "trkn": [(3, 12)], "disk": [(1, 2)], "tmpo": [120], "cpil": True,
    "\xa9grp": ["g"], "\xa9wrk": ["w"], "----:com.apple.iTunes:initialkey": [b"Am"],
    "----:com.apple.iTunes:MusicBrainz Album Id": [b"a", b"b"],
    "----:com.apple.iTunes:REPLAYGAIN_TRACK_GAIN": [b"-6.54 dB"], "----:com.apple.iTunes:Acoustid Id": [b"x"],
}
ASF_PLACES = {
    "Title": FIELDS["TITLE"], "Author": FIELDS["ARTIST"], "WM/AlbumArtist": ["Various"], "WM/Year": ["2001-05-06"],
    "WM/Genre": FIELDS["GENRE"], "WM/TrackNumber": ["3/12"], "WM/PartOfSet": ["1/2"],
    "WM/BeatsPerMinute": ["120"], "WM/IsCompilation": [True], "MusicBrainz/Album Id": ["a", "b"],
    "WM/ContentGroupDescription": ["g"], "WM/Work": ["w"], "Description": FIELDS["COMMENT"],
}
CAF_PLACES = {
    "title": "Täst – 標題", "artist": "One", "album": "Album", "album artist": "Various", "genre": "Rock",
    "recorded date": "2001-05-06", "track number": "3/12", "comments": "first line\nsecond line", "composer": "A",
    "tempo": "120", "key signature": "Am", "copyright": "© 2001",
}
# What the others read the tag with; for RF64, the plain look of the samples.
ID3V2_READERS = {"mp3": id3.ID3, "aac": id3.ID3, "tta": id3.ID3, "wav": wave.WAVE, "aiff": aiff.AIFF, "dsf": dsf.DSF,
                 "dff": dsdiff.DSDIFF}
# As a program shows them that knows names and takes the last of several. No level: those of the track's.
MKA_PLACES = {
    "TITLE": FIELDS["TITLE"][0], "ARTIST": "AC/DC", "ALBUM/TITLE": "Album", "ALBUM/ARTIST": "Various", "track": "3",
    "ALBUM/PART_NUMBER": "1", "ALBUM/TOTAL_PARTS": "12", "ALBUM/DATE_RELEASED": "2001-05-06", "TOTAL_PARTS": "2",
}
WEBM_PLACES = {
    "TITLE": FIELDS["TITLE"][0], "ARTIST": "AC/DC", "ALBUM": "Album", "ALBUM_ARTIST": "Various", "track": "3",
    "DISC": "1", "TOTAL_PARTS": "12", "DATE": "2001-05-06",
}

CODECS = {
    "mp3": ("MP3", "lossy"), "flac": ("FLAC", "lossless"), "ogg": ("Vorbis", "lossy"), "opus": ("Opus", "lossy"),
    "spx": ("Speex", "lossy"), "oga": ("FLAC", "lossless"), "m4a": ("AAC", "lossy"), "wv": ("WavPack", "lossless"),
    "tta": ("TTA", "lossless"), "wav": ("PCM", "lossless"), "aiff": ("PCM", "lossless"), "wma": ("WMA", "lossy"),
    "mka": ("FLAC", "lossless"), "webm": ("Opus", "lossy"),
    "ape": ("Monkey's Audio", "lossless"), "mpc": ("Musepack", "lossy"),
    "rf64": ("PCM", "lossless"), "dsf": ("DSD", "lossless"), "dff": ("DSD", "lossless"), "caf": ("PCM", "lossless"),
    "aac": ("AAC", "lossy"), "ac3": ("AC-3", "lossy"), "eac3": ("E-AC-3", "lossy"),
}

NUMBERS = {"TRACKNUMBER": ["3"], "TOTALTRACKS": ["12"], "DISCNUMBER": ["1"], "TOTALDISCS": ["2"]}
# Edits one after the other, and the number and total that then stand there.
PAIR_STEPS = [
    (["{number}=3"], "3", None),
    (["{total}=12"], "3", "12"),
    (["{number}=4"], "4", "12"),
    (["{number}"], None, "12"),
    (["{number}=5", "{total}=13"], "5", "13"),
    (["{total}"], "5", None),
    (["{number}=6/14"], "6", "14"),
    (["{number}", "{total}"], None, None),
]


def change(name, values):
    return name + "=" + "\\".join(values)


def plain(value):
    """mutagen's values as plain Python values."""
    if isinstance(value, id3.Frame):
        value = value.people if isinstance(value, id3.PairedTextFrame) else value.text
    if isinstance(value, list):
        return [getattr(part, "value", part) if not isinstance(part, (bytes, id3.ID3TimeStamp))
                else part if isinstance(part, bytes) else str(part) for part in value]
    return list(value) if isinstance(value, apev2.APETextValue) else value


class RoundTrip(TagTestCase):
    def check_places(self, tags, places):
        self.assertEqual({name: plain(tags[name]) for name in places if name in tags}, places)

    def check_format(self, extension):
        path = self.sample(extension)
        sound = audio(path)
        before = fields(path)
        most = 1 if extension in SINGLE else None
        written = {name: values[:most] for name, values in {**FIELDS, **NUMBERS}.items()}
        edit(path, *[change(name, values) for name, values in written.items()])
        self.assertEqual(fields(path), {**before, **written})
        self.assertEqual(audio(path), sound)
        self.check_customary(path, extension)
        shown = show(path)
        self.assertEqual([round(gain, 3) for gain in shown["gain"]], [-6.54, -1, -1000, 0.987])
        if extension not in SYNTHETIC:
            self.assertAlmostEqual(shown["length"], 0.4, delta=0.06)
        codec = tuple(shown["technical"].get(name) for name in ("codec", "encoding"))
        self.assertEqual(codec, CODECS.get(extension, (None, None)))
        cue = shown["technical"].get("cue_embedded")
        self.assertEqual(cue, "yes" if extension in ("flac", "oga", "wv", "ape", "mpc", "tta") else None)
        for number, total in (("TRACKNUMBER", "TOTALTRACKS"), ("DISCNUMBER", "TOTALDISCS")):
            edit(path, number, total)
            for changes, wanted_number, wanted_total in PAIR_STEPS:
                edit(path, *[text.format(number=number, total=total) for text in changes])
                found = fields(path)
                self.assertEqual((found.get(number), found.get(total)),
                                 (wanted_number and [wanted_number], wanted_total and [wanted_total]), changes)
        edit(path, *FIELDS)
        self.assertEqual(fields(path), before)
        self.assertEqual(audio(path), sound)

    def check_customary(self, path, extension):
        if extension in ID3V2_READERS:
            file = ID3V2_READERS[extension](path)
            self.check_places(file if isinstance(file, id3.ID3) else file.tags, ID3V2_PLACES)
        elif extension == "rf64":
            self.assertEqual(self.tags_in_ffprobe(path)["title"], FIELDS["TITLE"][0])
            self.assertIn("id3/TMCL", snapshot(path))
        elif extension == "caf":
            self.assertEqual({**self.tags_in_ffprobe(path), **CAF_PLACES}, self.tags_in_ffprobe(path))
        elif extension in ("wv", "ape", "mpc", "ac3", "eac3", "tak"):
            self.check_places(apev2.APEv2(path), APE_PLACES)
        elif extension == "m4a":
            self.check_places(mp4.MP4(path), MP4_PLACES)
        elif extension in ("mka", "webm"):
            found = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "format_tags", "-of", "json", path],
                                   check=True, capture_output=True).stdout
            tags = json.loads(found)["format"]["tags"]
            self.assertLessEqual((MKA_PLACES if extension == "mka" else WEBM_PLACES).items(), tags.items())
        elif extension == "wma":
            self.check_places(asf.ASF(path), ASF_PLACES)
        else:
            self.check_places(mutagen.File(path), XIPH_PLACES)

    @staticmethod
    def tags_in_ffprobe(path):
        shown = subprocess.run(["ffprobe", "-v", "error", "-of", "json", "-show_format", path], check=True,
                               capture_output=True).stdout
        return json.loads(shown)["format"]["tags"]

    def test_version_23(self):
        path = self.sample("mp3")
        tags = id3.ID3()
        tags.add(id3.TENC(encoding=0, text="x"))
        tags.save(path, v2_version=3)
        several = {name for name, values in FIELDS.items() if len(values) > 1 and name != "PRODUCER"}
        single = {name: values for name, values in FIELDS.items() if name not in several}
        edit(path, *[change(name, values) for name, values in single.items()])
        self.assertEqual(fields(path), {**single, "ENCODEDBY": ["x"]})
        tags = id3.ID3(path, translate=False)
        self.assertEqual(tags.version[:2], (2, 3))
        self.check_places(tags, ID3V23_PLACES)
        edit(path, *[change(name, FIELDS[name]) for name in several])
        self.assertEqual(fields(path), {**FIELDS, "ENCODEDBY": ["x"]})
        self.assertEqual(id3.ID3(path, translate=False).version[:2], (2, 4))

    def test_dates_of_23(self):
        path = self.sample("mp3")
        tags = id3.ID3()
        tags.add(id3.TENC(encoding=0, text="x"))
        tags.save(path, v2_version=3)
        for date in ("2001", "2001-05", "2001-05-06", "2001-05-06T07:08", "2001-05-06 07:08:09", "about 1970"):
            edit(path, "DATE=" + date)
            self.assertEqual(fields(path)["DATE"], [date])

    def test_empty_values(self):
        for extension, wanted in (("flac", ["", "a", ""]), ("ogg", ["", "a", ""]), ("m4a", ["", "a", ""]),
                                  ("mp3", ["a"]), ("wv", ["a"]), ("wma", ["a"])):
            with self.subTest(extension):
                path = self.sample(extension)
                edit(path, "TITLE=\\a\\", "ALBUM=")
                found = fields(path)
                self.assertEqual(found["TITLE"], wanted)
                self.assertEqual(found.get("ALBUM"), [""] if len(wanted) == 3 else None)

    def test_refusals(self):
        rows = [
            ("m4a", "TRACKNUMBER=A1", "TRACKNUMBER"),
            ("m4a", "TRACKNUMBER=70000", "65535"),
            ("m4a", "TOTALDISCS=1\\2", "TOTALDISCS"),
            ("m4a", "BPM=120.5", "BPM"),
            ("m4a", "COMPILATION=yes", "COMPILATION"),
            ("wv", "A=1", "2 to 255"),
            ("wv", "TAG=1", "TAG"),
            ("flac", "A~B=1", "A~B"),
            ("ogg", "METADATA_BLOCK_PICTURE=1", "pictures"),
            ("mp3", "TITLE=\udcff", "UTF-8"),
            ("mp3", "TRACKNUMBER=1/2 TOTALTRACKS=3", "TRACKNUMBER"),
            ("wma", "IsVBR=1", "IsVBR"),
            ("wma", "COMMENT=" + "x" * 32767, "too long"),
            ("caf", "ARTIST=A\\B", "one value"),
        ]
        for extension, bad, text in rows:
            with self.subTest(bad):
                path = self.sample(extension)
                edit(path, "ALBUM=a")
                with open(path, "rb") as file:
                    before = file.read()
                with self.assertRaisesRegex(RuntimeError, text):
                    edit(path, "ALBUM=b", *bad.split())
                with open(path, "rb") as file:
                    self.assertEqual(file.read(), before)

    def test_numbers_with_zeros(self):
        for extension, wanted in (("m4a", "3"), ("mp3", "03"), ("flac", "03"), ("wma", "03"), ("wv", "03")):
            with self.subTest(extension):
                path = self.sample(extension)
                edit(path, "TRACKNUMBER=03")
                self.assertEqual(fields(path)["TRACKNUMBER"], [wanted])

    def test_files_that_are_none(self):
        path = os.path.join(self.folder.name, "a.mp3")
        for make, text in ((lambda: None, "File not found"),
                           (lambda: Path(path).write_bytes(b""), "neither MPEG audio nor tags"),
                           (lambda: Path(path).write_bytes(b"hello" * 99), "first frame of MPEG audio is missing"),
                           (lambda: (os.remove(path), os.mkdir(path)), "Is a directory"),
                           (lambda: (os.rmdir(path), os.mkfifo(path)), "It is no regular file")):
            make()
            for act in (show, lambda name: edit(name, "TITLE=x")):
                with self.assertRaisesRegex(RuntimeError, text):
                    act(path)

    def test_file_that_may_not_be_written(self):
        path = self.sample("mp3")
        edit(path, "TITLE=a")
        before = Path(path).read_bytes()
        os.chmod(self.folder.name, 0o755)
        # Root may write everything.
        user = {"user": 65534} if os.geteuid() == 0 else {}
        for mode, program, text in ((0o444, "edit_tags", "Access denied"), (0, "show_tags", "Access denied")):
            os.chmod(path, mode)
            # The build folder may lie where only its owner gets.
            copied = shutil.copy(os.path.join(PROGRAMS, program), self.folder.name)
            result = subprocess.run([copied, path, "TITLE=b"], capture_output=True, **user)
            self.assertIn(text, result.stderr.decode())
        os.chmod(path, 0o644)
        self.assertEqual(Path(path).read_bytes(), before)

    def test_names_that_are_no_utf8(self):
        path = self.sample("mp3")
        other = os.fsencode(self.folder.name) + b"/\xff\xfe.mp3"
        os.rename(path, other)
        edit(other, "TITLE=x")
        self.assertEqual(fields(other), {"TITLE": ["x"]})

    def test_wrong_extension(self):
        path = self.sample("flac")
        other = path[:-4] + "mp3"
        os.rename(path, other)
        edit(other, "TITLE=x")
        self.assertEqual(show(other)["technical"]["codec"], "FLAC")
        self.assertEqual(subprocess.run(["flac", "-s", "-t", other]).returncode, 0)


for extension_name in FORMATS:
    setattr(RoundTrip, "test_" + extension_name,
            lambda self, extension=extension_name: self.check_format(extension))


if __name__ == "__main__":
    unittest.main()
