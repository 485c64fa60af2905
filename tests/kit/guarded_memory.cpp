#include "kit/guarded_memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/asan_interface.h>
#endif

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

#ifdef __SANITIZE_ADDRESS__
void poison(const unsigned char* p, size_t bytes) { __asan_poison_memory_region(p, bytes); }
void unpoison(const unsigned char* p, size_t bytes) { __asan_unpoison_memory_region(p, bytes); }
#else
void poison(const unsigned char*, size_t) {}
void unpoison(const unsigned char*, size_t) {}
#endif

// These two reach what is closed to all others, which a call of the standard library could not.
__attribute__((no_sanitize("address"))) bool all(const unsigned char* begin, const unsigned char* end,
                                                 unsigned char canary) {
    for (; begin != end; ++begin)
        if (*begin != canary) return false;
    return true;
}

__attribute__((no_sanitize("address"))) void fill(unsigned char* begin, const unsigned char* end,
                                                  unsigned char canary) {
    for (; begin != end; ++begin) *const_cast<volatile unsigned char*>(begin) = canary;
}

// All that there are, the oldest first. Tests make them on one thread.
std::vector<const GuardedMemory*>& alive() {
    static std::vector<const GuardedMemory*> list;
    return list;
}

}  // namespace

GuardedMemory::GuardedMemory(size_t bytes, Placement placement, unsigned char canary)
    : bytes_(bytes),
      pages_(nullptr),
      accessible_((bytes + placement.distance + pageSize() - 1) / pageSize() * pageSize()),
      data_(nullptr),
      canary_(canary) {
    accessible_ = std::max(accessible_, pageSize());
    pages_ = mapGuarded(accessible_);
    const bool atEnd = placement.edge == Placement::kEndsAtGuard;
    data_ = atEnd ? pages_ + accessible_ - bytes - placement.distance : pages_ + placement.distance;
    std::memset(pages_, canary_, accessible_);
    poison(pages_, size_t(data_ - pages_));
    poison(data_ + bytes_, accessible_ - bytes_ - size_t(data_ - pages_));
    alive().push_back(this);
}

GuardedMemory::~GuardedMemory() {
    alive().erase(std::find(alive().rbegin(), alive().rend(), this).base() - 1);
    unpoison(pages_, accessible_);
    unmapGuarded(pages_, accessible_);
}

bool GuardedMemory::surroundingsIntact() const {
    return all(pages_, data_, canary_) && all(data_ + bytes_, pages_ + accessible_, canary_);
}

void GuardedMemory::close(size_t offset, size_t count) { poison(data_ + offset, count); }

bool GuardedMemory::isIntact(size_t offset, size_t count) const {
    return all(data_ + offset, data_ + offset + count, canary_);
}

void GuardedMemory::changeCanary(unsigned char canary) {
    canary_ = canary;
    fill(pages_, data_, canary_);
    fill(data_ + bytes_, pages_ + accessible_, canary_);
}

void GuardedMemory::refill(size_t offset, size_t count) { fill(data_ + offset, data_ + offset + count, canary_); }

std::string GuardedMemory::whereIs(const void* address) {
    const unsigned char* const p = static_cast<const unsigned char*>(address);
    for (size_t i = 0; i < alive().size(); ++i) {
        const GuardedMemory& m = *alive()[i];
        if (p < m.pages_ - pageSize() || p >= m.pages_ + m.accessible_ + pageSize()) continue;
        const ptrdiff_t ahead = m.data_ - p;
        const ptrdiff_t behind = p - (m.data_ + m.bytes_) + 1;
        const std::string place = ahead > 0    ? std::to_string(ahead) + " bytes before"
                                  : behind > 0 ? std::to_string(behind) + " bytes behind the end of"
                                               : "byte " + std::to_string(-ahead) + " of";
        return place + " memory " + std::to_string(i + 1) + " of " + std::to_string(alive().size()) + " (" +
               (m.description_.empty() ? std::to_string(m.bytes_) + " bytes" : m.description_) + ")";
    }
    return "";
}

}  // namespace kit
