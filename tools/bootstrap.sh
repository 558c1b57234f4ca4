#!/usr/bin/env bash
# Installs the Debian packages the project needs (when run as root and any is
# missing), then configures and builds into BUILD_DIR (default: build).
# Extra arguments are passed to cmake's configure step.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD_DIR="${BUILD_DIR:-$ROOT/build}"

PACKAGES=(
    cmake g++ make clang libclang-rt-14-dev
    qtbase5-dev qtbase5-dev-tools libqt5serialbus5-dev qttools5-dev-tools
    fonts-dejavu-core xvfb xauth
    qttools5-dev qttranslations5-l10n fonts-wqy-microhei
    libmodbus-dev nut-client libcpp-httplib-dev prometheus
    dpkg-dev lintian
)

missing=()
for p in "${PACKAGES[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if ((${#missing[@]})); then
    if [[ $(id -u) -ne 0 ]]; then
        echo "bootstrap: missing packages: ${missing[*]} (run as root to install them)" >&2
        exit 1
    fi
    echo "bootstrap: installing ${missing[*]}"
    apt-get update -qq
    DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

cmake -S "$ROOT" -B "$BUILD_DIR" "$@" >/dev/null
cmake --build "$BUILD_DIR" -j"$(nproc)"
