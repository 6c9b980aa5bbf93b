#!/bin/sh
# Builds karil for another machine with Debian's cross compiler and runs the suite under qemu; that of i386 runs without
# it on a machine that can.
# Usage: sh scripts/cross.sh arm64 | s390x (big-endian) | i386 (32 bits)
# Only the compiler and qemu are installed: the other machine's libraries go into the build folder.
# KARIL_BUILD_DIR: where to build, instead of build.
set -eu
cd "$(dirname "$0")/.."

arch=${1:-}
case $arch in
arm64) machine=aarch64 emulator=qemu-aarch64 ;;
s390x) machine=s390x emulator=qemu-s390x ;;
i386) machine=i686 emulator=qemu-i386 ;;
*)
    sed -n '2,6s/^# //p' scripts/cross.sh >&2
    exit 2
    ;;
esac

sh scripts/setup.sh build test "$arch"
folder=${KARIL_BUILD_DIR:-build}/cross/$arch
mkdir -p "$folder"
folder=$(cd "$folder" && pwd)
sysroot=$folder/sysroot
compiler=$machine-linux-gnu
libdir=$sysroot/usr/lib/$("$compiler-gcc" -print-multiarch)

# apt-get for the other architecture, as if nothing were installed, with all that it writes in the build folder.
foreign_apt() {
    apt-get -q -y -o APT::Architecture="$arch" -o APT::Architectures="$arch" -o APT::Sandbox::User=root \
        -o Dir::State="$folder/apt" -o Dir::State::status="$folder/apt/status" -o Dir::Cache="$folder/apt" "$@"
}
if [ ! -e "$sysroot/complete" ]; then
    rm -rf "$sysroot" "$folder/apt"
    mkdir -p "$folder/apt/lists/partial" "$folder/apt/archives/partial" "$sysroot"
    : >"$folder/apt/status"
    {
        foreign_apt update
        foreign_apt install --no-install-recommends --download-only \
            libc6-dev libstdc++6 libssl-dev nettle-dev libgtest-dev
    } >"$folder/apt.log" 2>&1 || {
        cat "$folder/apt.log" >&2
        echo "cross.sh: Debian's libraries for $arch cannot be had" >&2
        exit 1
    }
    for package in "$folder"/apt/archives/*.deb; do
        dpkg-deb -x "$package" "$sysroot"
    done
    rm -rf "$folder/apt"
    : >"$sysroot/complete"
fi

run="$emulator;-L;$sysroot"
loader=$sysroot/lib/ld-linux.so.2
if [ "$arch" = i386 ] && "$loader" --version >/dev/null 2>&1; then
    run="/usr/bin/env;GCONV_PATH=$libdir/gconv;OPENSSL_MODULES=$libdir/ossl-modules;$loader;--library-path;$sysroot/lib/i386-linux-gnu:$libdir"
fi

export PKG_CONFIG_SYSROOT_DIR="$sysroot" PKG_CONFIG_LIBDIR="$libdir/pkgconfig:$sysroot/usr/share/pkgconfig"
sh scripts/build.sh "$folder/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR="$machine" -DCMAKE_SYSROOT="$sysroot" \
    -DCMAKE_C_COMPILER="$compiler-gcc" -DCMAKE_CXX_COMPILER="$compiler-g++" \
    -DCMAKE_FIND_ROOT_PATH_MODE_LIBRARY=ONLY -DCMAKE_FIND_ROOT_PATH_MODE_INCLUDE=ONLY \
    -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=ONLY -DKARIL_BUILD_TOOL=OFF -DCMAKE_CROSSCOMPILING_EMULATOR="$run"
# Keys are made slowly by a machine that is not there.
ctest --test-dir "$folder/build" --output-on-failure --timeout 7200 -j "$(nproc)"
echo "$arch: all passed but the consumers of an installed tree, which are for the machine that builds and were not run"
