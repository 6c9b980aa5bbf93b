#!/bin/sh
# Each public header alone, as C11 and C++20 with every warning on, by both compilers, and the sizes of the
# records where pointers have 32 bits.
set -eu
cd "$(dirname "$0")/.."

sh scripts/setup.sh build check
count=0
# A unit needs a declaration, which version.h does not have.
unit=$(mktemp)
trap 'rm -f "$unit"' EXIT
echo 'typedef int unit;' >"$unit"
# try COMPILER LANGUAGE STANDARD ARGUMENT...
try() {
    compiler=$1 language=$2 standard=$3
    shift 3
    "$compiler" -x "$language" "-std=$standard" -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -Iinclude \
        -fsyntax-only "$@"
    count=$((count + 1))
}
for compiler in gcc clang; do
    for header in include/karil/*.h; do
        try "$compiler" c c11 -include "$header" "$unit"
        try "$compiler" c++ c++20 -include "$header" "$unit"
        try "$compiler" c c11 -m32 -ffreestanding -include "$header" "$unit"
    done
    try "$compiler" c++ c++20 -include include/karil/karil.hpp "$unit"
done
echo "$count header checks passed"
