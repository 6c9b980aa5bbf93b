#!/bin/sh
# Each public header alone, as C11 and C++20 with every warning on, by both compilers, and the sizes of the
# records where pointers have 32 bits.
set -eu
cd "$(dirname "$0")/.."

sh scripts/setup.sh build check
count=0
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
        try "$compiler" c c11 -include "$header" /dev/null
        try "$compiler" c++ c++20 -include "$header" /dev/null
        try "$compiler" c c11 -m32 -ffreestanding -include "$header" /dev/null
    done
    try "$compiler" c++ c++20 -include include/karil/karil.hpp /dev/null
done
echo "$count header checks passed"
