#!/usr/bin/env python3
"""Checks the texts: code that is quoted from a file stands in that file, and links lead somewhere.

usage: check.py ROOT TEXT...

A quotation is a fenced block below a comment that names its file: <!-- quote: src/frame/check.h -->. It may be
indented otherwise than in the file; a line "..." stands for lines left out.
"""

import pathlib
import re
import sys
import textwrap

QUOTE = re.compile(r"<!-- quote: (\S+) -->\n+```\w*\n(.*?)^```$", re.DOTALL | re.MULTILINE)
CODE = re.compile(r"^```.*?^```$|`[^`\n]*`", re.DOTALL | re.MULTILINE)
LINK = re.compile(r"\]\(([^)#\s]*)(#[^)\s]*)?\)")


def anchors(text):
    """The names by which a text's headings are reached."""
    headings = re.findall(r"^#+ (.*)$", CODE.sub("", text), re.MULTILINE)
    return {"#" + re.sub(r"[^\w\- ]", "", heading.lower()).strip().replace(" ", "-") for heading in headings}


def problems(root, path):
    text = path.read_text()
    for source, quoted in QUOTE.findall(text):
        source_text = (root / source).read_text()
        lines = [line.strip() for line in source_text.splitlines()]
        position = 0
        for piece in re.split(r"^\s*\.\.\.\n", textwrap.dedent(quoted), flags=re.MULTILINE):
            wanted = [line.strip() for line in piece.strip("\n").splitlines()]
            starts = [i for i in range(position, len(lines)) if lines[i : i + len(wanted)] == wanted]
            if not starts:
                yield f"{source} has no such lines:\n{piece}"
                break
            position = starts[0] + len(wanted)
    for target, anchor in LINK.findall(CODE.sub("", text)):
        if "://" in target:
            continue
        other = path.parent / target if target else path
        if not other.exists():
            yield f"the link to {target} leads nowhere"
        elif anchor and anchor not in anchors(other.read_text()):
            yield f"{target or path.name} has no heading {anchor}"


def main():
    root = pathlib.Path(sys.argv[1])
    found = [f"{path}: {problem}" for path in map(pathlib.Path, sys.argv[2:]) for problem in problems(root, path)]
    print("\n".join(found) or "all quotations and links hold")
    return 1 if found else 0


sys.exit(main())
