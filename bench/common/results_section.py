"""A benchmark's own section of bench/results.md, written in place."""

import os
import re


def write_section(path, section, begin_mark, end_mark, before=None):
    """Puts section (the text from begin_mark to end_mark, ending with a new line) into the file at path: in place
    of the section between the same marks when the file has one, else before the line `before` when given and in the
    file, else at the end. The rest of the file is kept as it is."""
    text = open(path).read() if os.path.exists(path) else ""
    if begin_mark in text and end_mark in text:
        head = text[:text.index(begin_mark)]
        tail = text[text.index(end_mark) + len(end_mark):].lstrip("\n")
        text = head + section + ("\n" + tail if tail else "")
    elif before and before in text:
        at = text.index(before)
        text = text[:at] + section + "\n" + text[at:]
    else:
        text = text.rstrip("\n") + ("\n\n" if text else "") + section
    with open(path, "w") as f:
        f.write(text)


def build_type(build_dir):
    """The CMAKE_BUILD_TYPE of a build folder, as a section names it."""
    try:
        with open(os.path.join(build_dir, "CMakeCache.txt")) as f:
            m = re.search(r"^CMAKE_BUILD_TYPE:\w+=(\S*)", f.read(), re.M)
    except OSError:
        return "unknown"
    return (m.group(1) if m else "") or "unknown"
