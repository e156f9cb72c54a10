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

# json FILE EXPRESSION: evaluates a Python expression over the file's JSON, called d.
json() { python3 -c "import json,sys; d=json.load(open(sys.argv[1])); print($2)" "$1"; }
is() { # actual, expected
    [ "$1" = "$2" ] || { echo "   is '$1', expected '$2'"; return 1; }
}
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
lab_check "a lossy camera does not stall the stream" is $? 0
lab_check "every frame is delivered" is "$(json "$work/lossy" 'd["frames"]')" 50
lab_check "the incomplete ones are counted" is "$(json "$work/lossy" 'd["incomplete"] > 0 and d["lost_packets"] >= d["incomplete"]')" True

# ---- the camera dies in mid-stream
lab_camera_stop
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
