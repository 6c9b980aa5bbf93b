#!/bin/sh
# The library exports just what the version script lists, needs libc, libcrypto and libnettle alone, and has its
# soname. Usage: sh scripts/check_exports.sh LIBRARY
set -eu
cd "$(dirname "$0")/.."

library=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
sed -e '/global:/,/local:/!d' -e '/global:/d' -e '/local:/d' src/karil.map | tr ';' '\n' | tr -d ' ' | sed '/^$/d' |
    sort >"$work/listed"
nm -D --defined-only "$library" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' | sort >"$work/exported"
diff "$work/listed" "$work/exported"
printf '%s\n' libc.so.6 libcrypto.so.3 libnettle.so.8 >"$work/allowed"
readelf -d "$library" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' | sort >"$work/needed"
diff "$work/allowed" "$work/needed"
readelf -d "$library" | grep -q 'SONAME.*\[libkaril.so.1\]'
echo "$(wc -l <"$work/listed") exports, as listed; needs libc, libcrypto and libnettle"
