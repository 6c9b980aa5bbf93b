#!/bin/sh
# Builds karil and runs all its tests. KARIL_BUILD_DIR: where to build, instead of build.
set -eu
cd "$(dirname "$0")/.."

sh scripts/setup.sh build test
folder=${KARIL_BUILD_DIR:-build}/release
sh scripts/build.sh "$folder" -DCMAKE_BUILD_TYPE=RelWithDebInfo
ctest --test-dir "$folder" --output-on-failure -j "$(nproc)"
