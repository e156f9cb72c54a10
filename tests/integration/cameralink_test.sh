#!/usr/bin/env bash
# The program and an example with a serial camera and a frame grabber card, neither of which is hardware.
# Usage: cameralink_test.sh VX3_PROGRAM LIBRARY PARTNER EXAMPLE
set -u
. "$(dirname "$0")/lab.sh"
vx3=$(readlink -f "$1") library=$(readlink -f "$2") partner=$(readlink -f "$3") example=$(readlink -f "$4")
work=$(mktemp -d)
mkdir "$work/dev" "$work/lib"
cp "$library" "$work/lib/libvx3.so.1" # the configuration lies beside the library
export LD_LIBRARY_PATH=$work/lib
cd "$work" || exit 1

coproc "$partner" "$work/dev"
pid=$COPROC_PID
trap 'eval "exec ${COPROC[1]}>&-"; wait "$pid" 2>/dev/null; rm -rf "$work"' EXIT
read -r port <&"${COPROC[0]}"
cat >"$work/lib/Vx3Default.ini" <<INI
[VxSDK3]
CameraLinkPorts = $port
GrabberDeviceRoot = $work/dev
[CameraLinkPair]
Camera = Linea(S0042)
Card = frame0@CameraLink-TRX(xilinx)#0
INI

check() { lab_check "$1" is "$2" "$3"; }
has() { grep -qe "$1" "$2" && echo yes || echo no; }
camera='Linea(S0042)' card='frame0@CameraLink-TRX(xilinx)#0'

"$vx3" list --transport gencp --json >list; check "the serial camera is listed" $? 0
check "with its port" "$(json list '[(c["name"], c["address"], c["interface"]) for c in d]')" \
    "[('Linea(S0042)', '$port', 'GenCP Interface')]"
"$vx3" list --transport grabber >list; check "so is the card" "$? $(has 'frame0@CameraLink-TRX(xilinx)#0 .*grabber ' list)" "0 yes"
"$vx3" set "$camera" Gain=42 >out 2>&1; check "features over the serial link" "$? $(cat out)" "0 Gain = 42"
check "stay" "$("$vx3" get "$camera" Gain DeviceVendorName)" $'Gain = 42\nDeviceVendorName = Works'
"$vx3" grab "$card" -n 5 --format raw --set Width=320 --set Height=240 --set PixelFormat=0x01080001 >out 2>&1
check "images through the card" "$? $(ls frame_*.320_240_MONO8.raw | wc -l)" "0 5"
"$example" >out 2>&1
check "both together" "$? $(grep -cE '^Linea\(S0042\) through frame0@.*#0: [0-9]{2,} frames$' out)" "0 1"
sed -i 's/^GrabberDeviceRoot/ReadXmlFromFile = true\n&/' "$work/lib/Vx3Default.ini"
check "a description that is a file is found when all are to be files" "$("$vx3" get "$card" ClTapNumber)" 3
echo "failures: $lab_failures"
[ "$lab_failures" -eq 0 ]
