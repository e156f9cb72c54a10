#!/usr/bin/env bash
# Runs the fuzz targets over their committed seeds, two at a time, and prints a line for each: runs, executions a
# second, edges reached of those in the program, features (edges with how often, and comparisons), inputs kept. Fails
# when one finds something: the input lies in OUT then, and its log says how to see it again.
#   fuzz.sh [NAME...]              a smoke run of all targets, or of those named (gvsp_parser, ini, ...)
#   fuzz.sh --hours N [NAME...]    N hours in all; what was learnt goes into the seeds, as few as reach the same edges
#   fuzz.sh --minimise [NAME...]   makes the seeds few again, without a run
#   SECONDS_EACH=N  seconds a target (default 20)   BUILD=DIR  (build/fuzz)   OUT=DIR  inputs and findings (BUILD/found)
set -euo pipefail
cd "$(dirname "$0")/.."
export build=${BUILD:-build/fuzz}
export out=${OUT:-$build/found} seconds=${SECONDS_EACH:-20} keep='' run=1
hours=0
case ${1:-} in
    --hours) hours=$2 keep=1; shift 2 ;;
    --minimise) keep=1 run=''; shift ;;
esac
if [ $# -eq 0 ]; then
    for source in fuzz/*_fuzz.cpp; do set -- "$@" "$(basename "$source" _fuzz.cpp)"; done
fi
if [ "$hours" != 0 ]; then
    seconds=$(awk -v h="$hours" -v n=$# 'BEGIN { printf "%d", h * 3600 * 2 / n }')
fi

./scripts/setup.sh
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g1" \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ -DVX3_SANITIZE=address,undefined -DVX3_BUILD_FUZZ=ON \
    -DVX3_BUILD_TESTS=OFF -DVX3_BUILD_BENCH=OFF -DVX3_BUILD_TOOLS=OFF -DVX3_BUILD_EXAMPLES=OFF >/dev/null
cmake --build "$build" -j "$(nproc)" --target "${@/%/_fuzz}" | tail -n 1

# New inputs and findings go beside the build; the committed seeds change only with --hours and --minimise.
fuzz() {
    local name=$1 program=$build/bin/$1_fuzz work=$out/$1 seeds=fuzz/corpus/$1 log=$out/$1.log options=()
    mkdir -p "$work" "$seeds"
    [ ! -e "fuzz/$name.dict" ] || options+=("-dict=fuzz/$name.dict")
    # Weighing inputs by how rare their features are takes a third of the time and pays after hours only.
    [ -n "$keep" ] || options+=(-entropic=0)
    "$program" "${options[@]}" -max_total_time="$seconds" -timeout=25 -rss_limit_mb=2560 \
        -artifact_prefix="$out/$name-" "$work" "$seeds" >"$log" 2>&1
    local result=$?
    awk -v name="$name" -v result=$result '
        /inline 8-bit counters/ { gsub(/[(]/, ""); all = $5 }
        /^#[0-9]+.*cov: / { for (i = 1; i < NF; ++i) seen[$i] = $(i + 1) }
        /^Done / { runs = $2 }
        END { printf "fuzz: %-18s %9d runs %7d/s %6d of %6d edges %7d features %12s inputs%s\n", name, runs,
                     seen["exec/s:"], seen["cov:"], all, seen["ft:"], seen["corp:"], result ? "  FAILED" : "" }' "$log"
    [ $result -eq 0 ] || tail -n 40 "$log"
    return $result
}
# As few inputs as reach every edge that the seeds and the new inputs reach. Those named regression-* stay: each stands
# for a fault that was found.
minimise() {
    local name=$1 seeds=fuzz/corpus/$1 few
    few=$(mktemp -d)
    mkdir -p "$out/$name" "$seeds"
    "$build/bin/${name}_fuzz" -set_cover_merge=1 -use_counters=0 -use_value_profile=0 -max_len=4096 -timeout=25 \
        "$few" "$seeds" "$out/$name" >"$out/$name-merge.log" 2>&1 || { rm -rf "$few"; return 1; }
    echo "fuzz: $name: $(find "$seeds" -type f | wc -l) seeds become $(find "$few" -type f | wc -l)"
    find "$seeds" -type f ! -name 'regression-*' -delete
    find "$few" -type f -exec mv -t "$seeds" {} +
    rm -rf "$few"
}
one() {
    [ -z "$run" ] || fuzz "$1" || return 1
    [ -z "$keep" ] || minimise "$1"
}
export -f fuzz minimise one
mkdir -p "$out"
printf '%s\n' "$@" | xargs -P 2 -I{} bash -c 'one {}'
