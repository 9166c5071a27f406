#!/usr/bin/env bash
# Configures and builds everything into build/ (or $CALVEX_BUILD_DIR).
set -euo pipefail
here="$(cd "$(dirname "$0")/.." && pwd)"
build="${CALVEX_BUILD_DIR:-$here/build}"
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S "$here" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE="${CALVEX_BUILD_TYPE:-RelWithDebInfo}" \
    -DCALVEX_WERROR="${CALVEX_WERROR:-ON}" -DCALVEX_SANITIZE="${CALVEX_SANITIZE:-OFF}" "${launcher[@]}" >/dev/null
cmake --build "$build" -j "$(nproc)"
