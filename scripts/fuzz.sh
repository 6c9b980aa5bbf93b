#!/bin/sh
# Fuzzes the library, two targets at a time, and prints a line a target.
# Usage: sh scripts/fuzz.sh SECONDS [TARGET...]   each for a time; what is reached is kept for the next run
#        sh scripts/fuzz.sh --runs N [TARGET...]  each for N executions (slow targets a tenth), the same every time
# Ends with 1 if there was a finding; the input is then in FOLDER/findings. KARIL_BUILD_DIR: where to build, instead
# of build; FOLDER is fuzz in it. KARIL_FUZZ_LANES=1 runs one target at a time.
set -eu
cd "$(dirname "$0")/.."

usage() {
    sed -n '2,6s/^# //p' scripts/fuzz.sh >&2
    exit 2
}
runs=
case ${1:-} in
--runs)
    [ $# -ge 2 ] || usage
    runs=$2
    amount=$2
    shift 2
    ;;
*)
    [ $# -ge 1 ] || usage
    amount=$1
    shift
    ;;
esac
case $amount in '' | *[!0-9]*) usage ;; esac
all="cert_decode asn1_readers cert_build text names oid_text crl csr keys verify pem dn_string indefinite ocsp ocsp_build"
all="$all signers messages messages_build pkcs12_crypt pkcs12_bags auth_safe pfx pfx_build pkcs12_foreign"
targets=${*:-$all}
for target in $targets; do
    [ -f "fuzz/$target.cc" ] || usage
done

sh scripts/setup.sh build test check
folder=${KARIL_BUILD_DIR:-build}/fuzz
seeds=$folder/seeds
findings=$folder/findings
mkdir -p "$folder"
folder=$(cd "$folder" && pwd)
CC=clang CXX=clang++ sh scripts/build.sh "$folder/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKARIL_BUILD_FUZZERS=ON \
    -DKARIL_SANITIZE=fuzzer-no-link,address,undefined -DBUILD_TESTING=OFF -DKARIL_BUILD_EXAMPLES=OFF \
    -DKARIL_DIAGNOSTIC_FILE=OFF -DKARIL_BUILD_TOOL=OFF \
    >"$folder/build.log" 2>&1 || {
    cat "$folder/build.log" >&2
    exit 2
}

# The seeds are made afresh, so that a fixed number of executions starts from the same inputs.
rm -rf "$seeds" "$folder/passed"
mkdir -p "$seeds/cert_decode" "$findings"
"$folder/build/fuzz/make_seeds" "$seeds"
for file in /usr/share/ca-certificates/mozilla/*.crt; do
    openssl x509 -in "$file" -outform DER -out "$seeds/cert_decode/$(basename "$file" .crt)"
done

export ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1:strict_string_checks=1
export UBSAN_OPTIONS=print_stacktrace=1

# The longest input in octets, and what a slow target takes of the executions.
limits() {
    case $1 in
    cert_decode) echo 4096 10 ;;
    cert_build) echo 600 10 ;;
    auth_safe | crl | csr | messages | ocsp | pfx | pkcs12_bags | pkcs12_foreign | signers | verify) echo 2048 10 ;;
    pfx_build) echo 600 100 ;;
    messages_build | ocsp_build | pkcs12_crypt) echo 600 10 ;;
    keys) echo 1600 1 ;;
    text) echo 2100 10 ;;
    names | asn1_readers) echo 2048 1 ;;
    oid_text | pem | indefinite) echo 4096 1 ;;
    dn_string) echo 1200 1 ;;
    esac
}

fuzz_one() {
    target=$1
    # shellcheck disable=SC2046
    set -- $(limits "$target")
    corpus=$folder/corpus/$target
    until=-max_total_time=$amount
    if [ -n "$runs" ]; then
        corpus=$folder/fixed/$target
        rm -rf "$corpus"
        until="-runs=$((runs / $2)) -seed=1"
    fi
    mkdir -p "$corpus"
    log=$folder/$target.log
    status=0
    # shellcheck disable=SC2086
    "$folder/build/fuzz/fuzz_$target" $until -max_len="$1" -timeout=10 -print_final_stats=1 \
        -artifact_prefix="$findings/$target-" "$corpus" "$seeds/$target" >"$log" 2>&1 || status=$?
    awk -v target="$target" -v status="$status" '
        / cov: / { for (i = 1; i < NF; ++i) if ($i == "cov:") { cov = $(i + 1); ft = $(i + 3) } }
        /INITED/ { start = cov "/" ft }
        /number_of_executed_units/ { units = $2 }
        /average_exec_per_sec/ { speed = $2 }
        /Test unit written to/ { input = $NF }
        END {
            printf "%-13s %9d executions %7s   cov/ft %10s -> %-10s   %s\n", target, units,
                (speed > 0 ? speed "/s" : ""), start, cov "/" ft, (status == 0 ? "no finding" : input != "" ? "FINDING " input : "STOPPED with status " status)
        }' "$log"
    if [ "$status" -eq 0 ]; then
        echo "$target" >>"$folder/passed"
    else
        grep -E 'ERROR|runtime error|broken claim|SUMMARY' "$log" | sed 's/^/    /'
    fi
}
lane() {
    for each; do
        fuzz_one "$each"
    done
}

# shellcheck disable=SC2086
if [ "${KARIL_FUZZ_LANES:-2}" -eq 1 ]; then
    lane $targets
else
    odd=
    even=
    for target in $targets; do
        set -- "$odd" "$even $target"
        even=$1
        odd=$2
    done
    lane $odd &
    lane $even
    wait
fi
# Only a target that ran to its end and found nothing has passed.
# shellcheck disable=SC2086
[ "$(sort -u "$folder/passed" 2>/dev/null)" = "$(printf '%s\n' $targets | sort -u)" ]
