#!/bin/sh
# House rules that a grep can check in src/.
set -eu
cd "$(dirname "$0")/.."

failed=0
refuse() {
    if grep -rnE "$2" src --include='*.cc' --include='*.h' | grep -vE "${3:-^$}"; then
        echo "house rule: $1" >&2
        failed=1
    fi
}
refuse 'no goto, new or throw' '\bgoto\b|\bnew [A-Za-z]|\bthrow\b'
refuse 'no allocating container' 'std::(vector|string|map|list|function|deque|set)\b'
refuse 'memory comes from KAPR_Malloc' '\b(malloc|calloc|realloc|strdup|alloca)[[:space:]]*\(' '^src/ka_low/memory.cc:'
refuse 'no unbounded string function' '\b(strcpy|strcat|sprintf|gets)[[:space:]]*\('
refuse 'crypto headers stay in src/ka_crypt' '#include <(openssl|nettle)/' '^src/ka_crypt/'
for file in $(find include src tests examples -name '*.h' -o -name '*.cc' -o -name '*.c'); do
    lines=$(wc -l <"$file")
    [ "$lines" -le 480 ] || {
        echo "house rule: $file has $lines lines, too many to hold in the head" >&2
        failed=1
    }
done
[ "$failed" -eq 0 ]
echo "house rules hold"
