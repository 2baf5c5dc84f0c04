"""Tag keys as exiftool -G0:1:4 spells them ('EXIF:ExifIFD:Copy1:DateTimeOriginal'), and
the patterns that say which tags a command is about or may legitimately change."""

import fnmatch
import re

from . import audiotags


def split(key):
    """(family 0, family 1, name) of a key; the CopyN part is dropped."""
    parts = key.split(":")
    if len(parts) < 2:
        return "", "", parts[-1]
    middle = [m for m in parts[1:-1] if not re.fullmatch(r"Copy\d+", m)]
    # exiftool writes 'File:FileType' when both families name the same group.
    return parts[0], middle[0] if middle else parts[0], parts[-1]


# exiftool appends the language of a localised tag to its name ('Title-und', 'Title-en-US').
LANGUAGE = re.compile(r"-(?:[a-z]{2,3})(?:-[A-Z]{2})?$")


# The dates of an ID3v2 tag, whichever frame holds them: TYER and TORY in v2.2/v2.3, TDRC and
# TDOR in v2.4 (the writer moves a v2.4 tag's stray TYER into TDRC). exiftool puts a TYER met
# in a v2.4 tag in group 'Unknown', and from then on every TYER it reads in that process, so
# the group says nothing about the file.
ID3_DATES = {
    "ID3:ID3v2_2:Year": "ID3:ID3v2:Year", "ID3:ID3v2_3:Year": "ID3:ID3v2:Year",
    "Unknown:Unknown:Year": "ID3:ID3v2:Year", "ID3:ID3v2_4:RecordingTime": "ID3:ID3v2:Year",
    "ID3:ID3v2_2:OriginalReleaseYear": "ID3:ID3v2:OriginalReleaseYear",
    "ID3:ID3v2_3:OriginalReleaseYear": "ID3:ID3v2:OriginalReleaseYear",
    "Unknown:Unknown:OriginalReleaseYear": "ID3:ID3v2:OriginalReleaseYear",
    "ID3:ID3v2_4:OriginalReleaseTime": "ID3:ID3v2:OriginalReleaseYear",
}


def plain(key):
    g0, g1, name = split(key)
    name = LANGUAGE.sub("", name)
    key = "%s:%s:%s" % (g0, g1, name) if g0 else name
    return audiotags.plain_key(ID3_DATES.get(key, key))


def matches(key, patterns):
    """Whether 'G0:G1:Name' (copy number dropped) fits any of the fnmatch patterns."""
    p = plain(key)
    return any(fnmatch.fnmatchcase(p, pat) for pat in patterns)


def values(tags, pattern):
    """Values of every tag whose plain key fits the pattern."""
    return [v for k, v in tags.items() if fnmatch.fnmatchcase(plain(k), pattern)]


def first(tags, *patterns):
    for pat in patterns:
        found = values(tags, pat)
        if found:
            return found[0]
    return None


# Changes with every rewrite, whatever the command; one reason each.
ALWAYS_IGNORED = (
    "SourceFile",                 # the path given to exiftool
    "ExifTool:ExifTool:*",        # exiftool's version; warnings are checked on their own
    "File:System:*",              # name, folder, size, dates and permissions of the new file
    "Composite:Composite:*",      # derived by exiftool from tags that are compared themselves
)


def _by_plain_key(tags, skip, about):
    """plain key -> sorted list of its values: exiftool numbers duplicates by their order
    in the file, so a rewrite that reorders records renumbers them without changing any."""
    import json
    found = {}
    for key, value in tags.items():
        if matches(key, skip) or about(key):
            continue
        value = audiotags.plain_value(plain(key), value)
        if value is None:
            continue
        found.setdefault(plain(key), []).append(json.dumps(value, sort_keys=True, ensure_ascii=False))
    return {k: sorted(v) for k, v in found.items()}


# Matroska elements whose value is the one a reader assumes when the element is absent
# (FlagEnabled, FlagForced, CodecDecodeAll, TrackTimestampScale, FlagInterlaced 0, DisplayUnit):
# a file that writes them and one that leaves them out say the same.
MATROSKA_DEFAULTS = {"TrackUsed": 1, "TrackForced": 0, "CodecDecodeAll": 1, "TrackTimecodeScale": 1,
                     "VideoScanType": 0, "DisplayUnit": 0}


def _without_matroska_defaults(tags):
    """The tags less the Matroska track elements at their default value; DisplayWidth and
    DisplayHeight default to the track's pixel size."""
    def at_default(key, value):
        g0, g1, name = split(key)
        if g0 != "Matroska" or not g1.startswith("Track"):
            return False
        pixels = {"DisplayWidth": "ImageWidth", "DisplayHeight": "ImageHeight"}.get(name)
        if pixels:
            return str(value) == str(tags.get("%s:%s:%s" % (g0, g1, pixels)))
        return name in MATROSKA_DEFAULTS and str(value) == str(MATROSKA_DEFAULTS[name])
    return {k: v for k, v in tags.items() if not at_default(k, v)}


def differences(src, out, about, ignored=()):
    """Tags, other than those the command is about or may change, that differ between
    source and output: list of (key, source values, output values)."""
    skip = tuple(ALWAYS_IGNORED) + tuple(ignored)
    src, out = _without_matroska_defaults(src), _without_matroska_defaults(out)
    a, b = _by_plain_key(src, skip, about), _by_plain_key(out, skip, about)
    return [(k, a.get(k), b.get(k)) for k in sorted(set(a) | set(b)) if a.get(k) != b.get(k)]
