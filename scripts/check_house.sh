#!/bin/sh
# House rules that a grep can check.
set -eu
cd "$(dirname "$0")/.."

failed=0
broken() {
    echo "house rule: $1" >&2
    failed=1
}
# refuse RULE PATTERN [EXCEPT]: no line of src/ matches PATTERN, but for those that match EXCEPT.
refuse() {
    if grep -rnE "$2" src --include='*.cc' --include='*.h' | grep -vE "${3:-^$}"; then
        broken "$1"
    fi
}
refuse 'no goto, new, throw or try' '\bgoto\b|\bnew [A-Za-z]|\bnew \(|\bthrow\b|\btry \{|make_(unique|shared)'
refuse 'no allocating container' 'std::(vector|string|map|set|list|deque|function|unordered_\w+|[io]?stringstream)\b'
refuse 'memory comes from KAPR_Malloc' '\b(malloc|calloc|realloc|strdup|alloca)[[:space:]]*\(' '^src/ka_low/kapr_malloc.cc:'
refuse 'no unbounded string function' '\b(strcpy|strcat|sprintf|gets)[[:space:]]*\('
refuse 'crypto headers stay in src/ka_crypt' '#include <(openssl|nettle)/' '^src/ka_crypt/'
# The words stand in parts, so that this line is none of its own findings.
refuse 'nothing is left to be done later' '\b(TO''DO|FIX''ME|X''XX)\b'

# A macro that names the folder or the line makes of one inline function several. Definitions of macros may use them.
traced=$(find src -name '*.h' -exec awk '
    FNR == 1 { continued = 0 }
    { line = $0; sub(/[/][/].*/, "", line); macro = continued || line ~ /^#/; continued = macro && line ~ /[\\]$/ }
    !macro && line ~ /KA_(STEP|FAIL|TRACE|FRAME|DONE|CREATE|BLOCK|SOURCE|TWIN)|__LINE__/ { print FILENAME ":" FNR ":" $0 }
    ' {} +)
if [ -n "$traced" ]; then
    echo "$traced"
    broken 'no tracing macro in a function of a header'
fi
# One name, one macro.
twice=$(grep -rhoE '^#define KA_[A-Z_0-9]+' src | sort | uniq -d)
if [ -n "$twice" ]; then
    echo "$twice"
    broken 'no two macros of one name'
fi

long=$(find include src tools tests examples \( -name '*.h' -o -name '*.cc' -o -name '*.c' \) -exec wc -l {} + |
    awk '$2 != "total" && $1 > 480')
if [ -n "$long" ]; then
    echo "$long"
    broken 'a file has at most 480 lines'
fi
[ "$failed" -eq 0 ]
echo "house rules hold"
