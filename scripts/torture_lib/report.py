"""The closing table and the lists of failures and refusals."""

import collections

from .job import VERIFICATION


ROW = "%-22s %-6s %6s %8s %8s %7s %6s\n"
COUNTS = ("tried", "written", "refused", "failed", "known")


def table(outcomes, commands, out):
    kinds = ("photo", "audio", "video")
    cells = collections.defaultdict(collections.Counter)
    for o in outcomes:
        cells[(o.command, o.kind)]["tried"] += 1
        cells[(o.command, o.kind)][o.status] += 1
    out.write(ROW % (("command", "kind") + COUNTS))
    totals = collections.Counter()
    for cmd in commands:
        for kind in kinds:
            c = cells.get((cmd.name, kind))
            if c:
                out.write(ROW % ((cmd.name, kind) + tuple(c[k] for k in COUNTS)))
                totals.update(c)
    out.write(ROW % (("all", "") + tuple(totals[k] for k in COUNTS)))


def known(outcomes, out):
    found = [o for o in outcomes if o.status == "known"]
    if not found:
        return
    out.write("\nKnown defects, not fixed yet (%d runs):\n" % len(found))
    for o in sorted(found, key=lambda o: (o.command, o.path)):
        out.write("KNOWN %s | %s: %s\n" % (o.command, o.path, " / ".join(o.known)))


def failures(outcomes, out):
    failed = [o for o in outcomes if o.status == "failed"]
    if not failed:
        return
    out.write("\nFailures (%d):\n" % len(failed))
    for o in sorted(failed, key=lambda o: (o.command, o.path)):
        out.write("FAIL %s | %s\n" % (o.command, o.path))
        for p in o.problems[:40]:
            out.write("     %s\n" % p)
        if len(o.problems) > 40:
            out.write("     ... and %d more\n" % (len(o.problems) - 40))


def refusals(outcomes, out):
    refused = [o for o in outcomes if o.status == "refused"]
    verification = [o for o in refused if o.reason.startswith(VERIFICATION)]
    if verification:
        out.write("\nRefused by the writer's own read-back (each is a writer defect to look at):\n")
        for o in sorted(verification, key=lambda o: (o.command, o.path)):
            out.write("VERIFY %s | %s: %s\n" % (o.command, o.path, o.reason))
    reasons = collections.Counter((o.command, o.reason) for o in refused
                                  if o not in verification)
    if reasons:
        out.write("\nRefusal reasons (command: reason x count):\n")
        for (cmd, reason), n in sorted(reasons.items()):
            out.write("  %s: %s x%d\n" % (cmd, reason, n))


def slowest(outcomes, out, count=5):
    out.write("\nSlowest commands:\n")
    for o in sorted(outcomes, key=lambda o: -o.seconds)[:count]:
        out.write("  %5.1f s  %s | %s\n" % (o.seconds, o.command, o.path))
