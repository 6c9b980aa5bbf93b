#!/bin/sh
# clang-tidy over the library, the tool, the examples and the test in C. Usage: sh scripts/check_tidy.sh BUILD_FOLDER
set -eu
cd "$(dirname "$0")/.."

sh scripts/setup.sh check
find src tools examples tests/abi \( -name '*.cc' -o -name '*.c' \) -print0 |
    xargs -0 -n 2 -P "$(nproc)" clang-tidy --quiet -p "$1"
echo "clang-tidy found nothing"
