#!/usr/bin/env bash
# The program over the virtual cameras: needs no network. Usage: tool_test.sh VX3_PROGRAM
set -u
. "$(dirname "$0")/lab.sh"
vx3=$(readlink -f "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
camera="Virtual Device #1"

run() { "$vx3" --transport virtual "$@"; }
check() { lab_check "$1" is "$2" "$3"; }
has() { grep -qe "$1" "$2" && echo yes || echo no; }

# ---- usage and search
run >out 2>&1; check "no verb is wrong usage" $? 2
run set "$camera" Width >out 2>&1; check "a setting without value is wrong usage" $? 2
run grab "$camera" -n -5 >out 2>&1; check "a negative number of frames is wrong usage" $? 2
run grab "$camera" --format gif >out 2>&1; check "an unknown format is wrong usage" $? 2
run --help >out 2>&1; check "help is a success" $? 0
run list --json >list; check "list" $? 0
check "both cameras are listed" "$(json list '[c["name"] for c in d]')" "['Virtual Device #1', 'Virtual Device #2']"
run get virtual Width >out 2>&1; check "an unknown camera fails" $? 1
check "and the candidates are listed" "$(has 'Virtual Device #2' out)" yes
run list --interface nowhere >out 2>&1; check "an unknown interface fails" $? 1
run info "$camera" --json >info
check "info reads the identity" "$(json info '(d["serial"], d["payload_size"])')" "('123456789013456', 160000)"

# ---- features
run features "$camera" --json >tree
check "features are a tree of categories" \
    "$(json tree '[f["name"] for c in d["features"] if c["name"]=="ImageFormatControl" for f in c["features"] if f["name"] in ("Width","Height")]')" \
    "['Width', 'Height']"
run features "$camera" --visibility beginner >beginner
run features "$camera" --visibility invisible >invisible
check "visibility narrows the tree" "$([ "$(wc -l <beginner)" -lt "$(wc -l <invisible)" ] && echo yes)" yes
check "get prints the bare value" "$(run get "$camera" Width)" 400
run get "$camera" Width Nothing Height >out 2>err; check "a missing feature fails" $? 1
check "but the others are read" "$(cat out)" $'Width = 400\nHeight = 400'
run set "$camera" Width=abc >out 2>&1; check "a text is no width" $? 1
check "said in words" "$(has 'not an integer' out)" yes
run set "$camera" DeviceModelName=x >out 2>&1; check "read-only features refuse" $? 1
check "with the code behind the words" "$(has 0x80000021 out)" yes
run set "$camera" PixelFormat=Purple >out 2>&1; check "unknown entries are refused" $? 1
check "the entries are named" "$(has 'one of .*Mono8' out)" yes
run set "$camera" Height=1000000 >out 2>err; check "numbers beyond the range are clamped, with a status of its own" "$? $(cat out)" "4 Height = 4096"
check "and that is said" "$(has 'asked for 1000000' err)" yes
run set "$camera" Height=1000000 width=640.0 --json >out 2>err
check "as JSON, with numbers" "$(json out '(d["Height"], d["Width"], d["adjusted"])')" "(4096, 640, ['Height'])"
run get "$camera" Widht >out 2>&1; check "near misses are recognised" "$(has 'did you mean Width' out)" yes
run lsit >out 2>&1; check "of verbs, too" "$? $(has 'did you mean list' out)" "2 yes"
run get "VIRTUAL device #1" WIDTH >out; check "case does not matter" "$(cat out)" 400
"$vx3" list --transport usb >out 2>&1; check "a family that does not exist is wrong usage" "$? $(has 'usb not in .*gencp' out)" "2 yes"
check "in hexadecimal, too" "$(run set "$camera" Width=0x40)" "Width = 64"
run run "$camera" AcquisitionStop; check "a command is executed" $? 0
run run "$camera" Width >out 2>&1; check "a number cannot be executed" $? 1
run xml "$camera" >camera.xml; check "xml" $? 0
"$vx3" description camera.xml >out; check "the description works without a camera" $? 0
check "without problems" "$(has ' 0 problems' out)" yes
sed 's/<pValue>WidthReg[^<]*/<pValue>Gone/; s/<pValue>Width[A-Za-z]*</<pValue>Gone</' camera.xml >broken.xml
"$vx3" description broken.xml --json >out; check "a broken node costs only itself" $? 0
check "and its line is told" "$(json out 'len(d["problems"]) > 0 and all(p["line"] > 0 for p in d["problems"])')" True
head -c 2000 camera.xml >cut.xml
"$vx3" description cut.xml >out 2>&1; check "a truncated description fails" $? 1
check "naming the file and the line" "$(has 'cut.xml.*line' out)" yes

# ---- settings as text
run save "$camera" settings >/dev/null; check "save" $? 0
check "a feature a line" "$(has '^Width = 400$' settings)" yes
sed -i 's/^Width = .*/Width = 320/; s/^Height = .*/Height = 5000/' settings
echo 'Nothing[Selector=A] = 1' >>settings
run load "$camera" settings --json >out 2>err; check "what cannot be loaded fails" $? 1
check "each with its reason" "$(json out '[f["feature"] for f in d["failed"]]')" "['Height', 'Nothing[Selector=A]']"
check "and the rest is set" "$(json out 'd["set"] > 0')" True
sed -i '/^Nothing/d' settings
run load "$camera" settings >out 2>err; check "values that the camera adjusts have a status of their own" $? 4
run load "$camera" . >out 2>&1; check "a directory is no file" "$? $(has 'Is a directory' out)" "1 yes"
: >empty
run load "$camera" empty >out 2>&1; check "an empty file has nothing to load" $? 5
echo 'no equals sign' >>settings
run load "$camera" settings >out 2>&1; check "a line that is none fails" $? 1
check "naming its number" "$(has 'line [0-9]' out)" yes

# ---- pictures
run grab "$camera" -n 5 -o png --set FrameTime=10 --set Width=640 --set Height=480 --json >grab; check "grab" $? 0
check "every frame is counted" "$(json grab '(d["frames"], d["incomplete"], d["bytes"], d["saved"])')" "(5, 0, 1536000, 5)"
check "every frame is a picture" "$(find png -name 'frame_*.png' | wc -l)" 5
check "of the size that was set" "$(file -b png/frame_000001.png | grep -oE '[0-9]+ x [0-9]+')" "640 x 480"
run grab "$camera" -n 2 -o png --format jpeg --set FrameTime=5ms >/dev/null
check "a second run goes on counting" "$(cd png && echo frame_*.jpeg)" "frame_000006.jpeg frame_000007.jpeg"
run grab "$camera" -n 1 -o png --overwrite --set Width=320 >/dev/null
check "unless told otherwise" "$(file -b png/frame_000001.png | grep -oE '[0-9]+ x [0-9]+')" "320 x 400"
run grab "$camera" --duration 400ms --no-save --set FrameTime=10 --json >grab; check "for a duration" $? 0
check "any number of frames" "$(json grab 'd["frames"] > 5 and d["end"] == "done"')" True
run grab "$camera" -n 1000 --duration 300ms --no-save >out 2>err; check "fewer frames than asked for have a status" "$? $(has 'of 1000 frames' err)" "3 yes"
run grab "$camera" --trigger-rate 10 >out 2>&1; check "no trigger in this camera" "$? $(has TriggerSource out)" "1 yes"
run grab "$camera" -n 1 -o raw --format raw >/dev/null
check "raw files tell their geometry" "$(stat -c '%n %s' raw/*)" "raw/frame_000001.400_400_MONO8.raw 160000"
run grab "$camera" -n 1 -o colour --format raw --convert rgb8 >/dev/null
check "converted to colour" "$(stat -c '%n %s' colour/*)" "colour/frame_000001.400_400_RGB8.raw 480000"
run grab "$camera" -n 1 -o map --format bmp --map jet:0:255 >/dev/null
check "false colour" "$(file -b map/frame_000001.bmp | grep -oE '400 x 400 x 24')" "400 x 400 x 24"
# Jet's lowest level, the background, is dark blue: blue comes first in the file.
check "with blue where it is dark" "$(od -An -tu1 -j54 -N3 map/frame_000001.bmp | tr -s ' ')" " 128 0 0"
run grab "$camera" --map nothing >out 2>&1; check "an unknown map fails" $? 1
run grab "$camera" -n 3 --no-save --histogram -o hist --json --set FrameTime=5 >grab; check "histogram" $? 0
check "of all pixels" "$(json grab 'd["histogram"]["channels"]["mono"]["samples"]')" 480000
check "as a plot" "$(file -b hist/histogram.png | grep -oE 'PNG image')" "PNG image"
touch blocked
run grab "$camera" -o blocked/dir >out 2>&1; check "a directory that cannot be made fails" $? 1
run grab "$camera" -n 5 --no-save --timeout 0.3 --set FrameTime=5000 --json >grab 2>err; check "no frame in time fails" $? 1
check "and is said" "$(has 'no frame arrived' err)" yes
"$vx3" --transport virtual grab "$camera" -n 0 -o endless --format raw --json >grab 2>err &
pid=$!
# Until it catches Ctrl-C, a program that a script starts in the background ignores it.
for _ in $(seq 300); do
    [ -n "$(ls endless 2>/dev/null)" ] && break
    sleep 0.1
done
kill -INT $pid
wait $pid; check "Ctrl-C ends grab cleanly" $? 0
check "with its summary" "$(json grab 'd["end"] == "interrupted" and d["frames"] > 0')" True

"$vx3" --transport virtual grab "$camera" -n 1000 -o many --format raw --json >grab 2>err &
pid=$!
for _ in $(seq 300); do
    [ -n "$(ls many 2>/dev/null)" ] && break
    sleep 0.1
done
kill -INT $pid
wait $pid; check "but not when a number was asked for" "$? $(has 'interrupted after' err)" "130 yes"

# ---- what cannot be written
for verb in list "features '$camera'" "xml '$camera'" "get '$camera' Width" "monitor --duration 5" "help" "--version"; do
    for form in "" --json; do
        eval run $verb $form >/dev/full 2>err
        check "a full standard output fails $verb $form" "$? $(has 'No space left on device' err)" "1 yes"
    done
done
run save "$camera" /dev/full >out 2>&1; check "so does a full file" "$? $(has 'No space left on device' out)" "1 yes"
check "which is no file afterwards either" "$([ -c /dev/full ] && echo yes)" yes
if unshare -rm true 2>/dev/null; then
    mkdir -p disk
    unshare -rm bash -c '
        mount -t tmpfs -o size=64k none disk && cd disk && echo old >settings
        head -c 100000 /dev/zero >filler 2>/dev/null
        run() { "$0" --transport virtual "$@"; }
        run save "$1" settings; echo "save $? $(cat settings)" *
        run grab "$1" -n 2 --format raw --set FrameTime=5; echo "grab $?"' "$vx3" "$camera" >out 2>&1
    check "a full disk leaves the old file" "$(grep '^save' out)" "save 1 old filler settings"
    check "and saves no pictures" "$(grep '^grab' out)" "grab 1"
    check "for the system's reason" "$(grep -c 'No space left on device' out)" 3
fi

# ---- JSON, whatever happens
for arguments in "list --transport virtual" "list --transport gentl" "list --transport x" "list --interface nowhere" "info '$camera'" "info nobody" \
    "features '$camera'" "features nobody" "get '$camera' Width" "get '$camera' Width Absent" "get nobody Width" \
    "set '$camera' Width=320" "set '$camera' Width=99999" "set '$camera' Width=320 Absent=1" "set '$camera' Width" \
    "run '$camera' AcquisitionStop" "run '$camera' Width" "grab '$camera' -n 1 --no-save" "grab '$camera' -n x" \
    "grab nobody" "grab '$camera' --set Absent=1" "grab '$camera' --map none" "xml '$camera'" "xml nobody" \
    "xml '$camera' -o xml.out" "xml '$camera' -o /absent/file" "xml '$camera' --original" "description camera.xml" \
    "description cut.xml" "description absent.xml" "save '$camera' saved" "save '$camera' /absent/file" \
    "load '$camera' saved" "load '$camera' absent" "load '$camera' ." "force-ip '$camera' 10.0.0.9" \
    "force-ip '$camera' 10.0" "version" "help" "help grab" "help nothing" "--help" "--version" "nothing" "" "grab"; do
    eval '"$vx3"' "$arguments" --json >out 2>err
    status=$?
    python3 -m json.tool out >/dev/null 2>&1; check "valid JSON: $arguments" $? 0
    case $status in
        1 | 2 | 130) check "with error and code: $arguments" "$(json out '(len(d.get("error") or d["failed"]) > 0, d["code"])')" "(True, $status)" ;;
    esac
done

# ---- monitor
run monitor --duration 1 --json >events; check "monitor" $? 0
check "reports both cameras" "$(grep -c '"event":"found"' events)" 2
check "a JSON object a line" "$(python3 -m json.tool --json-lines events >/dev/null && echo yes)" yes
check "with the time zone" "$(has 'T[0-9:]*[+-][0-9][0-9]:[0-9][0-9]"' events)" yes

echo "failures: $lab_failures"
[ "$lab_failures" -eq 0 ]
