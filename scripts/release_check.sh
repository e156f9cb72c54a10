#!/usr/bin/env bash
# What is too long for every change, before a release: the oldest compilers to be had, the static analyzer, long
# fuzzing, soaks. From nothing it installs what it needs. Each step's time is printed, and a table at the end.
#   FUZZ_SECONDS=N   seconds a fuzz target (default 1800)     SOAK_SECONDS=N   seconds of the soak (default 3600)
#   release_check.sh [STEP...]    only these: gcc clang analyzer fuzz soak packages arm64
set -uo pipefail
cd "$(dirname "$0")/.."
. scripts/steps.sh

# The oldest packaged version of a compiler whose C++17 is whole; installs it.
oldest() {
    local package=$1 version
    shift
    for version in "$@"; do
        if apt-cache policy "$package-$version" 2>/dev/null | grep -qE 'Candidate: [0-9]'; then
            DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y -qq --no-install-recommends \
                "$package-$version" >/dev/null && echo "$version" && return 0
        fi
    done
    return 1
}

# built_with NAME CC CXX: everything but the benchmarks, with warnings as errors, and all tests.
built_with() {
    local build=build/$1
    echo "   $("$3" --version | head -n 1)"
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O2 -g1 -DNDEBUG" \
        -DCMAKE_C_COMPILER="$2" -DCMAKE_CXX_COMPILER="$3" -DVX3_WERROR=ON -DVX3_BUILD_BENCH=OFF >/dev/null &&
        built "$build" all &&
        ctest --test-dir "$build" --output-on-failure -j "$jobs" >"$build/ctest.log" 2>&1
    local result=$?
    [ $result -eq 0 ] || tail -n 60 "$build/ctest.log"
    grep -E 'tests passed' "$build/ctest.log" 2>/dev/null | sed 's/^/   /'
    return $result
}

with_gcc() {
    local version
    version=$(oldest g++ 9 10 11 12) && built_with "gcc$version" "gcc-$version" "g++-$version"
}

with_clang() {
    local version
    version=$(oldest clang 10 11 12 13 14) && built_with "clang$version" "clang-$version" "clang++-$version"
}

analyzer() {
    cmake -S . -B build/test -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null &&
        python3 scripts/tidy.py --build build/test --deep
}

soak() {
    if [ -x scripts/soak_receive.sh ]; then
        step "soak: reception" ./scripts/soak_receive.sh "${SOAK_SECONDS:-3600}"
    else
        missing "soak: reception" "scripts/soak_receive.sh"
    fi
}

packages() {
    if [ -x scripts/package.sh ]; then
        step "packages" ./scripts/package.sh
    else
        missing "packages" "scripts/package.sh"
    fi
}

sudo=()
[ "$(id -u)" -eq 0 ] || sudo=(sudo)
step "setup" ./scripts/setup.sh
[ $# -gt 0 ] || set -- gcc clang analyzer fuzz soak packages arm64
for chosen in "$@"; do
    case $chosen in
        gcc) step "oldest g++" with_gcc ;;
        clang) step "oldest clang" with_clang ;;
        analyzer) step "static analyzer" analyzer ;;
        fuzz) step "fuzz, long" env SECONDS_EACH="${FUZZ_SECONDS:-1800}" ./scripts/fuzz.sh ;;
        soak) soak ;;
        packages) packages ;;
        arm64) missing "arm64: whole run" "cross build and emulated tests" ;;
        *) echo "release_check: no step \"$chosen\"" >&2; exit 2 ;;
    esac
done
summary
