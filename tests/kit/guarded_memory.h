// Memory between two inaccessible pages: the first byte out of bounds ends the test with a page fault. What of the
// pages it leaves over is closed to the address sanitizer.
#ifndef QELCV_TESTS_KIT_GUARDED_MEMORY_H_
#define QELCV_TESTS_KIT_GUARDED_MEMORY_H_

#include <cstddef>
#include <string>

namespace kit {

constexpr unsigned char kCanary = 0xA5;

// Where the bytes lie in their pages.
struct Placement {
    enum Edge { kEndsAtGuard, kStartsBehindGuard } edge = kEndsAtGuard;
    size_t distance = 0;  // bytes between them and the guard; filled with the canary
};

class GuardedMemory {
public:
    explicit GuardedMemory(size_t bytes, Placement placement = {}, unsigned char canary = kCanary);
    ~GuardedMemory();
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;

    unsigned char* data() const { return data_; }
    size_t bytes() const { return bytes_; }

    // True while the accessible bytes around data() still hold the canary.
    bool surroundingsIntact() const;

    // Bytes within data() that nothing may touch, and whether they still hold the canary.
    void close(size_t offset, size_t count);
    bool isIntact(size_t offset, size_t count) const;

    // Fills the surroundings and all that was closed with another canary. The caller names what was closed once more.
    void changeCanary(unsigned char canary);
    void refill(size_t offset, size_t count);

    // What a stray access is told to be close to.
    void describe(std::string text) { description_ = std::move(text); }

    // Where an address lies: on which side of which memory, and how far off; empty where it is far from all.
    static std::string whereIs(const void* address);

private:
    size_t bytes_;
    unsigned char* pages_;  // first accessible byte
    size_t accessible_;
    unsigned char* data_;
    unsigned char canary_;
    std::string description_;
};

}  // namespace kit

#endif
