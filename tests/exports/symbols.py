#!/usr/bin/env python3
"""Compares the visible symbols of a library with the list of names that it may show, and with its headers."""

import argparse
import sys
from collections import Counter
from pathlib import Path

from surface import declarations, header_text, visible_symbols


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--complete", action="store_true", help="every name of the list must be there")
    parser.add_argument("library")
    parser.add_argument("list", help="file with a name per line")
    parser.add_argument("headers", help="a header, or a directory of headers")
    arguments = parser.parse_args()

    names = Counter(Path(arguments.list).read_text().split())
    declared = Counter(name for name, _ in declarations(header_text(arguments.headers)))
    visible = visible_symbols(arguments.library)
    missing = names.keys() - visible

    faults = {
        "twice in the list": [name for name, count in names.items() if count > 1],
        "declared twice": [name for name, count in declared.items() if count > 1],
        "visible, not in the list": visible - names.keys(),
        "visible, not declared": visible - declared.keys(),
        "declared, not visible": declared.keys() - visible,
        "missing": missing if arguments.complete else [],
    }
    for fault, culprits in faults.items():
        for name in sorted(culprits):
            print(f"{fault}: {name}")
    print(f"{len(names.keys() & visible)} of {len(names)} exported, {len(missing)} missing")
    return 1 if any(faults.values()) or not visible else 0


if __name__ == "__main__":
    sys.exit(main())
