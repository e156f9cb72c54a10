#!/usr/bin/env bash
# Cameras behind GenTL producers with the program: producers of the environment are listed, the bad ones with the reason,
# features and pictures work, and another host uses such a camera at the same time.
# Usage: gentl_test.sh VX3_PROGRAM TEST_PRODUCER LACKING_PRODUCER
set -u
. "$(dirname "$0")/lab.sh"
lab_enter "$@"
vx3=$1
work=$(mktemp -d)
trap 'lab_leave; rm -rf "$work"' EXIT
mkdir "$work/producers"
export GENICAM_GENTL64_PATH=$work/producers
cp "$2" "$work/producers/good.cti"
echo 'frames.ms=10' >"$work/producers/good.cti.ini"
cp "$3" "$work/producers/lacking.cti"
echo 'no library' >"$work/producers/text.cti"

"$vx3" list --transport gentl >"$work/list" 2>/dev/null
lab_check "a producer is listed" grep -q 'good.cti *Vendor of tests *Test producer *3.1 *loaded' "$work/list"
lab_check "one that is no library is, with the reason" grep -q 'text.cti.*not used: it is no shared library' "$work/list"
lab_check "and one that lacks a function" grep -q 'lacking.cti.*not used: it lacks the function GCGetInfo' "$work/list"
lab_check "its cameras are listed" grep -q 'Test camera 1 *SN1.*available through GenTL *gentl' "$work/list"
rm "$work/producers/text.cti" "$work/producers/lacking.cti"
lab_check "a feature is written" [ "$("$vx3" set SN0 Width=128 2>/dev/null)" = "Width = 128" ]
"$vx3" grab SN0 -n 20 -o "$work/pictures" >"$work/grab" 2>&1
lab_check "pictures come" grep -q '^20 frames of 64 x 48 MONO8' "$work/grab"
lab_check "and are saved" [ "$(ls "$work/pictures" | wc -l)" = 20 ]
"$vx3" force-ip SN0 10.0.0.1 >"$work/force" 2>&1
lab_check "it has no address to be set" grep -q 'has no address that could be set' "$work/force"

# ---- another host
nsenter -t "$lab_holder" -n "$vx3" serve SN0 --transport gentl --standard-port --json >"$work/serve" 2>"$work/serve.err" &
server=$!
lab_pids+=("$server")
for _ in $(seq 100); do
    grep -q serving "$work/serve" && break
    sleep 0.05
done
unset GENICAM_GENTL64_PATH
"$vx3" --transport gige list >"$work/far" 2>/dev/null
lab_check "another host finds it" grep -q '10.77.0.2' "$work/far"
lab_check "and writes its features" [ "$("$vx3" --transport gige set 10.77.0.2 Height=96 2>/dev/null)" = "Height = 96" ]
"$vx3" --transport gige grab 10.77.0.2 -n 100 --no-save >"$work/far_grab" 2>&1
lab_check "and streams" grep -q '^100 frames of 64 x 96 MONO8' "$work/far_grab"
lab_check "completely" grep -q '^0 incomplete, .* 0 frames lost whole' "$work/far_grab"
if command -v arv-tool-0.8 >/dev/null; then
    arv-tool-0.8 -a 10.77.0.2 control Width Temperature >"$work/control" 2>&1
    lab_check "a program that is not ours reads them too" grep -q '^Width = 64' "$work/control"
fi
kill -INT "$server"
wait "$server"
lab_check "publishing ends in good order" [ $? -eq 0 ]

echo "failures: $lab_failures"
[ "$lab_failures" -eq 0 ]
