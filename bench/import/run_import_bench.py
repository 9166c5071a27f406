#!/usr/bin/env python3
"""Times "NorrixDBQuery import" of a large laboratory file on SQLite and PostgreSQL.

python3 standard library only. Steps, each printed as it runs:

1. configures (Release) and builds NorrixDBQuery in --build (default: build-release in
   the repository; --no-build takes it as built there), two compile jobs at most;
2. writes a reproducible CSV file (the same --seed gives the same rows) of --readings readings (default 1,000,000) to bench/out/import
   (ignored by git), unless it is there already: 20 QC subjects, each with visits on
   consecutive days, PF and GX by turns, 50 readings a visit (so 20,000 visits for a
   million readings), about 1 % of them empty; some names need quotes;
3. SQLite: a new database in a temporary folder made by "NorrixDBQuery auto" (schema and
   catalogue, no demo data), then, each as a process of its own: the import, the same
   file again (nothing changes), and a dry run of it;
4. PostgreSQL: the same on a throwaway cluster on loopback that tests/suite/run-postgres.sh
   starts (this script runs again inside it with --inner);
5. prints the figures and puts them into bench/results.md, in the section between the
   markers of this benchmark (--no-results leaves the file alone).

Each run is timed from the start of the process to its end (wall clock), with its CPU
time and peak resident memory from the kernel's accounting of the child (wait4).

  python3 bench/import/run_import_bench.py
  python3 bench/import/run_import_bench.py --readings 100000 --backends sqlite --no-results
"""
import argparse
import datetime
import json
import os
import random
import shlex
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
REPO = os.path.dirname(os.path.dirname(HERE))
sys.path.insert(0, os.path.join(REPO, "bench", "common"))
from results_section import build_type, write_section  # noqa: E402
BEGIN_MARK = "<!-- import benchmark: begin -->"
END_MARK = "<!-- import benchmark: end -->"

SUBJECTS = 20
READINGS_PER_VISIT = 50

# The catalogue's variables (src/suite/SuiteCatalogue.cpp) with a typical value and decimals.
PF_VARIABLES = [("FVC", 4.8, 2), ("FEV1", 3.9, 2), ("FEV1/FVC", 81, 0), ("PEF", 9.1, 2), ("FEF25-75", 3.6, 2),
                ("FET", 7.5, 1), ("SVC", 4.9, 2), ("IC", 3.2, 2), ("ERV", 1.6, 2), ("TLC", 6.5, 2), ("RV", 1.7, 2),
                ("FRC", 3.3, 2), ("RV/TLC", 26, 0), ("TGV", 3.4, 2), ("Raw", 1.6, 2), ("sGaw", 0.21, 2),
                ("MIP", 95, 1), ("DLCO", 28.5, 1), ("VA", 6.2, 2), ("KCO", 4.6, 2), ("Hb", 14.6, 1)]
GX_VARIABLES = [("VO2", 2400, 0), ("VO2/kg", 32.5, 1), ("VCO2", 2600, 0), ("RER", 1.08, 2), ("VE", 88, 1),
                ("VT", 2.3, 2), ("RR", 38, 0), ("HR", 172, 0), ("O2 Pulse", 14.0, 1), ("Work Rate", 210, 0),
                ("PetCO2", 38, 1), ("PetO2", 112, 1), ("VE/VCO2", 28.4, 1), ("SpO2", 97, 0), ("SBP", 185, 1),
                ("DBP", 82, 1), ("Room Temperature", 71.5, 1)]
# Tables of a visit, filled up to 50 readings.
PF_TABLES = ["Pre", "Post", "Challenge"]
GX_TABLES = ["Rest", "Peak", "Anaerobic Threshold"]


def step(text):
    print(f"== {text}", flush=True)


def run(cmd, **kwargs):
    print("   $ " + shlex.join(cmd), flush=True)
    subprocess.run(cmd, check=True, **kwargs)


def csv_field(text):
    if any(c in text for c in ',"\r\n'):
        return '"' + text.replace('"', '""') + '"'
    return text


def visit_layout(tables, variables):
    layout = [(t, v) for t in tables for v in variables]
    return layout[:READINGS_PER_VISIT]


def generate(path, readings, seed):
    """Writes the benchmark's CSV file: SUBJECTS subjects with visits on consecutive days, PF and GX
    by turns, from random readings that the same seed repeats exactly."""
    rng = random.Random(seed)
    visits = readings // READINGS_PER_VISIT
    pf = visit_layout(PF_TABLES, PF_VARIABLES)
    gx = visit_layout(GX_TABLES, GX_VARIABLES)
    last_names = ["Control", "O'Brien, Jr.", "Quality \"QC\" Check", "Öberg", "Smith"]
    first = datetime.date(1990, 1, 1)
    tmp = path + ".part"
    count = 0
    with open(tmp, "w", encoding="utf-8", newline="") as f:
        f.write("PatientID,LastName,FirstName,MiddleName,Birthday,VisitDate,Tab,Table,Variable,Value\r\n")
        for s in range(SUBJECTS):
            subject_visits = visits // SUBJECTS + (1 if s < visits % SUBJECTS else 0)
            person = ",".join([f"QCB{s + 1:03d}", csv_field(last_names[s % len(last_names)]), f"Subject{s + 1}", "",
                               f"{1960 + s}-0{1 + s % 9}-1{s % 10}"])
            bias = [1 + rng.gauss(0, 0.05) for _ in range(len(PF_VARIABLES) + len(GX_VARIABLES))]
            for v in range(subject_visits):
                day = (first + datetime.timedelta(days=v)).isoformat()
                is_pf = v % 2 == 0
                layout = pf if is_pf else gx
                prefix = f"{person},{day},{'PF' if is_pf else 'GX'},"
                lines = []
                for table, (name, typical, decimals) in layout:
                    offset = 0 if is_pf else len(PF_VARIABLES)
                    index = (PF_VARIABLES if is_pf else GX_VARIABLES).index((name, typical, decimals)) + offset
                    if rng.random() < 0.01:
                        value = ""
                    else:
                        value = f"{typical * bias[index] * (1 + rng.gauss(0, 0.03)):.{decimals}f}"
                    lines.append(f"{prefix}{csv_field(table)},{csv_field(name)},{value}\r\n")
                f.write("".join(lines))
                count += len(lines)
    os.replace(tmp, path)
    return count


def timed(cmd, env):
    """Runs cmd; wall seconds, CPU seconds, peak RSS MiB, exit status, stdout, stderr."""
    start = time.monotonic()
    with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
        process = subprocess.Popen(cmd, env=env, stdout=out, stderr=err)
        _, status, usage = os.wait4(process.pid, 0)
        wall = time.monotonic() - start
        process.returncode = os.waitstatus_to_exitcode(status)
        out.seek(0)
        err.seek(0)
        return {"wall_s": wall, "cpu_s": usage.ru_utime + usage.ru_stime, "rss_mib": usage.ru_maxrss / 1024.0,
                "status": process.returncode, "out": out.read().decode(), "err": err.read().decode()}


def measure(tool, csv_path, registry):
    """The three runs on the database that registry names (its schema made first)."""
    env = dict(os.environ, NORRIX_REGISTRY=registry)
    setup = subprocess.run([tool, "auto"], env=env, capture_output=True, text=True)
    if setup.returncode != 0:
        sys.exit(f"NorrixDBQuery auto failed: {setup.stderr}")
    runs = {}
    for name, args in (("import", ["import", csv_path]), ("import again", ["import", csv_path]),
                       ("dry run", ["import", csv_path, "--dry-run"])):
        print(f"   {name} ...", flush=True)
        result = timed([tool] + args, env)
        if result["status"] != 0:
            sys.exit(f"{name} failed ({result['status']}): {result['err'][-2000:]}")
        result["summary"] = result["out"].strip()
        del result["out"]
        result["progress_lines"] = len(result.pop("err").splitlines())
        print(f"   {result['wall_s']:.1f} s, CPU {result['cpu_s']:.1f} s, peak RSS {result['rss_mib']:.1f} MiB: "
              f"{result['summary']}", flush=True)
        runs[name] = result
    return runs


def sqlite_figures(tool, csv_path):
    with tempfile.TemporaryDirectory(prefix="calvex-import-bench-") as folder:
        registry = os.path.join(folder, "registry.reg")
        database = os.path.join(folder, "qc.sqlite")
        with open(registry, "w") as f:
            f.write("Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norrix\\Common]\n"
                    f"\"Database Driver\"=\"QSQLITE\"\n\"Database Name\"=\"{database}\"\n")
        runs = measure(tool, csv_path, registry)
        runs["database MiB"] = os.path.getsize(database) / 1048576.0
        return runs


def postgres_figures(script_args, tool, csv_path):
    with tempfile.TemporaryDirectory(prefix="calvex-import-bench-") as folder:
        os.chmod(folder, 0o755)
        figures = os.path.join(folder, "figures.json")
        run([os.path.join(REPO, "tests", "suite", "run-postgres.sh"), sys.executable, os.path.abspath(__file__),
             "--inner", figures, "--tool", tool, "--csv", csv_path] + script_args)
        with open(figures) as f:
            return json.load(f)


def postgres_version():
    try:
        return subprocess.run(["psql", "--version"], capture_output=True, text=True).stdout.strip()
    except OSError:
        return "PostgreSQL"


def write_results(path, rows, args, csv_path, readings, load_before, load_after):
    lines = [BEGIN_MARK, "# Import benchmark: NorrixDBQuery import of a laboratory file", ""]
    command = "python3 bench/import/run_import_bench.py " + " ".join(shlex.quote(x) for x in sys.argv[1:])
    lines.append(f"Measured {datetime.datetime.now():%Y-%m-%d %H:%M} with `{command.strip()}` ({build_type(args.build)} build). "
                 f"The file: {readings:,} readings of {readings // READINGS_PER_VISIT:,} visits of {SUBJECTS} QC "
                 f"subjects, seed {args.seed}, {os.path.getsize(csv_path) / 1048576.0:.1f} MiB. Each run is a "
                 "process of its own, timed from start to exit; CPU time and peak resident memory are the "
                 "process's own (wait4), so the PostgreSQL server's work is in the wall time only. The "
                 "PostgreSQL cluster is the tests' throwaway one on loopback (tests/suite/run-postgres.sh, "
                 "fsync off). Load average (1, 5, 15 minutes) "
                 f"{load_before} before and {load_after} after, on a shared 2-core machine.")
    lines += ["", "| database | run | wall s | CPU s | peak RSS MiB | summary |", "|---|---|---:|---:|---:|---|"]
    for backend, runs in rows:
        for name in ("import", "import again", "dry run"):
            r = runs[name]
            lines.append(f"| {backend} | {name} | {r['wall_s']:.1f} | {r['cpu_s']:.1f} | {r['rss_mib']:.1f} | "
                         f"{r['summary']} |")
    lines.append("")
    for backend, runs in rows:
        r = runs["import"]
        memory = f"peak memory {r['rss_mib']:.1f} MiB (target under 200 MiB: " + \
            ("met" if r["rss_mib"] < 200 else "NOT met") + ")"
        if backend == "SQLite":
            verdict = "met" if r["wall_s"] < 60 else "NOT met"
            lines.append(f"- {backend}: the import took {r['wall_s']:.1f} s (target under 60 s: {verdict}), {memory}.")
        else:
            lines.append(f"- {backend}: the import took {r['wall_s']:.1f} s (for information; the time target is "
                         f"SQLite's), {memory}.")
    lines.append(END_MARK)
    write_section(path, "\n".join(lines) + "\n", BEGIN_MARK, END_MARK)


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--readings", type=int, default=1000000)
    ap.add_argument("--seed", type=int, default=20240701)
    ap.add_argument("--backends", nargs="+", choices=["sqlite", "postgres"], default=["sqlite", "postgres"])
    ap.add_argument("--build", default=os.path.join(REPO, "build-release"), help="CMake build folder")
    ap.add_argument("--no-build", action="store_true", help="use NorrixDBQuery as built in --build")
    ap.add_argument("--out", default=os.path.join(REPO, "bench", "out", "import"), help="folder of the CSV file")
    ap.add_argument("--results", default=os.path.join(REPO, "bench", "results.md"))
    ap.add_argument("--no-results", action="store_true", help="print the figures only")
    ap.add_argument("--inner", help=argparse.SUPPRESS)
    ap.add_argument("--tool", help=argparse.SUPPRESS)
    ap.add_argument("--csv", help=argparse.SUPPRESS)
    a = ap.parse_args()

    if a.inner:
        # Inside run-postgres.sh: NORRIX_REGISTRY names the throwaway server's database.
        figures = measure(a.tool, a.csv, os.environ["NORRIX_REGISTRY"])
        with open(a.inner, "w") as f:
            json.dump(figures, f)
        return

    build_dir = os.path.abspath(a.build)
    if not a.no_build:
        step("NorrixDBQuery (Release)")
        if not os.path.exists(os.path.join(build_dir, "CMakeCache.txt")):
            run(["cmake", "-S", REPO, "-B", build_dir, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
                 "-DCALVEX_BUILD_TESTS=OFF"])
        run(["cmake", "--build", build_dir, "--target", "NorrixDBQuery", "-j", "2"])
    tool = os.path.join(build_dir, "bin", "NorrixDBQuery")
    if not os.access(tool, os.X_OK):
        sys.exit(f"{tool} is not built")

    os.makedirs(a.out, exist_ok=True)
    csv_path = os.path.join(a.out, f"readings-{a.readings}-seed{a.seed}.csv")
    if not os.path.exists(csv_path):
        step(f"generating {csv_path}")
        generate(csv_path, a.readings, a.seed)
    readings = a.readings // READINGS_PER_VISIT * READINGS_PER_VISIT

    load_before = ", ".join(f"{x:.1f}" for x in os.getloadavg())
    rows = []
    if "sqlite" in a.backends:
        step("SQLite")
        rows.append(("SQLite", sqlite_figures(tool, csv_path)))
    if "postgres" in a.backends:
        step("PostgreSQL")
        rows.append((postgres_version().replace("psql (PostgreSQL) ", "PostgreSQL "),
                     postgres_figures(["--seed", str(a.seed)], tool, csv_path)))
    load_after = ", ".join(f"{x:.1f}" for x in os.getloadavg())

    if not a.no_results:
        write_results(a.results, rows, a, csv_path, readings, load_before, load_after)
        step(f"wrote {a.results}")


if __name__ == "__main__":
    main()
