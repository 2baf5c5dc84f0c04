"""Command line, corpus collection and the parallel run."""

import argparse
import concurrent.futures
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

from . import commands as command_table
from . import job, known, report, tools
from .baseline import Reading, kind_of

REPO = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


def parse(argv):
    p = argparse.ArgumentParser(prog="torture", description=__doc__)
    p.add_argument("corpus", nargs="*", help="files or folders (default: tests/data and "
                   "../shared/fixtures when present)")
    p.add_argument("--cli", default=os.environ.get("PELORIN_CLI",
                                                   os.path.join(REPO, "build/src/cli/pelorin-cli")))
    p.add_argument("-j", "--jobs", type=int, default=os.cpu_count() or 2)
    p.add_argument("--quick", action="store_true", help="a subset of the commands, for CI")
    p.add_argument("--only", help="run only commands whose name matches this regex")
    p.add_argument("--timeout", type=int, default=120, help="seconds per command")
    p.add_argument("--keep", action="store_true", help="keep the work folder")
    return p.parse_args(argv)


def collect(corpus):
    files = []
    for entry in corpus:
        if os.path.isfile(entry):
            files.append(os.path.abspath(entry))
            continue
        for root, dirs, names in os.walk(entry):
            dirs.sort()
            files.extend(os.path.abspath(os.path.join(root, n)) for n in sorted(names))
    return files


def kinds_of(cli, files):
    """Each file's kind as pelorin-cli's extension table says."""
    exts = sorted({os.path.splitext(f)[1][1:].lower() for f in files} - {""})
    out = subprocess.run([cli, "kinds"] + exts, capture_output=True, text=True, check=True).stdout
    table = {}
    for line in out.splitlines():
        fields = line.split("\t")
        if len(fields) >= 2:
            table[fields[0].lower()] = kind_of(fields[1])
    return {f: table.get(os.path.splitext(f)[1][1:].lower()) for f in files}


def make_inputs(cli, workdir, env):
    """The template property list (made by export-plist) and a cover picture (by ffmpeg)."""
    folder = os.path.join(workdir, "inputs")
    os.makedirs(folder)
    c = command_table
    subprocess.run([cli, "--output", folder, "export-plist", "template", "--title", c.TITLE,
                    "--artist", c.ARTIST, "--description", c.DESCRIPTION,
                    "--keywords", ",".join(c.KEYWORDS)],
                   check=True, env=env, capture_output=True)
    artwork = os.path.join(folder, "cover.jpg")
    subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc=size=96x64",
                    "-frames:v", "1", artwork], check=True, capture_output=True)
    return os.path.join(folder, "templatefile.plist"), artwork


def main(argv):
    args = parse(argv)
    if not os.access(args.cli, os.X_OK):
        sys.exit("torture: no pelorin-cli at %s (build it, or give --cli)" % args.cli)
    corpus = args.corpus or [os.path.join(REPO, "tests/data")] + [
        p for p in [os.path.join(REPO, "..", "shared", "fixtures")] if os.path.isdir(p)]
    started = time.monotonic()
    workdir = tempfile.mkdtemp(prefix="torture-")
    # The CLI's preferences and clock must not depend on whoever runs this.
    env = dict(os.environ, TZ="UTC", XDG_CONFIG_HOME=os.path.join(workdir, "config"),
               HOME=os.path.join(workdir, "home"), QT_QPA_PLATFORM="offscreen")
    os.makedirs(env["HOME"])
    try:
        template, artwork = make_inputs(args.cli, workdir, env)
        files = collect(corpus)
        kinds = kinds_of(args.cli, files)
        chosen = command_table.commands(template, artwork)
        if args.quick:
            chosen = [c for c in chosen if c.name in command_table.QUICK]
        if args.only:
            chosen = [c for c in chosen if re.search(args.only, c.name)]
        media = [f for f in files if kinds[f]]

        with concurrent.futures.ThreadPoolExecutor(args.jobs) as pool:
            readings = dict(zip(media, pool.map(
                lambda f: _reading(f, workdir, kinds[f]), media)))
            tasks = [(cmd, readings[f], kinds[f]) for f in media for cmd in chosen
                     if kinds[f] in cmd.kinds and readings[f] is not None]
            outcomes = list(pool.map(
                lambda t: _run(args, t, workdir, env, artwork), tasks))
    finally:
        tools.close_all()
        if not args.keep:
            shutil.rmtree(workdir, ignore_errors=True)
        else:
            print("work folder kept: %s" % workdir)

    for o in outcomes:
        known.classify(o)
    out = sys.stdout
    out.write("Torture run over %d files (%d of a media kind), %d commands, %d runs\n\n"
              % (len(files), len(media), len(chosen), len(outcomes)))
    report.table(outcomes, chosen, out)
    report.refusals(outcomes, out)
    report.known(outcomes, out)
    report.failures(outcomes, out)
    report.slowest(outcomes, out)
    failed = sum(o.status == "failed" for o in outcomes)
    stale = known.unused() if not (args.only or args.quick or args.corpus) else []
    for entry in stale:
        out.write("known-defect entry matched nothing (fixed?): %s\n" % (entry,))
    out.write("\n%d passed, %d failed\n" % (len(outcomes) - failed, failed))
    out.write("time: %.0f s with %d jobs\n" % (time.monotonic() - started, args.jobs))
    return 1 if failed else 0


def _reading(path, workdir, kind):
    if not kind:
        return None
    try:
        return Reading(path, workdir, kind)
    except Exception as e:  # a reader failing on a hostile sample is not our command's fault
        print("torture: cannot read %s: %s" % (path, e), file=sys.stderr)
        return None


def _run(args, task, workdir, env, artwork):
    cmd, reading, kind = task
    try:
        return job.run(args.cli, cmd, reading, kind, workdir, args.timeout, env, artwork)
    except Exception as e:
        o = job.Outcome(reading.path, cmd.name, kind)
        o.status = "failed"
        o.fail("torture error: %s: %s" % (type(e).__name__, e))
        return o
