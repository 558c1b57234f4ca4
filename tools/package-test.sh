#!/usr/bin/env bash
# Builds the Debian package from a build folder, checks it with lintian,
# installs it on this machine, monitors the installed simulated agent with the
# installed host (headless, as the service user) and purges the package again,
# checking that nothing of it stays behind.
#
#   tools/package-test.sh [BUILD_DIR]      (default: build; needs root)
#
# Meant for a throwaway CI machine: it refuses to run where orvek-ups is
# already installed or /var/lib/orvek-ups exists, since the purge removes both.
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD_DIR="$(cd "${1:-$ROOT/build}" && pwd)"
PACKAGE=orvek-ups
APP_DIR=/usr/lib/orvek-ups
STATE_DIR=/var/lib/orvek-ups
DEVICE=pkgtest
RUN_SECONDS=15

WORK="$(mktemp -d /tmp/orvek-package-test.XXXXXX)"
SIM_PID=""

say() { echo "package-test: $*"; }
fail() {
    echo "package-test: FAIL: $*" >&2
    exit 1
}
installed() { dpkg-query -W -f='${Status}' "$PACKAGE" 2>/dev/null | grep -q "ok installed"; }
# Also true for a configured-files-only remnant after a plain remove.
known_to_dpkg() { dpkg-query -W "$PACKAGE" >/dev/null 2>&1; }

cleanup() {
    local rc=$?
    if [[ -n "$SIM_PID" ]]; then
        kill "$SIM_PID" 2>/dev/null || true
        wait "$SIM_PID" 2>/dev/null || true
    fi
    if known_to_dpkg; then
        dpkg --purge "$PACKAGE" >/dev/null 2>&1 || true
    fi
    rm -rf "$WORK"
    exit "$rc"
}
trap cleanup EXIT

[[ $(id -u) -eq 0 ]] || fail "run as root: the package is installed and purged on this machine"
known_to_dpkg && fail "$PACKAGE is already known to dpkg; this test would purge it"
[[ -e "$STATE_DIR" ]] && fail "$STATE_DIR exists; this test would remove it"
[[ -f "$BUILD_DIR/CPackConfig.cmake" ]] || fail "$BUILD_DIR is not a configured build folder"

say "building the package from $BUILD_DIR"
cmake --build "$BUILD_DIR" --target orvek-host orvek-sim OrvekClient orvek-package-docs -j"$(nproc)" >/dev/null
(cd "$WORK" && cpack -G DEB --config "$BUILD_DIR/CPackConfig.cmake" -B "$WORK/pkg" >"$WORK/cpack.log" 2>&1) \
    || { cat "$WORK/cpack.log" >&2; fail "cpack"; }
debs=("$WORK"/pkg/${PACKAGE}_*.deb)
[[ ${#debs[@]} -eq 1 && -f "${debs[0]}" ]] || fail "cpack made no single ${PACKAGE}_*.deb"
DEB="${debs[0]}"
say "$(basename "$DEB"): $(dpkg-deb -f "$DEB" Depends)"

say "lintian"
lintian --fail-on error "$DEB" || fail "lintian reports errors"

dpkg-deb -c "$DEB" | awk '{ print $6 }' | sed 's|^\./|/|; s|/$||' | grep -v '^$' >"$WORK/contents"
while read -r path; do
    case "$path" in
        /usr | /usr/bin | /usr/lib | /usr/include | /usr/share | /usr/lib/cmake) ;;
        /usr/lib/systemd | /usr/lib/systemd/system | /usr/lib/systemd/system/orvek-host.service) ;;
        /usr/bin/orvek-* | "$APP_DIR" | "$APP_DIR"/* | /usr/include/CollectContract*) ;;
        /usr/lib/cmake/CollectContract*) ;;
        /usr/share/applications | /usr/share/applications/orvek-host.desktop) ;;
        /usr/share/icons | /usr/share/icons/hicolor | /usr/share/icons/hicolor/scalable) ;;
        /usr/share/icons/hicolor/scalable/apps | /usr/share/icons/hicolor/scalable/apps/orvek-host.svg) ;;
        /usr/share/man | /usr/share/man/man1 | /usr/share/man/man1/orvek-*.1.gz) ;;
        /usr/share/doc | /usr/share/doc/orvek-ups | /usr/share/doc/orvek-ups/*) ;;
        *) fail "the package holds $path, outside the paths it owns" ;;
    esac
done <"$WORK/contents"

say "installing"
DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "$DEB" >"$WORK/apt.log" 2>&1 \
    || { cat "$WORK/apt.log" >&2; fail "apt-get install"; }
for exe in orvek-host orvek-sim; do
    [[ "$(readlink -f "/usr/bin/$exe")" == "$APP_DIR/$exe" ]] || fail "/usr/bin/$exe does not lead to $APP_DIR/$exe"
done
[[ "$(readlink -f "$APP_DIR/KSVO/Quoranet/db")" == "$STATE_DIR" ]] || fail "the data folder does not lead to $STATE_DIR"
[[ "$(stat -c %U "$STATE_DIR/logs")" == "$PACKAGE" ]] || fail "$STATE_DIR/logs does not belong to $PACKAGE"
/usr/bin/orvek-host --help | grep -q -- "--headless" || fail "orvek-host --help"
/usr/bin/orvek-sim --help | grep -q -- "--scenario" || fail "orvek-sim --help"

# Another host builds against the installed contract through its CMake package.
say "building against find_package(CollectContract)"
mkdir -p "$WORK/consumer"
cat >"$WORK/consumer/CMakeLists.txt" <<'EOF'
cmake_minimum_required(VERSION 3.16)
project(ContractConsumer LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 17)
find_package(CollectContract 1.0 REQUIRED)
add_executable(consumer main.cpp)
target_link_libraries(consumer PRIVATE CollectContract::CollectContract)
EOF
cat >"$WORK/consumer/main.cpp" <<'EOF'
#include <collectthread.h>
#include <cstring>

// The meta-object comes from the installed library, not from this binary.
int main()
{
    CollectThread client;
    return std::strcmp(client.metaObject()->superClass()->className(), "QThread") == 0 ? 0 : 1;
}
EOF
{ cmake -S "$WORK/consumer" -B "$WORK/consumer/build" && cmake --build "$WORK/consumer/build"; } \
    >"$WORK/consumer.log" 2>&1 || { cat "$WORK/consumer.log" >&2; fail "building against the CMake package"; }
ldd "$WORK/consumer/build/consumer" | grep -q "$APP_DIR/libCollectContract.so" \
    || fail "the consumer does not use $APP_DIR/libCollectContract.so"
"$WORK/consumer/build/consumer" || fail "the consumer's CollectThread is no QThread"

# A port nobody answers on (bash's /dev/tcp: no extra tools needed).
port=""
for _ in $(seq 50); do
    candidate=$((20000 + RANDOM % 40000))
    if ! (exec 3<>"/dev/tcp/127.0.0.1/$candidate") 2>/dev/null; then
        port=$candidate
        break
    fi
done
[[ -n "$port" ]] || fail "no free loopback port found"
say "installed orvek-sim on 127.0.0.1:$port"
/usr/bin/orvek-sim --address 127.0.0.1 --port "$port" >"$WORK/sim.log" 2>&1 </dev/null &
SIM_PID=$!
for _ in $(seq 50); do
    grep -q "listening on" "$WORK/sim.log" && break
    kill -0 "$SIM_PID" 2>/dev/null || break
    sleep 0.2
done
grep -q "listening on" "$WORK/sim.log" || { cat "$WORK/sim.log" >&2; fail "orvek-sim did not start"; }

/usr/bin/orvek-host --add "$DEVICE" "127.0.0.1:$port" --interval 4 --retries 3 >/dev/null
grep -q "^\[$DEVICE\]" "$STATE_DIR/dev.ini" || fail "--add did not write $STATE_DIR/dev.ini"

say "installed orvek-host --headless for ${RUN_SECONDS} s as $PACKAGE"
host_rc=0
env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM LC_ALL=C.UTF-8 LANGUAGE= \
    timeout $((RUN_SECONDS + 60)) runuser -u "$PACKAGE" -- \
    /usr/bin/orvek-host --headless --duration "$RUN_SECONDS" </dev/null >"$WORK/host.log" 2>&1 || host_rc=$?
kill "$SIM_PID" 2>/dev/null || true
wait "$SIM_PID" 2>/dev/null || true
SIM_PID=""
[[ $host_rc -eq 0 ]] || { cat "$WORK/host.log" >&2; fail "orvek-host ended with $host_rc"; }
grep -q "1 communicating" "$WORK/host.log" || { cat "$WORK/host.log" >&2; fail "the host never saw the device communicate"; }
grep -Eq "$DEVICE.*load [0-9]" "$WORK/host.log" || { cat "$WORK/host.log" >&2; fail "no measurement in the console output"; }
data_logs=("$STATE_DIR"/logs/data-"$DEVICE"-*.csv)
[[ -f "${data_logs[0]}" ]] || fail "no data log in $STATE_DIR/logs"
rows=$(($(wc -l <"${data_logs[0]}") - 1))
((rows >= 1)) || fail "the data log ${data_logs[0]} has a header and no row"
# A row: the time, then the input voltage as a number.
grep -Eq '^[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]{8},[0-9]+' "${data_logs[0]}" \
    || fail "the data log ${data_logs[0]} holds no measurement row"
say "data arrived: $rows data log row(s)"

say "purging"
DEBIAN_FRONTEND=noninteractive apt-get purge -y -qq "$PACKAGE" >"$WORK/apt.log" 2>&1 \
    || { cat "$WORK/apt.log" >&2; fail "apt-get purge"; }
known_to_dpkg && fail "dpkg still knows $PACKAGE after the purge"
for path in "$APP_DIR" "$STATE_DIR" /usr/bin/orvek-host /usr/bin/orvek-sim; do
    [[ -e "$path" || -L "$path" ]] && fail "$path is left after the purge"
done
while read -r path; do
    [[ -d "$path" && ! -L "$path" ]] && continue # shared folders such as /usr/share/man/man1
    [[ -e "$path" || -L "$path" ]] && fail "$path is left after the purge"
done <"$WORK/contents"
for dir in /usr/include/CollectContract /usr/lib/cmake/CollectContract /usr/share/doc/$PACKAGE; do
    [[ -e "$dir" ]] && fail "$dir is left after the purge"
done
say "OK"
