#!/bin/sh
# Runs the reception benchmark over a veth pair at MTU 1500 and 9000, in network namespaces of its own.
#   scripts/bench_receive.sh [BUILD-DIRECTORY] [options of bench_gvsp_receive]
set -eu
build=${1:-build}
[ $# -gt 0 ] && shift
program=$build/bin/bench_gvsp_receive
[ -x "$program" ] || { echo "build $program first" >&2; exit 2; }
if ! unshare -rn true 2>/dev/null; then
    echo "network namespaces are not to be had here; measuring on loopback" >&2
    exec "$program" --loopback "$@"
fi
exec unshare -rn sh -c 'ip link set lo up; exec "$@"' sh "$program" "$@"
