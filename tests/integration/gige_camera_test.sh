#!/usr/bin/env bash
# The library's main job against a camera program that is not ours: found, opened, configured through its own
# description, streamed, lost and found again. Usage: gige_camera_test.sh VX3_PROGRAM
set -u
. "$(dirname "$0")/lab.sh"
command -v arv-fake-gv-camera-0.8 >/dev/null || lab_skip "the independent camera program is not installed"
lab_enter "$@"
vx3=$1
work=$(mktemp -d)
trap 'lab_leave; rm -rf "$work"' EXIT

gige() { "$vx3" --transport gige "$@"; }

lab_camera_start VX3TEST01

# ---- found, with serial and address
gige list --json >"$work/list"
lab_check "list runs" is $? 0
lab_check "one camera is listed" is "$(json "$work/list" 'len(d)')" 1
lab_check "its serial number" is "$(json "$work/list" 'd[0]["serial"]')" VX3TEST01
lab_check "its address" is "$(json "$work/list" 'd[0]["address"]')" 10.77.0.2

# ---- its own description
gige features VX3TEST01 --visibility Guru >"$work/features"
for feature in Width Height ExposureTimeAbs PixelFormat AcquisitionStart PayloadSize; do
    lab_check "features shows $feature" grep -qw "$feature" "$work/features"
done
gige xml VX3TEST01 >"$work/camera.xml"
lab_check "the description is fetched whole" grep -q '</RegisterDescription>' "$work/camera.xml"
lab_check "and can be read without a camera" "$vx3" description "$work/camera.xml" >"$work/description"

# ---- configured
lab_check "set" gige set VX3TEST01 Width=640 Height=480 ExposureTimeAbs=5000 >/dev/null
gige get VX3TEST01 Width Height ExposureTimeAbs --json >"$work/get"
lab_check "Width is set" is "$(json "$work/get" 'd["Width"]')" 640
lab_check "Height is set" is "$(json "$work/get" 'd["Height"]')" 480
lab_check "ExposureTimeAbs is set" is "$(json "$work/get" 'round(d["ExposureTimeAbs"])')" 5000
gige set 10.77.0.2 NoSuchFeature=1 >"$work/out" 2>&1
lab_check "an unknown feature fails with status 1" is $? 1
gige get "no such camera" Width >"$work/out" 2>&1
lab_check "an unknown camera fails with status 1" is $? 1
gige get VX3TEST01 >"$work/out" 2>&1
lab_check "a missing argument is wrong usage" is $? 2

# ---- streamed
frames=${LAB_FRAMES:-200}
gige grab VX3TEST01 -n "$frames" -o "$work/pictures" --format png --json >"$work/grab"
lab_check "grab succeeds" is $? 0
lab_check "every frame arrives" is "$(json "$work/grab" 'd["frames"]')" "$frames"
lab_check "complete" is "$(json "$work/grab" 'd["incomplete"]')" 0
lab_check "without a lost packet" is "$(json "$work/grab" 'd["lost_packets"]')" 0
lab_check "each as a picture" is "$(find "$work/pictures" -name '*.png' | wc -l)" "$frames"

# ---- the same with packets lost on the way; this camera resends nothing
lab_camera_stop
lab_camera_start VX3TEST01 -r 20
gige grab VX3TEST01 -n 50 --no-save --json >"$work/lossy"
lab_check "a lossy camera does not stall the stream, but its status tells" is $? 3
lab_check "every frame is delivered" is "$(json "$work/lossy" 'd["frames"]')" 50
lab_check "the incomplete ones are counted" is "$(json "$work/lossy" 'd["incomplete"] > 0 and d["lost_packets"] >= d["incomplete"]')" True

# ---- the link is down for less than the camera's heartbeat, and somebody looks at features meanwhile
lab_camera_stop
lab_camera_start VX3TEST01
"$vx3" --transport gige grab VX3TEST01 -n 0 --timeout 8 --no-save --json >"$work/drop" 2>"$work/drop.err" &
grab=$!
lab_pids+=("$grab")
sleep 3
gige get VX3TEST01 Width >"$work/beside" 2>"$work/beside.err"
lab_check "a camera that streams to somebody else can be read" grep -qx '[0-9]*' "$work/beside"
lab_check "and that is said" grep -q 'only read' "$work/beside.err"
gige set VX3TEST01 Width=320 >"$work/out" 2>&1
lab_check "but not changed" is $? 1
ip link set cam0 down
sleep 4
ip link set cam0 up
sleep 4
kill -INT "$grab"
wait "$grab"
lab_check "a link that was down for 4 s is no loss" is "$(json "$work/drop" 'd["end"]')" interrupted
lab_check "frames came before and after" is "$(json "$work/drop" 'd["frames"] > 0')" True

# ---- another subnet on the same wire, and a camera that only the interface's second address can hear
ip addr add 10.78.0.1/24 dev cam0
lab_camera_stop
lab_camera_do ip addr flush dev cam1
lab_camera_do ip addr add 10.78.0.2/24 dev cam1
lab_camera_start VX3TEST02
start=$(date +%s%N)
gige get VX3TEST02 Width >"$work/second" 2>&1
lab_check "a camera in the second address's subnet is opened" is $? 0
lab_check "within 2 s" [ $((($(date +%s%N) - start) / 1000000)) -lt 2000 ]
lab_camera_stop
lab_camera_do ip addr flush dev cam1
lab_camera_do ip addr add 10.77.0.2/24 dev cam1

# ---- triggered by software
lab_camera_stop
lab_camera_start VX3TEST01
gige grab VX3TEST01 --duration 3s --trigger-rate 5 --no-save --json >"$work/triggered"
lab_check "grab triggers by software" is $? 0
lab_check "as often as asked" is "$(json "$work/triggered" '(abs(d["triggers"] - 15) <= 2, abs(d["triggers_per_second"] - 5) < 0.5)')" "(True, True)"
lab_check "a frame each" is "$(json "$work/triggered" 'abs(d["frames"] - d["triggers"]) <= 2')" True
lab_check "and gives the trigger back" is "$(gige get VX3TEST01 TriggerMode)" Off
gige grab VX3TEST01 --set TriggerMode=On --set TriggerSource=Software --timeout 1s --no-save --json >"$work/waiting" 2>"$work/err"
lab_check "a camera that waits for its trigger is a failure" is $? 1
lab_check "that names the way out" grep -q -e --trigger-rate "$work/err"
lab_check "entries in any case" gige set VX3TEST01 triggermode=OFF >/dev/null

# ---- settings of a camera that dies
echo "old settings" >"$work/settings"
kill -STOP "$lab_camera" # answers no more
gige save VX3TEST01 "$work/settings" --all >"$work/out" 2>&1
lab_check "a silent camera's settings are not saved" is $? 1
lab_check "and the old file stays" is "$(cat "$work/settings")" "old settings"
kill -CONT "$lab_camera"
lab_camera_stop

# ---- the camera dies in mid-stream
lab_camera_start VX3TEST01
gige grab VX3TEST01 -n 1000000 --no-save --json >"$work/died" 2>"$work/died.err" &
grab=$!
lab_pids+=("$grab")
sleep 4
lab_camera_stop
start=$SECONDS
wait "$grab"
lab_check "grab ends with status 1 when the camera dies" is $? 1
lab_check "within the heartbeat's time" [ $((SECONDS - start)) -le 15 ]
lab_check "and says that it is lost" grep -qi lost "$work/died.err"
lab_check "and still writes its summary" is "$(json "$work/died" 'd["frames"] > 0')" True

# ---- and comes back
lab_camera_start VX3TEST01
gige grab VX3TEST01 -n 5 --no-save --json >"$work/back"
lab_check "a camera that comes back is found and opened again" is "$(json "$work/back" 'd["frames"]')" 5

echo "failures: $lab_failures"
[ "$lab_failures" -eq 0 ]
