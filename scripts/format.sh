#!/usr/bin/env bash
# Formats every C and C++ file in place and takes the braces off single statements; with --check it only says which
# files are not so.
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t files < <(git ls-files -co --exclude-standard '*.h' '*.c' '*.cpp' | while read -r f; do [ ! -e "$f" ] || echo "$f"; done)
[ ${#files[@]} -gt 0 ] || exit 0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Both passes in the current folder. The option that takes braces off lays out lambdas in a way of its own, so what it
# gives is formatted once more.
format() {
    { cat .clang-format; printf '\nRemoveBracesLLVM: true\n'; } >"$work/braceless"
    printf '%s\0' "${files[@]}" | xargs -0 -P "$(nproc)" -n 32 clang-format -i --style="file:$work/braceless"
    printf '%s\0' "${files[@]}" | xargs -0 -P "$(nproc)" -n 32 clang-format -i
}
if [ "${1:-}" = --check ]; then
    mkdir "$work/tree"
    cp --parents "${files[@]}" "$work/tree"
    cp .clang-format "$work/tree"
    (cd "$work/tree" && format)
    wrong=0
    for file in "${files[@]}"; do
        cmp -s "$file" "$work/tree/$file" || { echo "format: $file; run scripts/format.sh"; wrong=1; }
    done
    [ $wrong -eq 0 ] && echo "format: ${#files[@]} files as .clang-format has them"
    exit $wrong
fi
format
