#!/usr/bin/env bash
# Runs every fuzz target for a bounded time over its committed seeds.
#   SECONDS_EACH=N   seconds a target (default 30)    BUILD=DIR   build folder (default build/fuzz)
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup.sh
build=${BUILD:-build/fuzz}
seconds=${SECONDS_EACH:-30}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang \
    -DCMAKE_CXX_COMPILER=clang++ -DVX3_SANITIZE=address,undefined -DVX3_BUILD_FUZZ=ON -DVX3_BUILD_TESTS=OFF \
    -DVX3_BUILD_BENCH=OFF -DVX3_BUILD_TOOLS=OFF -DVX3_BUILD_EXAMPLES=OFF >/dev/null
names=()
for source in fuzz/*_fuzz.cpp; do names+=("$(basename "$source" .cpp)"); done
cmake --build "$build" -j "$(nproc)" --target "${names[@]}"
# New inputs and findings go beside the build, never into the committed seeds. Two targets at a time.
work=$build/fuzz-work
run() {
    local name=$1 corpus=fuzz/corpus/${1%_fuzz}
    mkdir -p "$work/$name"
    if ! "$build/bin/$name" -max_total_time="$seconds" -rss_limit_mb=2048 -timeout=10 -print_final_stats=0 \
        -artifact_prefix="$work/$name-" "$work/$name" "$corpus" >"$work/$name.log" 2>&1; then
        tail -n 40 "$work/$name.log"
        echo "fuzz: $name FAILED"
        return 1
    fi
    echo "fuzz: $name clean: $(grep -E '^Done' "$work/$name.log" || tail -n 1 "$work/$name.log")"
}
export -f run
export work build seconds
printf '%s\n' "${names[@]}" | xargs -P "$(nproc)" -I{} bash -c 'run {}'
