"""The writing commands of pelorin-cli, per media kind: their arguments, what each
must read back, the tags it is about, and the tags it may change besides.

Each command's 'about' patterns name the tags it changes on purpose; 'ignored' names
tags that legitimately change as a side effect, each with its reason. Everything
else must read back exactly as in the source (exiftool -G0:1:4 -a -n -b)."""

import datetime
import os
import shutil

from . import tagsets
from .tagsets import first, values

TITLE = "Torture title"
ARTIST = "Zoë Torture-Artist"
ALBUM = "Torture album"
COMMENT = "Torture comment"
DESCRIPTION = "Torture description"
KEYWORDS = ("alpha", "beta")
ORIGINAL = "2001:02:03 04:05:06"
DIGITIZED = "2001:02:03 04:05:07"
LAT, LON, ALT = 12.5, -45.25, 100.0
GPS_DATE, GPS_TIME = "2020:01:02", "03:04:05"
NAME_DATE = "2016:05:01 12:30:45"   # the date in the name date-from-name is given

EXIF_DATES = ("EXIF:ExifIFD:DateTimeOriginal", "EXIF:ExifIFD:CreateDate", "EXIF:IFD0:ModifyDate")
# The XMP mirrors of the EXIF dates, kept in step by date commands.
XMP_DATES = ("XMP:XMP-exif:DateTimeOriginal", "XMP:XMP-exif:DateTimeDigitized",
             "XMP:XMP-xmp:CreateDate", "XMP:XMP-xmp:ModifyDate",
             "XMP:XMP-photoshop:DateCreated", "XMP:XMP-tiff:DateTime")
DATE_TAGS = EXIF_DATES + XMP_DATES

# Tags that move with any rewrite of a photo; the data they point to is compared as
# payload (strips, tiles, previews) or does not matter (a digest of re-serialised bytes).
PHOTO_LAYOUT = (
    "EXIF:IFD1:ThumbnailOffset",      # the thumbnail moves when IFD0/ExifIFD change size
    "EXIF:*:StripOffsets",            # TIFF-based raws: strips move behind grown IFDs
    "EXIF:*:TileOffsets",             # the same for tiled raws
    "*:*:PreviewImageStart",          # embedded previews (also in maker notes) move likewise
    "EXIF:*:JpgFromRawStart",         # and the full-size JPEG of a raw
    "File:File:CurrentIPTCDigest",    # exiftool's digest of the IPTC bytes, re-serialised by exiv2
    "Photoshop:Photoshop:IPTCDigest",  # Photoshop's digest, kept current with those bytes
    "XMP:XMP-x:XMPToolkit",           # exiv2 names itself when it re-serialises the XMP packet
)

# Photoshop's and exiftool's digests of the IPTC record follow any IPTC change.
IPTC_DIGESTS = ("Photoshop:Photoshop:IPTCDigest", "File:File:CurrentIPTCDigest")
# Written once when the IPTC record is rewritten, even where the source held it twice
# (it is not repeatable).
IPTC_REWRITE = ("IPTC:IPTC:CodedCharacterSet",)
# A photo without EXIF gets a new EXIF block, in exiv2's byte order, when a field lands there.
NEW_EXIF = ("File:File:ExifByteOrder",)
# A JPEG's EXIF requires the GPS directory's version; a copy gets one where its source lacked it.
JPEG_GPS_VERSION = ("EXIF:GPS:GPSVersionID",)
# HEIF: new Exif/XMP items go into an added 'mdat' behind the image data.
HEIF_LAYOUT = ("QuickTime:QuickTime:MediaDataSize", "QuickTime:QuickTime:MediaDataOffset")


class Command:
    def __init__(self, name, kinds, argv, about=(), ignored=(), expect=None,
                 keeps_payload=True, same_container=True, prepare=None, about_all_but=None,
                 payload_parts=None):
        self.name = name
        self.kinds = kinds
        self.argv = argv                   # function(ctx) -> argument list after the output
        self.about_patterns = tuple(about)
        self.about_all_but = about_all_but  # patterns kept: every other tag is 'about'
        photo_rewrite = PHOTO_LAYOUT + IPTC_REWRITE + HEIF_LAYOUT
        self.ignored = tuple(ignored) + (photo_rewrite if "photo" in kinds else ())
        self.expect = expect or (lambda ctx: [])
        self.keeps_payload = keeps_payload
        self.same_container = same_container
        self.prepare = prepare             # function(source, workdir) -> path to run on
        self.payload_parts = payload_parts  # prefixes of the payload parts that must stay

    def about(self, key):
        if self.about_all_but is not None and not tagsets.matches(key, self.about_all_but):
            return True
        return tagsets.matches(key, self.about_patterns)


# ---- expectations (each returns a list of problems) ----

def absent(*patterns):
    def check(ctx):
        kept = patterns
        if first(ctx.src_tags, "File:File:FileType") == "CR3":
            # A CR3 keeps its maker notes (raw developers need them), by design.
            kept = tuple(p for p in patterns if not p.startswith("MakerNotes:"))
        return ["%s still present (%r)" % (k, _short(v)) for k, v in ctx.out_tags.items()
                if tagsets.matches(k, kept)]
    return check


def _short(v):
    s = str(v)
    return s if len(s) <= 60 else s[:57] + "..."


def _date_of(value):
    try:
        return datetime.datetime.strptime(str(value)[:19], "%Y:%m:%d %H:%M:%S")
    except ValueError:
        return None


def expect_set_date(ctx):
    problems = []
    want = {"EXIF:ExifIFD:DateTimeOriginal": ORIGINAL, "EXIF:IFD0:ModifyDate": ORIGINAL,
            "EXIF:ExifIFD:CreateDate": DIGITIZED}
    xmp_only = ctx.sidecar is not None
    if xmp_only:
        want = {"XMP:XMP-exif:DateTimeOriginal": ORIGINAL}
    for key, value in want.items():
        got = first(ctx.out_tags, key)
        if got is None or not str(got).startswith(value):
            problems.append("%s reads %r, not %r" % (key, got, value))
    for key in XMP_DATES:
        if key in ("XMP:XMP-exif:DateTimeOriginal", "XMP:XMP-photoshop:DateCreated"):
            wanted = ORIGINAL
        elif key in ("XMP:XMP-exif:DateTimeDigitized", "XMP:XMP-xmp:CreateDate"):
            wanted = DIGITIZED
        else:
            wanted = ORIGINAL
        for got in values(ctx.out_tags, key):
            if not str(got).replace("-", ":").replace("T", " ").startswith(wanted):
                problems.append("%s reads %r, not %r (XMP out of step)" % (key, got, wanted))
    return problems


SHIFT = datetime.timedelta(days=1, hours=2)


def expect_shifted(ctx):
    problems = []
    if ctx.sidecar is not None:
        before = _date_of(first(ctx.src_tags, "EXIF:ExifIFD:DateTimeOriginal"))
        after = _date_of(first(ctx.out_tags, "XMP:XMP-exif:DateTimeOriginal"))
        if before is not None and after != before + SHIFT:
            problems.append("sidecar DateTimeOriginal %s, not %s" % (after, before + SHIFT))
        return problems
    for key in EXIF_DATES:
        before = _date_of(first(ctx.src_tags, key))
        if before is None:
            continue
        after = _date_of(first(ctx.out_tags, key))
        if after != before + SHIFT:
            problems.append("%s: %s became %s, not %s" % (key, before, after, before + SHIFT))
    return problems


def _near(value, want, tolerance):
    try:
        return abs(float(value) - want) < tolerance
    except (TypeError, ValueError):
        return False


def expect_gps(ctx):
    problems = []
    for name, want in (("GPSLatitude", LAT), ("GPSLongitude", LON), ("GPSAltitude", ALT)):
        got = first(ctx.out_tags, "Composite:Composite:" + name, "XMP:XMP-exif:" + name)
        if not _near(got, want, 1e-5):
            problems.append("%s reads %r, not %r" % (name, got, want))
    if ctx.sidecar is None:
        if first(ctx.out_tags, "EXIF:GPS:GPSDateStamp") != GPS_DATE:
            problems.append("GPSDateStamp reads %r" % first(ctx.out_tags, "EXIF:GPS:GPSDateStamp"))
        stamp = first(ctx.out_tags, "EXIF:GPS:GPSTimeStamp")
        if str(stamp) not in (GPS_TIME, "3 4 5"):
            problems.append("GPSTimeStamp reads %r" % stamp)
    return problems


def expect_fields(ctx):
    problems = []
    checks = (("title", TITLE, ("IPTC:IPTC:ObjectName", "XMP:XMP-dc:Title")),
              ("artist", ARTIST, ("EXIF:IFD0:Artist", "XMP:XMP-dc:Creator", "IPTC:IPTC:By-line")),
              ("description", DESCRIPTION, ("EXIF:IFD0:ImageDescription", "XMP:XMP-dc:Description",
                                            "IPTC:IPTC:Caption-Abstract")))
    for label, want, keys in checks:
        got = [v for k in keys for v in values(ctx.out_tags, k)]
        if not any(want in (v if isinstance(v, list) else [v]) for v in got):
            problems.append("%s not read back (%r)" % (label, got))
    keywords = [v for k in ("IPTC:IPTC:Keywords", "XMP:XMP-dc:Subject")
                for v in values(ctx.out_tags, k)]
    flat = set()
    for v in keywords:
        flat.update(v if isinstance(v, list) else [v])
    if not set(KEYWORDS) <= flat:
        problems.append("keywords read back as %r" % keywords)
    return problems


FIELD_TAGS = ("IPTC:IPTC:ObjectName", "XMP:XMP-dc:Title", "EXIF:IFD0:Artist", "XMP:XMP-dc:Creator",
              "IPTC:IPTC:By-line", "EXIF:IFD0:ImageDescription", "XMP:XMP-dc:Description",
              "IPTC:IPTC:Caption-Abstract", "IPTC:IPTC:Keywords", "XMP:XMP-dc:Subject")

FIELD_ARGS = ["--title", TITLE, "--artist", ARTIST, "--description", DESCRIPTION,
              "--keywords", ",".join(KEYWORDS)]


def expect_small_jpeg(ctx):
    problems = []
    if first(ctx.out_tags, "File:File:FileType") != "JPEG":
        problems.append("output is %r, not JPEG" % first(ctx.out_tags, "File:File:FileType"))
    orientation = first(ctx.out_tags, "EXIF:IFD0:Orientation")
    if orientation not in (None, 1):
        problems.append("Orientation %r, not 1" % orientation)
    for key in ("EXIF:ExifIFD:DateTimeOriginal", "IPTC:IPTC:ObjectName", "XMP:XMP-dc:Title"):
        if first(ctx.src_tags, key) is not None and first(ctx.out_tags, key) != first(ctx.src_tags, key):
            problems.append("%s not kept: %r -> %r" % (key, first(ctx.src_tags, key),
                                                      first(ctx.out_tags, key)))
    return problems


# ---- audio ----

def expect_audio_tags(ctx):
    problems = []
    tags = ctx.out_audio_tags()
    for name, want in (("title", TITLE), ("artist", ARTIST), ("album", ALBUM)):
        got = tags.get(name)
        if got != want:
            problems.append("%s %s reads %r, not %r" % (ctx.audio_reader(), name, got, want))
    return problems


def expect_artwork_set(ctx):
    with open(ctx.artwork, "rb") as f:
        wanted = f.read()
    pictures = ctx.out_pictures()
    if pictures is None:
        return []  # a container mutagen does not read; ffprobe attached_pic checked below
    if wanted not in pictures:
        return ["the artwork read back by mutagen is not the given picture (%d pictures)"
                % len(pictures)]
    return []


def expect_no_tags(ctx):
    problems = []
    tags = ctx.out_audio_tags()
    for name in ("title", "artist", "album", "comment", "genre", "date", "track"):
        if name in tags:
            problems.append("%s still reads %s=%r" % (ctx.audio_reader(), name, tags[name]))
    pictures = ctx.out_pictures()
    if pictures:
        problems.append("%d picture(s) left" % len(pictures))
    return problems


def expect_artwork_export(ctx):
    problems = []
    if first(ctx.out_tags, "File:File:FileType") != "JPEG":
        problems.append("export is %r, not JPEG" % first(ctx.out_tags, "File:File:FileType"))
    pictures = ctx.src_pictures()
    jpegs = [p for p in pictures or [] if p[:2] == b"\xff\xd8"]
    # The record's artwork is the last picture read; a JPEG one keeps its bytes, any other
    # is converted, so only an all-JPEG source pins the exported bytes down.
    if pictures and len(jpegs) == len(pictures):
        with open(ctx.output, "rb") as f:
            got = f.read()
        if got not in jpegs:
            problems.append("exported JPEG differs from every JPEG picture of the source")
    return problems


# ---- video ----

def expect_video_set(ctx):
    problems = []
    got = ctx.out_probe_tags.get("title")
    # ffprobe does not read a 3GPP 'titl' box, which the writer keeps using when it is there.
    titles = [got] + values(ctx.out_tags, "QuickTime:*:Title")
    if TITLE not in titles:
        problems.append("title reads %r (ffprobe) and %r (exiftool), not %r"
                        % (got, titles[1:], TITLE))
    if ctx.is_isobmff:
        for name, want in (("GPSLatitude", LAT), ("GPSLongitude", LON)):
            v = first(ctx.out_tags, "Composite:Composite:" + name)
            if not _near(v, want, 1e-4):
                problems.append("exiftool %s reads %r, not %r" % (name, v, want))
    return problems


def expect_video_removed(ctx):
    problems = []
    for name in ("title", "artist", "album", "comment", "description", "copyright", "date"):
        if name in ctx.out_probe_tags:
            problems.append("ffprobe still reads %s=%r" % (name, ctx.out_probe_tags[name]))
    for k in ("Composite:Composite:GPSLatitude", "Composite:Composite:GPSPosition"):
        if first(ctx.out_tags, k) is not None:
            problems.append("exiftool still reads %s" % k)
    return problems


def expect_name_date(ctx):
    got = ctx.out_probe_tags.get("creation_time", "")
    want = NAME_DATE.replace(":", "-", 2).replace(" ", "T")
    if not got.startswith(want):
        return ["ffprobe creation_time reads %r, not %s (TZ=UTC)" % (got, want)]
    return []


def dated_copy(source, workdir):
    """date-from-name needs a date in the name: a copy named after NAME_DATE."""
    ext = os.path.splitext(source)[1]
    target = os.path.join(workdir, "VID_20160501_123045" + ext)
    shutil.copyfile(source, target)
    return target


# Tags every ISO BMFF movie rewrite may move: chunk offsets are fixed up when 'moov'
# changes size; exiftool reports where the boxes are.
MOVIE_LAYOUT = ("QuickTime:QuickTime:MediaDataOffset",   # mdat moves when moov grows or shrinks
                "QuickTime:QuickTime:MovieDataOffset",   # exiftool's name of the same in some files
                "QuickTime:QuickTime:HandlerType",       # the 'mdta' handler of added QuickTime keys
                # FFmpeg rewrites a Matroska file's headers; its packets are compared as payload
                "Matroska:Matroska:DocTypeVersion", "Matroska:Matroska:EBML*",
                "Matroska:Matroska:MuxingApp", "Matroska:Matroska:WritingApp",
                "Matroska:Matroska:Encoder",
                "Matroska:Matroska:TimecodeScale", "Matroska:Matroska:Duration",
                "Matroska:Matroska:TagTrackUID", "Matroska:Track*:CodecID",
                "Matroska:Track*:VideoCodecID",          # the same codec id, named after the remux
                "Matroska:Track*:AudioCodecID",          # (exiftool names it by the TrackType before it)
                # header-stripping compression is undone by the remux: the packets are whole
                "Matroska:Track*:ContentCompression*")

# Audio tag fields, as exiftool names them in every container; they are what tags set is about.
AUDIO_FIELDS = ("*:*:Title", "*:*:Artist", "*:*:Album", "*:*:Comment*", "*:*:Track*",
                "*:*:ItemList*", "*:*:Band", "*:*:AlbumArtist", "*:*:UserDefinedText",
                "AIFF:AIFF:Name", "AIFF:AIFF:Author",            # AIFF's NAME and AUTH chunks
                "RIFF:RIFF:Product",                             # RIFF INFO IPRD, the album
                "ASF:ASF:AlbumTitle", "ASF:ASF:Author")          # WM/AlbumTitle, Author
# ID3 and other tag blocks change size when a field changes.
AUDIO_TAG_LAYOUT = ("File:File:ID3Size", "ID3:ID3v2*:*Padding*", "FLAC:FLAC:Padding*",
                    "QuickTime:QuickTime:MediaDataOffset",
                    "Vorbis:Vorbis:Vendor")  # a FLAC without comments gets a comment block


def commands(template_plist, artwork):
    strip_exif = ("EXIF:ExifIFD:*", "EXIF:InteropIFD:*", "MakerNotes:*", "XMP:XMP-exif:*",
                  "XMP:XMP-exifEX:*", "XMP:XMP-aux:*", "XMP:XMP-tiff:*", "EXIF:IFD0:ExifOffset")
    strip_gps = ("EXIF:GPS:*", "XMP:XMP-exif:GPS*", "EXIF:IFD0:GPSInfo")
    strip_iptc = ("IPTC:*",) + IPTC_DIGESTS
    photo = ("photo",)
    return [
        Command("strip exif", photo, lambda c: ["strip", "exif"], about=strip_exif,
                expect=absent("EXIF:ExifIFD:*", "MakerNotes:*", "XMP:XMP-exif:DateTime*")),
        Command("strip gps", photo, lambda c: ["strip", "gps"], about=strip_gps,
                expect=absent("EXIF:GPS:*", "XMP:XMP-exif:GPS*")),
        Command("strip iptc", photo, lambda c: ["strip", "iptc"], about=strip_iptc,
                expect=absent("IPTC:*")),
        Command("strip exif-gps", photo, lambda c: ["strip", "exif-gps"],
                about=strip_exif + strip_gps,
                expect=absent("EXIF:ExifIFD:*", "MakerNotes:*", "EXIF:GPS:*", "XMP:XMP-exif:*")),
        Command("strip all", photo, lambda c: ["strip", "all"],
                # Only the colour profile, the orientation and the image itself stay.
                about_all_but=("ICC_Profile:*", "EXIF:IFD0:Orientation", "File:File:*"),
                ignored=("File:File:CurrentIPTCDigest", "File:File:ExifByteOrder",
                         "File:File:Comment"),
                expect=absent("EXIF:ExifIFD:*", "EXIF:GPS:*", "IPTC:*", "XMP:*", "Photoshop:*",
                              "MakerNotes:*", "File:File:Comment"),
                # thumbnails and previews are metadata here; the image itself must stay
                payload_parts=("main/", "jpeg-image", "png-image", "webp-image", "item", "property",
                               "trak", "bytes")),
        Command("set-date", photo, lambda c: ["set-date", "--original", ORIGINAL,
                                              "--digitized", DIGITIZED],
                about=DATE_TAGS, ignored=IPTC_REWRITE + HEIF_LAYOUT,
                expect=expect_set_date),
        Command("shift-dates", photo, lambda c: ["shift-dates", "--by", "1d 2h"],
                about=DATE_TAGS, ignored=IPTC_REWRITE + HEIF_LAYOUT, expect=expect_shifted),
        Command("gps set", photo, lambda c: ["gps", "set", "--lat", str(LAT), "--lon", str(LON),
                                             "--alt", str(ALT), "--date", GPS_DATE,
                                             "--time", GPS_TIME],
                about=strip_gps, ignored=IPTC_REWRITE + NEW_EXIF + HEIF_LAYOUT, expect=expect_gps),
        Command("apply", photo, lambda c: ["apply"] + FIELD_ARGS,
                about=FIELD_TAGS + IPTC_DIGESTS,
                ignored=IPTC_REWRITE + NEW_EXIF + HEIF_LAYOUT, expect=expect_fields),
        Command("template import", photo, lambda c: ["import-plist", "template", template_plist],
                about=FIELD_TAGS + IPTC_DIGESTS,
                ignored=IPTC_REWRITE + NEW_EXIF + HEIF_LAYOUT, expect=expect_fields),
        Command("recompress", photo, lambda c: ["recompress"],
                about_all_but=("EXIF:ExifIFD:DateTime*", "EXIF:ExifIFD:CreateDate",
                               "EXIF:GPS:*", "IPTC:*", "XMP:XMP-dc:*"),
                ignored=JPEG_GPS_VERSION,
                expect=expect_small_jpeg, keeps_payload=False, same_container=False),
        Command("stamp", photo, lambda c: ["stamp"],
                about_all_but=("EXIF:ExifIFD:DateTime*", "EXIF:ExifIFD:CreateDate",
                               "EXIF:GPS:*", "IPTC:*", "XMP:XMP-dc:*"),
                ignored=JPEG_GPS_VERSION,
                expect=expect_small_jpeg, keeps_payload=False, same_container=False),
        Command("tags set", ("audio",), lambda c: ["tags", "set", "--title", TITLE, "--artist",
                                                   ARTIST, "--album", ALBUM],
                about=AUDIO_FIELDS, ignored=AUDIO_TAG_LAYOUT, expect=expect_audio_tags),
        Command("tags set artwork", ("audio",), lambda c: ["tags", "set", "--artwork", artwork],
                about=("*:*:Picture*", "*:*:CoverArt*", "*:*:ItemList*"),
                ignored=AUDIO_TAG_LAYOUT, expect=expect_artwork_set),
        Command("tags remove", ("audio",), lambda c: ["tags", "remove"],
                # Only the file's kind and the audio stream's facts stay.
                about_all_but=("File:File:FileType*", "File:File:MIMEType", "MPEG:*",
                               "FLAC:FLAC:BlockSize*", "FLAC:FLAC:FrameSize*",
                               "FLAC:FLAC:SampleRate", "FLAC:FLAC:Channels",
                               "FLAC:FLAC:BitsPerSample", "FLAC:FLAC:TotalSamples",
                               "FLAC:FLAC:MD5Signature", "RIFF:RIFF:Encoding", "RIFF:RIFF:NumChannels",
                               "RIFF:RIFF:SampleRate", "RIFF:RIFF:BitsPerSample",
                               "AIFF:AIFF:NumChannels", "AIFF:AIFF:SampleRate"),
                ignored=(),
                expect=expect_no_tags),
        Command("artwork export", ("audio",), lambda c: ["artwork", "export"],
                about_all_but=(), expect=expect_artwork_export, keeps_payload=False,
                same_container=False),
        Command("video set", ("video",), lambda c: ["video", "set", "--title", TITLE,
                                                    "--artist", ARTIST, "--lat", str(LAT),
                                                    "--lon", str(LON)],
                about=AUDIO_FIELDS + ("*:*:GPS*", "*:*:LocationInformation", "*:*:*ISO6709*",
                                      "*:*:Author", "*:*:Performer*", "*:*:Location*"),
                # the QuickTime keys ('mdta' handler) that hold the new items
                ignored=MOVIE_LAYOUT, expect=expect_video_set),
        Command("video remove", ("video",), lambda c: ["video", "remove"],
                # Titles, people, texts, dates, artwork and location go; encoder, make,
                # model, software and the streams' facts stay.
                about_all_but=("QuickTime:QuickTime:*", "QuickTime:Track*:*", "QuickTime:*:Make",
                               "QuickTime:*:Model", "QuickTime:*:Software", "QuickTime:*:Encoder",
                               "Matroska:Matroska:*", "Matroska:Track*:*", "RIFF:*:*", "File:*:*",
                               "*:*:Make", "*:*:Model", "*:*:Software", "*:*:Encoder"),
                about=AUDIO_FIELDS + ("*:*:GPS*", "*:*:Location*", "*:*:*Date*", "*:*:Author",
                                      "*:*:Performer*", "*:*:Description", "*:*:Copyright",
                                      "*:*:Keywords", "*:*:CoverArt", "*:*:Genre",
                                      "*:*:Director", "*:*:Producer", "*:*:Publisher",
                                      "*:*:Composer", "*:*:Lyrics*", "*:*:Grouping",
                                      "*:*:Summary", "*:*:Synopsis",
                                      "Matroska:Matroska:TargetType*",   # targets of removed tags
                                      "Matroska:Matroska:TagTrackUID"),
                ignored=MOVIE_LAYOUT, expect=expect_video_removed),
        Command("video date-from-name", ("video",), lambda c: ["video", "date-from-name"],
                about=("*:*:CreateDate", "*:*:ModifyDate", "*:*:TrackCreateDate",
                       "*:*:TrackModifyDate", "*:*:MediaCreateDate", "*:*:MediaModifyDate",
                       "*:*:CreationDate", "*:*:CreationDate-*", "*:*:ContentCreateDate",
                       "*:*:DateTimeOriginal"),
                ignored=MOVIE_LAYOUT, expect=expect_name_date, prepare=dated_copy),
    ]


QUICK = ("strip all", "strip gps", "set-date", "gps set", "apply", "recompress", "tags set",
         "tags remove", "artwork export", "video set", "video date-from-name")
