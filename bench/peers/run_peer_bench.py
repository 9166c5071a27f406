#!/usr/bin/env python3
"""Times calvex-qc-render against the other report generators in one bench.py run.

python3 standard library only. Steps, each printed as it runs:

1. installs the peers' Debian packages (install-peers.sh; skipped with --no-install);
2. configures (Release) and builds calvex-qc-render and calvex-bench-load-peer-data
   in --build (default: build-release in the repository; --no-build takes them as built);
3. copies the peers' folder (default: ../shared/peers beside the repository) to
   bench/out/peers, since bench.py writes its data files beside itself, and
   generates data-N.sqlite there with the peers' gen_data.py (Debian's python3);
4. loads each data file into a suite database bench/out/suite/suite-N.sqlite with
   the QC subject QC-001 and the saved PF definition "Peer Benchmark" (the nine
   variables in graph and table), plus a registry key file suite-N.reg naming it;
5. runs the peers' bench.py with our renderer as the extra tool "ours": the whole
   period (no --from) up to 12/31/2024, NORRIX_REGISTRY pointing at suite-N.reg;
6. writes bench/results.md: bench.py's medians per tool and N, the ratios of ours
   to the fastest peer, and the targets (5x faster at N=1000, 2x at N=10000, less
   peak memory than every peer at every N) as measured.

  python3 bench/peers/run_peer_bench.py                      # N = 100 1000 10000, 3 runs each
  python3 bench/peers/run_peer_bench.py --sizes 100 1000 --reps 5 --no-install
"""
import argparse
import json
import os
import shlex
import shutil
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
REPO = os.path.dirname(os.path.dirname(HERE))
SYS_PY = "/usr/bin/python3"  # Debian's python3, the one python3-matplotlib is installed for
SUBJECT = "QC-001"
DEFINITION = "Peer Benchmark"
LAST_DAY = "12/31/2024"  # gen_data.py's last visit
FLOOR_PREFIX = "floor-"
OURS = "ours"


def step(text):
    print(f"== {text}", flush=True)


def run(cmd, **kwargs):
    print("   $ " + shlex.join(cmd), flush=True)
    subprocess.run(cmd, check=True, **kwargs)


def build_tools(build_dir, build):
    if build:
        if not os.path.exists(os.path.join(build_dir, "CMakeCache.txt")):
            run(["cmake", "-S", REPO, "-B", build_dir, "-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release",
                 "-DCALVEX_BUILD_BENCH=ON"])
        run(["cmake", "--build", build_dir, "--target", "calvex-qc-render", "calvex-bench-load-peer-data"])
    binaries = os.path.join(build_dir, "bin")
    return os.path.join(binaries, "calvex-qc-render"), os.path.join(binaries, "calvex-bench-load-peer-data")


def copy_peers(source, target):
    """The peers' scripts, copied afresh; data files already generated there stay."""
    os.makedirs(target, exist_ok=True)
    for name in os.listdir(source):
        path = os.path.join(source, name)
        if os.path.isfile(path) and not name.endswith(".sqlite"):
            shutil.copy2(path, os.path.join(target, name))


def ours_command(renderer, suite_dir):
    registry = os.path.join(suite_dir, "suite-{n}.reg")
    return shlex.join(["env", "NORRIX_REGISTRY=" + registry, renderer, "--tab", "PF", "--report", DEFINITION,
                       "--subject", SUBJECT, "--to", LAST_DAY, "--out", "{pdf}"])


def is_peer(tool):
    return tool != OURS and not tool.startswith(FLOOR_PREFIX)


def ratio(value, reference):
    return value / reference if reference else float("nan")


LAB_SECTION = "## Lab-scale database"

def write_results(path, data, sizes, command_line, load_before, load_after):
    rows = data["results"]
    by_n = {n: [r for r in rows if r["n"] == n] for n in sizes}
    lines = []
    add = lines.append
    add("# Peer benchmark: calvex-qc-render against the other report generators")
    add("")
    add(f"Measured {time.strftime('%Y-%m-%d %H:%M')} with `{command_line}`, which runs the peers' "
        f"`bench.py` ({data['reps']} runs per tool and N, medians; one untimed warm-up run per tool first). "
        "Wall time and peak RSS come from `/usr/bin/time -v` (wall has 10 ms resolution; RSS is the largest "
        "process of a tool's process tree); pages from `pdfinfo`. Figures are as measured on a shared machine, "
        "where other work slows the tools down, not necessarily alike: the load average (1, 5, 15 minutes) was "
        f"{load_before} when the run began and {load_after} when it ended. Compare within one run, by the ratios.")
    add("")
    add("Machine and tools:")
    add("")
    for key, value in data["env"].items():
        add(f"- {key}: {value}")
    add("")
    add("Method: `gen_data.py --n N` writes one subject (QC-001) with N daily visits of 9 variables; "
        "`calvex-bench-load-peer-data` loads the same file into a suite database (SQLite) with the saved PF "
        f"definition \"{DEFINITION}\" showing the nine variables in graph and table with the file's decimals. "
        f"`ours` is `calvex-qc-render --tab PF --report \"{DEFINITION}\" --subject {SUBJECT} --to {LAST_DAY} "
        "--out FILE.pdf` (the whole period) with `NORRIX_REGISTRY` naming that database: the whole process, "
        "from start through the database reads to the closed PDF. Our report is on Letter paper and fits all "
        "ten table columns on a page (3 chart pages + ceil(N/rows) table pages); the peers print A4 with five "
        "variable columns a page, so they have more table pages.")
    add("")
    add("| N | tool | wall s | CPU s | peak RSS MiB | pages | PDF KiB | wall / fastest peer | "
        "RSS / smallest peer |")
    add("|---:|---|---:|---:|---:|---:|---:|---:|---:|")
    verdicts = []
    for n in sizes:
        peers = [r for r in by_n[n] if is_peer(r["tool"])]
        ours = next((r for r in by_n[n] if r["tool"] == OURS), None)
        fastest = min(peers, key=lambda r: r["wall_s"]) if peers else None
        smallest = min(peers, key=lambda r: r["rss_mb"]) if peers else None
        for r in sorted(by_n[n], key=lambda r: (r["tool"] != OURS, r["wall_s"])):
            if not is_peer(r["tool"]) and r["tool"] != OURS:
                continue
            size = "-" if r["pdf_bytes"] is None else str(round(r["pdf_bytes"] / 1024))
            wall_ratio = f"{ratio(r['wall_s'], fastest['wall_s']):.2f}" if fastest else "-"
            rss_ratio = f"{ratio(r['rss_mb'], smallest['rss_mb']):.2f}" if smallest else "-"
            add(f"| {n} | {r['tool']} | {r['wall_s']:.2f} | {r['cpu_s']:.2f} | {r['rss_mb']:.1f} | "
                f"{r['pages'] or '-'} | {size} | {wall_ratio} | {rss_ratio} |")
        if ours and fastest:
            speedup = ratio(fastest["wall_s"], ours["wall_s"])
            line = (f"N={n}: ours {ours['wall_s']:.2f} s, fastest peer {fastest['tool']} {fastest['wall_s']:.2f} s: "
                    f"{speedup:.1f}x faster")
            target = {1000: 5.0, 10000: 2.0}.get(n)
            if target:
                line += f" (target {target:.0f}x: {'met' if speedup >= target else 'NOT met'})"
            below = all(ours["rss_mb"] < p["rss_mb"] for p in peers)
            line += (f"; peak RSS {ours['rss_mb']:.1f} MiB against the smallest peer's "
                     f"{smallest['rss_mb']:.1f} MiB ({smallest['tool']}): "
                     f"{'below every peer' if below else 'NOT below every peer'}")
            verdicts.append(line)
    add("")
    add("Targets, as measured in this run:")
    add("")
    for line in verdicts:
        add(f"- {line}")
    floors = [r for r in rows if r["tool"].startswith(FLOOR_PREFIX)]
    if floors:
        add("")
        add("Floors (what only starting a tool or only reading the data costs): " + "; ".join(
            f"{r['tool']}{'' if r['n'] is None else '@' + str(r['n'])} {r['wall_s']:.2f} s, {r['rss_mb']:.1f} MiB"
            for r in floors) + ".")
    add("")
    add("All runs (wall s): " + "; ".join(
        f"{r['tool']}@{r['n'] or '-'}: " + ", ".join(f"{x['wall_s']:.2f}" for x in r["runs"]) for r in rows) + ".")
    # Sections other benchmarks keep in the same file stay: the import and
    # the batch benchmarks' (each between its markers) and the lab-scale
    # benchmark's (from its heading to the end).
    kept = ""
    if os.path.exists(path):
        with open(path) as f:
            old = f.read()
        for name in ("import", "batch"):
            begin, end = f"<!-- {name} benchmark: begin -->", f"<!-- {name} benchmark: end -->"
            if begin in old and end in old:
                kept += "\n" + old[old.index(begin):old.index(end) + len(end)] + "\n"
        if LAB_SECTION in old:
            kept += "\n" + old[old.index(LAB_SECTION):]
    with open(path, "w") as f:
        f.write("\n".join(lines) + "\n" + kept)


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--sizes", type=int, nargs="+", default=[100, 1000, 10000])
    ap.add_argument("--reps", type=int, default=3)
    ap.add_argument("--tools", nargs="+", help="bench.py's tools (default: all of them)")
    ap.add_argument("--build", default=os.path.join(REPO, "build-release"), help="CMake build folder")
    ap.add_argument("--peers", default=os.path.join(os.path.dirname(REPO), "shared", "peers"),
                    help="the peers' folder (read only)")
    ap.add_argument("--out", default=os.path.join(REPO, "bench", "out"), help="working folder (ignored by git)")
    ap.add_argument("--results", default=os.path.join(REPO, "bench", "results.md"))
    ap.add_argument("--no-install", action="store_true", help="do not install the peers' packages")
    ap.add_argument("--no-build", action="store_true", help="use the programs as built in --build")
    a = ap.parse_args()

    if not a.no_install:
        step("peer packages")
        run(["sh", os.path.join(HERE, "install-peers.sh")])

    step("calvex-qc-render and the data loader")
    renderer, loader = build_tools(os.path.abspath(a.build), not a.no_build)
    for program in (renderer, loader):
        if not os.access(program, os.X_OK):
            sys.exit(f"{program} is not built")

    step("peer data files")
    peers_dir = os.path.join(a.out, "peers")
    suite_dir = os.path.join(a.out, "suite")
    copy_peers(a.peers, peers_dir)
    os.makedirs(suite_dir, exist_ok=True)
    for n in a.sizes:
        data = os.path.join(peers_dir, f"data-{n}.sqlite")
        if not os.path.exists(data):
            run([SYS_PY, os.path.join(peers_dir, "gen_data.py"), "--n", str(n), "--out", data])
        run([loader, data, os.path.join(suite_dir, f"suite-{n}.sqlite"), os.path.join(suite_dir, f"suite-{n}.reg")])

    step("bench.py")
    load_before = ", ".join(f"{x:.1f}" for x in os.getloadavg())
    raw_results = os.path.join(a.out, "bench-py-results.md")
    cmd = [SYS_PY, os.path.join(peers_dir, "bench.py"), "--sizes"] + [str(n) for n in a.sizes]
    cmd += ["--reps", str(a.reps), "--outdir", os.path.join(a.out, "pdf"), "--results", raw_results]
    if a.tools:
        cmd += ["--tools"] + a.tools
    cmd += ["--extra", f"{OURS}={ours_command(renderer, suite_dir)}"]
    run(cmd)

    load_after = ", ".join(f"{x:.1f}" for x in os.getloadavg())
    with open(os.path.splitext(raw_results)[0] + ".json") as f:
        data = json.load(f)
    command_line = "python3 bench/peers/run_peer_bench.py " + " ".join(shlex.quote(x) for x in sys.argv[1:])
    write_results(a.results, data, a.sizes, command_line.strip(), load_before, load_after)
    step(f"wrote {a.results}")
    print(f"   (bench.py's own tables: {raw_results})")


if __name__ == "__main__":
    main()
