#!/usr/bin/env bash
# Fails when a function of the C interface, as tests/capi/exports*.txt list them, is used by no test and no example.
set -euo pipefail
cd "$(dirname "$0")/.."
lists=(tests/capi/exports*.txt)
unused=$(LC_ALL=C comm -23 <(LC_ALL=C sort -u "${lists[@]}") \
    <(find tests examples \( -name '*.c' -o -name '*.cpp' \) -exec sed 's,//.*,,' {} + |
        grep -ohE '\w+' | LC_ALL=C sort -u))
if [ -n "$unused" ]; then
    echo "C functions that no test and no example calls:"
    echo "$unused"
    exit 1
fi
echo "C calls: each of $(cat "${lists[@]}" | sort -u | wc -l) functions is used by a test or an example"
