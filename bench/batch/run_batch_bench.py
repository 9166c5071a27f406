#!/usr/bin/env python3
"""A night's batch: calvex-qc-render --all against the fastest other report generator run once per report.

python3 standard library only. Steps, each printed as it runs:

1. builds calvex-qc-render, NorrixDBQuery and calvex-bench-export-peer-data in a Release build (--build,
   default build-release, configured when missing; --no-build takes them as built there);
2. makes the demo database anew in bench/out/batch (NorrixDBQuery auto, with a registry key file of its
   own): the QC subjects QC001 to QC003 and the eight saved definitions (five PF, three GX);
3. writes each report of the night (every QC subject x every saved definition, the whole demo period up
   to --to) as a data file of the other generators (bench/peers, their gen_data.py format) with
   calvex-bench-export-peer-data: the definition's variables with their units and decimals, and the
   readings of the report's table;
4. runs, --reps times by turns after one untimed run of each: ours, `calvex-qc-render --all
   --subjects-file subjects.txt --to ... --out-dir DIR`, one process for the whole night; and each other
   generator (gnuplot, R, matplotlib, as far as installed: bench/peers/install-peers.sh) once per report,
   one report after the other, as a night's script would start them. Wall time from the first start to
   the last exit; CPU time and peak resident memory from wait4 (the largest process of a report's tree;
   for a batch the largest of its reports);
5. writes its section of bench/results.md (between its own markers; --no-results only prints): the
   medians per tool, the fastest other generator, and the ratio against the target (ours at least 10
   times faster).

  python3 bench/batch/run_batch_bench.py                       # about 5 minutes on 2 cores
  python3 bench/batch/run_batch_bench.py --no-build --reps 3 --peers-only gnuplot
"""
import argparse
import datetime
import os
import shlex
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
REPO = os.path.dirname(os.path.dirname(HERE))
sys.path.insert(0, os.path.join(REPO, "bench", "common"))
from results_section import build_type, write_section  # noqa: E402
SYS_PY = "/usr/bin/python3"  # Debian's python3, the one python3-matplotlib is installed for
BEGIN_MARK = "<!-- batch benchmark: begin -->"
END_MARK = "<!-- batch benchmark: end -->"
LAB_SECTION = "## Lab-scale database"
TARGET = 10.0
OURS = "ours"


def step(text):
    print(f"== {text}", flush=True)


def run(cmd, **kwargs):
    print("   $ " + shlex.join(cmd), flush=True)
    return subprocess.run(cmd, check=True, **kwargs)


def build_tools(build_dir, build):
    targets = ["calvex-qc-render", "NorrixDBQuery", "calvex-bench-export-peer-data"]
    if build:
        if not os.path.exists(os.path.join(build_dir, "CMakeCache.txt")):
            run(["cmake", "-S", REPO, "-B", build_dir, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
                 "-DCALVEX_BUILD_BENCH=ON"])
        run(["cmake", "--build", build_dir, "-j", "2", "--target"] + targets)
    programs = [os.path.join(build_dir, "bin", t) for t in targets]
    for program in programs:
        if not os.access(program, os.X_OK):
            sys.exit(f"{program} is not built")
    return programs


def write_registry(path, database):
    with open(path, "w") as f:
        f.write("Windows Registry Editor Version 5.00\n\n"
                "; The batch benchmark's demo database.\n"
                "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Norrix\\Common]\n"
                "\"SI Unit\"=\"0\"\n"
                "\"Database Driver\"=\"QSQLITE\"\n"
                f"\"Database Name\"=\"{database}\"\n"
                "\"Demo Database\"=dword:00000001\n"
                "\"Default Rights\"=\"500,501\"\n"
                "\"Default Auto Logout Minutes\"=dword:00000000\n")


def timed(cmd, env=None):
    """Runs cmd to its end: wall seconds, CPU seconds and peak RSS MiB of its process tree (wait4)."""
    with tempfile.TemporaryFile() as err:
        start = time.monotonic()
        process = subprocess.Popen(cmd, env=env, stdout=subprocess.DEVNULL, stderr=err)
        _, status, usage = os.wait4(process.pid, 0)
        wall = time.monotonic() - start
        code = os.waitstatus_to_exitcode(status)
        if code != 0:
            err.seek(0)
            raise RuntimeError(f"{shlex.join(cmd)} failed ({code}): {err.read().decode()[-2000:]}")
    return {"wall_s": wall, "cpu_s": usage.ru_utime + usage.ru_stime, "rss_mib": usage.ru_maxrss / 1024.0}


def peer_commands(peers_dir):
    """The other generators that are installed: name -> (description, command for one report)."""
    tools = {}
    if shutil.which("gnuplot") and shutil.which("sqlite3"):
        tools["gnuplot"] = ("sqlite3 CLI export + gnuplot pdfcairo",
                            lambda db, pdf, subject: ["sh", os.path.join(peers_dir, "report_gnuplot.sh"), db, pdf,
                                                      subject])
    if shutil.which("Rscript"):
        tools["r"] = ("R base graphics pdf() + RSQLite",
                      lambda db, pdf, subject: ["Rscript", os.path.join(peers_dir, "report_r.R"), db, "--out", pdf,
                                                "--subject", subject])
    if subprocess.run([SYS_PY, "-c", "import matplotlib"], capture_output=True).returncode == 0:
        tools["mpl"] = ("python3 + matplotlib PdfPages",
                        lambda db, pdf, subject: [SYS_PY, os.path.join(peers_dir, "report_mpl.py"), db, "--out", pdf,
                                                  "--subject", subject])
    return tools


def batch_of_peer(command, reports, pdf_dir):
    """One night of a peer: each report a process of its own, one after the other."""
    os.makedirs(pdf_dir, exist_ok=True)
    start = time.monotonic()
    cpu = 0.0
    rss = 0.0
    for r in reports:
        pdf = os.path.join(pdf_dir, os.path.splitext(os.path.basename(r["file"]))[0] + ".pdf")
        if os.path.exists(pdf):
            os.remove(pdf)
        one = timed(command(r["file"], pdf, r["subject"]))
        cpu += one["cpu_s"]
        rss = max(rss, one["rss_mib"])
        if not os.path.exists(pdf):
            raise RuntimeError(f"no {pdf}")
    return {"wall_s": time.monotonic() - start, "cpu_s": cpu, "rss_mib": rss}


def pdf_pages(folder):
    pages = 0
    for name in sorted(os.listdir(folder)):
        if name.endswith(".pdf"):
            out = subprocess.run(["pdfinfo", os.path.join(folder, name)], capture_output=True, text=True).stdout
            pages += next((int(line.split()[1]) for line in out.splitlines() if line.startswith("Pages:")), 0)
    return pages


def write_results(path, lines):
    section = "\n".join([BEGIN_MARK] + lines + [END_MARK]) + "\n"
    # The lab-scale benchmark's section runs to the end of the file: this one goes before it.
    write_section(path, section, BEGIN_MARK, END_MARK, before=LAB_SECTION)


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--reps", type=int, default=5, help="timed runs of each tool's night (default 5)")
    ap.add_argument("--to", default="06/30/2026", help="last day of the period (MM/DD/YYYY); the whole demo period")
    ap.add_argument("--peers-only", nargs="+", help="the other generators to run (default: every one installed)")
    ap.add_argument("--build", default=os.path.join(REPO, "build-release"), help="CMake build folder")
    ap.add_argument("--no-build", action="store_true", help="use the programs as built in --build")
    ap.add_argument("--peers", default=os.path.join(os.path.dirname(REPO), "shared", "peers"),
                    help="the other generators' folder (read only)")
    ap.add_argument("--out", default=os.path.join(REPO, "bench", "out", "batch"), help="working folder")
    ap.add_argument("--results", default=os.path.join(REPO, "bench", "results.md"))
    ap.add_argument("--no-results", action="store_true", help="print the figures only")
    a = ap.parse_args()

    step("calvex-qc-render, NorrixDBQuery and the data exporter")
    renderer, dbquery, exporter = build_tools(os.path.abspath(a.build), not a.no_build)

    step("demo database")
    work = os.path.abspath(a.out)
    shutil.rmtree(work, ignore_errors=True)
    os.makedirs(work)
    registry = os.path.join(work, "demo.reg")
    write_registry(registry, os.path.join(work, "demo.sqlite"))
    env = dict(os.environ, NORRIX_REGISTRY=registry, QT_QPA_PLATFORM="offscreen")
    run([dbquery, "auto"], env=env, stdout=subprocess.DEVNULL)

    step("each report's data for the other generators")
    data_dir = os.path.join(work, "peer-data")
    listing = run([exporter, data_dir, "--to", a.to], env=env, capture_output=True, text=True).stdout
    reports = []
    for line in listing.splitlines():
        file, subject, tab, definition, visits = line.split("\t")
        reports.append({"file": file, "subject": subject, "tab": tab, "definition": definition,
                        "visits": int(visits)})
    subjects_file = os.path.join(data_dir, "subjects.txt")
    subjects = open(subjects_file).read().split()
    print(f"   {len(reports)} reports: {len(subjects)} subjects ({', '.join(subjects)}), "
          f"{sum(r['visits'] for r in reports)} visits in all", flush=True)

    peers = peer_commands(a.peers)
    if a.peers_only:
        peers = {k: v for k, v in peers.items() if k in a.peers_only}
    if not peers:
        sys.exit("no other report generator is installed (bench/peers/install-peers.sh)")

    ours_dir = os.path.join(work, "pdf-ours")
    ours_cmd = [renderer, "--all", "--subjects-file", subjects_file, "--to", a.to, "--out-dir", ours_dir]

    def ours_night():
        shutil.rmtree(ours_dir, ignore_errors=True)
        return timed(ours_cmd, env)

    tools = {OURS: ours_night}
    for name, (_desc, command) in peers.items():
        tools[name] = (lambda c, n: lambda: batch_of_peer(c, reports, os.path.join(work, f"pdf-{n}")))(command, name)

    step("one untimed night of each")
    for name, night in tools.items():
        night()
        print(f"   {name} done", flush=True)
    ours_files = len([n for n in os.listdir(ours_dir) if n.endswith(".pdf")])
    if ours_files != len(reports):
        sys.exit(f"calvex-qc-render --all wrote {ours_files} PDF files for {len(reports)} reports")

    step(f"{a.reps} timed nights of each, by turns")
    load_before = ", ".join(f"{x:.1f}" for x in os.getloadavg())
    runs = {name: [] for name in tools}
    for rep in range(a.reps):
        for name, night in tools.items():
            result = night()
            runs[name].append(result)
            print(f"   {rep + 1}/{a.reps} {name:8s} wall {result['wall_s']:7.3f} s  CPU {result['cpu_s']:7.3f} s  "
                  f"peak RSS {result['rss_mib']:6.1f} MiB", flush=True)
    load_after = ", ".join(f"{x:.1f}" for x in os.getloadavg())

    rows = {}
    for name, results in runs.items():
        folder = ours_dir if name == OURS else os.path.join(work, f"pdf-{name}")
        rows[name] = {"wall_s": statistics.median(r["wall_s"] for r in results),
                      "cpu_s": statistics.median(r["cpu_s"] for r in results),
                      "rss_mib": statistics.median(r["rss_mib"] for r in results),
                      "walls": [r["wall_s"] for r in results],
                      "pages": pdf_pages(folder)}
    fastest = min((n for n in rows if n != OURS), key=lambda n: rows[n]["wall_s"])
    ours = rows[OURS]
    speedup = rows[fastest]["wall_s"] / ours["wall_s"]

    command_line = "python3 bench/batch/run_batch_bench.py " + " ".join(shlex.quote(x) for x in sys.argv[1:])
    lines = ["# Batch benchmark: a night's reports", ""]
    lines.append(f"Measured {datetime.datetime.now():%Y-%m-%d %H:%M} with `{command_line.strip()}` ({build_type(a.build)} build). "
                 f"The night: every QC subject of the demo database ({', '.join(subjects)}) with every saved "
                 f"definition (five PF, three GX), the whole demo period up to {a.to}: {len(reports)} reports, "
                 f"{sum(r['visits'] for r in reports)} visits in all. `ours` is one process, `calvex-qc-render --all "
                 f"--subjects-file subjects.txt --to {a.to} --out-dir DIR`; each other generator (bench/peers) "
                 "runs once per report on that report's data (written in its data file format by "
                 "`calvex-bench-export-peer-data`: the definition's variables, units and decimals and the "
                 "readings of the report's table), one report after the other. Wall time from the first start to "
                 "the last exit; CPU time summed over the processes; peak RSS is the largest process (wait4). "
                 f"Medians of {a.reps} nights each, taken by turns after one untimed night of each. Load average "
                 f"(1, 5, 15 minutes) {load_before} before and {load_after} after, on a shared 2-core machine.")
    lines += ["", "| tool | night wall s | CPU s | peak RSS MiB | PDF pages | wall / ours |",
              "|---|---:|---:|---:|---:|---:|"]
    for name in sorted(rows, key=lambda n: rows[n]["wall_s"]):
        r = rows[name]
        lines.append(f"| {name} | {r['wall_s']:.3f} | {r['cpu_s']:.3f} | {r['rss_mib']:.1f} | {r['pages']} | "
                     f"{r['wall_s'] / ours['wall_s']:.1f} |")
    lines.append("")
    lines.append(f"- Target: ours at least {TARGET:.0f} times faster than the fastest other generator. Ours "
                 f"{ours['wall_s']:.3f} s, fastest {fastest} {rows[fastest]['wall_s']:.3f} s: {speedup:.1f} times "
                 f"faster ({'met' if speedup >= TARGET else 'NOT met'}); per report {ours['wall_s'] / len(reports) * 1000:.0f} "
                 f"ms against {rows[fastest]['wall_s'] / len(reports) * 1000:.0f} ms.")
    lines.append(f"- Peak memory: ours {ours['rss_mib']:.1f} MiB for the whole night, {fastest} "
                 f"{rows[fastest]['rss_mib']:.1f} MiB for its largest report.")
    lines.append("- All nights (wall s): " + "; ".join(
        f"{n}: " + ", ".join(f"{w:.3f}" for w in rows[n]["walls"]) for n in rows) + ".")
    print("\n".join(lines), flush=True)
    if not a.no_results:
        write_results(a.results, lines)
        step(f"wrote {a.results}")


if __name__ == "__main__":
    main()
