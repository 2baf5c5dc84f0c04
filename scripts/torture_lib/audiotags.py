"""How audio tags are compared across the forms a writer may legitimately change them into,
keeping the values themselves compared: an ID3v2.2 tag saved as v2.3 or v2.4, a numeric
genre written as its name, an ASF content description written with its empty fields."""

import re

try:
    from mutagen._constants import GENRES
except ImportError:  # the runner re-executes under Debian's Python, which has mutagen
    GENRES = []

# exiftool groups an ID3v2 frame by the tag version it was read from; the same frame in
# a tag upgraded from v2.2 (or saved as v2.4) lands in another group with the same value.
ID3V2_GROUP = re.compile(r"^ID3:ID3v2_[234]:")

# v2.2's three-letter picture format names against the MIME types of v2.3 and v2.4.
PICTURE_FORMATS = {"JPG": "image/jpeg", "PNG": "image/png", "GIF": "image/gif",
                   "BMP": "image/bmp", "TIF": "image/tiff"}

# Fields of the ASF content description object: the object has a slot for each, so a
# writer that stores a title stores the others as empty texts, which is what absent means.
# Likewise an ID3v2 text frame without text: a writer may drop it.
ASF_CONTENT_DESCRIPTION = ("ASF:ASF:Title", "ASF:ASF:Author", "ASF:ASF:Copyright",
                           "ASF:ASF:Description", "ASF:ASF:Rating")


def plain_key(key):
    """The version-free key of an ID3v2 frame; the v2.2 PictureFormat is v2.3's MIME type."""
    if not ID3V2_GROUP.match(key):
        return key
    key = ID3V2_GROUP.sub("ID3:ID3v2:", key)
    return "ID3:ID3v2:PictureMIMEType" if key == "ID3:ID3v2:PictureFormat" else key


def _genre_name(number):
    return GENRES[number] if 0 <= number < len(GENRES) else str(number)


def _id3_genre(text):
    """'(17)(13)(2)', '17' and 'Rock/Pop/Country' as one list of names (exiftool joins a
    frame's several values with '/')."""
    text = str(text)
    if re.fullmatch(r"\d+", text):
        return _genre_name(int(text))
    if re.fullmatch(r"(\(\d+\))+", text):
        return "/".join(_genre_name(int(n)) for n in re.findall(r"\d+", text))
    return text


def plain_value(key, value):
    """The value compared for a plain key, or None when it means the tag is absent."""
    if key == "ID3:ID3v2:PictureMIMEType":
        if isinstance(value, list):
            return [PICTURE_FORMATS.get(str(v).upper(), v) for v in value]
        return PICTURE_FORMATS.get(str(value).upper(), value)
    if key == "ID3:ID3v2:Genre":
        return _id3_genre(value)
    if key == "QuickTime:ItemList:Genre" and isinstance(value, int):
        # the 'gnre' atom holds an ID3v1 genre number plus one; '\xa9gen' holds its name
        return _genre_name(value - 1)
    if (key in ASF_CONTENT_DESCRIPTION or key.startswith("ID3:ID3v2:")) and value == "":
        return None  # an empty text frame or slot holds nothing
    return value
