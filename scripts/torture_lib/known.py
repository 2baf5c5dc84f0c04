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
DAMAGED_IFD1 = ("the sample's damaged IFD1 is copied on and now reads as duplicate entries "
                "(damaged input carried over, not repaired)")
NEF_IPTC = ("a NEF's IPTC record in IFD0 (IPTC-NAA): strip exif removes it, strip iptc "
            "keeps it")
CR3_STRIP = "strip exif/exif-gps/all on a CR3 leave ExifIFD SceneCaptureType behind"
MKV_REMUX = ("FFmpeg 5.1's Matroska muxer writes DefaultDuration only for video, from the "
             "frame rate its demuxer reduced (a nanosecond per frame may differ); an audio "
             "track's DefaultDuration cannot be written (video writer for MKV, FFmpeg's limit)")
IPTC_SHORT_TIME = ("an IPTC time of six digits (no zone, against the standard) is written back by exiv2 "
                   "with '+0000' when the IPTC record is edited (photo rewrite; kept as it was "
                   "when the record is not edited)")
FOREIGN_GPS_METHOD = ("the source's GPSProcessingMethod ('fused') is none the EXIF standard defines; "
                      "exiftool checks it only in a JPEG, so a recompressed copy carries the "
                      "source's value into a warning (value kept as it was, by design)")
TIFF_IPTC_IRB = ("exiv2 copies a TIFF's IPTC (IPTC-NAA tag) into its Photoshop resources as well "
                 "when the TIFF has them, so the record reads twice and Photoshop's digest goes "
                 "stale; the values are the same (photo rewrite of TIFF)")
MPF_SYNTHETIC = ("the sample's multi-picture index points past the end of the file (a synthetic "
                 "test file): there is no second picture to check; the index moves with its segment")
DNL_HEIGHT = ("the frame header gives the height as 0 (to be set by a DNL marker after the first "
              "scan), so a new Exif directory gets no ExifImageWidth/Height (the writer does not "
              "decode the picture to learn it)")
DAMAGED_TIFF = "the damaged sample's duplicate BitsPerSample entry is carried over, not repaired"
UNREADABLE_EXIF = ("exiv2 cannot read the damaged sample's EXIF segment, so its small copy carries "
                   "no metadata; the command says so in a note (the edits refuse the file)")
MAKERNOTE_COUNT = ("exiv2 writes a Nikon maker note shorter than before but keeps its old byte count, "
                   "so the value behind it starts inside that count (every value reads back; "
                   "exiftool warns of the overlap)")
D1X_NOTE = ("the sample's Nikon maker note is damaged (its NikonScan directory starts at a bad "
            "offset and the note overlaps the GPS directory): every maker-note value reads back "
            "as in the source, and exiftool names the same damage as bad NikonScan/Preview "
            "directories (damaged input carried over, not repaired)")
EMPTY_BAG = "exiv2 re-serialises an empty XMP bag that exiftool then reports as ignored"

DUPLICATE_TAGS = ("the sample holds two tags of a kind its format allows once (two ID3 chunks and "
                  "two INFO lists in a WAV, two Vorbis comment blocks in a FLAC); TagLib, mutagen "
                  "and ffmpeg read the first, which the output keeps; the second, which only "
                  "exiftool reads, is dropped when TagLib saves (damaged input, not repaired)")
ITUNES_V22 = ("the iTunes ID3v2.2 tag holds its volume adjustment (RVA: v2.3's RVAD, which v2.4 "
              "cannot hold) and its sort orders (TSA/TSP/TST: v2.4's TSOA/TSOP/TSOT, which v2.3 "
              "does not define), so no version holds both by the book; it is saved as v2.3 with "
              "the sort frames as iTunes itself writes them. exiftool extracts a v2.3 RVAD only "
              "as an unknown tag (-u), where it reads back unchanged")

# (command glob, file-name glob, problem prefix, diagnosis)
KNOWN = [
    ("*", "et-Nikon_D70.nef", "exiftool -validate warns: [minor] Bad NikonScanIFD", NIKON_SCAN),
    ("*", "et-Nikon_D70.nef", "tag changed: MakerNotes:NikonScan:", NIKON_SCAN),
    ("*", "mde-Nikon_D1X_iptc.jpg", "exiftool -validate warns: [minor] Bad NikonScanIFD", D1X_NOTE),
    ("*", "mde-Nikon_D1X_iptc.jpg", "exiftool -validate warns: [minor] Bad PreviewIFD", D1X_NOTE),
    ("*", "et-NikonD2Hs.jpg", "exiftool -validate warns: Value for ExifIFD tag 0x9286 UserComment overlaps",
     MAKERNOTE_COUNT),
    ("*", "et-Canon*", "exiftool -validate warns: Invalid original decision data", CANON_ODD),
    ("*", "*.png", "exiftool -validate warns: [minor] Non-standard EXIF in PNG Raw profile",
     PNG_EXIF),
    ("*", "pil-exif-ifd-offset.jpg", "exiftool -validate warns: Duplicate tag 0x0000 in IFD1",
     DAMAGED_IFD1),
    ("*", "pil-exif-ifd-offset.jpg", "exiftool -validate warns: Entries in IFD1 are out of",
     DAMAGED_IFD1),
    ("strip exif*", "et-Nikon_D70.nef", "tag changed: IPTC:IPTC2:", NEF_IPTC),
    ("strip iptc", "et-Nikon_D70.nef", "read back: IPTC:IPTC2:", NEF_IPTC),
    ("strip *", "*.cr3", "read back: EXIF:ExifIFD:SceneCaptureType still present", CR3_STRIP),
    ("video *", "*.mkv", "tag changed: Matroska:Track1:VideoFrameRate", MKV_REMUX),
    ("video *", "*.mkv", "tag changed: Matroska:Track2:DefaultDuration", MKV_REMUX),
    ("*", "*", "exiftool -validate warns: [minor] Ignored empty rdf:", EMPTY_BAG),
    ("*", "immich-rating.jpg", "tag changed: IPTC:IPTC:TimeCreated:", IPTC_SHORT_TIME),
    ("recompress", "pil-invalid-exif.jpg", "tag changed: XMP:", UNREADABLE_EXIF),
    ("stamp", "pil-invalid-exif.jpg", "tag changed: XMP:", UNREADABLE_EXIF),
    ("*", "et-ExifTool_all.jpg", "tag changed: MPF:MPImage2:MPImageStart:", MPF_SYNTHETIC),
    ("*", "mde-beach_nometa.jpg", "exiftool -validate warns: Missing required JPEG ExifIFD tag 0xa00",
     DNL_HEIGHT),
    ("*", "pil-crash-0da013a1.tif", "exiftool -validate warns: Duplicate tag 0x0102 BitsPerSample",
     DAMAGED_TIFF),
    ("recompress", "*", "exiftool -validate warns: Invalid value for GPS tag 0x001b GPSProcessingMethod",
     FOREIGN_GPS_METHOD),
    ("stamp", "*", "exiftool -validate warns: Invalid value for GPS tag 0x001b GPSProcessingMethod",
     FOREIGN_GPS_METHOD),
    ("*", "*.tif", "exiftool -validate warns: [minor] Non-standard IPTC at TIFF-IFD0-Photoshop-IPTC",
     TIFF_IPTC_IRB),
    ("*", "*.tif", "exiftool -validate warns: IPTCDigest is not current", TIFF_IPTC_IRB),
    ("*", "*.tif", "tag changed: IPTC:IPTC2:", TIFF_IPTC_IRB),
    ("tags set*", "taglib-duplicate_tags.wav", "tag changed: ID3:ID3v2:", DUPLICATE_TAGS),
    ("tags set*", "taglib-duplicate_tags.wav", "tag changed: RIFF:RIFF:", DUPLICATE_TAGS),
    ("tags set*", "taglib-multiple-vc.flac", "tag changed: Vorbis:Vorbis:", DUPLICATE_TAGS),
    ("tags set*", "taglib-itunes10_id3v22_apic.mp3",
     "exiftool -validate warns: [minor] Frame 'TSO", ITUNES_V22),
    ("tags set*", "taglib-itunes10_id3v22_apic.mp3",
     "tag changed: ID3:ID3v2:RelativeVolumeAdjustment:", ITUNES_V22),
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
