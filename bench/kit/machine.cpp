#include "kit/machine.h"

#include <hwy/highway.h>
#include <hwy/targets.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "peers/opencv.h"
#include "qelcore.h"

namespace bench {
namespace {

std::string processorName() {
    std::ifstream info("/proc/cpuinfo");
    for (std::string line; std::getline(info, line);) {
        if (line.starts_with("model name")) return line.substr(line.find(": ") + 2);
    }
    return "unknown";
}

// Bytes of the first processor's data cache of a level. The C library's answer is a second choice: on some processors
// it adds up caches that no core sees together.
long cacheBytes(int level, int sysconfName, long atLeast) {
    const std::string caches = "/sys/devices/system/cpu/cpu0/cache/index";
    for (int index = 0; index < 8; ++index) {
        const auto read = [&](const char* what, auto value) {
            std::ifstream(caches + std::to_string(index) + what) >> value;
            return value;
        };
        if (read("/level", 0) != level || read("/type", std::string()) == "Instruction") continue;
        return std::max(read("/size", 0L) << 10, atLeast);
    }
    return std::max(sysconf(sysconfName), atLeast);
}

// As processor makers say it.
std::string nameOf(int64_t target) { return target == HWY_AVX3 ? "AVX-512" : hwy::TargetName(target); }

// Of the instruction sets that the library was compiled for, the newest that the machine offers. Newer ones are lower
// bits.
int64_t chooseTarget(const std::string& limit) {
    for (uint64_t candidates = hwy::SupportedTargets() & HWY_TARGETS; candidates != 0; candidates &= candidates - 1) {
        const int64_t target = int64_t(candidates & -candidates);
        if (!limit.empty() && limit != nameOf(target) && limit != hwy::TargetName(target)) continue;
        if (!limit.empty()) hwy::SetSupportedTargetsForTest(target);
        return target;
    }
    std::fprintf(stderr, "This machine or this build has no instruction set %s.\n", limit.c_str());
    std::exit(1);
}

}  // namespace

Machine identifyMachine(const std::string& instructionSet) {
    return {.processor = processorName(),
            .instructionSet = nameOf(chooseTarget(instructionSet)),
            .architecture = sizeof(void*) == 4 ? "i386" : "x86_64",
            .compiler = "g++ " __VERSION__,
            .peer = kPeerName,
            .threads = ownGetNumThreads(),
            .l1 = cacheBytes(1, _SC_LEVEL1_DCACHE_SIZE, 16 << 10),
            .l2 = cacheBytes(2, _SC_LEVEL2_CACHE_SIZE, 128 << 10),
            .l3 = cacheBytes(3, _SC_LEVEL3_CACHE_SIZE, 1 << 20)};
}

}  // namespace bench
