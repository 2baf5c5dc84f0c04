"""What the independent readers say of one file, computed once per source and per output."""

import os
import threading

from . import payload, tools


class Reading:
    """exiftool tags and warnings, ffprobe, the payload digest and mutagen's view."""

    def __init__(self, path, workdir, kind):
        self.path = path
        self.sha256 = tools.sha256_file(path)
        et = tools.exiftool()
        self.tags = et.tags(wav_id3_visible(path, workdir) if kind == "audio" else path)
        self.warnings = et.warnings(path)
        self.probe = tools.ffprobe(path) if kind in ("audio", "video") else None
        self.probe_tags = tools.ffprobe_tags(self.probe)
        if kind == "audio":
            self.payload = payload.audio(path)
        elif kind == "video":
            self.payload = payload.movie(path) or payload.isobmff_samples(path)
        else:
            self.payload = payload.for_file(path, workdir)
        self._pictures = None
        self._pictures_done = False
        self._lock = threading.Lock()

    def pictures(self):
        """Picture bytes as mutagen reads them, None when mutagen cannot read the file."""
        with self._lock:
            if not self._pictures_done:
                self._pictures = mutagen_pictures(self.path)
                self._pictures_done = True
            return self._pictures


def wav_id3_visible(path, workdir):
    """The path exiftool is to read a WAV file's tags from. exiftool reads the ID3 tag of a
    WAV only from an 'id3 ' chunk; a file whose tag chunk is named 'ID3 ' (mutagen, TagLib)
    is read from a copy with the name in lower case, so that its tag is compared too."""
    import shutil
    import struct
    import tempfile
    with open(path, "rb") as f:
        data = f.read(1 << 26)
    if data[:4] != b"RIFF" or data[8:12] != b"WAVE":
        return path
    pos, upper = 12, None
    while pos + 8 <= len(data):
        name, size = struct.unpack("<4sI", data[pos:pos + 8])
        if name == b"id3 ":
            return path
        if name == b"ID3 " and upper is None:
            upper = pos
        pos += 8 + size + (size & 1)
    if upper is None:
        return path
    folder = tempfile.mkdtemp(dir=workdir)
    copy = os.path.join(folder, os.path.basename(path))
    shutil.copyfile(path, copy)
    with open(copy, "r+b") as f:
        f.seek(upper)
        f.write(b"id3 ")
    return copy


def mutagen_pictures(path):
    f, _ = tools.mutagen_file(path)
    if f is None:
        return None
    found = []
    tags = getattr(f, "tags", None)
    for pic in getattr(f, "pictures", []) or []:       # FLAC
        found.append(bytes(pic.data))
    if tags is None:
        return found
    try:
        items = list(tags.items()) if hasattr(tags, "items") else []
    except Exception:
        items = []
    for key, value in items:
        if str(key).startswith("APIC") or str(key).startswith("PIC"):   # ID3
            found.append(bytes(value.data))
        elif key == "covr":                                              # MP4
            found.extend(bytes(v) for v in value)
        elif str(key).lower() == "metadata_block_picture":               # Ogg
            import base64
            from mutagen.flac import Picture
            for v in value:
                try:
                    found.append(bytes(Picture(base64.b64decode(v)).data))
                except Exception:
                    pass
        elif str(key) == "WM/Picture":                                   # ASF
            for v in value:
                raw = bytes(v.value)
                # WM/Picture: type(1) size(4) mime(UTF-16 z) description(UTF-16 z) data
                pos = 5
                for _ in range(2):
                    while pos + 1 < len(raw) and raw[pos:pos + 2] != b"\0\0":
                        pos += 2
                    pos += 2
                found.append(raw[pos:])
    return found


# mutagen's names of the fields the audio commands check, per tag kind: easy keys for ID3 and
# MP4, the field names of Vorbis comments and APE tags, ASF's attribute names.
MUTAGEN_NAMES = {
    "title": ("title", "Title", "TITLE", "TIT2", "\xa9nam"),
    "artist": ("artist", "Author", "Artist", "ARTIST", "TPE1", "\xa9ART"),
    "album": ("album", "WM/AlbumTitle", "Album", "ALBUM", "TALB", "\xa9alb"),
    "comment": ("comment", "Description", "Comment", "COMMENT", "\xa9cmt"),
    "genre": ("genre", "WM/Genre", "Genre", "GENRE", "TCON", "\xa9gen"),
    "date": ("date", "WM/Year", "Year", "DATE", "TDRC", "\xa9day"),
    "track": ("tracknumber", "WM/TrackNumber", "Track", "TRACKNUMBER", "TRCK", "trkn"),
}


def mutagen_text_tags(path):
    """{field: first value as text} as mutagen reads the file, for the fields of MUTAGEN_NAMES;
    None when mutagen cannot read it. The reader for files ffprobe cannot open."""
    f, _ = tools.mutagen_file(path)
    if f is None:
        return None
    tags = getattr(f, "tags", None)
    found = {}
    if tags is None:
        return found
    for field, names in MUTAGEN_NAMES.items():
        for name in names:
            try:
                value = tags[name] if name in tags else None
            except (KeyError, ValueError, TypeError):
                value = None
            if value is None:
                continue
            first = value[0] if isinstance(value, list) and value else value
            text = getattr(first, "text", None)
            first = text[0] if isinstance(text, list) and text else first
            text = str(getattr(first, "value", first))
            if text:  # an empty text (an ASF content description's unused slot) says nothing
                found[field] = text
                break
    return found


def kind_of(cli_kind):
    """photo, audio or video from `pelorin-cli kinds` (image, raw, video, audio)."""
    kinds = cli_kind.split("+")
    if "image" in kinds or "raw" in kinds:
        return "photo"
    if "video" in kinds:
        return "video"
    if "audio" in kinds:
        return "audio"
    return None
