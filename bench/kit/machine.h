// What the numbers were measured on.
#ifndef QELCV_BENCH_KIT_MACHINE_H_
#define QELCV_BENCH_KIT_MACHINE_H_

#include <string>

namespace bench {

struct Machine {
    std::string processor;
    std::string instructionSet;
    std::string architecture;
    std::string compiler;
    std::string peer;
    int threads;
    long l1, l2, l3;  // bytes of data caches, as one core sees them
};

// Also sees to it that no newer instruction set than `instructionSet` is used, unless that is empty. Ends the program
// where the machine has no such set. To be called ahead of every kernel.
Machine identifyMachine(const std::string& instructionSet);

}  // namespace bench

#endif
