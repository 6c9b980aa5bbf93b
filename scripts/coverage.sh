#!/bin/sh
# Line and branch coverage of src/ by the test program. KARIL_BUILD_DIR: where to build, instead of build.
set -eu
cd "$(dirname "$0")/.."

sh scripts/setup.sh build test coverage
folder=${KARIL_BUILD_DIR:-build}/coverage
# Atomic counts, since a test runs eight threads at once.
cmake -S . -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS='--coverage -fprofile-update=atomic -O0' \
    -DCMAKE_SHARED_LINKER_FLAGS=--coverage -DCMAKE_EXE_LINKER_FLAGS=--coverage -DKARIL_BUILD_EXAMPLES=OFF
cmake --build "$folder" --target karil_tests
find "$folder" -name '*.gcda' -delete
# Where decoding may leave its diagnostic file.
(cd "$folder" && tests/karil_tests --gtest_brief=1)
# Branches that only an exception would take, which this library cannot throw, are not counted.
gcovr --root . --filter src/ --exclude-throw-branches --print-summary "$folder"
