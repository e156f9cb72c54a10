#!/usr/bin/env bash
# Fails when the library's unmangled function symbols are not exactly those of tests/capi/exports.txt.
set -euo pipefail
library=$(realpath "$1")
cd "$(dirname "$0")/.."
if ! diff -u tests/capi/exports.txt \
    <(nm -D --defined-only "$library" | awk '$2 ~ /^[TWi]$/ && $3 !~ /^_/ { sub(/@.*/, "", $3); print $3 }' | LC_ALL=C sort -u); then
    echo "exports: the library's C symbols differ from tests/capi/exports.txt"
    exit 1
fi
echo "exports: $(wc -l <tests/capi/exports.txt) C functions, as listed"
