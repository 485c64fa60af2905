#!/usr/bin/env python3
"""Finds exported functions without documentation, test, digest or benchmark. Names are spelled whole everywhere."""

import re
import sys
from pathlib import Path

from surface import declarations, header_text, visible_symbols

# It hands out a constant: there is nothing to measure.
NOT_BENCHMARKED = {"qelcvGetLibVersion"}


def words_of(directory, pattern):
    """All identifiers in the files of that name below a directory."""
    return {word for path in directory.rglob(pattern) for word in re.findall(r"\w+", path.read_text())}


def main():
    library, root = sys.argv[1], Path(sys.argv[2])
    exported = visible_symbols(library)
    documented = {name for name, documented in declarations(header_text(root / "include")) if documented}
    tested = words_of(root / "tests", "*_test.cpp")
    digested = {re.split("[: ]", line)[0] for line in (root / "tests/digests.txt").read_text().splitlines()}
    benchmarked = words_of(root / "bench", "*_bench.cpp")

    faults = {
        "without documentation": exported - documented,
        "without a test": exported - tested,
        "without a digest": exported - digested,
        # While there are no benchmarks at all, none is missing.
        "without a benchmark": exported - benchmarked - NOT_BENCHMARKED if exported & benchmarked else set(),
    }
    for fault, names in faults.items():
        for name in sorted(names):
            print(f"{fault}: {name}")
    counts = ", ".join(f"{len(names)} {fault}" for fault, names in faults.items())
    print(f"{len(exported)} functions: {counts}")
    return 1 if any(faults.values()) or not exported else 0


if __name__ == "__main__":
    sys.exit(main())
