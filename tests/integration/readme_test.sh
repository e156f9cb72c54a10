#!/usr/bin/env bash
# The README's programs, in C and C++, against a camera on the network that is not ours: they find it by serial number,
# address and model, and without any name take it before a virtual one. Usage: readme_test.sh C_PROGRAM CPP_PROGRAM
set -u
. "$(dirname "$0")/lab.sh"
command -v arv-fake-gv-camera-0.8 >/dev/null || lab_skip "the independent camera program is not installed"
lab_enter "$@"
work=$(mktemp -d)
trap 'lab_leave; rm -rf "$work"' EXIT
cd "$work" || exit 1

# Ended well, and the picture has the size that the program set: the camera's own is another.
is_streamed() {
    local size
    size=$(python3 -c 'import struct; print(*struct.unpack(">II", open("frame.png", "rb").read(24)[16:]))')
    [ "$1" -eq 0 ] && [ "$size" = "320 512" ] && return
    echo "   status $1, picture $size"
    cat out
    return 1
}

lab_camera_start VX3TEST01
for program in "$@"; do
    name=$(basename "$program")
    for camera in VX3TEST01 10.77.0.2 ""; do
        rm -f frame.png
        "$program" ${camera:+"$camera"} >out 2>&1
        result=$?
        lab_check "$name finds and streams \"$camera\"" is_streamed $result
    done
    "$program" "no such camera" >out 2>&1
    result=$?
    lab_check "$name fails without its camera" [ $result -eq 1 ]
    lab_check "and names those that there are" grep -q VX3TEST01 out
done
echo "failures: $lab_failures"
[ "$lab_failures" -eq 0 ]
