#!/bin/sh
# Builds the Debian packages of the last commit in build/package, runs the tests on the way, and has lintian look at them.
# KARIL_BUILD_DIR: where to build, instead of build.
set -eu
cd "$(dirname "$0")/.."

sh scripts/setup.sh build test docs package
version=$(sed -n 's/^#define KARIL_VERSION "\(.*\)"/\1/p' include/karil/version.h)
folder=${KARIL_BUILD_DIR:-build}/package
rm -rf "$folder"
mkdir -p "$folder"
git archive --prefix="karil-$version/" HEAD | tar -x -C "$folder"
cd "$folder"
# The sources without the packaging, which the other archive has.
mv "karil-$version/packaging/debian" debian
tar --sort=name --owner=0 --group=0 --numeric-owner -cf - "karil-$version" | gzip -9n >"karil_$version.orig.tar.gz"
mv debian "karil-$version/debian"
cd "karil-$version"
dpkg-buildpackage -us -uc
cd ..
lintian --allow-root --fail-on error,warning --display-info --pedantic --tag-display-limit 0 ./*.changes
ls -l ./*.deb
