#!/bin/sh
# Every source is as clang-format leaves it. With the argument fix it is made so.
set -eu
cd "$(dirname "$0")/.."

sh scripts/setup.sh check
mode="--dry-run -Werror"
[ "${1:-}" = fix ] && mode=-i
# shellcheck disable=SC2086
find . -path './build*' -prune -o \( -name '*.h' -o -name '*.hpp' -o -name '*.cc' -o -name '*.c' \) -print0 |
    xargs -0 clang-format $mode
echo "formatting is in order"
