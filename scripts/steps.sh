# Sourced by scripts that run many checks: each is timed, one that fails does not stop those after it, and a table
# of all stands at the end.
# shellcheck shell=bash
jobs=$(nproc)
names=() results=() times=()

note() {
    names+=("$1")
    results+=("$2")
    times+=("$3")
}

# step NAME COMMAND...: runs it; its status decides.
step() {
    local name=$1 start=$SECONDS result=ok
    shift
    echo "== $name"
    "$@" || result=FAILED
    note "$name" "$result" $((SECONDS - start))
    echo "-- $name: $result ($((SECONDS - start)) s)"
}

# missing NAME WHY: what ought to be checked here and cannot be yet. It is no success.
missing() {
    echo "== $1: not there yet: $2"
    note "$1" "not there yet" 0
}

# The table; fails when a step failed.
summary() {
    local index failed=0
    echo
    for index in "${!names[@]}"; do
        printf '%-46s %-14s %5d s\n' "${names[index]}" "${results[index]}" "${times[index]}"
        [ "${results[index]}" != FAILED ] || failed=1
    done
    printf '%-46s %-14s %5d s\n' "all steps" "" "$SECONDS"
    return $failed
}

# built FOLDER TARGETS...: one line when they build, what the compiler said when not.
built() {
    local build=$1 log
    shift
    log=$(mktemp)
    if cmake --build "$build" -j "$jobs" --target "$@" >"$log" 2>&1; then
        tail -n 1 "$log"
        rm -f "$log"
    else
        grep -E 'error|FAILED' -A 4 "$log" | tail -n 60
        rm -f "$log"
        return 1
    fi
}

# sanitized NAME SANITIZERS TESTS TARGETS...: builds the targets with the sanitizers and runs the tests whose
# label matches. The program's own sources are left out: what it calls is tested in the library.
sanitized() {
    local build=build/$1 sanitize=$2 labels=$3
    shift 3
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g1" \
        -DVX3_SANITIZE="$sanitize" -DVX3_BUILD_BENCH=OFF -DVX3_BUILD_EXAMPLES=OFF -DVX3_BUILD_TOOLS=OFF >/dev/null &&
        built "$build" "$@" &&
        ctest --test-dir "$build" --output-on-failure -j "$jobs" -L "$labels" >"$build/ctest.log" 2>&1
    local result=$?
    [ $result -eq 0 ] || grep -vE 'Passed|Start +[0-9]+:' "$build/ctest.log" | tail -n 120
    grep -E 'tests passed' "$build/ctest.log" 2>/dev/null | sed 's/^/   /'
    return $result
}
