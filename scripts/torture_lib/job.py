"""One command on one file, and every check of its outcome."""

import collections
import json
import os
import tempfile
import time

from . import benign, tagsets, tools
from .baseline import Reading

VERIFICATION = "verification failed"


class Outcome:
    def __init__(self, path, command, kind):
        self.path = path
        self.command = command
        self.kind = kind
        self.status = None      # written, refused or failed
        self.reason = ""        # refusal reason
        self.problems = []      # failures
        self.seconds = 0.0      # the command's own run time

    def fail(self, text):
        self.problems.append(text)


class Context:
    """What expectations see: the source's and the output's readings."""

    def __init__(self, src, out, sidecar_tags, artwork, output):
        self.src = src
        self.src_tags = src.tags
        self.out = out
        self.out_tags = dict(out.tags)
        self.sidecar = sidecar_tags
        if sidecar_tags:
            self.out_tags.update({k: v for k, v in sidecar_tags.items() if k.startswith("XMP:")})
        self.out_probe_tags = out.probe_tags
        self.is_isobmff = "QuickTime:QuickTime:MajorBrand" in src.tags or any(
            k.startswith("QuickTime:") for k in src.tags)
        self.artwork = artwork
        self.output = output

    def out_pictures(self):
        return self.out.pictures()

    # exiftool's names of the fields ffprobe and mutagen name in lower case.
    EXIFTOOL_FIELDS = {"title": "Title", "artist": "Artist", "album": "Album", "comment": "Comment",
                       "genre": "Genre", "date": "Date", "track": "TrackNumber"}

    def out_audio_tags(self):
        """The output's audio fields as the first of ffprobe, mutagen and exiftool that opens
        the file reads them: ffprobe opens no ASF file whose index is damaged and no Ogg
        stream with a bad page, mutagen no FLAC whose STREAMINFO is cut short."""
        return self._audio_reading()[1]

    def audio_reader(self):
        return self._audio_reading()[0]

    def _audio_reading(self):
        if self.out.probe is not None:
            return "ffprobe", self.out_probe_tags
        from .baseline import mutagen_text_tags
        found = mutagen_text_tags(self.output)
        if found is not None:
            return "mutagen", found
        return "exiftool", {field: tagsets.first(self.out_tags, "*:*:" + name)
                            for field, name in self.EXIFTOOL_FIELDS.items()
                            if tagsets.first(self.out_tags, "*:*:" + name) is not None}

    def src_pictures(self):
        return self.src.pictures()


def _files_under(folder):
    found = []
    for root, _, names in os.walk(folder):
        found.extend(os.path.join(root, n) for n in names)
    return sorted(found)


def run(cli, command, src, kind, workroot, timeout, env, artwork):
    outcome = Outcome(src.path, command.name, kind)
    jobdir = tempfile.mkdtemp(dir=workroot)
    outdir = os.path.join(jobdir, "out")
    os.mkdir(outdir)
    source = command.prepare(src.path, jobdir) if command.prepare else src.path
    argv = [cli, "--json", "--output", outdir] + command.argv(None) + [source]
    began = time.monotonic()
    rc, stdout, stderr, timed_out = tools.run(argv, timeout, env=env)
    outcome.seconds = time.monotonic() - began

    if tools.sha256_file(source) != src.sha256 or (
            source != src.path and tools.sha256_file(src.path) != src.sha256):
        outcome.fail("source changed")
    if timed_out:
        outcome.fail("hang: no end after %d s" % timeout)
    elif rc < 0:
        outcome.fail("crash: signal %d" % -rc)
    elif rc == 2:
        outcome.fail("usage error: %s" % stderr.decode(errors="replace").strip()[:200])
    if outcome.problems:
        outcome.status = "failed"
        return outcome

    try:
        result = json.loads(stdout)
        written = list(result.get("written", []))
        skipped = list(result.get("skipped", []))
    except (ValueError, AttributeError):
        outcome.fail("no JSON result (exit %d): %s" % (rc, stdout[:200]))
        outcome.status = "failed"
        return outcome

    present = _files_under(outdir)
    written_real = [os.path.realpath(w) for w in written]
    unreported = [p for p in present if os.path.realpath(p) not in written_real]
    missing = [w for w in written if not os.path.exists(w)]
    if unreported:
        outcome.fail("files in the output folder that the result does not name: %s"
                     % ", ".join(os.path.basename(p) for p in unreported))
    if missing:
        outcome.fail("reported outputs that do not exist: %s" % ", ".join(missing))
    reasons = [s.get("reason", "") for s in skipped]

    if not written:
        if any(r.strip() for r in reasons):
            outcome.status = "refused"
            outcome.reason = reasons[0].strip()
            if rc == 0:
                outcome.fail("refused (%s) yet exit status 0" % outcome.reason)
        else:
            outcome.fail("no output and no reason (exit %d)" % rc)
    elif rc != 0:
        outcome.fail("exit %d with an output present (%s)" % (rc, "; ".join(reasons)))
    if outcome.problems or not written:
        outcome.status = "failed" if outcome.problems else outcome.status
        return outcome

    outcome.status = "written"
    check_outputs(outcome, command, src, kind, written, jobdir, artwork)
    if outcome.problems:
        outcome.status = "failed"
    return outcome


def check_outputs(outcome, command, src, kind, written, jobdir, artwork):
    sidecars = [w for w in written if w.lower().endswith(".xmp")]
    mains = [w for w in written if w not in sidecars]
    if len(mains) != 1:
        outcome.fail("expected one output, got %d: %s" % (len(mains), mains))
        return
    main = mains[0]
    if command.same_container:
        if os.path.splitext(main)[1].lower() != os.path.splitext(src.path)[1].lower():
            outcome.fail("output %s changed the extension" % os.path.basename(main))
    out = Reading(main, jobdir, kind if command.same_container else "photo")
    sidecar_tags = None
    for sidecar in sidecars:
        sidecar_tags = tools.exiftool().tags(sidecar)
        bad = tools.exiftool().warnings(sidecar)
        if bad or not any(k.startswith("XMP:") for k in sidecar_tags):
            outcome.fail("sidecar %s invalid: %s" % (os.path.basename(sidecar), bad))

    new = collections.Counter(out.warnings) - collections.Counter(src.warnings)
    for warning in sorted(new):
        outcome.fail("exiftool -validate warns: %s" % warning)

    if command.same_container and kind in ("audio", "video"):
        if src.probe is not None and out.probe is None:
            outcome.fail("ffprobe cannot read the output")
        elif src.probe is not None:
            def streams(p):
                return [(s.get("codec_type"), s.get("codec_name"))
                        for s in p.get("streams", [])
                        if not s.get("disposition", {}).get("attached_pic")]
            if streams(src.probe) != streams(out.probe):
                outcome.fail("streams differ: %s -> %s" % (streams(src.probe), streams(out.probe)))
        if kind == "audio":
            src_m, _ = tools.mutagen_file(src.path)
            out_m, err = tools.mutagen_file(main)
            if src_m is not None and out_m is None:
                outcome.fail("mutagen cannot read the output: %s" % (err or "unknown type"))

    if command.keeps_payload and src.payload is not None:
        if out.payload is None:
            outcome.fail("payload not found in the output")
        else:
            def kept(parts):
                prefixes = command.payload_parts
                return {k: v for k, v in parts.items()
                        if prefixes is None or k.startswith(prefixes)}
            want, got = kept(src.payload), kept(out.payload)
            changed = sorted(k for k in set(want) | set(got) if want.get(k) != got.get(k))
            if changed:
                outcome.fail("payload changed: %s" % ", ".join(changed))

    ctx = Context(src, out, sidecar_tags, artwork, main)
    for problem in command.expect(ctx):
        outcome.fail("read back: " + problem)

    for key, before, after in tagsets.differences(src.tags, out.tags, command.about,
                                                   command.ignored):
        if kind == "photo" and benign.explained(src.tags, out.tags, key, before, after):
            continue
        outcome.fail("tag changed: %s: %s -> %s" % (key, _show(before), _show(after)))


def _show(value):
    if value is None:
        return "(absent)"
    s = json.dumps(value, ensure_ascii=False) if not isinstance(value, str) else value
    return s if len(s) <= 70 else s[:67] + "..."
