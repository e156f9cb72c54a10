#!/usr/bin/env bash
# Cameras for other hosts: what this library publishes is found, opened and streamed by programs that are not ours, and
# by this one from another host; hosts die, links break, and the local program's pictures go on.
# Usage: publish_test.sh VX3_PROGRAM SHARE_PROGRAM
set -u
. "$(dirname "$0")/lab.sh"
here=$(cd "$(dirname "$0")" && pwd)
for program in arv-tool-0.8 arv-camera-test-0.8 tshark; do
    command -v "$program" >/dev/null || lab_skip "$program is not installed"
done
/usr/bin/python3 -c 'import gi; gi.require_version("Aravis", "0.8")' 2>/dev/null || lab_skip "no Aravis for Python"
lab_enter "$@"
vx3=$1 share=$2
work=$(mktemp -d)
trap 'lab_leave; rm -rf "$work"' EXIT

# The publishing host is the lab's camera.
serve() { # log, arguments...
    local log=$1
    shift
    nsenter -t "$lab_holder" -n "$vx3" serve --json "$@" >"$work/$log" 2>"$work/$log.err" &
    server=$!
    lab_pids+=("$server")
    for _ in $(seq 100); do
        grep -q serving "$work/$log" && return 0
        sleep 0.05
    done
    cat "$work/$log.err"
    return 1
}
stop() { # pid
    kill -INT "$1" 2>/dev/null
    wait "$1" 2>/dev/null
}
remote() { "$vx3" --transport remote "$@"; }

# ---- programs that are not ours
lab_check "a camera out of nothing is served" serve plain --virtual 640x480@100 --standard-port
arv-tool-0.8 >"$work/found" 2>&1
lab_check "an ordinary program finds it" grep -q 'Pattern.*10.77.0.2' "$work/found"
arv-tool-0.8 -a 10.77.0.2 control Width AcquisitionFrameRate=50 AcquisitionFrameRate >"$work/control" 2>&1
lab_check "reads a feature" grep -q '^Width = 640' "$work/control"
lab_check "and writes one" [ "$(grep -c '^AcquisitionFrameRate = 50' "$work/control")" -ge 1 ]
arv-tool-0.8 -a 10.77.0.2 control AcquisitionFrameRate=100 >/dev/null 2>&1
/usr/bin/python3 "$here/aravis_client.py" 10.77.0.2 640 480 1000 1500 >"$work/client" 2>&1
tail -n 1 "$work/client"
lab_check "a client gets 1000 frames, in order, with the camera's pixels" grep -qx 'frames 1000' "$work/client"
camera_test() { # log, arguments...
    local log=$1
    shift
    arv-camera-test-0.8 -n VX3-Pattern-000001 --duration=3 -a "$@" >"$work/$log" 2>&1
}
statistic() { sed -n "s/^$2 *= *//p" "$work/$1"; }
for size in 600 1500; do
    camera_test "plain$size" --no-packet-socket -i "$size" -q 2
    lab_check "streams in packets of $size" [ "$(statistic "plain$size" n_completed_buffers)" -gt 100 ]
    lab_check "nearly all complete" [ "$((20 * $(statistic "plain$size" n_failures)))" -le "$(statistic "plain$size" n_completed_buffers)" ]
done
stop "$server"

lab_check "served with losses" serve lossy --virtual 640x480@50 --standard-port --loss 0.01 --single-packets
tshark -i cam0 -w "$work/capture.pcapng" -q -a duration:7 >/dev/null 2>"$work/tshark.err" &
capture=$!
lab_pids+=("$capture")
for _ in $(seq 100); do
    grep -q "Capturing on" "$work/tshark.err" && break
    sleep 0.05
done
sleep 1 # it says so before it does
camera_test resend
lab_check "lost packets come again" is "$(statistic resend n_failures)" 0
lab_check "since they were asked for" [ "$(statistic resend n_resent_packets)" -gt 50 ]
wait "$capture" 2>/dev/null
count() { tshark -r "$work/capture.pcapng" -d udp.port==56001,gvsp -Y "$1" 2>/dev/null | wc -l; }
lab_check "its answers are read as GVCP" [ "$(count 'gvcp && ip.src == 10.77.0.2')" -gt 10 ]
lab_check "its packets as GVSP" [ "$(count 'gvsp && ip.src == 10.77.0.2')" -gt 100 ]
bad='(gvcp || gvsp) && (_ws.malformed || _ws.expert.severity >= 0x600000)'
complaints=$(tshark -r "$work/capture.pcapng" -d udp.port==56001,gvsp -Y "$bad && ip.src == 10.77.0.2" 2>/dev/null)
[ -z "$complaints" ] || echo "$complaints" | head
lab_check "without a complaint about ours" [ -z "$complaints" ]
camera_test noresend --no-packet-resend
lab_check "whoever does not ask misses them" [ "$(statistic noresend n_failures)" -gt 10 ]
stop "$server"

# ---- this library, from another host
lab_check "served again" serve mine --virtual 1920x1200@40
remote list --json >"$work/list"
lab_check "it is found as a remote camera" is "$(json "$work/list" '[(c["name"], c["transport"]) for c in d]')" "[('Pattern(000001)@10.77.0.2', 'remote')]"
nsenter -t "$lab_holder" -n "$vx3" --transport remote list --json >"$work/own" 2>/dev/null
lab_check "and, marked, by another program of its own host" is "$(json "$work/own" '[c["published_here"] for c in d]')" "[True]"
remote grab 10.77.0.2 -n 100 --no-save --json >"$work/grab"
lab_check "100 frames" is "$(json "$work/grab" '(d["frames"], d["incomplete"], d["lost_packets"])')" "(100, 0, 0)"
remote grab 10.77.0.2 -n 3 -o "$work/recorded" --format raw >/dev/null
remote save 10.77.0.2 "$work/recorded/settings.txt" --all >/dev/null
"$vx3" --transport remote grab 10.77.0.2 -n 1000000 --no-save >/dev/null 2>&1 &
grab=$!
lab_pids+=("$grab")
sleep 3
remote set 10.77.0.2 AcquisitionFrameRate=10 >"$work/out" 2>&1
lab_check "two hosts cannot both control it" is $? 1
released=$(grep -c released "$work/mine")
kill -9 "$grab"
wait "$grab" 2>/dev/null
start=$(date +%s%N)
for _ in $(seq 150); do
    [ "$(grep -c released "$work/mine")" -gt "$released" ] && break
    sleep 0.1
done
took=$((($(date +%s%N) - start) / 1000000))
lab_check "a host that is killed loses it after its heartbeat's 9 s ($took ms)" [ $((took > 5000 && took < 10500)) -eq 1 ]
remote grab 10.77.0.2 -n 20 --no-save >/dev/null
lab_check "and it can be had again" is $? 0

# ---- the link is cut
for seconds in 2 10; do
    "$vx3" --transport remote grab 10.77.0.2 -n 0 --no-save --timeout 30 --json >"$work/cut$seconds" 2>"$work/cut$seconds.err" &
    grab=$!
    lab_pids+=("$grab")
    sleep 2.5
    ip link set cam0 down
    sleep "$seconds"
    ip link set cam0 up
    sleep 4
    kill -INT "$grab" 2>/dev/null
    wait "$grab"
    status=$?
    if [ "$seconds" -lt 9 ]; then
        lab_check "a link that was down for $seconds s is no loss" is "$(json "$work/cut$seconds" 'd["end"]')" interrupted
    else
        lab_check "one that was down for $seconds s is" is "$status" 1
    fi
done
remote grab 10.77.0.2 -n 20 --no-save >/dev/null
lab_check "after which it is free again" is $? 0
stop "$server"

# ---- what was recorded is a camera again
lab_check "a folder is served" serve replay --replay "$work/recorded" --fps 20
remote grab 10.77.0.2 -n 6 -o "$work/replayed" --format raw >/dev/null
lab_check "with the frames that were recorded" cmp "$work"/recorded/frame_000002.*.raw "$work"/replayed/frame_000005.*.raw
lab_check "at the rate that was asked for" is "$(remote get 10.77.0.2 AcquisitionFrameRate)" 20
stop "$server"
"$vx3" serve --replay "$work/absent" >"$work/out" 2>&1
lab_check "a folder that is none fails" is $? 1

# ---- a GigE Vision camera that is not ours, from the host that has it to one that has not
if command -v arv-fake-gv-camera-0.8 >/dev/null; then
    lab_camera_start VX3TEST03
    "$vx3" --transport gige serve VX3TEST03 --set Width=320 --json >"$work/onward" 2>"$work/onward.err" &
    server=$!
    lab_pids+=("$server")
    for _ in $(seq 100); do
        grep -q serving "$work/onward" && break
        sleep 0.05
    done
    lab_camera_do "$vx3" --transport remote set 10.77.0.1 Height=200 >/dev/null
    lab_camera_do "$vx3" --transport remote grab 10.77.0.1 -n 20 --no-save --json >"$work/grab"
    lab_check "a GigE Vision camera is published as well" is "$(json "$work/grab" '(d["frames"], d["incomplete"], d["width"], d["height"])')" "(20, 0, 320, 200)"
    stop "$server"
    lab_camera_stop
fi

# ---- a local and a remote user of one camera
nsenter -t "$lab_holder" -n "$share" 30 >"$work/share" 2>"$work/share.err" &
local_user=$!
lab_pids+=("$local_user")
sleep 1.5
remote grab 10.77.0.2 -n 100 --no-save --json >"$work/both" 2>"$work/both.err"
lab_check "a remote user beside a local one" is "$(json "$work/both" '(d["frames"], d["incomplete"])')" "(100, 0)"
"$vx3" --transport remote grab 10.77.0.2 -n 0 --no-save >/dev/null 2>&1 &
grab=$!
lab_pids+=("$grab")
sleep 3
kill -9 "$grab"
wait "$grab" 2>/dev/null
sleep 12
"$vx3" --transport remote grab 10.77.0.2 -n 1000000 --no-save >/dev/null 2>"$work/dies.err" &
grab=$!
lab_pids+=("$grab")
sleep 3
kill -9 "$local_user"
wait "$local_user" 2>/dev/null
start=$SECONDS
wait "$grab"
lab_check "a local program that is killed is noticed" is $? 1
lab_check "within the heartbeat's time" [ $((SECONDS - start)) -le 15 ]
# Lines every 100 ms: the longest run of lines without a new local frame.
longest=$(awk '{ if ($2 == last) run += 100; else run = 0; if (run > most) most = run; last = $2 } END { print most + 0 }' "$work/share")
lab_check "the local pictures never paused for more than 500 ms ($longest)" [ "$longest" -le 500 ]
lab_check "and both used it at once" awk '$3 == 1 { n++ } END { exit n < 10 }' "$work/share"

echo "failures: $lab_failures"
[ "$lab_failures" -eq 0 ]
