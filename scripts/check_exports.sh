#!/bin/sh
# The library exports just what the version script lists, lets a program take over the KAPR_ functions alone, needs libc,
# libcrypto and libnettle alone, and has its soname. Any machine's library can be looked at on any other.
# Usage: sh scripts/check_exports.sh LIBRARY
set -eu
cd "$(dirname "$0")/.."

library=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# The names between two lines of a linker script.
names() {
    sed -e "/$2/,/$3/!d" -e "/$2/d" -e "/$3/d" "$1" | tr ';' '\n' | tr -d ' ' | sed '/^$/d' | sort
}
names src/karil.map 'global:' 'local:' >"$work/listed"
readelf -W --dyn-syms "$library" |
    awk '$5 != "LOCAL" && $7 ~ /^[0-9]+$/ { sub(/@.*/, "", $8); print $8 }' | sort >"$work/exported"
diff "$work/listed" "$work/exported"
# The package's symbols file has them all, each with the version that it came with. A package is built elsewhere.
for symbols in packaging/debian/libkaril1.symbols debian/libkaril1.symbols; do
    if [ -e "$symbols" ]; then
        sed -n 's/^ \(.*\)@KARIL_1 [0-9.]*$/\1/p' "$symbols" | grep -vx KARIL_1 | diff "$work/listed" -
    fi
done

# An exported name that the dynamic linker resolves for the library itself can be taken over.
names src/karil.interpose '^{' '^}' >"$work/open"
readelf -rW "$library" | awk 'NF > 4 { sub(/@.*/, "", $5); print $5 }' | sort -u | comm -12 - "$work/listed" \
    >"$work/resolved"
comm -23 "$work/resolved" "$work/open" >"$work/unwanted"
if [ -s "$work/unwanted" ]; then
    echo "a program's own function would be called in place of the library's:" >&2
    cat "$work/unwanted" >&2
    exit 1
fi
for name in KAPR_Malloc KAPR_Free KAPR_DebugMessage; do
    grep -qx "$name" "$work/resolved" || {
        echo "a program's own $name would not be called" >&2
        exit 1
    }
done

# By stem, since other systems have other versions. The dynamic linker stands in the list of some.
printf '%s\n' libc libcrypto libnettle >"$work/allowed"
readelf -dW "$library" | sed -n 's/.*(NEEDED).*\[\([^.]*\)\..*\]/\1/p' | grep -v '^ld' | sort >"$work/needed"
diff "$work/allowed" "$work/needed"
readelf -dW "$library" | grep -q 'SONAME.*\[libkaril.so.1\]'
echo "$(wc -l <"$work/listed") exports, as listed, $(wc -l <"$work/open") of them open to a program's own;" \
    "needs libc, libcrypto and libnettle"
