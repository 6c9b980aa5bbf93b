#!/usr/bin/env python3
"""Makes the table, ratios.json and the chart of what the benchmarks measured.

Usage: report.py FOLDER CHART.svg

FOLDER holds utc.json and local.json (Google Benchmark) with -memory.json and -memory-crl.json of both beside them, from
runs with TZ=UTC and without TZ. The bounds count for UTC alone.
"""
import json
import math
import os
import statistics
import sys
from dataclasses import dataclass
from pathlib import Path
from xml.sax.saxutils import escape


@dataclass
class Row:
    measure: str
    peer: str
    bound: float | None  # karil over the peer, at most; None where the row is there to be looked at
    aim: float | None

    @property
    def key(self):
        return f"{self.measure}/{self.peer}"


ROWS = [
    Row("decode-cert", "mbedtls", 2.0, 1.0),
    Row("decode-cert", "gnutls", 0.2, 0.1),
    Row("decode-cert", "libcrypto", 0.05, 0.02),
    Row("query-cert", "libcrypto", 0.1, 0.03),
    Row("encode-cert", "libcrypto", 0.3, 0.1),
    Row("sign-cert", "private-operation", 1.05, 1.02),
    Row("sign-cert", "libcrypto", None, None),
    Row("verify-cert", "public-operation", 1.6, 1.3),
    Row("verify-cert", "libcrypto", None, None),
    Row("pem", "libcrypto", 1.0, 0.5),
    Row("growth-extensions", "itself", 1.5, 1.1),
    Row("memory", "libcrypto", 0.5, 0.3),
    Row("decode-crl", "mbedtls", 4.0, 2.0),
    Row("decode-crl", "libcrypto", 0.3, 0.15),
    Row("build-crl", "libcrypto", 0.5, None),
    Row("growth-crl", "itself", 1.5, None),
    Row("memory-crl", "mbedtls", 2.5, 1.5),
    Row("memory-crl", "libcrypto", 1.0, 0.6),
    Row("decode-csr", "libcrypto", 0.2, None),
    Row("derive-key", "libcrypto", 0.65, 0.55),
    Row("derive-key", "digests", 1.1, None),
    Row("pbe", "cipher", 1.1, None),
    Row("aes-encrypt", "libcrypto", 1.1, None),
    Row("aes-decrypt", "libcrypto", 1.1, None),
    Row("make-pfx", "libcrypto", 0.65, 0.55),
    Row("make-pfx", "work", 1.1, None),
    Row("open-pfx", "libcrypto", 0.5, 0.4),
    Row("growth-pfx", "itself", 1.5, None),
    Row("growth-bags-built", "itself", 1.5, None),
    Row("growth-bags-read", "itself", 1.5, None),
]


def load(folder, run):
    """The figures of one run by "measure/who": nanoseconds an item, for memory octets over those of the DER."""
    report = json.loads((folder / f"{run}.json").read_text())
    samples = {}
    for entry in report["benchmarks"]:
        if entry["run_type"] == "iteration":
            time = entry["cpu_time"] / entry.get("items", 1)
            # Settings of a benchmark's own follow its name.
            name = "/".join(entry["run_name"].split("/")[:2])
            samples.setdefault(name, []).append(time)
    figures = {name: statistics.median(times) for name, times in samples.items()}
    fewest = min(len(times) for times in samples.values())
    if fewest < 5:
        sys.exit(f"{run}.json: a median of {fewest} repetitions is not enough")
    for kind in ("memory", "memory-crl"):
        figures.update(json.loads((folder / f"{run}-{kind}.json").read_text()))
    return report["context"], figures


def ratios_of(figures):
    return {row.key: figures[f"{row.measure}/karil"] / figures[row.key] for row in ROWS}


def is_met(row, ratio):
    return row.bound is None or ratio <= row.bound


def quantity(measure, figure):
    if measure.startswith("memory"):
        return f"{figure:.2f} x DER"
    for unit, size in (("ms", 1e6), ("us", 1e3), ("ns", 1)):
        if figure >= size:
            break
    return f"{figure / size:.3g} {unit}"


def table(figures, with_bounds):
    """The lines of a table whose columns are as wide as they need."""
    ratios = ratios_of(figures)
    head = ["measure", "karil", "peer", "ratio"] + ["at most", "aim", "met"] * with_bounds
    lines = [head]
    for row in ROWS:
        ratio = ratios[row.key]
        karil = quantity(row.measure, figures[f"{row.measure}/karil"])
        peer = f"{row.peer} {quantity(row.measure, figures[row.key])}"
        line = [row.measure, karil, peer, f"{ratio:.3f}"]
        if with_bounds:
            met = "-" if row.bound is None else "yes" if is_met(row, ratio) else "NO"
            line += [str(row.bound or "-"), str(row.aim or "-"), met]
        lines.append(line)
    lines.insert(1, ["-" * max(len(line[i]) for line in lines) for i in range(len(head))])
    widths = [len(rule) for rule in lines[1]]
    return "\n".join("| " + " | ".join(cell.ljust(width) for cell, width in zip(line, widths)) + " |" for line in lines)


def machine():
    names = [line.split(":", 1)[1].strip() for line in open("/proc/cpuinfo") if line.startswith("model name")]
    system = dict(line.strip().split("=", 1) for line in open("/etc/os-release") if "=" in line)
    return f"{names[0] if names else os.uname().machine}, {os.cpu_count()} cores, {system['PRETTY_NAME'].strip(chr(34))}"


# The chart. It brings its own light ground, so that it reads the same on a dark page.
WIDTH, TOP, STEP = 880, 78, 32
LEFT, RIGHT = 250, 650  # of the plot
LOWEST, HIGHEST = 0.01, 10.0
INK, FAINT, GROUND, GOOD, BAD = "#1f2328", "#6e7781", "#ffffff", "#2f6fb4", "#c2491d"


def position(ratio):
    share = math.log(ratio / LOWEST) / math.log(HIGHEST / LOWEST)
    return LEFT + (RIGHT - LEFT) * min(1.0, max(0.0, share))


def text(x, y, words, anchor="start", fill=INK, size=13, weight="normal"):
    return (f'<text x="{x:.1f}" y="{y:.1f}" text-anchor="{anchor}" fill="{fill}" font-size="{size}" '
            f'font-weight="{weight}">{escape(words)}</text>')


def line(x, y1, y2, stroke, width, dash=""):
    dashes = f' stroke-dasharray="{dash}"' if dash else ""
    return f'<line x1="{x:.1f}" y1="{y1}" x2="{x:.1f}" y2="{y2}" stroke="{stroke}" stroke-width="{width}"{dashes}/>'


def scale(bottom):
    parts = []
    for ratio in (0.01, 0.1, 1.0, 10.0):
        x = position(ratio)
        parts.append(line(x, TOP - 8, bottom, INK if ratio == 1.0 else FAINT, 1, "" if ratio == 1.0 else "2 4"))
        parts.append(text(x, TOP - 14, f"{ratio:g}", "middle", FAINT, 12))
    return parts


def bar(row, ratio, y):
    at, one = position(ratio), position(1.0)
    colour = FAINT if row.bound is None else GOOD if is_met(row, ratio) else BAD
    words = f"{ratio:.3f}" + (f"  (at most {row.bound:g})" if row.bound is not None else "  (to compare)")
    parts = [
        text(LEFT - 12, y + 18, f"{row.measure} / {row.peer}", "end"),
        f'<rect x="{min(at, one):.1f}" y="{y + 6}" width="{max(abs(at - one), 1.5):.1f}" height="16" fill="{colour}"/>',
        text(RIGHT + 16, y + 18, words, fill=colour, weight="bold"),
    ]
    if row.bound is not None:
        parts.append(line(position(row.bound), y + 2, y + 26, INK, 3))
    return parts


def chart(context, figures):
    ratios = ratios_of(figures)
    bottom = TOP + STEP * len(ROWS)
    height = bottom + 74
    parts = [
        f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {height}" width="{WIDTH}" height="{height}" '
        'font-family="sans-serif" role="img">',
        "<title>karil beside its peers</title>",
        f'<rect x="0.5" y="0.5" width="{WIDTH - 1}" height="{height - 1}" rx="8" fill="{GROUND}" stroke="{FAINT}"/>',
        text(20, 30, "karil over its peer, log scale: left of 1 karil takes less", size=16, weight="bold"),
        text(20, 48, "thick mark: the bound; blue: kept, red: not kept; grey: no bound", fill=FAINT, size=12),
        *scale(bottom),
    ]
    for index, row in enumerate(ROWS):
        parts += bar(row, ratios[row.key], TOP + STEP * index)
    parts += [
        text(20, bottom + 30, f"{context['date'][:10]}, {machine()}", size=12),
        text(20, bottom + 50, f"{context['peers']}; {context['certificates']} certificates; TZ=UTC", size=12),
        "</svg>",
    ]
    return "\n".join(parts) + "\n"


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    folder, picture = Path(sys.argv[1]), Path(sys.argv[2])
    context, figures = load(folder, "utc")
    _, local = load(folder, "local")
    ratios = ratios_of(figures)
    (folder / "ratios.json").write_text(json.dumps(ratios, indent=4) + "\n")
    picture.write_text(chart(context, figures))
    bounded = [row for row in ROWS if row.bound is not None]
    met = sum(is_met(row, ratios[row.key]) for row in bounded)
    print(f"{context['date'][:10]}, {machine()}; {context['peers']}; {context['certificates']} certificates")
    print(f"\nTZ=UTC\n\n{table(figures, True)}\n\n{met} of {len(bounded)} bounds are met.")
    print(f"A decoded certificate takes {figures['blocks/karil']:.0f} blocks of memory, "
          f"libcrypto's {figures['blocks/libcrypto']:.0f}.")
    print(f"\nTZ unset, for the eye\n\n{table(local, False)}")


main()
