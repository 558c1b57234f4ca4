#!/usr/bin/env bash
# Builds everything and runs every test: the full suite, then the client,
# decoder and dictionary tests again under AddressSanitizer +
# UndefinedBehaviorSanitizer (the tst_core_* tests, label "core"), then the
# libFuzzer targets for a bounded time each (tools/fuzz.sh), and as root the
# Debian package (tools/package-test.sh).
set -euo pipefail
ROOT="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
export QT_QPA_PLATFORM=offscreen

echo "== build and test (build/)"
BUILD_DIR="$ROOT/build" "$ROOT/tools/bootstrap.sh"
(cd "$ROOT/build" && ctest -j2 --output-on-failure)

echo "== client core under address,undefined sanitizers (build-asan/)"
BUILD_DIR="$ROOT/build-asan" "$ROOT/tools/bootstrap.sh" \
    -DORVEK_CORE_ONLY=ON -DORVEK_SANITIZE=address,undefined
(cd "$ROOT/build-asan" && \
    ASAN_OPTIONS=detect_leaks=1:fast_unwind_on_malloc=0 \
    LSAN_OPTIONS="suppressions=$ROOT/tools/lsan.supp" \
    UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    ctest -j2 -L core --output-on-failure)

# Answer decoding, dev.ini reading and NUT request lines under libFuzzer, 30 s each.
bash "$ROOT/tools/fuzz.sh" 30
# The Debian package: built, checked with lintian, installed, run and purged
# (root only: it installs on this machine).
if [[ $(id -u) -eq 0 ]]; then bash "$ROOT/tools/package-test.sh" "$ROOT/build"; fi
