"""Digests of a file's payload (the bytes no metadata command may touch), computed
by our own small parsers or by ffmpeg, never by the program under test.

Each function returns a dict {part: digest}, or None when the file's payload cannot
be located (a damaged sample): such a file gets no payload comparison."""

import hashlib
import os
import struct

from . import tools

MAX_READ = 1 << 30


def _md5(*chunks):
    h = hashlib.md5()
    for c in chunks:
        h.update(c)
    return h.hexdigest()


def _read(path):
    with open(path, "rb") as f:
        return f.read(MAX_READ)


def jpeg(path):
    """Everything of the first image but APPn/COM segments: tables, frame header,
    scans up to EOI."""
    data = _read(path)
    if data[:2] != b"\xff\xd8":
        return None
    pos, parts = 2, []
    while pos + 4 <= len(data):
        if data[pos] != 0xFF:
            return None
        marker = data[pos + 1]
        if marker == 0xFF:
            pos += 1
            continue
        if marker == 0xD9:
            break
        length = struct.unpack(">H", data[pos + 2:pos + 4])[0]
        seg_end = pos + 2 + length
        if marker == 0xDA:
            end = data.find(b"\xff\xd9", seg_end)
            # Scan data may hold ff d9 only as the end marker; take the last one of
            # this image (the next SOI, if any, starts a second image).
            nxt = data.find(b"\xff\xd8\xff", seg_end)
            if end < 0:
                return None
            if nxt > 0:
                last = data.rfind(b"\xff\xd9", seg_end, nxt + 1)
                end = last if last >= 0 else end
            else:
                end = data.rfind(b"\xff\xd9")
            parts.append(data[pos:end + 2])
            break
        if not (0xE0 <= marker <= 0xEF or marker == 0xFE):
            parts.append(data[pos:seg_end])
        pos = seg_end
    return {"jpeg-image": _md5(*parts)} if parts else None


def png(path):
    data = _read(path)
    if data[:8] != b"\x89PNG\r\n\x1a\n":
        return None
    pos, keep = 8, []
    while pos + 8 <= len(data):
        length, kind = struct.unpack(">I4s", data[pos:pos + 8])
        if pos + 12 + length > len(data):
            return None
        if kind in (b"IHDR", b"PLTE", b"IDAT", b"tRNS", b"fdAT", b"acTL", b"fcTL"):
            keep.append(kind + data[pos + 8:pos + 8 + length])
        pos += 12 + length
        if kind == b"IEND":
            break
    return {"png-image": _md5(*keep)} if keep else None


def webp(path):
    data = _read(path)
    if data[:4] != b"RIFF" or data[8:12] != b"WEBP":
        return None
    pos, keep = 12, []
    while pos + 8 <= len(data):
        kind, length = struct.unpack("<4sI", data[pos:pos + 8])
        if kind in (b"VP8 ", b"VP8L", b"ALPH", b"ANMF", b"ANIM"):
            keep.append(kind + data[pos + 8:pos + 8 + length])
        pos += 8 + length + (length & 1)
    return {"webp-image": _md5(*keep)} if keep else None


TIFF_DATA_TAGS = ((273, 279), (324, 325), (513, 514))  # strips, tiles, JPEG thumbnail/preview
TIFF_SUBIFD_TAGS = (330,)


def tiff(path):
    """Strip and tile data of every IFD in the chain and its SubIFDs, by their offsets.
    ORF and RW2 use their own magic numbers but TIFF structure."""
    data = _read(path)
    order = data[:2]
    if order == b"II":
        e = "<"
    elif order == b"MM":
        e = ">"
    else:
        return None
    magic = struct.unpack(e + "H", data[2:4])[0]
    if magic not in (42, 0x4F52, 0x5352, 0x55):
        return None
    sizes = {1: 1, 2: 1, 3: 2, 4: 4, 5: 8, 6: 1, 7: 1, 8: 2, 9: 4, 10: 8, 11: 4, 12: 8, 13: 4}
    parts, seen = {}, set()

    def values(typ, count, field):
        size = sizes.get(typ, 1) * count
        if size <= 4:
            raw = field
        else:
            off = struct.unpack(e + "I", field)[0]
            raw = data[off:off + size]
        if typ == 3:
            return list(struct.unpack(e + "%dH" % min(count, len(raw) // 2), raw[:count * 2]))
        if typ in (4, 13):
            return list(struct.unpack(e + "%dI" % min(count, len(raw) // 4), raw[:count * 4]))
        return []

    def walk(offset, name, depth):
        index = 0
        while offset and offset not in seen and offset + 2 <= len(data) and depth < 8:
            seen.add(offset)
            n = struct.unpack(e + "H", data[offset:offset + 2])[0]
            entries = {}
            for i in range(min(n, 1000)):
                p = offset + 2 + 12 * i
                if p + 12 > len(data):
                    break
                tag, typ, count = struct.unpack(e + "HHI", data[p:p + 8])
                entries[tag] = (typ, count, data[p + 8:p + 12])
            label = "%s%d" % (name, index)
            # Named by role and size, not position: removing a preview renumbers SubIFDs.
            subfile = values(*entries[254])[:1] if 254 in entries else [0]
            width = values(*entries[256])[:1] if 256 in entries else [0]
            height = values(*entries[257])[:1] if 257 in entries else [0]
            role = "main" if subfile in ([0], []) else "reduced"
            for off_tag, len_tag in TIFF_DATA_TAGS:
                if off_tag in entries and len_tag in entries:
                    offs = values(*entries[off_tag])
                    lens = values(*entries[len_tag])
                    h = hashlib.md5()
                    for o, ln in zip(offs, lens):
                        h.update(data[o:o + ln])
                    kind = "preview" if off_tag == 513 else role
                    key = "%s/%sx%s/%d" % (kind, (width or [0])[0], (height or [0])[0], off_tag)
                    while key in parts:
                        key += "+"
                    parts[key] = h.hexdigest()
            for sub_tag in TIFF_SUBIFD_TAGS:
                if sub_tag in entries:
                    for k, sub in enumerate(values(*entries[sub_tag])):
                        walk(sub, label + "/sub%d." % k, depth + 1)
            end = offset + 2 + 12 * n
            offset = struct.unpack(e + "I", data[end:end + 4])[0] if end + 4 <= len(data) else 0
            index += 1

    walk(struct.unpack(e + "I", data[4:8])[0], "ifd", 0)
    return parts or None


def _boxes(data, start, end):
    pos = start
    while pos + 8 <= end:
        size, kind = struct.unpack(">I4s", data[pos:pos + 8])
        header = 8
        if size == 1:
            if pos + 16 > end:
                return
            size = struct.unpack(">Q", data[pos + 8:pos + 16])[0]
            header = 16
        elif size == 0:
            size = end - pos
        if size < header or pos + size > end:
            return
        yield kind, pos + header, pos + size
        pos += size


def _child(data, start, end, kind, skip=0):
    for k, s, e in _boxes(data, start + skip, end):
        if k == kind:
            return s, e
    return None


class _Reader:
    def __init__(self, data, pos):
        self.data, self.pos = data, pos

    def uint(self, nbytes):
        if nbytes == 0:
            return 0
        raw = self.data[self.pos:self.pos + nbytes]
        if len(raw) < nbytes:
            raise ValueError("truncated")
        self.pos += nbytes
        return int.from_bytes(raw, "big")


HEIF_METADATA_ITEMS = (b"Exif", b"mime", b"uri ")
HEIF_CODEC_PROPERTIES = (b"hvcC", b"av1C", b"jpgC", b"ispe", b"pixi")


def heif_items(path):
    """Coded image data of every image item (through iinf and iloc) and the decoder
    configurations; Exif and XMP items are metadata and left out."""
    data = _read(path)
    meta = _child(data, 0, len(data), b"meta")
    if not meta:
        return None
    ms, me = meta[0] + 4, meta[1]          # meta is a full box
    try:
        iinf = _child(data, ms, me, b"iinf")
        iloc = _child(data, ms, me, b"iloc")
        if not iinf or not iloc:
            return None
        types = {}
        version = data[iinf[0]]
        first_entry = iinf[0] + 4 + (2 if version == 0 else 4)
        for k, s, e in _boxes(data, first_entry, iinf[1]):
            if k != b"infe":
                continue
            v = data[s]
            r = _Reader(data, s + 4)
            if v < 2:
                continue
            item = r.uint(2 if v == 2 else 4)
            r.uint(2)
            types[item] = data[r.pos:r.pos + 4]
        idat = _child(data, ms, me, b"idat")
        r = _Reader(data, iloc[0])
        v = r.uint(1)
        r.uint(3)
        sizes = r.uint(1)
        offset_size, length_size = sizes >> 4, sizes & 15
        sizes = r.uint(1)
        base_size, index_size = sizes >> 4, (sizes & 15 if v in (1, 2) else 0)
        count = r.uint(2 if v < 2 else 4)
        parts = {}
        for _ in range(count):
            item = r.uint(2 if v < 2 else 4)
            method = r.uint(2) & 15 if v in (1, 2) else 0
            r.uint(2)
            base = r.uint(base_size)
            h = hashlib.md5()
            for _ in range(r.uint(2)):
                r.uint(index_size)
                off, length = r.uint(offset_size), r.uint(length_size)
                start = base + off + (idat[0] if method == 1 and idat else 0)
                h.update(data[start:start + length] if length else data[start:])
            if types.get(item, b"") not in HEIF_METADATA_ITEMS:
                parts["item%d/%s" % (item, types.get(item, b"?").decode("latin-1"))] = h.hexdigest()
        iprp = _child(data, ms, me, b"iprp")
        ipco = iprp and _child(data, *iprp, b"ipco")
        if ipco:
            for n, (k, s, e) in enumerate(_boxes(data, *ipco)):
                if k in HEIF_CODEC_PROPERTIES:
                    parts["property%d/%s" % (n, k.decode())] = _md5(data[s:e])
        return parts or None
    except (ValueError, struct.error):
        return None


def ffmpeg_streams(path, selector, data=None, demuxer="mp3"):
    """md5 of every packet of the selected streams, stream-copied by ffmpeg (reading
    data from its standard input, with the given demuxer, when given)."""
    argv = ["ffmpeg", "-v", "error"] + (["-f", demuxer, "-i", "pipe:0"] if data is not None
                                        else ["-nostdin", "-i", path])
    for s in selector:
        argv += ["-map", s]
    argv += ["-c", "copy", "-f", "streamhash", "-hash", "md5", "-"]
    rc, out, _, timed_out = tools.run(argv, 120, data=data)
    if timed_out or rc != 0 or not out.strip():
        return None
    parts = {}
    for line in out.decode().splitlines():
        fields = line.split(",")
        if len(fields) >= 3:
            parts["stream%s/%s" % (fields[0], fields[1])] = fields[-1]
    return parts or None


def _before_trailing_tags(data):
    """Where an MP3's audio ends: before its ID3v1 tag, APEv2 tag and Lyrics3v2 block,
    which sit after the last frame in any order."""
    end = len(data)
    for _ in range(8):
        if end >= 128 and data[end - 128:end - 125] == b"TAG":
            end -= 128
        elif end >= 32 and data[end - 32:end - 24] == b"APETAGEX":
            size, _, flags = struct.unpack("<III", data[end - 20:end - 8])
            end -= size + (32 if flags & 0x80000000 else 0)
        elif end >= 15 and data[end - 9:end] == b"LYRICS200" and data[end - 15:end - 9].isdigit():
            end -= 15 + int(data[end - 15:end - 9])
        else:
            break
    return max(end, 0)


# Formats whose tags sit behind the audio, by extension, with ffmpeg's demuxer for them.
TRAILING_TAG_DEMUXERS = {".mp3": "mp3", ".ape": "ape", ".mpc": "mpc", ".tta": "tta"}


def audio(path):
    demuxer = TRAILING_TAG_DEMUXERS.get(os.path.splitext(path)[1].lower())
    if demuxer:
        data = _read(path)
        end = _before_trailing_tags(data)
        if end != len(data):
            # ffmpeg counts trailing tags into the last frame's packet.
            return ffmpeg_streams(path, ["0:a"], data=data[:end], demuxer=demuxer)
    return ffmpeg_streams(path, ["0:a"])


def movie(path):
    # 'V' leaves out attached pictures (cover art is metadata, not payload).
    return ffmpeg_streams(path, ["0:V?", "0:a?"])


def isobmff_samples(path):
    """Sample bytes of every track, located through stco/co64, stsc and stsz (CR3)."""
    data = _read(path)

    def boxes(start, end):
        return _boxes(data, start, end)

    def child(start, end, kind):
        return _child(data, start, end, kind)

    moov = child(0, len(data), b"moov")
    if not moov:
        return None
    parts = {}
    for n, (kind, s, e) in enumerate(boxes(*moov)):
        if kind != b"trak":
            continue
        stbl = None
        mdia = child(s, e, b"mdia")
        minf = mdia and child(*mdia, b"minf")
        stbl = minf and child(*minf, b"stbl")
        if not stbl:
            continue
        chunk_offsets, stsc, sizes = [], [], []
        for k, bs, be in boxes(*stbl):
            body = data[bs:be]
            if k in (b"stco", b"co64"):
                count = struct.unpack(">I", body[4:8])[0]
                fmt = ">%d%s" % (count, "I" if k == b"stco" else "Q")
                width = 4 if k == b"stco" else 8
                chunk_offsets = list(struct.unpack(fmt, body[8:8 + count * width]))
            elif k == b"stsc":
                count = struct.unpack(">I", body[4:8])[0]
                stsc = [struct.unpack(">III", body[8 + 12 * i:20 + 12 * i]) for i in range(count)]
            elif k == b"stsz":
                fixed, count = struct.unpack(">II", body[4:12])
                sizes = [fixed] * count if fixed else list(
                    struct.unpack(">%dI" % count, body[12:12 + 4 * count]))
        h = hashlib.md5()
        sample = 0
        for ci, off in enumerate(chunk_offsets):
            per_chunk = 0
            for first, spc, _ in stsc:
                if first - 1 <= ci:
                    per_chunk = spc
            for _ in range(per_chunk):
                if sample >= len(sizes):
                    break
                h.update(data[off:off + sizes[sample]])
                off += sizes[sample]
                sample += 1
        parts["trak%d" % n] = h.hexdigest()
    return parts or None


def whole_file(path):
    return {"bytes": tools.sha256_file(path)}


def for_file(path, workdir):
    """The payload digest suited to the file's content."""
    with open(path, "rb") as f:
        head = f.read(16)
    ext = path.rsplit(".", 1)[-1].lower()
    if head[:2] == b"\xff\xd8":
        return jpeg(path)
    if head[:8] == b"\x89PNG\r\n\x1a\n":
        return png(path)
    if head[:4] == b"RIFF" and head[8:12] == b"WEBP":
        return webp(path)
    if head[:2] in (b"II", b"MM"):
        return tiff(path)
    if head[4:8] == b"ftyp":
        brand = head[8:12]
        if brand in (b"heic", b"heix", b"mif1", b"msf1", b"avif", b"hevc", b"heim", b"heis"):
            return heif_items(path)
        if brand == b"crx ":
            return isobmff_samples(path)
    if ext in ("raf", "crw", "mrw", "x3f"):
        return whole_file(path)
    return None
