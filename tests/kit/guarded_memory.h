// Memory between two inaccessible pages: the first byte out of bounds ends the test with a page fault.
#ifndef QELCV_TESTS_KIT_GUARDED_MEMORY_H_
#define QELCV_TESTS_KIT_GUARDED_MEMORY_H_

#include <cstddef>

namespace kit {

constexpr unsigned char kCanary = 0xA5;

// Where the bytes lie in their pages.
struct Placement {
    enum Edge { kEndsAtGuard, kStartsBehindGuard } edge = kEndsAtGuard;
    size_t distance = 0;  // bytes between them and the guard; filled with the canary
};

class GuardedMemory {
public:
    explicit GuardedMemory(size_t bytes, Placement placement = {});
    ~GuardedMemory();
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    unsigned char* data() const { return data_; }
    size_t bytes() const { return bytes_; }

    // True while the accessible bytes around data() still hold the canary.
    bool surroundingsIntact() const;

private:
    size_t bytes_;
    unsigned char* pages_;  // first accessible byte
    size_t accessible_;
    unsigned char* data_;
};

}  // namespace kit

#endif
