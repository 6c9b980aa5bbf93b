#!/bin/sh
# Installs the build into a prefix of its own and builds, links and runs against it: a consumer, found once as a CMake
# package and once through pkg-config, and the program in README.md, also with the guide's trace.
# Usage: run.sh BUILD_FOLDER SOURCE_FOLDER CERTIFICATE
set -eu

build=$1
source=$2
certificate=$3
work=$build/consumer
rm -rf "$work"
cmake --install "$build" --prefix "$work/installed" >/dev/null
# Elsewhere than it was installed: the tree can be moved.
mv "$work/installed" "$work/prefix"
libdir=$(dirname "$(find "$work/prefix" -name libkaril.so)")
export PKG_CONFIG_PATH="$libdir/pkgconfig"

cmake -S "$source/tests/consumer" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
    -DCMAKE_BUILD_RPATH="$libdir"
cmake --build "$work/build"
"$work/build/by_package"
"$work/build/by_pkgconfig"

cd "$work"
export LD_LIBRARY_PATH="$libdir"
awk '/^```c$/ { inside = 1; next } /^```$/ { inside = 0 } inside' "$source/README.md" >subject.c
# shellcheck disable=SC2046
cc -Wall -Wextra -Werror subject.c $(pkg-config --cflags --libs karil) -o subject
cc -Wall -Wextra -Werror -shared -fPIC "$source/examples/guide/preload/trace.c" -o trace.so
./subject <"$certificate" >subject.txt
grep -aq 'CN=www.example.com' subject.txt
LD_PRELOAD=./trace.so ./subject <"$certificate" 2>trace.txt >traced.txt
cmp subject.txt traced.txt
grep -q 'ka_cert:[0-9]* ======>KACert_DecodeCert Begin' trace.txt
echo "README.md: the program works"
