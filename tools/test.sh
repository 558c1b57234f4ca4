#!/usr/bin/env bash
# Builds everything and runs every test: the full suite, then the client,
# decoder and dictionary tests again under AddressSanitizer +
# UndefinedBehaviorSanitizer (the tst_core_* tests, label "core"), then the
# libFuzzer targets for a bounded time each (tools/fuzz.sh).
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
export QT_QPA_PLATFORM=offscreen

echo "== build and test (build/)"
BUILD_DIR="$ROOT/build" "$ROOT/tools/bootstrap.sh"
(cd "$ROOT/build" && ctest --output-on-failure)

echo "== client core under address,undefined sanitizers (build-asan/)"
BUILD_DIR="$ROOT/build-asan" "$ROOT/tools/bootstrap.sh" \
    -DORVEK_CORE_ONLY=ON -DORVEK_SANITIZE=address,undefined
(cd "$ROOT/build-asan" && \
    ASAN_OPTIONS=detect_leaks=1:fast_unwind_on_malloc=0 \
    LSAN_OPTIONS="suppressions=$ROOT/tools/lsan.supp" \
    UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    ctest -L core --output-on-failure)

# Answer decoding and dev.ini reading under libFuzzer, 40 s each (both at once).
bash "$ROOT/tools/fuzz.sh" 30
