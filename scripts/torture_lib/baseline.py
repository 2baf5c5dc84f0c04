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
        self.tags = et.tags(path)
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
