#!/bin/sh
# Builds the Python package, and tests its wheel against the library of this tree.
# KARIL_BUILD_DIR: where to build, instead of build.
set -eu
cd "$(dirname "$0")/.."

sh scripts/setup.sh build test python
build=${KARIL_BUILD_DIR:-build}
mkdir -p "$build"
build=$(cd "$build" && pwd)
source=$PWD/bindings/python
python=/usr/bin/python3

cmake -S . -B "$build/release" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build "$build/release" --target karil

rm -rf "$build/python"
$python -m build --no-isolation --outdir "$build/python" "$source" >"$build/python.log" 2>&1 || {
    cat "$build/python.log" >&2
    exit 1
}
cd "$source"
BLACK_CACHE_DIR=$build/python/black $python -m black --check --quiet .
$python -m flake8 --max-line-length 120 --extend-ignore E203 --exclude _cdef.py .
$python -m mypy --cache-dir "$build/python/mypy" karil

# Elsewhere, so that the tests import what the wheel installed.
cd "$build/python"
$python -m venv --system-site-packages venv
venv/bin/python -m pip install --quiet --no-index --no-deps karil-*.whl
KARIL_LIBRARY=$build/release/libkaril.so.1
export KARIL_LIBRARY
venv/bin/python -m pytest -q -p no:cacheprovider "$source/tests"
