// What Linux tells about its processors, read from the trees below /proc and /sys.
#ifndef QELCV_CORE_SYSTEM_H_
#define QELCV_CORE_SYSTEM_H_

#include <sched.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace qel {

struct Free {
    void operator()(void* p) const { std::free(p); }
};

// A set of processors, for any number of them.
class CpuSet {
public:
    explicit CpuSet(int capacity = 0);

    int capacity() const { return bits_ ? static_cast<int>(bytes_ * 8) : 0; }
    size_t bytes() const { return bits_ ? bytes_ : 0; }
    cpu_set_t* bits() const { return bits_.get(); }

    int count() const { return bits_ ? CPU_COUNT_S(bytes_, bits_.get()) : 0; }
    bool has(int cpu) const { return bits_ && CPU_ISSET_S(cpu, bytes_, bits_.get()); }
    void add(int cpu) {
        if (bits_) CPU_SET_S(cpu, bytes_, bits_.get());
    }

private:
    size_t bytes_;
    std::unique_ptr<cpu_set_t, Free> bits_;
};

// The processors that the process may run on. Empty where the system does not tell.
CpuSet allowedCpus();

// The functions below take the directory that stands for "/".

// Processors' worth of time that the control groups of this process grant it, rounded up; INT_MAX without a limit.
int cpuQuota(const char* root);

// Physical cores among `cpus`: those of the die that has most of them. 0 where the topology of one is not known.
int coresOnLargestDie(const char* root, const CpuSet& cpus);

// Bytes of the largest cache that any of `cpus` has, at most INT_MAX; 0 where none is known.
int largestCacheBytes(const char* root, const CpuSet& cpus);

}  // namespace qel

#endif
