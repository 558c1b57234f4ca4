#!/usr/bin/env bash
# Renders the README's pictures: builds orvek-screenshots into BUILD_DIR
# (default: build) and runs it. The pictures go to docs/screenshots, or to
# the folder given as the first argument. --lang zh_CN renders the device
# view and the host window in Chinese as *-zh_CN.png.
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD_DIR="${BUILD_DIR:-$ROOT/build}"

if [[ ! -f "$BUILD_DIR/CMakeCache.txt" ]]; then
    cmake -S "$ROOT" -B "$BUILD_DIR" >/dev/null
fi
cmake --build "$BUILD_DIR" --target orvek-screenshots -j"$(nproc)"
QT_QPA_PLATFORM="${QT_QPA_PLATFORM:-offscreen}" "$BUILD_DIR/bin/orvek-screenshots" "$@"
