#!/usr/bin/python3
"""Makes the modules of the package that follow from the C headers.

    karil/_cdef.py    all types, functions and constants, in cffi's out-of-line ABI form
    karil/_tables.py  the version, the statuses, and a sentence for each
    karil/oids.py     the object identifiers, as dotted text

They are made at each build from a tree that has the headers, and are not committed: they cannot be out of date. A
source distribution holds them, so that building from it needs neither headers nor a compiler.

    make_cdef.py [FOLDER_OF_HEADERS]
"""

import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

import cffi

HERE = Path(__file__).resolve().parent
HEADERS = HERE.parent.parent / "include"
HEAD = "# Made by make_cdef.py from karil's C headers.\n"

# The marks are found again in what the preprocessor leaves.
SOURCE = """\
#include "karil/karil.h"
#define MARK_STATUS(NAME, TEXT) @status NAME TEXT
#define MARK(NAME) @NAME
KARIL_STATUSES(MARK_STATUS)
MARK(version) KARIL_VERSION
"""


def preprocess(headers: Path) -> str:
    """What is left of the headers without comments, macros, attributes and the standard headers."""
    with tempfile.TemporaryDirectory() as stand_ins:
        for name in ("stdint.h", "stddef.h"):
            Path(stand_ins, name).touch()
        command = [os.environ.get("CC", "cc"), "-E", "-P", "-nostdinc", "-D__attribute__(WORDS)=", "-x", "c"]
        command += ["-I", stand_ins, "-I", str(headers), "-"]
        return subprocess.run(command, input=SOURCE, capture_output=True, check=True, text=True).stdout


def without_bodies(text: str) -> str:
    """Cuts inline functions, which a shared library does not have."""
    while (start := re.search(r"static inline\b[^{]*\{", text)) is not None:
        end, depth = start.end(), 1
        while depth > 0:
            depth += {"{": 1, "}": -1}.get(text[end], 0)
            end += 1
        text = text[: start.start()] + text[end:]
    return text


def dotted(octets: bytes) -> str:
    """Content octets of an object identifier (X.690 8.19) as dotted text."""
    arcs, arc = [], 0
    for octet in octets:
        arc = arc << 7 | octet & 0x7F
        if octet < 0x80:
            arcs.append(arc)
            arc = 0
    root = min(arcs[0] // 40, 2)
    return ".".join(str(arc) for arc in [root, arcs[0] - 40 * root, *arcs[1:]])


def make(headers: Path = HEADERS, package: Path = HERE / "karil") -> None:
    text, marks = preprocess(headers).split("@status", 1)
    sentences = re.findall(r'(KA\w+)\s+("[^"]*")', marks)
    numbers = dict(re.findall(r"\b(KA\w+) = (\d+)", text))
    version = re.search(r'@version\s+("[^"]*")', marks)
    assert version is not None

    oids = re.findall(r"static const uint8_t KARIL_OID_(\w+)\[\] = \{([^}]*)\};", text)
    text = re.sub(r"static const uint8_t[^;]*;", "", text)
    text = re.sub(r'_Static_assert\([^"]*("[^"]*"\s*)+\);', "", without_bodies(text))

    ffi = cffi.FFI()
    ffi.cdef(text)
    ffi.set_source("karil._cdef", None)
    ffi.emit_python_code(str(package / "_cdef.py"))

    lines = ["from enum import IntEnum", "", f"VERSION = {version[1]}", "", "", "class Status(IntEnum):"]
    lines += ['    """What functions of the library return."""', ""]
    lines += [f"    {name} = {numbers[name]}" for name, _ in sentences]
    lines += ["", "", "SENTENCES = {", *(f"    Status.{name}: {words}," for name, words in sentences), "}", ""]
    (package / "_tables.py").write_text(HEAD + "\n".join(lines))
    names = [f'{name} = "{dotted(bytes(int(octet, 0) for octet in octets.split(",")))}"' for name, octets in oids]
    words = ['"""Object identifiers as dotted text."""', "", *names, ""]
    (package / "oids.py").write_text(HEAD + "\n".join(words))


if __name__ == "__main__":
    make(*(Path(argument) for argument in sys.argv[1:2]))
