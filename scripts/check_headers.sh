#!/bin/sh
# Each public header alone, as C11 and C++20 with every warning on, by both compilers, and the fixed sizes of the
# records where pointers have 32 bits.
set -eu
cd "$(dirname "$0")/.."

sh scripts/setup.sh build check
warnings="-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -Iinclude -fsyntax-only"
count=0
for header in include/karil/*.h; do
    line="#include \"karil/$(basename "$header")\""
    for compiler in gcc clang; do
        # shellcheck disable=SC2086
        echo "$line" | $compiler -xc -std=c11 $warnings -
        # shellcheck disable=SC2086
        echo "$line" | $compiler -xc++ -std=c++20 $warnings -
        # shellcheck disable=SC2086
        echo "$line" | $compiler -xc -std=c11 -m32 -ffreestanding $warnings -
        count=$((count + 3))
    done
done
echo "$count header checks passed"
