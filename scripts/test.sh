#!/usr/bin/env bash
# Builds everything and runs all tests. From nothing it installs what it needs.
#   BUILD=DIR   build folder (default build/test)     JOBS=N   parallel jobs (default: the cores)
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup.sh
build=${BUILD:-build/test}
jobs=${JOBS:-$(nproc)}
# Line numbers are enough to read a failure by; full debug information costs a quarter of the build.
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O2 -g1 -DNDEBUG" \
    -DVX3_WERROR=ON >/dev/null
cmake --build "$build" -j "$jobs"
ctest --test-dir "$build" --output-on-failure -j "$jobs"
