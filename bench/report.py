#!/usr/bin/env python3
"""Writes the performance report from what `qelcv_bench --json` wrote: report.py A.json B.json > docs/performance.md"""

import json
import sys

INTRODUCTION = """\
# Performance

Made by `bench/report.py` from the results of `make bench`. All functions were timed turn by turn with what they
compete with, on the same images, and every ratio is the median over the turns. *plain* is the scalar loop that a C++
programmer would write, compiled by the same compiler for the library's baseline (SSSE3), at `-O3`, where the compiler
vectorises it, and at `-O2`; *OpenCV* is its nearest function, on as many threads as ours. The figure is how many times
as long as ours they take on one thread: more is better, below 1 they are ahead. *of copy* is the rate at which ours
moves the bytes of its images, relative to `memcpy` of as many bytes in the same run; *of read*, for functions that
write no image, relative to a vector sum; more is better. Columns of sizes but 16×16 are in ns per pixel (or element) on
one thread: less is better. *threads*, where it was measured, is the speed-up at 1920×1080 by all threads of the
machine. Each turn repeats the call, for at least 1 ms and on large images 5 ms, after one that does not count: every
function finds its images where its own calls leave them.

The images of all competitors begin at 0, 16, 32 and 48 bytes from a line of the cache by turns, with steps that are
multiples of a line, and at different ones with steps that are not. Of two figures the first holds where images begin at
a line, the second at the worst place: our longest time, and the ratio where the other one comes closest.
"""

BOUNDS = """\

## What binds

Found on the machine of the tables below, with AVX-512 at 4.1 GHz; ns are per pixel.

- **Pairs of pipelines, 8u16s.** Conversions and stores up to 3 taps (rows 0.04 ns, columns 0.025 ns in the nearest
  cache), from 5 taps on multiplications. C3 at 1920×1080 moves 19 MB, and each line of the result twice, since no store
  of 16s bypasses the cache.
- **Pairs of pipelines, 32f.** Three and five taps: the calls (40 ns for both halves, each four rows) and the way to the
  third cache. Nine and more: arithmetic, a product and a sum for each tap in either half, without fusing, and a shuffle
  for each tap along rows. At four of these a cycle, 16 samples of 9 and 15 taps take 6.5 and 11 cycles across and 4.5
  and 7.5 down. C3 at 1920×1080 moves 50 MB: a plain copy is 2.3 times as fast as OpenCV's filter of 3 taps there.
- **Fixed kernels.** The caches: a turn of the engine takes as many rows as stay in the nearest cache. 3×3 32f moves
  its images at 77 to 84 % of the rate of copying at 640×480 and 61 to 78 % at 1920×1080, where a single row goes
  through the ring at a time (the Laplacian: 68 and 56 %); the results are read into the cache before they are
  written, so little more is possible. Rows too long for that go in stripes of columns: 5×5 32f at 1920×1080, the
  Laplacian. Images beyond the caches go whole, because memory is read ahead along rows. They are asked for ahead of
  their turn, 8u images already while the columns of the turn before it are formed, and their results bypass the
  caches: 3×3 moves them at 59 % (8u8s Laplacian), 60 and 65 % (the other Laplacians; 8u8s Scharr, vertical) or 75 %
  and more (all others) of the rate of copying.
- **Gaussian.** As the pairs of pipelines. Only its half along rows runs on threads.
- **Means and deviations of 32f.** `qeliMean_32f_C1MR` adds in a fixed order in four chains, 0.48 ns per addition: at
  64×64 all of its time, as in the unmasked deviations. `qeliMean_32f_C3CMR` is a single chain, avoided where no
  addition can round; then it runs at the rate of reading.
- **L2 of 16u.** Blocks of 32 samples in single precision: 62 vector operations for 128 samples at 64×64.
- **Extremes, norms and deviations of C3 32f.** Reading: 12 bytes per pixel of which 4 count.
- **Accumulators and colour gradients.** Copying: they move their images at 100 % to 250 % of the rate of `memcpy`.
"""

COLUMNS = ["Function", "16×16", "plain -O3", "64×64", "plain -O3", "plain -O2", "OpenCV", "640×480", "plain -O3",
           "OpenCV", "1920×1080", "plain -O3", "OpenCV", "threads", "memory", "of copy/read"]


def number(value, unit=""):
    if not value:
        return ""
    digits = 3 if value < 0.1 else 2 if value < 10 else 1 if value < 100 else 0
    return f"{value:.{digits}f}{unit}"


def pair(aligned, worst, unit=""):
    """Both figures, or one where they read alike."""
    first, second = number(aligned), number(worst)
    return (first if first == second or not second else f"{first} · {second}") + (unit if first else "")


def row(name, results):
    """The cells of a function, from its results by size and thread count."""
    empty = dict.fromkeys(["nsPerCall", "nsPerElement", "plainO3", "plainO2", "peer", "gigabytesPerSecond",
                           "shareOfLimit"], 0) | {"places": []}

    def at(size, threads=1):
        return results.get((size, threads), empty)

    def time(size, per="nsPerElement", unit=""):
        result = at(size)
        longest = max((place["nsPerCall"] for place in result["places"]), default=0)
        scale = result[per] / result["nsPerCall"] if result["nsPerCall"] else 0
        return pair(result[per], longest * scale, unit)

    def ratio(size, other):
        result = at(size)
        return pair(result[other], min((place[other] for place in result["places"]), default=0), "×")

    most = max(threads for _, threads in results)
    hd, all_threads = at("1920x1080"), at("1920x1080", most)
    speedup = hd["nsPerCall"] / all_threads["nsPerCall"] if most > 1 and all_threads["nsPerCall"] else 0
    return [f"`{name}`", time("16x16", "nsPerCall", " ns"), ratio("16x16", "plainO3"), time("64x64"),
            ratio("64x64", "plainO3"), ratio("64x64", "plainO2"), ratio("64x64", "peer"), time("640x480"),
            ratio("640x480", "plainO3"), ratio("640x480", "peer"), time("1920x1080"), ratio("1920x1080", "plainO3"),
            ratio("1920x1080", "peer"), number(speedup, "×"), number(at("memory")["gigabytesPerSecond"], " GB/s"),
            number(at("memory")["shareOfLimit"] * 100, " %")]


def section(report):
    machine = report["machine"]
    functions = {}
    for result in report["results"]:
        functions.setdefault(result["name"], {})[result["size"], result["threads"]] = result
    peer = f", {machine['peer']}" if machine["peer"] else ""
    yield f"\n## {machine['architecture']}\n"
    yield (f"{machine['processor']}, {machine['instructionSet']}, {machine['threads']} threads, caches of "
           f"{machine['l1'] >> 10} KB, {machine['l2'] >> 10} KB and {machine['l3'] >> 10} KB; "
           f"{machine['compiler']}{peer}.\n")
    table = [COLUMNS] + [row(name, results) for name, results in functions.items()]
    measured = [i for i in range(len(COLUMNS)) if any(cells[i] for cells in table[1:])]
    table.insert(1, ["---"] + ["---:"] * (len(COLUMNS) - 1))
    for cells in table:
        yield "| " + " | ".join(cells[i] for i in measured) + " |"
    wrong = sorted({r["name"] for r in report["results"] if not r["agrees"]})
    if wrong:
        yield "\n**Differing from the plain loop:** " + ", ".join(wrong)
    differing = sorted({r["name"] for r in report["results"] if not r["peerAgrees"]})
    if differing:
        yield "\nOpenCV's result differs for: " + ", ".join(f"`{name}`" for name in differing) + "."


def main(paths):
    if not paths:
        sys.exit(__doc__)
    print(INTRODUCTION + BOUNDS, end="")
    for path in paths:
        with open(path, encoding="utf-8") as file:
            print("\n".join(section(json.load(file))))


main(sys.argv[1:])
