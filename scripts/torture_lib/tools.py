"""Subprocess helpers and the independent readers (exiftool, ffprobe, ffmpeg, mutagen)."""

import hashlib
import json
import os
import select
import subprocess
import threading
import time


def sha256_file(path):
    h = hashlib.sha256()
    with open(path, "rb") as f:
        for block in iter(lambda: f.read(1 << 20), b""):
            h.update(block)
    return h.hexdigest()


def run(argv, timeout, env=None, cwd=None, data=None):
    """Runs argv (data, if given, on its standard input); returns (returncode, stdout,
    stderr, timed_out). A negative returncode is the signal that ended the process."""
    try:
        p = subprocess.run(argv, input=data, stdin=None if data is not None else subprocess.DEVNULL,
                           capture_output=True, timeout=timeout, env=env, cwd=cwd)
        return p.returncode, p.stdout, p.stderr, False
    except subprocess.TimeoutExpired as e:
        return None, e.stdout or b"", e.stderr or b"", True


class ExifTool:
    """One exiftool kept open (-stay_open): starting perl per call would dominate the run."""

    READY = b"{ready}\n"

    def __init__(self, timeout=60):
        self.timeout = timeout
        self.proc = None

    def _start(self):
        self.proc = subprocess.Popen(
            ["exiftool", "-stay_open", "True", "-@", "-"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)

    def close(self):
        if self.proc and self.proc.poll() is None:
            try:
                self.proc.stdin.write(b"-stay_open\nFalse\n")
                self.proc.stdin.flush()
                self.proc.wait(timeout=5)
            except (OSError, subprocess.TimeoutExpired):
                self.proc.kill()
        self.proc = None

    def execute(self, *args):
        if self.proc is None or self.proc.poll() is not None:
            self._start()
        payload = "".join(a + "\n" for a in args) + "-execute\n"
        self.proc.stdin.write(payload.encode())
        self.proc.stdin.flush()
        out = b""
        fd = self.proc.stdout.fileno()
        deadline = time.monotonic() + self.timeout
        while not out.endswith(self.READY):
            left = deadline - time.monotonic()
            if left <= 0 or not select.select([fd], [], [], left)[0]:
                self.proc.kill()
                self.proc = None
                raise RuntimeError("exiftool timed out on " + " ".join(args))
            chunk = os.read(fd, 1 << 16)
            if not chunk:
                self.proc = None
                raise RuntimeError("exiftool ended on " + " ".join(args))
            out += chunk
        return out[: -len(self.READY)].decode("utf-8", "replace")

    def tags(self, path):
        """Every tag, keyed 'Family0:Family1[:CopyN]:Name'; duplicates kept apart by CopyN."""
        text = self.execute("-j", "-G0:1:4", "-a", "-n", "-b", "-api", "LargeFileSupport=1", path)
        try:
            return json.loads(text)[0]
        except (ValueError, IndexError):
            return {}

    def warnings(self, path):
        """The list of -validate warnings (text form: JSON keeps only one Warning)."""
        text = self.execute("-validate", "-warning", "-a", "-G1", "-s", path)
        found = []
        for line in text.splitlines():
            if line.startswith("[ExifTool]") and ":" in line:
                name, _, value = line[len("[ExifTool]"):].partition(":")
                if name.strip() in ("Warning", "Error"):
                    found.append(value.strip())
        return found


_local = threading.local()
_all_exiftools = []
_lock = threading.Lock()


def exiftool():
    """The calling thread's own exiftool."""
    et = getattr(_local, "exiftool", None)
    if et is None:
        et = _local.exiftool = ExifTool()
        with _lock:
            _all_exiftools.append(et)
    return et


def close_all():
    with _lock:
        for et in _all_exiftools:
            et.close()
        _all_exiftools.clear()


def ffprobe(path, timeout=60):
    rc, out, _, timed_out = run(
        ["ffprobe", "-v", "error", "-show_streams", "-show_format", "-of", "json", path],
        timeout)
    if timed_out or rc != 0:
        return None
    try:
        return json.loads(out)
    except ValueError:
        return None


def ffprobe_tags(probe):
    """Container and stream tags, lower-cased names, as one dict (container wins)."""
    found = {}
    if not probe:
        return found
    for stream in probe.get("streams", []):
        for k, v in stream.get("tags", {}).items():
            found.setdefault(k.lower(), v)
    for k, v in probe.get("format", {}).get("tags", {}).items():
        found[k.lower()] = v
    return found


def mutagen_file(path):
    """mutagen's view of an audio file: (object or None, error text or None)."""
    import mutagen
    try:
        return mutagen.File(path), None
    except Exception as e:  # mutagen raises many kinds on damaged input
        return None, "%s: %s" % (type(e).__name__, e)
