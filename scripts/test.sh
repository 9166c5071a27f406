#!/usr/bin/env bash
# Installs what is missing, builds everything with warnings as errors and runs
# every test. Exits non-zero when anything fails.
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
ctest --test-dir "$build" --output-on-failure -j "$(nproc)"
