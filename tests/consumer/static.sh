#!/bin/sh
# Builds karil as a part of another project, as a static library: a consumer inside of that project, and one linked as
# C against the installed tree, found as a CMake package and through pkg-config.
# Usage: static.sh BUILD_FOLDER SOURCE_FOLDER C_COMPILER CXX_COMPILER
set -eu

work=$1/static
source=$2
export CC="$3" CXX="$4"

cmake -S "$source/tests/consumer/parent" -B "$work/parent" -G Ninja -DKARIL_SOURCE="$source"
cmake --build "$work/parent"
"$work/parent/inside"
if grep -e ' -W[a-z]' "$work/parent/build.ninja"; then
    echo "karil's own warnings in another project" >&2
    exit 1
fi

rm -rf "$work/prefix"
cmake --install "$work/parent" --prefix "$work/prefix" >/dev/null
cmake -S "$source/tests/consumer" -B "$work/installed" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix"
cmake --build "$work/installed" --target by_package
"$work/installed/by_package"

PKG_CONFIG_PATH=$(dirname "$(find "$work/prefix" -name karil.pc)")
export PKG_CONFIG_PATH
# shellcheck disable=SC2046
"$CC" "$source/tests/consumer/consumer.c" $(pkg-config --static --cflags --libs karil) -o "$work/by_pkgconfig"
"$work/by_pkgconfig"
