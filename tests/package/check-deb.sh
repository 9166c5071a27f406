#!/usr/bin/env bash
# Builds the Debian package from a finished build and checks it as a user's
# machine would see it:
#   check-deb.sh BUILD_DIR VERSION
# lintian (no errors, no warnings), its contents (dpkg-deb --contents), the
# desktop entry and the AppStream metadata (desktop-file-validate,
# appstreamcli), then the programs run from the package unpacked into a
# scratch root, for a new user: --version, --help, "NorrixDBQuery auto" and a
# demo report, which find the default key file and the help in
# share/calvex-qc beside their bin folder. Exit status 77: the machine has a
# system key file, which would hide the package's default one.
set -euo pipefail
build="$(cd "$1" && pwd)"
version="$2"
app_id=invalid.calvex_qc.CalvexQC

fail() { echo "FAIL: $*" >&2; exit 1; }

if [ -e /etc/norrix/registry.reg ]; then
    echo "SKIP: /etc/norrix/registry.reg would be read instead of the package's default key file"
    exit 77
fi

scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT

# The package, into a folder of its own (the build's own _CPack_Packages stay out of it).
(cd "$build" && cpack -G DEB -B "$scratch/out" >"$scratch/cpack.log" 2>&1) || { cat "$scratch/cpack.log"; fail "cpack"; }
deb="$scratch/out/calvex-qc_${version}_$(dpkg --print-architecture).deb"
[ -f "$deb" ] || fail "no package $deb"
echo "package: $(basename "$deb"), $(stat -c %s "$deb") bytes"

# lintian: no error and no warning (informational tags are listed in the README).
lintian --tag-display-limit 0 --fail-on error,warning "$deb" 2>&1 | grep -v "running with root privileges" \
    | tee "$scratch/lintian.txt" || true
lintian --tag-display-limit 0 --fail-on error,warning "$deb" >/dev/null 2>&1 || fail "lintian"
! grep -E '^[EW]: ' "$scratch/lintian.txt" || fail "lintian errors or warnings"

# Control fields and contents.
dpkg-deb --field "$deb" Package Version Depends >"$scratch/control.txt"
grep -qx "Package: calvex-qc" "$scratch/control.txt" || fail "package name"
grep -qx "Version: $version" "$scratch/control.txt" || fail "version"
for dependency in fonts-liberation2 libqt6sql6-sqlite libqt6sql6-psql qt6-translations-l10n libqt6widgets6 libgmp10; do
    grep -Eq "^Depends:.*\\b$dependency\\b" "$scratch/control.txt" || fail "Depends lacks $dependency"
done
dpkg-deb --contents "$deb" | awk '{print $NF}' | sed 's|^\./||' >"$scratch/contents.txt"
for path in usr/bin/calvex-qc usr/bin/calvex-qc-render usr/bin/NorrixDBQuery \
    usr/share/calvex-qc/norrix-default.reg usr/share/calvex-qc/help/index.html \
    "usr/share/applications/$app_id.desktop" "usr/share/metainfo/$app_id.metainfo.xml" \
    "usr/share/icons/hicolor/scalable/apps/$app_id.svg" \
    usr/share/man/man1/calvex-qc.1.gz usr/share/man/man1/calvex-qc-render.1.gz usr/share/man/man1/NorrixDBQuery.1.gz \
    usr/share/doc/calvex-qc/copyright usr/share/doc/calvex-qc/changelog.gz \
    usr/share/doc/calvex-qc/examples/registry.reg; do
    grep -qx "$path" "$scratch/contents.txt" || fail "package lacks $path"
done
for size in 16 32 48 64 128 256; do
    grep -qx "usr/share/icons/hicolor/${size}x${size}/apps/$app_id.png" "$scratch/contents.txt" \
        || fail "package lacks the ${size}x${size} icon"
done
# bin holds the three programs and nothing else; nothing outside /usr.
[ "$(grep -c '^usr/bin/.' "$scratch/contents.txt")" -eq 3 ] || fail "bin holds more than the programs"
! grep -v '^usr/' "$scratch/contents.txt" | grep -q . || fail "files outside /usr"
! grep -q '^etc/' "$scratch/contents.txt" || fail "the package writes /etc"

# Unpacked into a scratch root, as dpkg would place it under /.
root="$scratch/root"
dpkg-deb -x "$deb" "$root"
desktop-file-validate "$root/usr/share/applications/$app_id.desktop" || fail "desktop-file-validate"
appstreamcli validate --no-net "$root/usr/share/metainfo/$app_id.metainfo.xml" || fail "appstreamcli validate"
for page in calvex-qc calvex-qc-render NorrixDBQuery; do
    zcat "$root/usr/share/man/man1/$page.1.gz" | grep -q '^\.SH EXIT STATUS' || fail "$page(1) has no exit statuses"
done

# A new user on a machine without a display or settings of its own.
export HOME="$scratch/home"
mkdir -p "$HOME"
unset NORRIX_REGISTRY DISPLAY WAYLAND_DISPLAY XDG_DATA_HOME QT_QPA_PLATFORM
bin="$root/usr/bin"

[ "$("$bin/calvex-qc" --version)" = "calvex-qc $version" ] || fail "calvex-qc --version"
"$bin/calvex-qc" --help >"$scratch/help.txt" || fail "calvex-qc --help"
grep -qx "  settings    $root/usr/share/calvex-qc/norrix-default.reg" "$scratch/help.txt" \
    || { cat "$scratch/help.txt"; fail "calvex-qc does not read the default key file of share/calvex-qc"; }
grep -qx "  help pages  $root/usr/share/calvex-qc/help/index.html" "$scratch/help.txt" \
    || { cat "$scratch/help.txt"; fail "calvex-qc does not find its help in share/calvex-qc"; }
"$bin/calvex-qc-render" --help | grep -q '^Usage: calvex-qc-render ' || fail "calvex-qc-render --help"
[ "$("$bin/NorrixDBQuery" --version)" = "NorrixDBQuery $version" ] || fail "NorrixDBQuery --version"

"$bin/NorrixDBQuery" auto || fail "NorrixDBQuery auto"
[ -s "$HOME/.local/share/Norrix/norrix-demo.sqlite" ] || fail "no demo database in the new user's data folder"
cd "$scratch"
QT_QPA_PLATFORM=offscreen "$bin/calvex-qc-render" --tab PF --report Spirometry --subject QC001 \
    --from 01/01/2024 --to 06/30/2024 --out x.pdf || fail "demo render"
[ -s x.pdf ] || fail "no PDF"
pdftotext x.pdf - | grep -q 'Patient: Adam Q Control' || fail "the PDF does not name the QC subject"
echo "package checks passed"
