#!/usr/bin/env bash
# Installs the Debian packages the build, the program and the tests need.
# Idempotent: when everything is there already, it changes nothing.
set -euo pipefail

packages=(
    cmake ninja-build g++ pkg-config
    qt6-base-dev libqt6sql6-sqlite libqt6sql6-psql qt6-translations-l10n
    librsvg2-bin
    dpkg-dev lintian desktop-file-utils appstream
    libgmp-dev
    fonts-liberation2
    clang-format-14
    poppler-utils xvfb xauth x11-utils
    postgresql sqlite3
    cups cups-client cups-bsd printer-driver-cups-pdf
)

missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo_cmd=()
[ "$(id -u)" -ne 0 ] && sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
