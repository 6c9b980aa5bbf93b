#!/bin/sh
# Installs the build into a prefix of its own and builds, links and runs a consumer against it, found once as a CMake
# package and once through pkg-config. Usage: run.sh BUILD_FOLDER SOURCE_FOLDER
set -eu

build=$1
source=$2
work=$build/consumer
rm -rf "$work"
cmake --install "$build" --prefix "$work/prefix" >/dev/null
libdir=$(dirname "$(find "$work/prefix" -name libkaril.so)")
PKG_CONFIG_PATH=$libdir/pkgconfig cmake -S "$source/tests/consumer" -B "$work/build" -G Ninja \
    -DCMAKE_PREFIX_PATH="$work/prefix" -DCMAKE_BUILD_RPATH="$libdir"
cmake --build "$work/build"
"$work/build/by_package"
"$work/build/by_pkgconfig"
