#!/bin/sh
# Runs the test of eight threads under ThreadSanitizer. KARIL_BUILD_DIR: where to build, instead of build.
set -eu
cd "$(dirname "$0")/.."

sh scripts/setup.sh build test
folder=${KARIL_BUILD_DIR:-build}/threads
cmake -S . -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS=-O1 -DKARIL_SANITIZE=thread \
    -DKARIL_BUILD_EXAMPLES=OFF
cmake --build "$folder" --target karil_threads
# The sanitizer's memory map wants little address randomisation, which not every machine lets a program choose.
plain=
setarch "$(uname -m)" -R true 2>/dev/null && plain="setarch $(uname -m) -R"
TSAN_OPTIONS=halt_on_error=1 $plain "$folder/tests/karil_threads"
