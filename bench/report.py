#!/usr/bin/env python3
"""Makes the table, ratios.json and the chart of what the benchmarks measured.

Usage: report.py FOLDER CHART.svg

FOLDER holds utc.json, unset.json and shanghai.json (Google Benchmark), from runs with TZ=UTC, without TZ and with
TZ=Asia/Shanghai, and utc-memory.json and utc-heap.json.
"""
import json
import os
import statistics
import sys
import textwrap
from dataclasses import dataclass
from pathlib import Path

import matplotlib

matplotlib.use("svg")
from matplotlib import pyplot  # noqa: E402


@dataclass
class Row:
    measure: str
    peer: str
    bound: float | None  # karil over the peer, at most; None where the row is there to be looked at
    aim: float | None
    zone: str = "utc"

    @property
    def key(self):
        return f"{self.measure}/{self.peer}" + (f"@{self.zone}" if self.zone != "utc" else "")


ROWS = [
    Row("decode-cert", "mbedtls", 1.15, 0.95),
    Row("decode-cert", "mbedtls-mktime", None, None),
    Row("decode-cert", "mbedtls", None, None, "unset"),
    Row("decode-cert", "mbedtls-mktime", 1.1, 0.9, "unset"),
    Row("decode-cert", "mbedtls", None, None, "shanghai"),
    Row("decode-cert", "mbedtls-mktime", 1.1, 0.9, "shanghai"),
    Row("decode-cert-utf8", "mbedtls", 2.0, 1.3),
    Row("decode-cert-bmp", "mbedtls", 2.0, 1.3),
    Row("decode-cert", "gnutls", 0.2, 0.1),
    Row("decode-cert", "libcrypto", 0.05, 0.02),
    Row("query-cert", "libcrypto", 0.1, 0.03),
    Row("encode-cert", "libcrypto", 0.12, 0.08),
    Row("sign-cert", "private-operation", 1.05, 1.02),
    Row("sign-cert", "libcrypto", None, None),
    Row("sign-cert-prepared", "libcrypto", 1.06, 1.03),
    Row("verify-cert", "public-operation", 1.2, 1.12),
    Row("verify-cert", "libcrypto", None, None),
    Row("verify-cert-prepared", "libcrypto", None, None),
    Row("pem", "libcrypto", 1.0, 0.5),
    Row("pem", "evp-decodeblock", 1.5, 1.0),
    Row("growth-extensions", "itself", 1.5, 1.1),
    Row("index-extensions", "itself", 1.5, 1.1),
    Row("memory", "libcrypto", 0.55, 0.52),
    Row("memory", "mbedtls", 2.1, 1.9),
    Row("decode-crl", "mbedtls", 1.2, 0.95),
    Row("decode-crl-random", "mbedtls", 1.2, 0.95),
    Row("decode-crl-1000", "mbedtls", None, None),
    Row("decode-crl-1000-random", "mbedtls", None, None),
    Row("decode-crl-30", "mbedtls", 1.5, 1.1),
    Row("decode-crl-30-random", "mbedtls", 1.5, 1.1),
    Row("decode-crl", "mbedtls", None, None, "unset"),
    Row("decode-crl-random", "mbedtls", None, None, "unset"),
    Row("decode-crl-1000", "mbedtls", None, None, "unset"),
    Row("decode-crl-1000-random", "mbedtls", None, None, "unset"),
    Row("decode-crl-30", "mbedtls", 1.5, 1.1, "unset"),
    Row("decode-crl-30-random", "mbedtls", 1.5, 1.1, "unset"),
    Row("decode-crl", "mbedtls", 1.5, 1.1, "shanghai"),
    Row("decode-crl", "mbedtls-mktime", None, None, "shanghai"),
    Row("decode-crl-random", "mbedtls", 1.5, 1.1, "shanghai"),
    Row("decode-crl-random", "mbedtls-mktime", None, None, "shanghai"),
    Row("decode-crl-1000", "mbedtls", None, None, "shanghai"),
    Row("decode-crl-1000-random", "mbedtls", None, None, "shanghai"),
    Row("decode-crl-30", "mbedtls", 1.5, 1.1, "shanghai"),
    Row("decode-crl-30", "mbedtls-mktime", None, None, "shanghai"),
    Row("decode-crl-30-random", "mbedtls", 1.5, 1.1, "shanghai"),
    Row("decode-crl-30-random", "mbedtls-mktime", None, None, "shanghai"),
    Row("decode-crl", "libcrypto", 0.3, 0.15),
    Row("build-crl", "libcrypto", 0.12, None),
    Row("growth-crl", "itself", 1.5, None),
    Row("growth-decode-crl", "mbedtls", 1.0, 0.8),
    Row("memory-crl", "mbedtls", 1.1, 1.0),
    Row("memory-crl", "libcrypto", 1.0, 0.6),
    Row("memory-crl-30", "mbedtls", None, None),
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
    Row("sign-message-1k", "libcrypto", 0.95, 0.9),
    Row("sign-message-1k", "gnutls", None, None),
    Row("sign-message-1m", "libcrypto", 0.8, 0.7),
    Row("sign-message-100m", "libcrypto", 0.7, 0.6),
    Row("verify-message-1k", "libcrypto", 0.15, 0.08),
    Row("verify-message-1k", "gnutls", None, None),
    Row("verify-message-1m", "libcrypto", 0.8, 0.65),
    Row("verify-message-100m", "libcrypto", 1.1, 1.05),
    Row("decode-message", "libcrypto", 0.1, 0.03),
    Row("decode-message", "gnutls", None, None),
    Row("envelop-1k", "libcrypto", 1.0, 0.95),
    Row("envelop-8k", "libcrypto", 1.0, 0.95),
    Row("open-des", "libcrypto", 1.05, 1.0),
    Row("open-aes", "libcrypto", 1.05, 1.0),
    Row("growth-signers", "itself", 1.5, 1.1),
    Row("memory-sign", "content", 3.0, 2.0),
    Row("memory-verify", "content", 3.0, 2.0),
    Row("build-request", "libcrypto", 0.6, 0.4),
    Row("decode-request", "libcrypto", 0.6, 0.4),
    Row("encode-response", "libcrypto", 0.3, None),
    Row("decode-response-1", "libcrypto", 0.05, None),
    Row("decode-response-1-file", "libcrypto", None, None),
    Row("decode-response-100", "libcrypto", 0.15, None),
    Row("decode-response-100-file", "libcrypto", None, None),
    Row("growth-requests", "itself", 1.5, None),
    Row("growth-responses", "itself", 1.5, None),
]


ZONES = {"utc": "UTC", "unset": "TZ unset", "shanghai": "Shanghai"}

# What one side does and the other does not.
NOTES = [
    "The times are medians, and of the processor. Every measure is of one thread, and takes turns with its peers'.",
    "decode-cert, decode-crl: karil checks the whole, copies what it keeps, makes seconds of local time of the dates "
    "and text of code page 936 of the names. mbedTLS copies the DER, looks at the key and at the extensions that it "
    "knows, and leaves dates and names as they are. mbedtls-mktime calls mktime for each date, as one who needs "
    "seconds has to. libcrypto decodes extensions when they are asked for; GnuTLS builds a tree of all elements.",
    "decode-cert-utf8, decode-cert-bmp: karil converts these names, mbedTLS does not.",
    "decode-crl has 100,000 entries. Their dates are in order, or at random over nineteen years.",
    "encode-cert: both build a certificate from its attributes. karil also calls a hook that copies, libcrypto stops "
    "at what is to be signed.",
    "sign-cert signs through the reference hook, which is given a key as numbers and makes a new key object for each "
    "call. libcrypto's part is that object's blinding, made anew each time: some 45 % of the whole. "
    "private-operation is the same hook without a certificate. libcrypto uses a prepared key, and makes no digest.",
    "sign-cert-prepared signs through a hook that holds a prepared key; libcrypto is what that hook does, without a "
    "certificate.",
    "verify-cert decodes both certificates, compares names and dates and verifies with a new key object; "
    "public-operation is the digest and that operation, libcrypto the same with a prepared key. verify-cert-prepared "
    "decodes one certificate with karil, or with libcrypto, and verifies with libcrypto and a prepared key.",
    "pem: karil finds header and footer and skips line ends. So does libcrypto, which also makes memory for the result. "
    "EVP_DecodeBlock is given one line of base64 without any of these.",
    "growth, index: what an item costs among many over what it costs among few. growth-crl builds, encodes and decodes "
    "10^6 entries, or 10^4. growth-decode-crl decodes alone, beside the growth of mbedTLS's decoding, so that what the "
    "kernel's new pages cost is in both.",
    "memory is what malloc spends on all blocks at the peak, over the octets of the DER; memory-crl an entry.",
]


def load_run(folder, run):
    """The figures of one run by "measure/who": nanoseconds an item."""
    report = json.loads((folder / f"{run}.json").read_text())
    samples = {}
    for entry in report["benchmarks"]:
        if entry["run_type"] == "iteration":
            time = entry["cpu_time"] / entry.get("items", 1)
            # Settings of a benchmark's own follow its name.
            name = "/".join(entry["run_name"].split("/")[:2])
            samples.setdefault(name, []).append(time)
    fewest = min(len(times) for times in samples.values())
    if fewest < 5:
        sys.exit(f"{run}.json: a median of {fewest} repetitions is not enough")
    return report["context"], {name: statistics.median(times) for name, times in samples.items()}


def load(folder):
    """The context of the run with TZ=UTC and the figures of all runs by zone."""
    context, figures = load_run(folder, "utc")
    for kind in ("memory", "heap"):
        figures.update(json.loads((folder / f"utc-{kind}.json").read_text()))
    for who in ("karil", "mbedtls"):
        many, few = (figures[f"decode-crl-{entries}/{who}"] for entries in (1000000, 10000))
        figures[f"growth-decode-crl/{who}"] = many / few
    return context, {"utc": figures, **{zone: load_run(folder, zone)[1] for zone in ZONES if zone != "utc"}}


def both(row, figures):
    """karil's figure and the peer's."""
    return tuple(figures[row.zone][f"{row.measure}/{who}"] for who in ("karil", row.peer))


def ratios_of(figures):
    pairs = {row.key: both(row, figures) for row in ROWS}
    return {key: karil / peer for key, (karil, peer) in pairs.items()}


def is_met(row, ratio):
    return row.bound is None or ratio <= row.bound


def quantity(measure, figure):
    if measure.startswith("memory-crl"):
        return f"{figure:.0f} octets"
    if measure.startswith("memory"):
        return f"{figure:.2f} x {'content' if measure in ('memory-sign', 'memory-verify') else 'DER'}"
    if measure == "growth-decode-crl":
        return f"{figure:.2f} x"
    for unit, size in (("ms", 1e6), ("us", 1e3), ("ns", 1)):
        if figure >= size:
            break
    return f"{figure / size:.3g} {unit}"


def table(figures):
    """The lines of a table whose columns are as wide as they need."""
    ratios = ratios_of(figures)
    head = ["measure", "zone", "karil", "peer", "ratio", "at most", "aim", "met"]
    lines = [head]
    for row in ROWS:
        ratio = ratios[row.key]
        karil, peer = (quantity(row.measure, figure) for figure in both(row, figures))
        met = "-" if row.bound is None else "yes" if is_met(row, ratio) else "NO"
        lines.append([row.measure, ZONES[row.zone], karil, f"{row.peer} {peer}", f"{ratio:.3f}",
                      str(row.bound or "-"), str(row.aim or "-"), met])
    lines.insert(1, ["-" * max(len(line[i]) for line in lines) for i in range(len(head))])
    widths = [len(rule) for rule in lines[1]]
    return "\n".join("| " + " | ".join(cell.ljust(width) for cell, width in zip(line, widths)) + " |" for line in lines)


def machine():
    names = [line.split(":", 1)[1].strip() for line in open("/proc/cpuinfo") if line.startswith("model name")]
    system = dict(line.strip().split("=", 1) for line in open("/etc/os-release") if "=" in line)
    return f"{names[0] if names else os.uname().machine}, {os.cpu_count()} cores, {system['PRETTY_NAME'].strip(chr(34))}"


# The chart brings its own light ground, so that it reads the same on a dark page.
INK, FAINT, GROUND, KEPT, MISSED = "#1f2328", "#6e7781", "#ffffff", "#2f6fb4", "#c2491d"


def chart(context, figures, picture):
    rows = [row for row in ROWS if row.peer != "itself"]
    ratios = ratios_of(figures)
    matplotlib.rcParams.update({"svg.hashsalt": "karil", "svg.fonttype": "none", "text.color": INK, "font.size": 9})
    figure, axes = pyplot.subplots(figsize=(9.5, 0.24 * len(rows) + 1.6), facecolor=GROUND)
    for place, row in enumerate(rows):
        ratio = ratios[row.key]
        colour = FAINT if row.bound is None else KEPT if is_met(row, ratio) else MISSED
        axes.plot([1, ratio], [place, place], color=colour, linewidth=7, solid_capstyle="butt")
        axes.text(1.02, place, f"{ratio:.3g}", color=colour, va="center", transform=axes.get_yaxis_transform())
        if row.bound is not None:
            axes.plot([row.bound] * 2, [place - 0.4, place + 0.4], color=INK, linewidth=2)
    zone = {name: f", {words}" for name, words in ZONES.items() if name != "utc"}
    axes.set_yticks(range(len(rows)), [f"{row.measure} / {row.peer}{zone.get(row.zone, '')}" for row in rows])
    axes.set_ylim(len(rows) - 0.4, -0.6)
    axes.set_xscale("log")
    axes.xaxis.tick_top()
    axes.set_xticks([0.01, 0.1, 1, 10], ["1/100", "1/10", "1", "10"])
    axes.minorticks_off()
    axes.axvline(1, color=INK, linewidth=1)
    axes.grid(axis="x", color=FAINT, alpha=0.4, linewidth=0.6)
    axes.tick_params(length=0, colors=INK)
    for side in axes.spines.values():
        side.set_visible(False)
    axes.set_title("karil over its peer: left of 1, karil takes less time or memory\n", loc="left", weight="bold")
    axes.set_xlabel(f"Mark: the bound. Blue: kept; red: not kept; grey: no bound.  {context['date'][:10]}, {machine()}\n"
                    f"{context['peers']}; {context['certificates']} certificates", color=FAINT, fontsize=8)
    axes.xaxis.set_label_position("bottom")
    figure.savefig(picture, format="svg", bbox_inches="tight", metadata={"Date": None, "Title": "karil beside its peers"})


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    folder, picture = Path(sys.argv[1]), Path(sys.argv[2])
    context, figures = load(folder)
    ratios = ratios_of(figures)
    (folder / "ratios.json").write_text(json.dumps(ratios, indent=4) + "\n")
    chart(context, figures, picture)
    bounded = [row for row in ROWS if row.bound is not None]
    met = sum(is_met(row, ratios[row.key]) for row in bounded)
    print(f"{context['date'][:10]}, {machine()}; {context['peers']}; {context['certificates']} certificates")
    print(f"\n{table(figures)}\n\n{met} of {len(bounded)} bounds are met.\n")
    print("\n".join(textwrap.fill(note, 120, subsequent_indent="  ") for note in NOTES))
    blocks = ", ".join(f"{who}'s {figures['utc'][f'blocks/{who}']:.0f}" for who in ("libcrypto", "mbedtls"))
    print(f"A decoded certificate takes {figures['utc']['blocks/karil']:.0f} blocks of memory, {blocks}.")


main()
