#include "kit/bandwidth.h"

#include <omp.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#define HWY_TARGET_INCLUDE "kit/bandwidth.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace bench {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

uint32_t sum(const char* from, size_t bytes) {
    const hn::ScalableTag<uint32_t> d;
    const uint32_t* p = reinterpret_cast<const uint32_t*>(from);
    const size_t lanes = hn::Lanes(d);
    auto s0 = hn::Zero(d), s1 = s0, s2 = s0, s3 = s0;
    for (size_t i = 0; i + 4 * lanes <= bytes / sizeof(uint32_t); i += 4 * lanes) {
        s0 = hn::Add(s0, hn::LoadU(d, p + i));
        s1 = hn::Add(s1, hn::LoadU(d, p + i + lanes));
        s2 = hn::Add(s2, hn::LoadU(d, p + i + 2 * lanes));
        s3 = hn::Add(s3, hn::LoadU(d, p + i + 3 * lanes));
    }
    return hn::GetLane(hn::SumOfLanes(d, hn::Add(hn::Add(s0, s1), hn::Add(s2, s3))));
}

}  // namespace HWY_NAMESPACE
}  // namespace bench
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace bench {
namespace {

HWY_EXPORT(sum);

// Calls work(offset, bytes) for each thread's part.
template <class Work>
void inParts(size_t bytes, int threads, const Work& work) {
    if (threads == 1) return work(0, bytes);
#pragma omp parallel num_threads(threads)
    {
        const size_t part = (bytes / omp_get_num_threads() + 63) & ~size_t{63};
        const size_t offset = part * omp_get_thread_num();
        if (offset < bytes) work(offset, std::min(part, bytes - offset));
    }
}

}  // namespace

void copyMemory(char* to, const char* from, size_t bytes, int threads) {
    inParts(bytes, threads, [=](size_t offset, size_t part) { std::memcpy(to + offset, from + offset, part); });
}

void readMemory(const char* from, size_t bytes, int threads) {
    inParts(bytes, threads, [=](size_t offset, size_t part) {
        const uint32_t total = HWY_DYNAMIC_DISPATCH(sum)(from + offset, part);
        asm volatile("" ::"r"(total));
    });
}

}  // namespace bench
#endif
