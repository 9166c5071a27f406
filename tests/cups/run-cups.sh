#!/usr/bin/env bash
# Runs a test executable against a throwaway CUPS server with a PDF queue:
#   run-cups.sh <test executable> [test class or Qt Test arguments...]
#
# The server is a cupsd of its own: its configuration, spool, cache, state and
# logs live in a temporary folder, it listens only on 127.0.0.1 on a free port,
# and it is stopped and the folder removed when the script ends, whatever
# happens. The machine's own CUPS server and /etc/cups are left alone: the
# installed backends, filters and PPDs are only read.
#
# The queue prints through the cups-pdf backend, which turns every job into a
# PDF file in a folder of the test's own: the job really goes through the
# scheduler, its filters (pdftopdf, pdftops) and a backend, as on an office
# printer, and the printed pages can be read back with pdftotext. Debian's
# cups-pdf reads its settings only from /etc/cups/cups-pdf.conf (or
# cups-pdf-<queue>.conf there), and by default writes to the job owner's home
# and logs to /var/log/cups. So the private cupsd runs in a mount namespace of
# its own in which /etc/cups is the private configuration folder: its
# cups-pdf.conf, beside cupsd.conf, sends the files, the backend's spool and
# its log into the temporary folder, and nothing of the machine is written.
#
# Where mount namespaces are not allowed (unshare fails), the queue falls back
# to a "file:" device: the scheduler runs the same filters and writes the
# job's PostScript, as the PPD's printer would receive it, to
# <folder>/spooled.ps (one job at a time: the next job writes it anew); the
# tests turn it into PDF with ps2pdf before reading it. The backend is then the
# scheduler's own file writer instead of cups-pdf.
#
# The test executable finds the queue through the environment:
#   CUPS_SERVER          127.0.0.1:<port> (libcups, and so Qt's printer list)
#   PRINTER              the queue, the default printer of the test
#   CALVEX_CUPS_QUEUE    the queue
#   CALVEX_CUPS_PDF_DIR  the folder where cups-pdf writes the printed PDFs
#   CALVEX_CUPS_OUTPUT   "pdf" (cups-pdf), or "ps" with the file: device, whose
#                        output is CALVEX_CUPS_PDF_DIR/spooled.ps
set -euo pipefail

if [ $# -lt 1 ]; then
    echo "usage: $0 <test executable> [arguments...]" >&2
    exit 2
fi
test_exe="$1"
shift

missing=()
for program in cupsd lpadmin lpstat pdftotext gs; do
    command -v "$program" >/dev/null 2>&1 || missing+=("$program")
done
backend_dir=/usr/lib/cups/backend
ppd=""
for candidate in /usr/share/ppd/cups-pdf/CUPS-PDF_opt.ppd /usr/share/ppd/cups-pdf/CUPS-PDF.ppd \
                 /usr/share/ppd/cups-pdf/CUPS-PDF_noopt.ppd; do
    [ -f "$candidate" ] && { ppd="$candidate"; break; }
done
[ -x "$backend_dir/cups-pdf" ] && [ -n "$ppd" ] || missing+=("cups-pdf backend and PPD")
if [ ${#missing[@]} -ne 0 ]; then
    echo "$0: missing: ${missing[*]}. Install the Debian packages cups, cups-client, cups-bsd," \
         "printer-driver-cups-pdf and poppler-utils (scripts/install-deps.sh does)." >&2
    exit 1
fi
if [ "$(id -u)" -ne 0 ]; then
    # cupsd runs its backends as root only when it runs as root itself, and
    # cups-pdf must be root to write a job's file as the job's owner.
    echo "$0: the private CUPS server must run as root (cups-pdf needs it)." >&2
    exit 1
fi

work="$(mktemp -d "${TMPDIR:-/tmp}/calvex-cups.XXXXXX")"
# The filters run as the scheduler's user "lp": they must reach the spool files.
chmod 0755 "$work"
cupsd_pid=""

cleanup() {
    status=$?
    if [ -n "$cupsd_pid" ] && kill -0 "$cupsd_pid" 2>/dev/null; then
        kill -TERM "$cupsd_pid" 2>/dev/null || true
        for _ in $(seq 50); do
            kill -0 "$cupsd_pid" 2>/dev/null || break
            sleep 0.1
        done
        kill -KILL "$cupsd_pid" 2>/dev/null || true
        wait "$cupsd_pid" 2>/dev/null || true
    fi
    if [ "$status" -ne 0 ] && [ -f "$work/log/error_log" ]; then
        echo "---- last lines of the private cupsd's error_log ----" >&2
        tail -n 40 "$work/log/error_log" >&2 || true
        for log in "$work"/log/cups-pdf*_log; do
            [ -f "$log" ] && { echo "---- $log ----" >&2; tail -n 20 "$log" >&2; }
        done
    fi
    rm -rf "$work"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

mkdir -p "$work/etc" "$work/spool" "$work/spool/tmp" "$work/cache" "$work/state" "$work/log" \
         "$work/pdf" "$work/cups-pdf-spool"
chmod 0755 "$work/etc" "$work/log" "$work/pdf"

queue=CalvexPDF

# A mount namespace for the server, where /etc/cups can be its own folder.
private_etc=""
# CALVEX_CUPS_FILE_DEVICE=1 takes the file: device on purpose (to try it).
if [ "${CALVEX_CUPS_FILE_DEVICE:-0}" != 1 ] && unshare --mount --propagation private true 2>/dev/null; then
    private_etc=1
else
    echo "$0: no mount namespace here; the queue writes PostScript through a file: device." >&2
    chmod 0777 "$work/pdf"
fi

write_config() {
    local port="$1"
    cat >"$work/etc/cups-files.conf" <<CONF
ServerRoot $work/etc
RequestRoot $work/spool
TempDir $work/spool/tmp
CacheDir $work/cache
StateDir $work/state
AccessLog $work/log/access_log
ErrorLog $work/log/error_log
PageLog $work/log/page_log
Printcap $work/state/printcap
FileDevice Yes
ServerBin /usr/lib/cups
DataDir /usr/share/cups
User lp
Group lp
SystemGroup root
CONF
    cat >"$work/etc/cupsd.conf" <<CONF
Listen 127.0.0.1:$port
ServerName 127.0.0.1
LogLevel info
Browsing No
BrowseLocalProtocols none
DefaultEncryption Never
WebInterface No
MaxJobs 0
PreserveJobHistory Yes
PreserveJobFiles No
DefaultAuthType None
<Location />
  Order allow,deny
  Allow from 127.0.0.1
</Location>
<Policy default>
  <Limit All>
    Order deny,allow
  </Limit>
</Policy>
CONF
    # cups-pdf's own settings: every file, its spool and its log in the folder
    # of this run. Label 1 puts the job number in front of the file name.
    cat >"$work/etc/cups-pdf.conf" <<CONF
Out $work/pdf
AnonDirName $work/pdf
Spool $work/cups-pdf-spool
GSTmp $work/cups-pdf-spool
Log $work/log
LogType 3
Grp lp
Label 1
TitlePref 1
CONF
}

# A free port: nothing answers on it. Another program may take it before the
# server does, so a server that does not come up tries the next candidate.
port=""
for _ in 1 2 3 4 5 6 7 8 9 10; do
    candidate=$((20000 + RANDOM % 40000))
    if (exec 3<>"/dev/tcp/127.0.0.1/$candidate") 2>/dev/null; then
        continue
    fi
    write_config "$candidate"
    if [ -n "$private_etc" ]; then
        unshare --mount --propagation private sh -c \
            'mount --bind "$1" /etc/cups && exec cupsd -f -c "$1/cupsd.conf" -s "$1/cups-files.conf"' \
            sh "$work/etc" >"$work/log/cupsd.out" 2>&1 &
    else
        cupsd -f -c "$work/etc/cupsd.conf" -s "$work/etc/cups-files.conf" >"$work/log/cupsd.out" 2>&1 &
    fi
    cupsd_pid=$!
    for _ in $(seq 100); do
        if ! kill -0 "$cupsd_pid" 2>/dev/null; then
            break
        fi
        if lpstat -h "127.0.0.1:$candidate" -r 2>/dev/null | grep -q "scheduler is running"; then
            port="$candidate"
            break
        fi
        sleep 0.1
    done
    [ -n "$port" ] && break
    kill -TERM "$cupsd_pid" 2>/dev/null || true
    wait "$cupsd_pid" 2>/dev/null || true
    cupsd_pid=""
done
if [ -z "$port" ]; then
    echo "$0: the private cupsd did not start:" >&2
    cat "$work/log/cupsd.out" >&2 || true
    exit 1
fi

export CUPS_SERVER="127.0.0.1:$port"
if [ -n "$private_etc" ]; then
    device="cups-pdf:/"
    export CALVEX_CUPS_OUTPUT=pdf
else
    device="file://$work/pdf/spooled.ps"
    export CALVEX_CUPS_OUTPUT=ps
fi
lpadmin -p "$queue" -E -v "$device" -P "$ppd" -D "Calvex test PDF queue" 2>"$work/log/lpadmin.err" || {
    cat "$work/log/lpadmin.err" >&2
    exit 1
}
# The queue's defaults: Letter paper, as the batch renderer's PDFs have, so
# that both lay out the same pages; and PDF to PostScript through poppler's
# cairo renderer, which keeps the text's character codes (through Ghostscript
# the glyphs become Type 3 fonts without them, and pdftotext reads nothing).
lpadmin -p "$queue" -o PageSize=Letter -o pdftops-renderer-default=pdftocairo
lpadmin -d "$queue"
lpstat -p "$queue" | grep -q "enabled" || { echo "$0: the queue $queue is not enabled" >&2; lpstat -p >&2; exit 1; }

export PRINTER="$queue"
export CALVEX_CUPS_QUEUE="$queue"
export CALVEX_CUPS_PDF_DIR="$work/pdf"
# Qt's printer support asks the server for its printers through libcups; no
# desktop or user printer settings of the machine take part.
export HOME="$work"
unset LPDEST

status=0
"$test_exe" "$@" || status=$?
exit "$status"
