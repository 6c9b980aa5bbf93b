#!/bin/sh
# clang-tidy over the library and the examples. Usage: sh scripts/check_tidy.sh BUILD_FOLDER
set -eu
cd "$(dirname "$0")/.."

sh scripts/setup.sh check
find src examples \( -name '*.cc' -o -name '*.c' \) -print0 |
    xargs -0 -n 2 -P "$(nproc)" clang-tidy --quiet -p "$1"
echo "clang-tidy found nothing"
