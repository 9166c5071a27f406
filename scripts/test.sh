#!/usr/bin/env bash
# Installs what is missing, builds everything with warnings as errors, runs
# every test and checks the sources' formatting (clang-format). Exits non-zero
# when anything fails.
#   CALVEX_SANITIZE=ON scripts/test.sh    runs the tests under address + undefined sanitizers
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
"$here/scripts/install-deps.sh"
if [ "${CALVEX_SANITIZE:-OFF}" = "ON" ]; then
    export CALVEX_BUILD_DIR="${CALVEX_BUILD_DIR:-$here/build-sanitize}"
    export CALVEX_BUILD_TYPE=Debug
fi
"$here/scripts/build.sh"
build="${CALVEX_BUILD_DIR:-$here/build}"
if [ "${CALVEX_SANITIZE:-OFF}" = "ON" ]; then
    # Undefined behaviour ends the test that meets it, with its stack.
    export UBSAN_OPTIONS="halt_on_error=1:print_stacktrace=1${UBSAN_OPTIONS:+:$UBSAN_OPTIONS}"
    # Leaks of system libraries are not ours to fix (tests/lsan-suppressions.txt).
    export LSAN_OPTIONS="suppressions=$here/tests/lsan-suppressions.txt${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
fi
ctest --test-dir "$build" --output-on-failure -j "$(nproc)"
cmake --build "$build" --target format-check
