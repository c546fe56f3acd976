#!/usr/bin/env python3
"""Draws the tables of `kfpg bench` from its bench.csv: one SVG per family
and precision, next to the CSV, with ns per call against the size for ours
and the peer and, below, the ratio peer / ours.

usage: plot_bench.py RESULTS/bench.csv
"""
import csv
import math
import os
import re
import sys
from collections import OrderedDict

import matplotlib

matplotlib.use("Agg")
import matplotlib.pyplot as plt  # noqa: E402

# Text stays text in the SVG: searchable, and names every series.
matplotlib.rcParams["svg.fonttype"] = "none"
matplotlib.rcParams["svg.hashsalt"] = "kfpg"

CASE = re.compile(r"^\s*(?P<prefix>\D*?)\s*=?\s*(?P<size>\d+)\s*(?P<variant>.*)$")


def number(text):
    return float(text) if text not in ("", None) else math.nan


def parse_case(case):
    """'N=12 fwd' -> ('N', 12, 'fwd'); 'order 13' -> ('order', 13, '')."""
    m = CASE.match(case)
    if not m:
        return None
    prefix = m.group("prefix").strip(" =") or "N"
    return prefix, int(m.group("size")), m.group("variant").strip()


def read_groups(path):
    """Rows grouped by (family, precision), in file order."""
    groups = OrderedDict()
    with open(path, newline="") as f:
        for row in csv.DictReader(f):
            parsed = parse_case(row["case"])
            if parsed is None:
                continue
            prefix, size, variant = parsed
            groups.setdefault((row["family"], row["precision"]), []).append(
                {
                    "prefix": prefix,
                    "size": size,
                    "variant": variant,
                    "peer": row["peer"],
                    "ours": number(row["ours_ns"]),
                    "theirs": number(row["peer_ns"]),
                    "ratio": number(row["ratio"]),
                    "vector": row.get("peer_vector", ""),
                }
            )
    return groups


def short_peer(peer):
    """The peer's name without its parenthesised details, for legends."""
    return re.sub(r"\s*\(.*\)", "", peer).strip() or "peer"


def series_names(rows):
    """Legend names of the timing series: ours and the peer per variant."""
    names = []
    for variant in OrderedDict.fromkeys(r["variant"] for r in rows):
        suffix = f" {variant}" if variant else ""
        names.append(f"ours{suffix}")
        if any(not math.isnan(r["theirs"]) for r in rows if r["variant"] == variant):
            names.append(f"{short_peer(rows[0]['peer'])}{suffix}")
    return names


def size_axis(ax, prefix, sizes):
    if prefix == "order" or max(sizes) / min(sizes) < 16:
        ax.set_xlabel("order (N = 2^order)" if prefix == "order" else prefix)
        ax.set_xticks(sorted(set(sizes)) if len(set(sizes)) <= 16 else ax.get_xticks())
        return
    powers = all(s & (s - 1) == 0 for s in sizes)
    ax.set_xscale("log", base=2)
    ax.set_xlabel(f"{prefix} (transform length, log scale)")
    if powers:
        ax.set_xticks(sorted(set(sizes)))
        ax.xaxis.set_major_formatter(matplotlib.ticker.FuncFormatter(lambda v, _: f"{v:g}"))
    else:
        ticks = [t for t in (2, 4, 8, 16, 32, 64, 128, 256) if min(sizes) <= t <= max(sizes)]
        ax.set_xticks(ticks)
        ax.xaxis.set_major_formatter(matplotlib.ticker.ScalarFormatter())


def plot_group(family, precision, rows, folder):
    variants = list(OrderedDict.fromkeys(r["variant"] for r in rows))
    names = iter(series_names(rows))
    has_peer = any(not math.isnan(r["theirs"]) for r in rows)
    fig, axes = plt.subplots(
        2 if has_peer else 1, 1, figsize=(9, 7 if has_peer else 4.5), sharex=True, squeeze=False,
        gridspec_kw={"height_ratios": [2, 1]} if has_peer else None,
    )
    top = axes[0][0]
    colours = plt.rcParams["axes.prop_cycle"].by_key()["color"]
    for i, variant in enumerate(variants):
        part = sorted((r for r in rows if r["variant"] == variant), key=lambda r: r["size"])
        sizes = [r["size"] for r in part]
        colour = colours[i % len(colours)]
        top.plot(sizes, [r["ours"] for r in part], "o-", color=colour, markersize=3, label=next(names))
        if any(not math.isnan(r["theirs"]) for r in part):
            top.plot(sizes, [r["theirs"] for r in part], "s--", color=colour, markersize=3, alpha=0.7,
                     label=next(names))
    top.set_yscale("log")
    top.yaxis.set_major_locator(matplotlib.ticker.LogLocator(subs=(1, 2, 5)))
    top.yaxis.set_major_formatter(matplotlib.ticker.FuncFormatter(lambda v, _: f"{v:g}"))
    top.yaxis.set_minor_formatter(matplotlib.ticker.NullFormatter())
    top.set_ylabel("ns per call (median, log scale)")
    top.grid(True, which="both", alpha=0.3)
    top.legend(loc="best", fontsize=9)
    peer = rows[0]["peer"]
    top.set_title(f"{family} {precision}: ours and {peer}" if has_peer else f"{family} {precision}", fontsize=11)
    bottom = axes[-1][0]
    if has_peer:
        vectors = list(OrderedDict.fromkeys(r["vector"] for r in rows if r["vector"]))
        for i, variant in enumerate(variants):
            part = sorted((r for r in rows if r["variant"] == variant), key=lambda r: r["size"])
            colour = colours[i % len(colours)]
            bottom.plot([r["size"] for r in part], [r["ratio"] for r in part], "-", color=colour, linewidth=1)
            for v, marker in zip(vectors or [""], "o^sD*"):
                marked = [r for r in part if r["vector"] == v or not vectors]
                label = f"{short_peer(peer)} plan: {v}" if v and i == 0 else None
                bottom.plot([r["size"] for r in marked], [r["ratio"] for r in marked], marker, color=colour,
                            markersize=4, linestyle="none", label=label)
        bottom.axhline(1.0, color="grey", linewidth=1, linestyle=":")
        bottom.set_ylabel("ratio peer / ours\n(above 1: ours faster)")
        bottom.grid(True, alpha=0.3)
        if vectors:
            bottom.legend(loc="best", fontsize=8, ncol=len(vectors))
    size_axis(bottom, rows[0]["prefix"], [r["size"] for r in rows])
    fig.tight_layout()
    name = re.sub(r"[^A-Za-z0-9_.-]", "_", f"{family}_{precision}") + ".svg"
    path = os.path.join(folder, name)
    fig.savefig(path, metadata={"Date": None})
    plt.close(fig)
    return path


def main(argv):
    if len(argv) != 2:
        print(__doc__.strip(), file=sys.stderr)
        return 2
    csv_path = argv[1]
    folder = os.path.dirname(os.path.abspath(csv_path))
    for (family, precision), rows in read_groups(csv_path).items():
        print(plot_group(family, precision, rows, folder))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
