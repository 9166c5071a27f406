#!/usr/bin/env python3
"""Compares the pages of a night's batch written by two builds of calvex-qc-render.

python3 standard library, pdftotext, pdftoppm and pdffonts (poppler-utils). Each renderer writes the whole
night (`--all --subjects-file FILE --to DATE --out-dir DIR`, with --today pinned so that the pages' print
date is the same) into a folder of its own; then, for every PDF file of the night, the two files must have:

- the same words at the same places (`pdftotext -bbox`, the document's creation date left out);
- the same page images (`pdftoppm` at --dpi, 100 by default, compared pixel for pixel);
- the same fonts (`pdffonts`: name, type, encoding, embedded, subset; object numbers left out).

File bytes may differ (compression, object order). Exit status 0 when every report is the same, 1 otherwise.

  NORRIX_REGISTRY=bench/out/batch/demo.reg python3 bench/batch/compare_night_pages.py \\
      --before /tmp/old/calvex-qc-render --after build/bin/calvex-qc-render \\
      --subjects-file bench/out/batch/peer-data/subjects.txt
"""
import argparse
import hashlib
import os
import re
import shutil
import subprocess
import sys
import tempfile


def render_night(renderer, subjects_file, to, today, out_dir):
    shutil.rmtree(out_dir, ignore_errors=True)
    env = dict(os.environ, QT_QPA_PLATFORM="offscreen")
    subprocess.run([renderer, "--all", "--subjects-file", subjects_file, "--to", to, "--today", today,
                    "--out-dir", out_dir], check=True, env=env, stdout=subprocess.DEVNULL)
    return sorted(n for n in os.listdir(out_dir) if n.endswith(".pdf"))


def words(pdf):
    text = subprocess.run(["pdftotext", "-bbox", pdf, "-"], check=True, capture_output=True, text=True).stdout
    return re.sub(r'<meta name="CreationDate"[^>]*>', "", text)


def fonts(pdf):
    lines = subprocess.run(["pdffonts", pdf], check=True, capture_output=True, text=True).stdout.splitlines()
    # The columns up to "uni"; the object numbers may differ.
    return [" ".join(line.split()[:-2]) for line in lines[2:]]


def page_images(pdf, dpi, folder):
    prefix = os.path.join(folder, "page")
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    subprocess.run(["pdftoppm", "-r", str(dpi), pdf, prefix], check=True)
    return [hashlib.sha256(open(os.path.join(folder, n), "rb").read()).hexdigest()
            for n in sorted(os.listdir(folder))]


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--before", required=True, help="the renderer whose pages are the reference")
    ap.add_argument("--after", required=True, help="the renderer to compare with it")
    ap.add_argument("--subjects-file", required=True)
    ap.add_argument("--to", default="06/30/2026")
    ap.add_argument("--today", default="07/01/2026", help="the print date on the pages of both")
    ap.add_argument("--dpi", type=int, default=100)
    ap.add_argument("--work", help="working folder (default: a temporary one)")
    a = ap.parse_args()

    work = a.work or tempfile.mkdtemp(prefix="calvex-night-pages-")
    before = render_night(a.before, a.subjects_file, a.to, a.today, os.path.join(work, "before"))
    after = render_night(a.after, a.subjects_file, a.to, a.today, os.path.join(work, "after"))
    if before != after:
        print(f"the nights wrote different files: {sorted(set(before) ^ set(after))}")
        return 1
    differ = 0
    pages = 0
    for name in before:
        old = os.path.join(work, "before", name)
        new = os.path.join(work, "after", name)
        problems = []
        if words(old) != words(new):
            problems.append("words (pdftotext -bbox)")
        if fonts(old) != fonts(new):
            problems.append("fonts (pdffonts)")
        old_pages = page_images(old, a.dpi, os.path.join(work, "png-before"))
        new_pages = page_images(new, a.dpi, os.path.join(work, "png-after"))
        pages += len(old_pages)
        if old_pages != new_pages:
            problems.append(f"page images at {a.dpi} dpi ({len(old_pages)} against {len(new_pages)} pages)")
        status = "differs: " + ", ".join(problems) if problems else "same"
        print(f"{name}: {len(old_pages)} pages, {os.path.getsize(old)} -> {os.path.getsize(new)} bytes, {status}")
        differ += bool(problems)
    print(f"{len(before)} reports, {pages} pages: {len(before) - differ} the same, {differ} different")
    return 1 if differ else 0


if __name__ == "__main__":
    sys.exit(main())
