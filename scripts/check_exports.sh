#!/usr/bin/env bash
# Fails when the library's unmangled function symbols are not exactly those of tests/capi/exports.txt (the
# interface that clients have always had, which must not change) and exports_more.txt (what was added to it).
set -euo pipefail
library=$(realpath "$1")
cd "$(dirname "$0")/../tests/capi"
if ! diff -u <(LC_ALL=C sort exports.txt exports_more.txt) \
    <(nm -D --defined-only "$library" | awk '$2 ~ /^[TWi]$/ && $3 !~ /^_/ { sub(/@.*/, "", $3); print $3 }' | LC_ALL=C sort -u); then
    echo "exports: the library's C symbols differ from tests/capi/exports.txt and exports_more.txt"
    exit 1
fi
echo "exports: $(wc -l <exports.txt) C functions as ever and $(wc -l <exports_more.txt) further ones, as listed"
