#include <climits>
#include <cstdlib>

#include "qelcore.h"

namespace {

// A cache line, and the widest vector.
constexpr size_t kAlignment = 64;

}  // namespace

void* qelMalloc(int bytes) {
    if (bytes < 1 || bytes > INT_MAX - int(kAlignment) + 1) return nullptr;
    const size_t rounded = (static_cast<size_t>(bytes) + kAlignment - 1) & ~(kAlignment - 1);
    return std::aligned_alloc(kAlignment, rounded);
}

void qelFree(void* p) { std::free(p); }
