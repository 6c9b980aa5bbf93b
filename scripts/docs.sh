#!/bin/sh
# Makes the reference: build/docs/html/index.html, and man pages in build/docs/man. KARIL_BUILD_DIR: where to build,
# instead of build.
set -eu
cd "$(dirname "$0")/.."

sh scripts/setup.sh docs
folder=${KARIL_BUILD_DIR:-build}/docs
/usr/bin/python3 -B scripts/reference "$folder"
echo "$folder/html/index.html, and for example: man -M $folder/man KACert_DecodeCert"
