#!/usr/bin/env bash
# Runs the suite's test executable against a throwaway PostgreSQL cluster:
#   run-postgres.sh [--password-file] <test executable> [test class or Qt Test arguments...]
# The cluster lives in a temporary folder, listens only on 127.0.0.1 on a free
# port, and is stopped and removed when the script ends, whatever happens.
# The tests find the server through the temporary key file in NORRIX_REGISTRY,
# and stop and start it again with the script that CALVEX_TEST_PG_CONTROL names
# ("stop" or "start"), for the tests of a server that goes away.
#
# With --password-file the server asks every client for a password, the key
# file holds none, and the password is in the .pgpass file of a temporary HOME
# (CALVEX_TEST_PGPASS names it), as a laboratory keeps it.
set -euo pipefail

password_file=""
if [ "${1:-}" = "--password-file" ]; then
    password_file=1
    shift
fi
if [ $# -lt 1 ]; then
    echo "usage: $0 [--password-file] <test executable> [arguments...]" >&2
    exit 2
fi
test_exe="$1"
shift

pg_bin=""
for dir in /usr/lib/postgresql/*/bin; do
    [ -x "$dir/initdb" ] && [ -x "$dir/pg_ctl" ] && pg_bin="$dir"
done
if [ -z "$pg_bin" ]; then
    echo "$0: PostgreSQL is not installed (no /usr/lib/postgresql/*/bin/initdb)." \
         "Install the Debian package postgresql (scripts/install-deps.sh does)." >&2
    exit 1
fi

work="$(mktemp -d "${TMPDIR:-/tmp}/calvex-pg.XXXXXX")"
as_owner=()
if [ "$(id -u)" -eq 0 ]; then
    # The server refuses to run as root: the cluster belongs to postgres.
    chown postgres: "$work"
    as_owner=(runuser -u postgres --)
    superuser=postgres
else
    superuser="$(id -un)"
fi

cleanup() {
    if [ -f "$work/data/postmaster.pid" ]; then
        "${as_owner[@]}" "$pg_bin/pg_ctl" -D "$work/data" -m fast -w stop >/dev/null 2>&1 || true
    fi
    rm -rf "$work"
}
trap cleanup EXIT

auth=(--auth=trust)
if [ -n "$password_file" ]; then
    password="pw-$RANDOM$RANDOM"
    printf '%s\n' "$password" >"$work/password"
    [ "$(id -u)" -eq 0 ] && chown postgres: "$work/password"
    auth=(--auth=scram-sha-256 --pwfile="$work/password")
    export PGPASSWORD="$password" # for the script's own createdb only
fi
"${as_owner[@]}" "$pg_bin/initdb" -D "$work/data" -U "$superuser" "${auth[@]}" --encoding=UTF8 --no-locale \
    >"$work/initdb.log" 2>&1 || { cat "$work/initdb.log" >&2; exit 1; }

# A free port: nothing answers on it. Another program may take it before the
# server does, so a failed start tries the next candidate.
started=""
for _ in 1 2 3 4 5 6 7 8 9 10; do
    port=$((20000 + RANDOM % 40000))
    if (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null; then
        continue
    fi
    if "${as_owner[@]}" "$pg_bin/pg_ctl" -D "$work/data" -l "$work/server.log" -w -t 60 \
        -o "-c listen_addresses=127.0.0.1 -c port=$port -c unix_socket_directories=$work -c fsync=off" \
        start >/dev/null 2>&1; then
        started=1
        break
    fi
done
if [ -z "$started" ]; then
    echo "$0: the PostgreSQL server did not start:" >&2
    cat "$work/server.log" >&2 || true
    exit 1
fi

# Stops the server and starts it again as it was, for the tests.
control="$work/server-control.sh"
cat >"$control" <<CONTROL
#!/usr/bin/env bash
set -eu
case "\${1:-}" in
    stop) ${as_owner[*]:-} "$pg_bin/pg_ctl" -D "$work/data" -m fast -w stop >/dev/null ;;
    start) ${as_owner[*]:-} "$pg_bin/pg_ctl" -D "$work/data" -l "$work/server.log" -w -t 60 \\
        -o "-c listen_addresses=127.0.0.1 -c port=$port -c unix_socket_directories=$work -c fsync=off" start >/dev/null ;;
    *) echo "usage: \$0 stop|start" >&2; exit 2 ;;
esac
CONTROL
chmod +x "$control"
export CALVEX_TEST_PG_CONTROL="$control"

database=calvex_test_suite
"${as_owner[@]}" "$pg_bin/createdb" -h 127.0.0.1 -p "$port" -U "$superuser" "$database"

registry="$work/registry.reg"
cat >"$registry" <<REG
Windows Registry Editor Version 5.00

[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norrix\\Common]
"Database Driver"="QPSQL"
"Database Host"="127.0.0.1"
"Database Port"=dword:$(printf '%08x' "$port")
"Database Name"="$database"
"Database User"="$superuser"
REG

if [ -n "$password_file" ]; then
    unset PGPASSWORD
    mkdir -p "$work/home"
    printf '127.0.0.1:%s:*:%s:%s\n' "$port" "$superuser" "$password" >"$work/home/.pgpass"
    chmod 600 "$work/home/.pgpass"
    export HOME="$work/home" CALVEX_TEST_PGPASS="$work/home/.pgpass"
fi

echo "PostgreSQL $("$pg_bin/postgres" --version | awk '{print $3}') on 127.0.0.1:$port, database $database"
status=0
NORRIX_REGISTRY="$registry" "$test_exe" "$@" || status=$?
exit $status
