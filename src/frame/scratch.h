// Scratch memory: allocated for one call, or carved out of a caller's block.
#ifndef QELCV_FRAME_SCRATCH_H_
#define QELCV_FRAME_SCRATCH_H_

#include <climits>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "qelcore.h"

namespace qel {

// Memory of `count` uninitialised elements, released on every way out. Null for a count below 1, a count beyond the
// allocator's range, and where there is no memory.
template <class T>
class Scratch {
    static_assert(std::is_trivially_destructible_v<T>);

public:
    explicit Scratch(int64_t count)
        : p_(count >= 1 && count <= int64_t{INT_MAX / int(sizeof(T))}
                 ? static_cast<T*>(qelMalloc(static_cast<int>(count * int64_t{sizeof(T)})))
                 : nullptr) {}
    ~Scratch() { qelFree(p_); }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    T* get() const { return p_; }
    // Leaves the memory to the caller, who releases it by qelFree.
    T* release() { return std::exchange(p_, nullptr); }
    explicit operator bool() const { return p_ != nullptr; }

private:
    T* p_;
};

// `p` rounded up to a multiple of `alignment`, a power of two.
inline char* alignUp(void* p, size_t alignment) {
    const uintptr_t address = reinterpret_cast<uintptr_t>(p);
    return static_cast<char*>(p) + (-address & (alignment - 1));
}

inline int64_t alignUp(int64_t bytes, int alignment) { return (bytes + alignment - 1) & -int64_t{alignment}; }

// Hands out consecutive pieces of a caller's block, whatever the block's own alignment. A layout is written once, as a
// function of a Carver: over a null block it adds up the bytes that a size query reports, over a caller's block it
// gives the pieces. bytes() counts the worst alignment of the block.
class Carver {
public:
    static constexpr int kAlignment = 16;

    explicit Carver(void* pBuffer, int alignment = kAlignment)
        : next_(pBuffer == nullptr ? nullptr : alignUp(pBuffer, alignment)), alignment_(alignment) {}

    template <class T>
    T* take(int64_t count) {
        const int64_t bytes = alignUp(count * int64_t{sizeof(T)}, alignment_);
        bytes_ += bytes;
        if (next_ == nullptr) return nullptr;
        char* const piece = next_;
        next_ += bytes;
        return reinterpret_cast<T*>(piece);
    }

    int64_t bytes() const { return bytes_ + alignment_; }

private:
    char* next_;
    int alignment_;
    int64_t bytes_ = 0;
};

// Rows of `samples` samples in a piece of scratch that has room for `room` samples: each begins `phase` samples behind
// a line of the cache, if there is room enough, else where the one before ends.
template <class T>
class ScratchRows {
public:
    ScratchRows(T* piece, int64_t room, int samples, int count, int phase = 0) : first_(piece), pitch_(samples) {
        constexpr int kLine = 64;
        T* const first = reinterpret_cast<T*>(alignUp(piece, size_t{kLine})) + phase;
        const int64_t pitch = alignUp(samples * int64_t{sizeof(T)}, kLine) / int64_t{sizeof(T)};
        if (first - piece + pitch * count > room) return;
        first_ = first;
        pitch_ = pitch;
    }

    T* operator[](int i) const { return first_ + static_cast<std::ptrdiff_t>(pitch_ * i); }

private:
    T* first_;
    int64_t pitch_;
};

// The place in a line of the cache, in samples, where rows begin that go with rows from p on sample by sample: their
// vectors are aligned where those of the other are.
template <class T>
int phaseOf(const void* p, int otherBytes) {
    constexpr int kLine = 64;
    return static_cast<int>(reinterpret_cast<uintptr_t>(p) / size_t(otherBytes) % (kLine / sizeof(T)));
}

// Ends a size query. A size that the caller's int cannot hold is an error rather than a number that wraps.
inline qelStatus writeBufferSize(int64_t bytes, int* pBufferSize) {
    if (bytes > INT_MAX) return qelStatusOverflow;
    *pBufferSize = static_cast<int>(bytes);
    return qelStatusOk;
}

}  // namespace qel

#endif
