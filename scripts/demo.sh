#!/usr/bin/env bash
# The main job from nothing: installs what is needed, builds, streams frames from a virtual camera, saves them
# as pictures with one contact sheet, and says where they are.
#   scripts/demo.sh [FRAMES [FOLDER]]      default 20 frames into out/demo
set -euo pipefail
cd "$(dirname "$0")/.."
frames=${1:-20}
folder=${2:-out/demo}
./scripts/setup.sh --minimal
build=${BUILD:-build/demo}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DVX3_BUILD_TESTS=OFF -DVX3_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j "$(nproc)" --target vx3_program contact_sheet | tail -n 1
rm -rf "$folder"
mkdir -p "$folder"
"$build/bin/vx3" --transport virtual list
"$build/bin/vx3" --transport virtual grab "Virtual Device #1" -n "$frames" -o "$folder" --format png
mapfile -t pictures < <(find "$folder" -name '*.png' | sort)
"$build/bin/contact_sheet" "$folder/contact_sheet.png" "${pictures[@]}"
echo "pictures: $(realpath "$folder") (${#pictures[@]} PNG files)"
echo "contact sheet: $(realpath "$folder/contact_sheet.png")"
