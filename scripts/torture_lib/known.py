"""Defects found by this run and not fixed yet. A failure whose every problem matches
an entry here is counted as 'known' instead of 'failed', so that CI stays meaningful
for everything else; each entry says what is wrong and where. Remove an entry when
its defect is fixed: an entry that no longer matches anything is itself reported."""

import fnmatch
import os

NIKON_SCAN = ("exiv2's rewrite of a NEF drops the NikonScan maker-note IFD "
              "(photo rewrite: the maker notes are re-serialised by exiv2)")
CANON_ODD = ("exiv2 moves Canon maker notes without fixing OriginalDecisionDataOffset, so "
             "Canon's image verification data no longer verifies (photo rewrite)")
PNG_EXIF = ("exiv2 0.27 writes a PNG's EXIF as a zTXt 'Raw profile type exif' chunk, little-"
            "endian, instead of keeping the eXIf chunk (photo rewrite)")
IPTC_DIGEST = ("the IPTC record is re-serialised but Photoshop's IPTCDigest is left as it "
               "was, so Photoshop takes the XMP for out of date (photo rewrite)")
PHOTOMETRIC = ("exiv2 drops PhotometricInterpretation from a JPEG's IFD0 on any rewrite "
               "(image-structure tag, meaningless in JPEG; harmless)")
DAMAGED_IFD1 = ("the sample's damaged IFD1 is copied on and now reads as duplicate entries "
                "(damaged input carried over, not repaired)")
NEF_IPTC = ("a NEF's IPTC record in IFD0 (IPTC-NAA): strip exif removes it, strip iptc "
            "keeps it")
CR3_FIELDS = ("apply/template on a CR3 write EXIF only: the title and keywords (IPTC/XMP) "
              "are dropped silently while the command reports success")
CR3_STRIP = "strip exif/exif-gps/all on a CR3 leave ExifIFD SceneCaptureType behind"
ID3_YEAR = ("an ID3v2.3 tag saved as ID3v2.4 keeps its TYER frame instead of TDRC (and a "
            "v2.4 tag with TYER the reverse): v2.4 readers lose the year (audio writer)")
HOSTILE_M4A = ("taglib-infloop.m4a (truncated 'free' atom): tags set writes where no reader "
               "finds the fields, and drops the UFID item")
HOSTILE_WMA = ("CWE-835.wma (invalid object size): the TagLib rewrite repairs the header so "
               "readers see more than before, and mutagen finds no artwork in the output")
MINIMAL_EXIF = ("the EXIF of the output lacks tags a JPEG's EXIF requires: strip all keeps "
                "only the orientation, and recompress/stamp carry a non-JPEG's EXIF over as it is")
DNG_IN_JPEG = ("recompress/stamp carry the source's IFD0 as it is into the JPEG's EXIF: "
               "image-structure tags of a TIFF/DNG/AVIF (and a DNG's DNGVersion, so readers "
               "take the small JPEG for a DNG) (carryMetadataOver in the photo rewrite)")
MKV_REMUX = ("the FFmpeg remux that writes Matroska drops the tracks' DisplayWidth/"
             "DisplayHeight (aspect of anamorphic video), DefaultDuration and CodecDecodeAll, "
             "marks the video progressive and rounds its frame rate (video writer for MKV)")
EMPTY_BAG = "exiv2 re-serialises an empty XMP bag that exiftool then reports as ignored"

# (command glob, file-name glob, problem prefix, diagnosis)
KNOWN = [
    ("*", "et-Nikon_D70.nef", "exiftool -validate warns: [minor] Bad NikonScanIFD", NIKON_SCAN),
    ("*", "et-Nikon_D70.nef", "tag changed: MakerNotes:NikonScan:", NIKON_SCAN),
    ("*", "et-Canon*", "exiftool -validate warns: Invalid original decision data", CANON_ODD),
    ("*", "*.png", "exiftool -validate warns: [minor] Non-standard EXIF in PNG Raw profile",
     PNG_EXIF),
    ("*", "*.png", "tag changed: File:File:ExifByteOrder", PNG_EXIF),
    ("*", "*", "exiftool -validate warns: IPTCDigest is not current", IPTC_DIGEST),
    ("*", "*.jpg", "tag changed: EXIF:IFD0:PhotometricInterpretation", PHOTOMETRIC),
    ("*", "pil-exif-ifd-offset.jpg", "exiftool -validate warns: Duplicate tag 0x0000 in IFD1",
     DAMAGED_IFD1),
    ("*", "pil-exif-ifd-offset.jpg", "exiftool -validate warns: Entries in IFD1 are out of",
     DAMAGED_IFD1),
    ("strip exif*", "et-Nikon_D70.nef", "tag changed: IPTC:IPTC2:", NEF_IPTC),
    ("strip iptc", "et-Nikon_D70.nef", "read back: IPTC:IPTC2:", NEF_IPTC),
    ("apply", "*.cr3", "read back: title not read back", CR3_FIELDS),
    ("apply", "*.cr3", "read back: keywords read back as", CR3_FIELDS),
    ("template import", "*.cr3", "read back: title not read back", CR3_FIELDS),
    ("template import", "*.cr3", "read back: keywords read back as", CR3_FIELDS),
    ("strip *", "*.cr3", "read back: EXIF:ExifIFD:SceneCaptureType still present", CR3_STRIP),
    ("recompress", "*.dng", "read back: output is 'DNG'", DNG_IN_JPEG),
    ("recompress", "*", "exiftool -validate warns: [minor] IFD0 tag 0x", DNG_IN_JPEG),
    ("stamp", "*", "exiftool -validate warns: [minor] IFD0 tag 0x", DNG_IN_JPEG),
    ("recompress", "*", "exiftool -validate warns: [minor] Non-standard IFD0 tag", DNG_IN_JPEG),
    ("stamp", "*", "exiftool -validate warns: [minor] Non-standard IFD0 tag", DNG_IN_JPEG),
    ("stamp", "*.dng", "read back: output is 'DNG'", DNG_IN_JPEG),
    ("tags set*", "*.mp3", "tag changed: ID3:ID3v2_3:Year", ID3_YEAR),
    ("tags set*", "*.mp3", "tag changed: Unknown:Unknown:Year", ID3_YEAR),
    ("tags set*", "taglib-infloop.m4a", "read back: ffprobe", HOSTILE_M4A),
    ("tags set*", "taglib-infloop.m4a", "tag changed: QuickTime:iTunes:UFID", HOSTILE_M4A),
    ("tags set*", "mm-CWE-835.wma", "tag changed: ASF:", HOSTILE_WMA),
    ("tags set*", "mm-CWE-835.wma", "read back: the artwork read back by mutagen", HOSTILE_WMA),
    ("video *", "*.mkv", "tag changed: Matroska:Track", MKV_REMUX),
    ("*", "*", "exiftool -validate warns: Missing required JPEG ", MINIMAL_EXIF),
    ("*", "*", "exiftool -validate warns: [minor] Missing required JPEG ", MINIMAL_EXIF),
    ("*", "*", "exiftool -validate warns: [minor] Ignored empty rdf:", EMPTY_BAG),
]


def classify(outcome):
    """Marks a failed outcome 'known' when each of its problems has an entry."""
    if outcome.status != "failed" or not outcome.problems:
        return
    name = os.path.basename(outcome.path)
    matched = []
    for problem in outcome.problems:
        entry = next((k for k in KNOWN if fnmatch.fnmatchcase(outcome.command, k[0])
                      and fnmatch.fnmatchcase(name, k[1]) and problem.startswith(k[2])), None)
        if entry is None:
            return
        matched.append(entry)
    outcome.status = "known"
    outcome.known = sorted({m[3] for m in matched})
    for m in matched:
        USED.add(m)


USED = set()


def unused():
    return [k for k in KNOWN if k not in USED]
