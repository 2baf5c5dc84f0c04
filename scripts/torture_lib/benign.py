"""Photo tag changes that say the same thing in another form, each with its reason. A
difference is forgiven only when the rule sees both readings and the values agree."""

from . import tagsets

# What a JPEG's EXIF must hold; the writer adds these when it makes an EXIF block anew, from
# the JPEG's own frame and density (or the standard's defaults).
JPEG_REQUIRED_EXIF = {
    "EXIF:IFD0:XResolution", "EXIF:IFD0:YResolution", "EXIF:IFD0:ResolutionUnit",
    "EXIF:IFD0:YCbCrPositioning", "EXIF:ExifIFD:ExifVersion", "EXIF:ExifIFD:FlashpixVersion",
    "EXIF:ExifIFD:ComponentsConfiguration", "EXIF:ExifIFD:ColorSpace",
    "EXIF:ExifIFD:ExifImageWidth", "EXIF:ExifIFD:ExifImageHeight", "EXIF:GPS:GPSVersionID",
}


# The same for a TIFF's Exif and GPS directories (a hand-given position is MANUAL).
TIFF_REQUIRED_EXIF = {
    "EXIF:ExifIFD:ExifVersion", "EXIF:ExifIFD:FlashpixVersion", "EXIF:ExifIFD:ColorSpace",
    "EXIF:GPS:GPSVersionID", "EXIF:GPS:GPSProcessingMethod",
}


def _file_type(tags):
    return str(tagsets.first(tags, "File:File:FileType") or "")


def _has_directory(tags, key):
    """Whether the tags hold any of key's EXIF directory (IFD0, ExifIFD, GPS)."""
    directory = key.rsplit(":", 1)[0] + ":"
    return any(tagsets.plain(k).startswith(directory) for k in tags)


def _loads(values):
    import json
    return sorted(set(json.loads(v) if isinstance(v, str) else v for v in (values or [])), key=str)


def _embedded(tags, name):
    """The bytes of an embedded picture (exiftool -b -MPImage2), or None."""
    import subprocess
    path = tags.get("SourceFile")
    if not path:
        return None
    run = subprocess.run(["exiftool", "-b", "-" + name, path], capture_output=True, timeout=120)
    return run.stdout or None


def explained(src, out, key, before, after):
    """Why the change of key from before to after (lists of JSON values, None when absent) is
    no change of meaning; None when it may be one."""
    kind = _file_type(src)
    if key == "File:File:ExifByteOrder":
        return "the EXIF block's byte order; every value in it is compared on its own"
    if kind == "JPEG" and before is None and key in JPEG_REQUIRED_EXIF and not _has_directory(src, key):
        return "a new EXIF directory in a JPEG gets the tags the EXIF standard requires of it"
    if kind == "TIFF" and before is None and key in TIFF_REQUIRED_EXIF and not _has_directory(src, key):
        return "a new EXIF directory in a TIFF gets the tags the EXIF standard requires of it"
    if before and after and [str(v).strip() for v in _loads(before)] == [str(v).strip() for v in _loads(after)]:
        return "only white space around the value (XMP re-serialised)"
    if kind in ("JPEG", "WEBP", "Extended WEBP") and key == "EXIF:IFD0:PhotometricInterpretation" \
            and after is None:
        return "the colour model of TIFF strips means nothing in a JPEG or WebP; exiv2 drops it"
    if kind.endswith("WEBP"):
        if key == "File:File:FileType" and _loads(after) == ["Extended WEBP"]:
            return "metadata in a WebP needs the extended (VP8X) header"
        if key == "RIFF:RIFF:WebP_Flags":
            return "the VP8X flags say which chunks follow; the chunks are compared themselves"
        if key in ("RIFF:RIFF:ImageWidth", "RIFF:RIFF:ImageHeight") and _loads(before) == _loads(after):
            return "the VP8X canvas repeats the frame's size"
    if key.startswith("MPF:MPImage") and key.endswith(":MPImageStart") and before and after:
        image = key.split(":")[1]            # MPImage2: the second picture of the file
        if _embedded(src, image) is not None and _embedded(src, image) == _embedded(out, image):
            return "the later pictures of a multi-picture JPEG move with its header; each is the same"
    if key == "XMP:XMP-rdf:About" and after is None:
        moved = tagsets.first(out, "XMP:XMP-xmpMM:InstanceID")
        if moved is not None and [moved] == _loads(before):
            return "exiv2's XMP toolkit moves a uuid in rdf:about to xmpMM:InstanceID"
    if key == "XMP:XMP-xmpMM:InstanceID" and before is None:
        about = tagsets.first(src, "XMP:XMP-rdf:About")
        if about is not None and _loads(after) == [about]:
            return "exiv2's XMP toolkit moves a uuid in rdf:about to xmpMM:InstanceID"
    return None
