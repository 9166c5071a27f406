#!/bin/sh
# Installs what the other report generators and bench.py need (Debian 12, as
# root or through sudo). Only the peer benchmark uses these packages; the
# program and its tests do not. Packages already installed are left alone.
set -eu

PACKAGES="python3-matplotlib r-base-core r-cran-rsqlite r-cran-dbi gnuplot-nox sqlite3 poppler-utils time"

missing=""
for package in $PACKAGES; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing="$missing $package"
    fi
done

if [ -z "$missing" ]; then
    echo "peer packages: all installed"
    exit 0
fi

run_as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        sudo "$@"
    fi
}

echo "peer packages: installing$missing"
run_as_root apt-get update
# shellcheck disable=SC2086 # one word per package
run_as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends $missing
