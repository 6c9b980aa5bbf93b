"""Makes the modules that follow from the C headers, which a source distribution has already."""

import runpy
from pathlib import Path

from setuptools import setup

HERE = Path(__file__).resolve().parent

if not (HERE / "PKG-INFO").exists():
    runpy.run_path(str(HERE / "make_cdef.py"))["make"]()
setup()
