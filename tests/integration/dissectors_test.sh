#!/usr/bin/env bash
# The packet analyser's GVCP and GVSP dissectors read our traffic without complaint.
# Usage: dissectors_test.sh VX3_PROGRAM
set -u
. "$(dirname "$0")/lab.sh"
command -v tshark >/dev/null || lab_skip "tshark is not installed"
command -v arv-fake-gv-camera-0.8 >/dev/null || lab_skip "the independent camera program is not installed"
lab_enter "$@"
vx3=$1
work=$(mktemp -d)
trap 'lab_leave; rm -rf "$work"' EXIT

lab_camera_start VX3TEST02
tshark -i cam0 -w "$work/capture.pcapng" -q >/dev/null 2>"$work/tshark.err" &
capture=$!
lab_pids+=("$capture")
for _ in $(seq 100); do
    grep -q "Capturing on" "$work/tshark.err" && break
    sleep 0.05
done
sleep 0.5
lab_check "traffic" "$vx3" --transport gige grab VX3TEST02 -n 3 --no-save --set Width=128 --json >/dev/null
sleep 0.5
kill -INT "$capture" 2>/dev/null
wait "$capture" 2>/dev/null

count() { tshark -r "$work/capture.pcapng" -Y "$1" 2>/dev/null | wc -l; }
lab_check "our commands are read as GVCP ($(count 'gvcp && ip.src == 10.77.0.1'))" [ "$(count 'gvcp && ip.src == 10.77.0.1')" -gt 20 ]
for command in 0x0002 0x0080 0x0082 0x0084; do
    lab_check "command $command is among them" [ "$(count "gvcp.cmd.command == $command && ip.src == 10.77.0.1")" -gt 0 ]
done
lab_check "the stream is read as GVSP" [ "$(count gvsp)" -gt 3 ]
# 0x600000 is the analyser's "warning".
bad='(gvcp || gvsp) && (_ws.malformed || _ws.expert.severity >= 0x600000)'
complaints=$(tshark -r "$work/capture.pcapng" -Y "$bad && ip.src == 10.77.0.1" 2>/dev/null)
lab_check "the filter is understood" [ $? -eq 0 ]
[ -z "$complaints" ] || echo "$complaints" | head
lab_check "no complaint about our packets" [ -z "$complaints" ]
echo "failures: $lab_failures"
[ "$lab_failures" -eq 0 ]
