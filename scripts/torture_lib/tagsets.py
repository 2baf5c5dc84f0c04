"""Tag keys as exiftool -G0:1:4 spells them ('EXIF:ExifIFD:Copy1:DateTimeOriginal'), and
the patterns that say which tags a command is about or may legitimately change."""

import fnmatch
import re


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


def plain(key):
    g0, g1, name = split(key)
    name = LANGUAGE.sub("", name)
    return "%s:%s:%s" % (g0, g1, name) if g0 else name


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
        found.setdefault(plain(key), []).append(json.dumps(value, sort_keys=True, ensure_ascii=False))
    return {k: sorted(v) for k, v in found.items()}


def differences(src, out, about, ignored=()):
    """Tags, other than those the command is about or may change, that differ between
    source and output: list of (key, source values, output values)."""
    skip = tuple(ALWAYS_IGNORED) + tuple(ignored)
    a, b = _by_plain_key(src, skip, about), _by_plain_key(out, skip, about)
    return [(k, a.get(k), b.get(k)) for k in sorted(set(a) | set(b)) if a.get(k) != b.get(k)]
