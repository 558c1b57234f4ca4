#!/usr/bin/env bash
# The demo: builds everything, starts two simulated UPS agents on loopback
# (a single-phase unit playing a mains failure, battery discharge and mains
# return within a minute, and a three-phase unit in normal operation) and the
# reference host monitoring both and serving them to NUT clients and
# Prometheus on loopback.
# Without a display the host runs as a console
# monitor. Extra arguments go to the host, e.g. --duration 90 or --headless.
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
BUILD_DIR="${BUILD_DIR:-$ROOT/build}"
PORT1="${ORVEK_DEMO_PORT1:-1502}"
PORT2="${ORVEK_DEMO_PORT2:-1503}"
NUTPORT="${ORVEK_DEMO_NUT_PORT:-3493}"
METRICSPORT="${ORVEK_DEMO_METRICS_PORT:-9184}"

BUILD_DIR="$BUILD_DIR" "$ROOT/tools/bootstrap.sh"
BIN="$BUILD_DIR/bin"

pids=()
cleanup() {
    for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
    wait 2>/dev/null || true
}
trap cleanup EXIT INT TERM

LOGDIR="$BUILD_DIR/demo-logs"
mkdir -p "$LOGDIR"
"$BIN/orvek-sim" --port "$PORT1" --profile single --scenario demo --name "Server room A" \
    >"$LOGDIR/agent-ups1.log" 2>&1 &
pids+=($!)
"$BIN/orvek-sim" --port "$PORT2" --profile three --scenario normal --name "Server room B" \
    >"$LOGDIR/agent-ups2.log" 2>&1 &
pids+=($!)
echo "demo: simulated agents on 127.0.0.1:$PORT1 (single-phase, mains failure story) and :$PORT2 (three-phase)"
echo "demo: agent logs (every register write) in $LOGDIR"

# A fresh device file with just the two demo units (the tests, run from the
# same folder, write device groups of their own into it).
rm -f "$BIN/KSVO/Quoranet/db/dev.ini"
"$BIN/orvek-host" --add ups1 "127.0.0.1:$PORT1" --add ups2 "127.0.0.1:$PORT2" --interval 5 --retries 3

host_args=(--nut-listen "127.0.0.1:$NUTPORT" --metrics-listen "127.0.0.1:$METRICSPORT")
echo "demo: NUT clients: upsc -l 127.0.0.1:$NUTPORT   upsc ups1@127.0.0.1:$NUTPORT"
echo "demo: metrics: curl -s http://127.0.0.1:$METRICSPORT/metrics"
if [[ -z "${DISPLAY:-}" && -z "${WAYLAND_DISPLAY:-}" ]]; then
    host_args+=(--headless)
fi
"$BIN/orvek-host" "${host_args[@]}" "$@"
