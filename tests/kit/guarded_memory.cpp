#include "kit/guarded_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <vector>

namespace kit {
namespace {

size_t pageSize() {
    static const size_t size = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    return size;
}

// Mappings are kept and used again: a test asks for thousands.
std::map<size_t, std::vector<unsigned char*>>& spareMappings() {
    static std::map<size_t, std::vector<unsigned char*>> spare;
    return spare;
}

constexpr size_t kLargestSpare = size_t{1} << 20;

unsigned char* mapGuarded(size_t accessible) {
    std::vector<unsigned char*>& spare = spareMappings()[accessible];
    if (!spare.empty()) {
        unsigned char* const pages = spare.back();
        spare.pop_back();
        return pages;
    }
    const size_t page = pageSize();
    void* const all = mmap(nullptr, accessible + 2 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    unsigned char* const pages = static_cast<unsigned char*>(all) + page;
    if (all == MAP_FAILED || mprotect(pages, accessible, PROT_READ | PROT_WRITE) != 0) {
        std::perror("no memory for a test image");
        std::abort();
    }
    return pages;
}

void unmapGuarded(unsigned char* pages, size_t accessible) {
    if (accessible <= kLargestSpare) {
        spareMappings()[accessible].push_back(pages);
    } else {
        munmap(pages - pageSize(), accessible + 2 * pageSize());
    }
}

bool allCanary(const unsigned char* begin, const unsigned char* end) {
    return std::all_of(begin, end, [](unsigned char byte) { return byte == kCanary; });
}

}  // namespace

GuardedMemory::GuardedMemory(size_t bytes, Placement placement)
    : bytes_(bytes),
      pages_(nullptr),
      accessible_((bytes + placement.distance + pageSize() - 1) / pageSize() * pageSize()),
      data_(nullptr) {
    accessible_ = std::max(accessible_, pageSize());
    pages_ = mapGuarded(accessible_);
    const bool atEnd = placement.edge == Placement::kEndsAtGuard;
    data_ = atEnd ? pages_ + accessible_ - bytes - placement.distance : pages_ + placement.distance;
    std::memset(pages_, kCanary, accessible_);
}

GuardedMemory::~GuardedMemory() { unmapGuarded(pages_, accessible_); }

bool GuardedMemory::surroundingsIntact() const {
    return allCanary(pages_, data_) && allCanary(data_ + bytes_, pages_ + accessible_);
}

}  // namespace kit
