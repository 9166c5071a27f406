#!/usr/bin/env python3
"""Lab-scale benchmark: the program on a laboratory-sized database.

Builds the data set of calvex-bench-lab-data (20 QC subjects with 522 weekly
visits each, 200,000 other patients, about 4.4 million readings) in SQLite
and in a throwaway PostgreSQL cluster on loopback, beside a database of the
QC subjects alone ("small") and the demo database, and times on each:

- NorrixDBQuery auto (SQLite also with the database file dropped from the
  page cache before each run: posix_fadvise DONTNEED, or drop_caches when
  it may be written);
- launch to the painted main window (calvex-bench-startup under Xvfb);
- the subject search by ID, by name and without a hit, GetGraphData and
  GetTableData (calvex-bench-lab);
- calvex-qc-render of the whole report of a QC subject, wall time and peak
  resident memory (/usr/bin/time).

Writes the figures as a section of bench/results.md (and prints them).

    python3 bench/labscale/run_lab_bench.py [--build build-release] [--no-build]
        [--runs 10] [--patients 200000] [--keep]
"""
import argparse
import os
import re
import shutil
import signal
import socket
import statistics
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "common"))
from results_section import build_type  # noqa: E402

REPO = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
TARGETS = ["NorrixDBQuery", "calvex-qc-render", "calvex-bench-startup", "calvex-bench-lab", "calvex-bench-lab-data"]
SECTION = "## Lab-scale database"


def run(cmd, env=None, check=True, capture=True, **kw):
    p = subprocess.run(cmd, env=env, text=True, capture_output=capture, **kw)
    if check and p.returncode != 0:
        sys.exit(f"failed ({p.returncode}): {' '.join(cmd)}\n{p.stdout}{p.stderr}")
    return p


def build(build_dir):
    if not os.path.exists(os.path.join(build_dir, "build.ninja")):
        run(["cmake", "-S", REPO, "-B", build_dir, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release"], capture=False)
    run(["cmake", "--build", build_dir, "-j", "2", "--target"] + TARGETS, capture=False)


def registry(path, settings, bin_dir):
    lines = ["Windows Registry Editor Version 5.00", "", "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norrix\\Common]",
             f'"Executable Path"="{bin_dir}"', '"SI Unit"="0"', '"Default Rights"="500,501"',
             '"Default Auto Logout Minutes"=dword:00000000']
    for name, value in settings.items():
        lines.append(f'"{name}"=dword:{value:08x}' if isinstance(value, int) else f'"{name}"="{value}"')
    with open(path, "w") as f:
        f.write("\n".join(lines) + "\n")


class Cluster:
    """A PostgreSQL cluster in a temporary folder, on 127.0.0.1 only."""

    def __init__(self, work):
        bins = sorted(d for d in os.listdir("/usr/lib/postgresql") if os.path.exists(f"/usr/lib/postgresql/{d}/bin/initdb"))
        if not bins:
            sys.exit("PostgreSQL is not installed")
        self.bin = f"/usr/lib/postgresql/{bins[-1]}/bin"
        self.dir = os.path.join(work, "pg")
        os.makedirs(self.dir)
        self.as_owner = []
        self.user = os.environ.get("USER") or "postgres"
        if os.getuid() == 0:
            shutil.chown(self.dir, "postgres")
            self.as_owner = ["runuser", "-u", "postgres", "--"]
            self.user = "postgres"
        # A collation of a language, as a laboratory's server has: the search
        # keys' own "C" collation must be what makes their indexes serve.
        run(self.as_owner + [f"{self.bin}/initdb", "-D", f"{self.dir}/data", "-U", self.user, "--auth=trust",
                             "--encoding=UTF8", "--locale-provider=icu", "--icu-locale=en-US", "--locale=C.UTF-8"])
        with socket.socket() as s:
            s.bind(("127.0.0.1", 0))
            self.port = s.getsockname()[1]
        run(self.as_owner + [f"{self.bin}/pg_ctl", "-D", f"{self.dir}/data", "-l", f"{self.dir}/server.log", "-w",
                             "-o", f"-c listen_addresses=127.0.0.1 -c port={self.port} -c unix_socket_directories={self.dir}"
                             " -c fsync=off -c full_page_writes=off", "start"])
        self.version = re.search(r"\) ([\d.]+)", run([f"{self.bin}/postgres", "--version"]).stdout).group(1)

    def createdb(self, name):
        run(["psql", "-X", "-q", "-h", "127.0.0.1", "-p", str(self.port), "-U", self.user, "-d", "postgres",
             "-c", f"CREATE DATABASE {name}"])

    def settings(self, name):
        return {"Database Driver": "QPSQL", "Database Host": "127.0.0.1", "Database Port": self.port,
                "Database Name": name, "Database User": self.user}

    def stop(self):
        run(self.as_owner + [f"{self.bin}/pg_ctl", "-D", f"{self.dir}/data", "-m", "fast", "-w", "stop"], check=False)


def figures(values):
    values = sorted(values)
    return {"median": statistics.median(values), "min": values[0], "max": values[-1], "n": len(values)}


def drop_from_cache(path):
    try:
        with open("/proc/sys/vm/drop_caches", "w") as f:
            f.write("3\n")
        return "drop_caches"
    except OSError:
        for name in (path, path + "-journal", path + "-wal"):
            if os.path.exists(name):
                fd = os.open(name, os.O_RDONLY)
                os.posix_fadvise(fd, 0, 0, os.POSIX_FADV_DONTNEED)
                os.close(fd)
        return "posix_fadvise DONTNEED"


def time_auto(bin_dir, env, runs, cold_file=None):
    times, how = [], None
    run([f"{bin_dir}/NorrixDBQuery", "auto"], env=env)
    for _ in range(runs):
        if cold_file:
            how = drop_from_cache(cold_file)
        start = time.perf_counter()
        p = run([f"{bin_dir}/NorrixDBQuery", "auto"], env=env)
        times.append((time.perf_counter() - start) * 1000)
        if "checked" in p.stdout:
            sys.exit("NorrixDBQuery auto checked a current database: " + p.stdout)
    return figures(times), how


def time_startup(bin_dir, env, runs):
    p = run(["xvfb-run", "-a", "-s", "-screen 0 1280x900x24", f"{bin_dir}/calvex-bench-startup", "--runs", str(runs + 1)],
            env=env)
    times = [float(m) for m in re.findall(r"run \d+: ([\d.]+) ms from launch", p.stdout)]
    if len(times) != runs + 1:
        sys.exit("calvex-bench-startup:\n" + p.stdout + p.stderr)
    return figures(times[1:])  # the first launch loads the program's files


def time_data(bin_dir, env, runs, subject, id_text, name_text):
    p = run([f"{bin_dir}/calvex-bench-lab", "--subject", subject, "--id", id_text, "--name", name_text,
             "--rounds", str(max(runs, 30))], env=env)
    result = {}
    for line in p.stdout.splitlines():
        m = re.match(r"(.+?)\s+median\s+([\d.]+) ms\s+min\s+([\d.]+) ms\s+max\s+([\d.]+) ms\s+\(n=(\d+)\)", line)
        if m:
            result[m.group(1).strip()] = {"median": float(m.group(2)), "min": float(m.group(3)),
                                          "max": float(m.group(4)), "n": int(m.group(5))}
    return result


def time_renders(bin_dir, envs, runs, work, report, subject):
    """Renders the report from each database of envs (a name: environment
    dict), one after the other in every round, so that a change in the
    machine's load falls on all of them alike and their ratio holds."""
    out = os.path.join(work, "render.pdf")
    cmd = ["/usr/bin/time", "-f", "RSS %M", f"{bin_dir}/calvex-qc-render", "--tab", "PF", "--report", report,
           "--subject", subject, "--to", "06/30/2026", "--out", out]
    times = {name: [] for name in envs}
    rss = {name: [] for name in envs}
    pages = {}
    for env in envs.values():
        run(cmd, env=env)
    for _ in range(runs):
        for name, env in envs.items():
            start = time.perf_counter()
            p = run(cmd, env=env)
            times[name].append((time.perf_counter() - start) * 1000)
            rss[name].append(int(re.search(r"RSS (\d+)", p.stderr).group(1)) / 1024)
            pages[name] = re.search(r"\((\d+) pages?\)", p.stdout).group(1)
    return {name: (figures(times[name]), figures(rss[name]), pages[name]) for name in envs}


def time_render(bin_dir, env, runs, work, report, subject):
    return time_renders(bin_dir, {"one": env}, runs, work, report, subject)["one"]


def fmt(f, unit="ms", digits=1):
    return f"{f['median']:.{digits}f} {unit} ({f['min']:.{digits}f}-{f['max']:.{digits}f})"


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--build", default=os.path.join(REPO, "build-release"))
    ap.add_argument("--no-build", action="store_true")
    ap.add_argument("--runs", type=int, default=10)
    ap.add_argument("--patients", type=int, default=200000)
    ap.add_argument("--keep", action="store_true", help="keep the databases in bench/out/lab")
    ap.add_argument("--results", default=os.path.join(REPO, "bench", "results.md"))
    a = ap.parse_args()
    if not a.no_build:
        build(a.build)
    bin_dir = os.path.join(a.build, "bin")
    work = os.path.join(REPO, "bench", "out", "lab")
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    load_before = " ".join(open("/proc/loadavg").read().split()[:3])

    cluster = Cluster(work)
    try:
        setups = {}
        for kind in ("lab", "small", "demo"):
            for engine in ("SQLite", "PostgreSQL"):
                if engine == "SQLite":
                    settings = {"Database Driver": "QSQLITE", "Database Name": os.path.join(work, f"{kind}.sqlite")}
                else:
                    cluster.createdb(f"calvex_{kind}")
                    settings = cluster.settings(f"calvex_{kind}")
                settings["Demo Database"] = 1 if kind == "demo" else 0
                reg = os.path.join(work, f"{kind}-{engine}.reg")
                registry(reg, settings, bin_dir)
                env = dict(os.environ, NORRIX_REGISTRY=reg)
                start = time.perf_counter()
                if kind == "demo":
                    out = run([f"{bin_dir}/NorrixDBQuery", "auto"], env=env).stdout.strip()
                else:
                    out = run([f"{bin_dir}/calvex-bench-lab-data", "--patients",
                               "0" if kind == "small" else str(a.patients)], env=env).stdout.strip()
                print(f"{kind} on {engine}: {out} ({time.perf_counter() - start:.1f} s)", flush=True)
                name = re.search(r"last name of P000123: (\S+)", out)
                setups[(kind, engine)] = {"env": env, "file": settings["Database Name"] if engine == "SQLite" else None,
                                          "name": name.group(1)[:7] if name else None, "loaded": out.splitlines()[0]}

        rows = {}
        for (kind, engine), s in setups.items():
            env = s["env"]
            r = {}
            if kind == "small":
                rows[(kind, engine)] = r
                continue
            r["auto"], _ = time_auto(bin_dir, env, a.runs)
            if s["file"]:
                r["auto cold"], r["cold how"] = time_auto(bin_dir, env, a.runs, s["file"])
            r["startup"] = time_startup(bin_dir, env, a.runs)
            if kind == "lab":
                r["data"] = time_data(bin_dir, env, a.runs, "QC005", "P0001", s["name"] or "Bar")
            else:
                r["data"] = time_data(bin_dir, env, a.runs, "QC001", "QC0", "Smi")
                r["render"] = time_render(bin_dir, env, a.runs, work, "Spirometry", "QC001")
            rows[(kind, engine)] = r
            print(kind, engine, r, flush=True)
        # The laboratory's render against the same render from the small
        # database, measured in alternation.
        for engine in ("SQLite", "PostgreSQL"):
            pair = time_renders(bin_dir, {kind: setups[(kind, engine)]["env"] for kind in ("lab", "small")},
                                a.runs, work, "Lab Spirometry", "QC005")
            for kind, figures_ in pair.items():
                rows[(kind, engine)]["render"] = figures_
            print(engine, "renders", pair, flush=True)
        if a.keep:
            print(f"databases kept in {work}; the PostgreSQL cluster is stopped")
    finally:
        cluster.stop()

    load_after = " ".join(open("/proc/loadavg").read().split()[:3])
    lines = [SECTION, "",
             f"Measured {time.strftime('%Y-%m-%d %H:%M')} with `python3 bench/labscale/run_lab_bench.py "
             f"--runs {a.runs}` ({build_type(a.build)} build; {a.runs} runs of each program, the searches and data calls "
             f"{max(a.runs, 30)} rounds in one process; median (min-max); the laboratory's and the small database's renders "
             f"take turns). PostgreSQL {cluster.version} in a "
             "throwaway cluster on loopback (ICU collation en-US, fsync off). Load average "
             f"{load_before} at the start, {load_after} at the end: a shared 2-core machine.", ""]
    for (kind, engine), s in setups.items():
        lines.append(f"- {kind}, {engine}: {s['loaded']}")
    lines += ["", "| what | lab SQLite | lab PostgreSQL | demo SQLite | demo PostgreSQL |", "|---|---|---|---|---|"]

    def cell(kind, engine, key, sub=None):
        r = rows.get((kind, engine), {})
        v = r.get(key)
        if v is None:
            return "-"
        if sub is not None:
            v = v.get(sub) if isinstance(v, dict) else v[sub]
            if v is None:
                return "-"
        return fmt(v)

    def row(label, key, sub=None):
        lines.append(f"| {label} | " + " | ".join(cell(k, e, key, sub) for k in ("lab", "demo")
                                                    for e in ("SQLite", "PostgreSQL")) + " |")

    row("`NorrixDBQuery auto`, files cached", "auto")
    row("`NorrixDBQuery auto`, database file dropped from the page cache", "auto cold")
    row("launch to painted main window", "startup")
    def data_label(key):
        return re.sub(r' "[^"]*"| of \S+,| \(\d+ rows\)', "", key)

    data_keys = []
    for r in rows.values():
        for k in r.get("data", {}):
            if data_label(k) not in data_keys:
                data_keys.append(data_label(k))
    for label in data_keys:
        cells = []
        for k in ("lab", "demo"):
            for e in ("SQLite", "PostgreSQL"):
                match = [(key, v) for key, v in rows[(k, e)].get("data", {}).items() if data_label(key) == label]
                hits = re.search(r"\((\d+) rows\)", match[0][0]).group(1) if match else None
                cells.append(f"{fmt(match[0][1], digits=2)}, {hits} rows" if match else "-")
        lines.append(f"| {label} | " + " | ".join(cells) + " |")
    for kind, label in (("lab", "`calvex-qc-render`, lab: QC005, 522 visits"),
                        ("small", "`calvex-qc-render`, small database: QC005, 522 visits"),
                        ("demo", "`calvex-qc-render`, demo: QC001 Spirometry")):
        for what, index, unit in (("wall", 0, "ms"), ("peak RSS", 1, "MiB")):
            cells = []
            for e in ("SQLite", "PostgreSQL"):
                r = rows[(kind, e)].get("render")
                cells.append(fmt(r[index], unit) + (f", {r[2]} pages" if index == 0 else "") if r else "-")
            col = {"lab": [cells[0], cells[1], "-", "-"], "small": [cells[0], cells[1], "-", "-"],
                   "demo": ["-", "-", cells[0], cells[1]]}[kind]
            lines.append(f"| {label}, {what} | " + " | ".join(col) + " |")
    def target(text, value, limit):
        return f"- {text}: {value:.1f} against {limit:g}: {'met' if value <= limit else 'NOT met'}"

    lines += ["", "Targets (medians of this run):"]
    for k in ("lab", "demo"):
        lines.append(target(f"`auto` on SQLite, {k}, cached (ms)", rows[(k, "SQLite")]["auto"]["median"], 50))
        lines.append(target(f"`auto` on SQLite, {k}, cold (ms)", rows[(k, "SQLite")]["auto cold"]["median"], 300))
        for e in ("SQLite", "PostgreSQL"):
            lines.append(target(f"launch to painted window, {k}, {e} (ms)", rows[(k, e)]["startup"]["median"], 300))
    for e in ("SQLite", "PostgreSQL"):
        worst = max(v["median"] for key, v in rows[("lab", e)]["data"].items() if key.startswith("search"))
        lines.append(target(f"slowest search form, lab, {e} (ms)", worst, 5))
        lab, small = rows[("lab", e)]["render"], rows[("small", e)]["render"]
        lines.append(target(f"522-visit render, lab / small database, {e} (time ratio)",
                            lab[0]["median"] / small[0]["median"], 1.2))
        # 30 MiB is the SQLite renderer's bound; on PostgreSQL Qt's driver
        # loads libpq with its TLS, Kerberos and LDAP libraries (about 5 MiB),
        # so there the small database's figure is the bound.
        limit = min(30.0, small[1]["median"]) if e == "SQLite" else small[1]["median"]
        lines.append(target(f"522-visit render peak RSS, lab, {e} (MiB; small database {small[1]['median']:.1f})",
                            lab[1]["median"], limit))
    cold = next((r.get("cold how") for r in rows.values() if r.get("cold how")), None)
    if cold:
        lines += ["", f"The page cache was emptied for the cold runs with {cold}."]
    lines.append("")
    section = "\n".join(lines)
    print(section)

    text = open(a.results).read() if os.path.exists(a.results) else ""
    if SECTION in text:
        text = text[:text.index(SECTION)].rstrip("\n") + "\n\n"
    elif text:
        text = text.rstrip("\n") + "\n\n"
    with open(a.results, "w") as f:
        f.write(text + section)
    if not a.keep:
        shutil.rmtree(work, ignore_errors=True)


if __name__ == "__main__":
    main()
