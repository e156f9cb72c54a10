#!/usr/bin/env bash
# Installs a build into a folder of its own and builds small consumers against that tree alone: one through the
# CMake package, one through pkg-config with a strict C compiler.
set -euo pipefail
build=$(realpath "$1")
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$build" --prefix "$work/prefix" >/dev/null
pc=$(find "$work/prefix" -name vx3.pc -printf '%h\n')
libdir=$(dirname "$pc")

cmake -S tests/install -B "$work/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/cmake" >/dev/null
"$work/cmake/consumer_c"
"$work/cmake/consumer_cpp"

export PKG_CONFIG_PATH=$pc
# shellcheck disable=SC2046
gcc -std=c11 -Wall -Wextra -Wpedantic -Werror tests/install/consumer.c -o "$work/consumer" $(pkg-config --cflags --libs vx3) \
    -Wl,-rpath,"$libdir"
"$work/consumer"
# shellcheck disable=SC2046
gcc -std=c11 -Wall -Wextra -Wpedantic -Werror examples/c/first_frames.c -o "$work/first_frames" $(pkg-config --cflags --libs vx3) \
    -Wl,-rpath,"$libdir"
(cd "$work" && ./first_frames "Virtual Device #1")
echo '#include <vx3/vx3.h>' | g++ -std=c++17 -Wall -Wextra -Wpedantic -Werror -fsyntax-only -x c++ $(pkg-config --cflags vx3) -
# The program from the installed tree, away from the sources, finds its library and the virtual cameras' features.
(cd / && [ "$("$work/prefix/bin/vx3" --transport virtual get "Virtual Device #1" Width --json | tr -d '[:space:]')" = '{"Width":400}' ])
echo "install: the CMake package and the pkg-config file work"
