# A small network for tests: this shell's own network namespace is the host, a second one holds the camera, a
# veth pair joins them. Works as an ordinary user where user namespaces are allowed. Source it, then call
# lab_enter "$@" first thing.
#
#   host   10.77.0.1/24 on cam0          camera   10.77.0.2/24 on cam1
#
# Exit status 77 (skipped) where the machine forbids namespaces.

lab_skip() {
    echo "skipped: $*"
    exit 77
}

# Runs the script again inside namespaces of its own; returns inside them with the pair up.
lab_enter() {
    if [ -z "${VX3_LAB:-}" ]; then
        unshare -rnm true 2>/dev/null || lab_skip "this machine forbids user or network namespaces"
        VX3_LAB=1 exec unshare -rnm bash "$0" "$@"
    fi
    unshare -n sleep 3600 &
    lab_holder=$!
    lab_pids=("$lab_holder")
    trap lab_leave EXIT
    # The namespace is there once the holder's differs from ours.
    local i
    for i in $(seq 100); do
        [ "$(readlink /proc/$lab_holder/ns/net)" != "$(readlink /proc/self/ns/net)" ] && break
        sleep 0.02
    done
    ip link set lo up
    ip link add cam0 mtu "${LAB_MTU:-1500}" type veth peer name cam1 mtu "${LAB_MTU:-1500}" netns "$lab_holder" ||
        lab_skip "no veth pairs here"
    ip addr add 10.77.0.1/24 dev cam0
    ip link set cam0 up
    lab_camera_do ip link set lo up
    lab_camera_do ip addr add 10.77.0.2/24 dev cam1
    lab_camera_do ip link set cam1 up
}

# Runs a command in the camera's namespace.
lab_camera_do() { nsenter -t "$lab_holder" -n "$@"; }

# Starts the distribution's independent camera program in the background; its pid is in lab_camera.
lab_camera_start() { # serial, further arguments...
    local serial=$1
    shift
    nsenter -t "$lab_holder" -n arv-fake-gv-camera-0.8 -i cam1 -s "$serial" "$@" >"${LAB_LOG:-/dev/null}" 2>&1 &
    lab_camera=$!
    lab_pids+=("$lab_camera")
    sleep 0.3
    kill -0 "$lab_camera" 2>/dev/null || lab_skip "the independent camera program does not start"
}

lab_camera_stop() {
    kill -9 "$lab_camera" 2>/dev/null
    wait "$lab_camera" 2>/dev/null
    return 0
}

lab_leave() {
    local pid
    for pid in "${lab_pids[@]}"; do
        kill -9 "$pid" 2>/dev/null
    done
    wait 2>/dev/null
}

lab_failures=0
# lab_check "what" command...: runs the command, says how it went, counts failures.
lab_check() {
    local what=$1
    shift
    if "$@"; then
        echo "ok: $what"
    else
        echo "FAILED: $what"
        lab_failures=$((lab_failures + 1))
    fi
}

# json FILE EXPRESSION: evaluates a Python expression over the file's JSON, called d.
json() { python3 -c "import json,sys; d=json.load(open(sys.argv[1])); print($2)" "$1"; }
is() { # actual, expected
    [ "$1" = "$2" ] || { echo "   is '$1', expected '$2'"; return 1; }
}
