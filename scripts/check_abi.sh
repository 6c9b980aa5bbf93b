#!/bin/sh
# The library's binary interface is that of abi/: exports, their arguments, and the layout of the records that they
# reach in libkaril.abi, the numbers of ids and statuses in constants.txt. What old programs would not survive fails
# unless the soname has changed. What is new is told, and fails until it is in the files. With --update the files are
# made anew, if the change is one that old programs survive.
# Usage: sh scripts/check_abi.sh LIBRARY [--update]     LIBRARY is for amd64 and has debug information
set -eu
cd "$(dirname "$0")/.."

library=$1
update=${2:-}
known=abi/libkaril.abi
sh scripts/setup.sh check
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Only what the public headers declare, without paths and without what depends on the machine.
abidw --headers-dir include --exported-interfaces-only --drop-private-types --no-corpus-path --no-comp-dir-path \
    --no-show-locs --no-elf-needed --no-write-default-sizes --no-parameter-names --out-file "$work/made.abi" "$library"
sed "s|path='[^']*/src/|path='src/|" "$work/made.abi" >"$work/now.abi"
[ "$(grep -c '<elf-symbol ' "$work/now.abi")" -eq "$(nm -D --defined-only "$library" | grep -c ' T ')" ]
soname() {
    sed -n "s/.*<abi-corpus.* soname='\([^']*\)'.*/\1/p" "$1"
}
# compare ARGUMENT...: 0 if there is no change, 4 and 8 are changes, all else is a failure of abidiff.
compare() {
    status=0
    abidiff --no-default-suppression "$@" "$known" "$work/now.abi" >"$work/changes" || status=$?
    [ $((status & 3)) -eq 0 ] || exit 2
}

# Programs have the numbers of enumerators in them, which the library's debug information does not tell.
gcc -E -P -Iinclude include/karil/karil.h | tr '\n' ' ' | grep -o 'enum {[^}]*}' | tr ',{}' '[\n*]' | grep ' = ' |
    sed 's/^ *//; s/ *$//' | sort >"$work/constants.txt"
# names INTERFACE CONSTANTS: all that may not go away.
names() {
    sed -n "s/.*<elf-symbol name='\([^']*\)' version='\([^']*\)'.*/\1@\2/p" "$1" | sort - "$2"
}

if [ -e "$known" ] && [ "$(soname "$known")" = "$(soname "$work/now.abi")" ]; then
    names "$known" abi/constants.txt >"$work/before"
    names "$work/now.abi" "$work/constants.txt" >"$work/after"
    # If two names are one function, abidiff does not notice that one of them is gone.
    lost=$(comm -23 "$work/before" "$work/after")
    compare --no-added-syms
    if [ "$status" -ne 0 ] || [ -n "$lost" ]; then
        cat "$work/changes"
        [ -z "$lost" ] || echo "no longer there: $lost"
        echo "old programs would not survive this: undo it, or change the soname" >&2
        exit 1
    fi
    new=$(comm -13 "$work/before" "$work/after")
    compare
    if [ "$status" -eq 0 ] && [ -z "$new" ]; then
        echo "the binary interface is that of $known"
        exit 0
    fi
    cat "$work/changes"
    echo "new: $new"
else
    echo "the soname $(soname "$work/now.abi") has no interface in $known"
fi
if [ "$update" != --update ]; then
    echo "put it into abi: sh scripts/check_abi.sh $library --update" >&2
    exit 1
fi
mkdir -p abi
cp "$work/now.abi" "$known"
cp "$work/constants.txt" abi
echo "abi is up to date"
