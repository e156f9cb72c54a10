#!/usr/bin/env bash
# Installs every Debian/Ubuntu package that the build, the tests and the checks need. Safe to run again.
#   --minimal   only what building and running the library and its programs needs
set -euo pipefail

build=(g++ cmake ninja-build pkg-config ccache git ca-certificates
    libopencv-dev liblog4cpp5-dev libpugixml-dev libzip-dev libhwy-dev libcli11-dev nlohmann-json3-dev)
test=(libgtest-dev libbenchmark-dev aravis-tools aravis-tools-cli gir1.2-aravis-0.8 python3-gi tshark iproute2 nftables util-linux python3
    clang clang-format clang-tidy lld locales)
# libFuzzer and the sanitizers' runtimes: a package of their own on Debian, part of clang's elsewhere.
runtime() {
    if apt-cache show libclang-rt-dev >/dev/null 2>&1; then echo libclang-rt-dev; fi
}

packages=("${build[@]}")
[ "${1:-}" = --minimal ] || packages+=("${test[@]}")

missing() {
    local package
    for package in "$@"; do
        dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'ok installed' || echo "$package"
    done
}

sudo=()
if [ "$(id -u)" -ne 0 ]; then sudo=(sudo); fi
mapfile -t wanted < <(missing "${packages[@]}")
if [ "${1:-}" != --minimal ] && ! ls /usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-*.a >/dev/null 2>&1; then
    need_runtime=1
fi
if [ ${#wanted[@]} -eq 0 ] && [ -z "${need_runtime:-}" ]; then
    echo "setup: everything is installed"
    exit 0
fi
"${sudo[@]}" apt-get update -qq
if [ -n "${need_runtime:-}" ]; then
    name=$(runtime)
    [ -n "$name" ] && wanted+=("$name")
fi
echo "setup: installing ${wanted[*]}"
"${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${wanted[@]}" >/dev/null
echo "setup: done"
