#!/bin/sh
# Measures karil beside its peers with TZ=UTC, and what depends on the time zone without TZ and with TZ=Asia/Shanghai:
# prints the table with the bounds and what each side does, writes ratios.json and draws docs/bench.svg.
# KARIL_BUILD_DIR: where to build, instead of build; the figures go into the folder bench in it.
# KARIL_BENCH_SECONDS: how long each measure runs in each of its 7 repetitions, instead of 0.2; those of
# signing, and of signed and enveloped messages, have 21 of 0.1.
set -eu
cd "$(dirname "$0")/.."

sh scripts/setup.sh build bench
folder=${KARIL_BUILD_DIR:-build}/bench
mkdir -p "$folder" docs
folder=$(cd "$folder" && pwd)
sh scripts/build.sh "$folder/build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE='-O2 -DNDEBUG' \
    -DCMAKE_C_FLAGS_RELEASE='-O2 -DNDEBUG' -DKARIL_BUILD_BENCH=ON -DBUILD_TESTING=OFF -DKARIL_BUILD_EXAMPLES=OFF \
    -DKARIL_DIAGNOSTIC_FILE=OFF -DKARIL_BUILD_TOOL=OFF >"$folder/build.log" 2>&1 || {
    cat "$folder/build.log" >&2
    exit 2
}

"$folder/build/bench/bench_memory" >"$folder/utc-memory.json"
TZ=UTC "$folder/build/bench/bench_heap" >"$folder/utc-heap.json"

# run NAME FILTER [ENV_ARGUMENT...]: the figures of one run, in NAME.json. The measures take turns, so that what else the
# machine does meets all of them alike. They run in the folder, where the diagnostic file may stand.
run() {
    name=$1
    filter=$2
    shift 2
    echo "measuring: $name"
    (cd "$folder" && exec env "$@" build/bench/bench_time --benchmark_filter="$filter" --benchmark_repetitions=7 \
        --benchmark_enable_random_interleaving=true --benchmark_min_time="${KARIL_BENCH_SECONDS:-0.2}" \
        --benchmark_display_aggregates_only=true --benchmark_out="$folder/$name.json" --benchmark_out_format=json) \
        >"$folder/$name.log" 2>&1 || {
        cat "$folder/$name.log" >&2
        exit 1
    }
}
run utc . TZ=UTC
zoned='^decode-(cert|crl|crl-30|crl-1000)(-random)?/(karil|mbedtls)'
run unset "$zoned" -u TZ
run shanghai "$zoned" TZ=Asia/Shanghai
echo
/usr/bin/python3 bench/report.py "$folder" docs/bench.svg
