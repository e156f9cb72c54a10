#!/usr/bin/env bash
# Formats every C and C++ file in place; with --check it only says which files are not formatted.
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t files < <(git ls-files -co --exclude-standard '*.h' '*.c' '*.cpp')
[ ${#files[@]} -gt 0 ] || exit 0
if [ "${1:-}" = --check ]; then
    clang-format --dry-run --Werror "${files[@]}"
    echo "format: ${#files[@]} files as .clang-format has them"
else
    clang-format -i "${files[@]}"
fi
