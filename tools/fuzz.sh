#!/usr/bin/env bash
# Builds the libFuzzer targets with clang into build-fuzz/ and runs each of
# them for SECONDS (default 45), all at once (each is single-threaded):
#   fuzz_decode  received Modbus/TCP answers -> OrvekClient::decodeAnswer
#   fuzz_devini  dev.ini contents -> DeviceConfig::devices, OrvekClient::loadConfig
#   fuzz_nutline NUT request lines and users files -> NutLine::split, NutUsers::parse
# Each target runs from a scratch folder holding a copy of the binary and of
# its seed corpus, so fuzzing never grows fuzz/corpus and the dev.ini
# it writes stays out of the build folder. Exits non-zero on any finding; the
# reproducers and logs are then kept in build-fuzz/findings/<target>/.
#
# Usage: tools/fuzz.sh [SECONDS]
set -euo pipefail

ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
DURATION="${1:-45}"
BUILD_DIR="$ROOT/build-fuzz"
FUZZ_SRC="$ROOT/fuzz"

if ! [[ $DURATION =~ ^[1-9][0-9]*$ ]]; then
    echo "usage: $0 [SECONDS]" >&2
    exit 2
fi

echo "== libFuzzer targets under address,undefined sanitizers (build-fuzz/), ${DURATION} s each"
CC=clang CXX=clang++ BUILD_DIR="$BUILD_DIR" "$ROOT/tools/bootstrap.sh" \
    -DORVEK_CORE_ONLY=ON -DORVEK_FUZZ=ON -DORVEK_BUILD_TESTS=OFF

SCRATCH="$(mktemp -d "${TMPDIR:-/tmp}/orvek-fuzz.XXXXXX")"
declare -A PIDS=()
cleanup() {
    local pid
    for pid in "${PIDS[@]}"; do
        kill "$pid" 2>/dev/null || true
    done
    wait 2>/dev/null || true
    rm -rf "$SCRATCH"
}
trap cleanup EXIT

# start_target NAME MAX_LEN [extra libFuzzer flags...]: runs fuzz_NAME in the
# background in $SCRATCH/NAME.
start_target() {
    local name="$1" max_len="$2"
    shift 2
    local work="$SCRATCH/$name"
    mkdir -p "$work/artifacts" "$work/tmp"
    cp -r "$FUZZ_SRC/corpus/$name" "$work/corpus"
    cp "$BUILD_DIR/bin/fuzz_$name" "$work/"
    (
        cd "$work"
        export TMPDIR="$work/tmp" ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
        exec "./fuzz_$name" -max_len="$max_len" -max_total_time="$DURATION" -timeout=30 \
            -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$work/artifacts/" "$@" \
            corpus >"$work/log" 2>&1
    ) &
    PIDS[$name]=$!
}

# finish_target NAME: waits for it, prints its summary line, keeps findings.
finish_target() {
    local name="$1"
    local work="$SCRATCH/$name" rc=0
    wait "${PIDS[$name]}" || rc=$?
    unset "PIDS[$name]"
    local runs cov
    runs="$(sed -n 's/^stat::number_of_executed_units: *//p' "$work/log" | tail -n1)"
    cov="$(grep -o 'cov: [0-9]* ft: [0-9]* corp: [0-9]*' "$work/log" | tail -n1 |
        sed 's/cov: \([0-9]*\) ft: \([0-9]*\) corp: \([0-9]*\)/coverage \1 edges, \2 features, corpus \3 inputs/' || true)"
    local artifacts=("$work"/artifacts/*)
    [[ -e ${artifacts[0]} ]] || artifacts=()
    if ((rc == 0 && ${#artifacts[@]} == 0)); then
        echo "fuzz $name: ${runs:-?} runs, ${cov:-no coverage reported}, no finding"
        return 0
    fi
    local keep="$BUILD_DIR/findings/$name"
    rm -rf "$keep"
    mkdir -p "$keep"
    cp "$work/log" "$keep/log"
    ((${#artifacts[@]} == 0)) || cp "${artifacts[@]}" "$keep/"
    echo "fuzz $name: FINDING after ${runs:-?} runs (exit $rc); log and reproducers in $keep"
    grep -E -A12 '^==[0-9]+==ERROR|runtime error|broken promise|deadly signal' "$work/log" | head -n40 || true
    echo "reproduce: $BUILD_DIR/bin/fuzz_$name <file> (fuzz_devini from a scratch copy of the binary)"
    return 1
}

start_target decode 4096
start_target devini 8192 -dict="$FUZZ_SRC/devini.dict"
start_target nutline 4096
status=0
finish_target decode || status=1
finish_target devini || status=1
finish_target nutline || status=1
exit "$status"
