// Test images: rows with canaries between them, in guarded memory. The address sanitizer takes any access to the gaps
// for an error; without it, their contents differ from trial to trial.
#ifndef QELCV_TESTS_KIT_IMAGE_H_
#define QELCV_TESTS_KIT_IMAGE_H_

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <iomanip>
#include <limits>
#include <sstream>
#include <string>
#include <type_traits>

#include "kit/guarded_memory.h"
#include "kit/trial.h"

namespace kit {

template <class T>
class Image {
public:
    // An image of the trial's size, step, placement and contents.
    explicit Image(Trial& trial, int channels = 1) : Image(trial, trial.size, channels) {}
    Image(Trial& trial, QelSize size, int channels = 1)
        : Image(size, channels, rowBytes(size, channels) + padding(trial), placement(trial), trial.gapByte()) {
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width * channels; ++x) at(x, y) = trial.sample<T>();
        trial.note("step " + std::to_string(step_));
    }

    // An image whose samples are all `value`, with packed rows.
    Image(QelSize size, T value, int channels = 1) : Image(size, channels, rowBytes(size, channels), Placement()) {
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width * channels; ++x) at(x, y) = value;
    }

    // A copy of the samples, with the same step and a placement of its own.
    Image(const Image& other) : Image(other.size_, other.channels_, other.step_, Placement()) { assign(other); }
    Image& operator=(const Image&) = delete;

    T* data() { return reinterpret_cast<T*>(memory_.data()); }
    const T* data() const { return reinterpret_cast<const T*>(memory_.data()); }
    int step() const { return step_; }
    QelSize size() const { return size_; }
    int channels() const { return channels_; }

    // Sample x of row y; x counts samples, not pixels.
    T& at(int x, int y) {
        return *reinterpret_cast<T*>(memory_.data() + ptrdiff_t{step_} * y + ptrdiff_t(sizeof(T)) * x);
    }
    const T& at(int x, int y) const { return const_cast<Image*>(this)->at(x, y); }

    // True while nothing was written outside of the rows.
    bool gapsIntact() const {
        bool intact = memory_.surroundingsIntact();
        forGaps([&](size_t offset, size_t count) { intact &= memory_.isIntact(offset, count); });
        return intact;
    }

    // Other bytes between the rows and around them: what a call gives must not depend on them.
    void fillGaps(unsigned char byte) {
        memory_.changeCanary(byte);
        forGaps([this](size_t offset, size_t count) { memory_.refill(offset, count); });
    }

    // The samples of an image of the same size.
    void assign(const Image& other) {
        for (int y = 0; y < size_.height; ++y)
            std::memcpy(&at(0, y), &other.at(0, y), static_cast<size_t>(rowBytes(size_, channels_)));
    }

private:
    Image(QelSize size, int channels, int step, Placement placement, unsigned char gapByte = kCanary)
        : size_(size),
          channels_(channels),
          step_(step),
          memory_(size_t(step) * size_t(size.height - 1) + size_t(rowBytes(size, channels)), placement, gapByte) {
        forGaps([this](size_t offset, size_t count) { memory_.close(offset, count); });
        memory_.describe(std::to_string(size.width) + "x" + std::to_string(size.height) + ", " +
                         std::to_string(channels) + " channels of " + std::to_string(sizeof(T)) + " bytes, step " +
                         std::to_string(step));
    }

    // Calls visit(offset, count) for the bytes behind each row but the last.
    template <class Visit>
    void forGaps(const Visit& visit) const {
        const size_t row = size_t(rowBytes(size_, channels_));
        for (int y = 0; row < size_t(step_) && y + 1 < size_.height; ++y)
            visit(size_t(step_) * size_t(y) + row, size_t(step_) - row);
    }

    static int rowBytes(QelSize size, int channels) { return size.width * channels * static_cast<int>(sizeof(T)); }

    static int padding(Trial& trial) { return static_cast<int>(sizeof(T)) * (trial.coin() ? 0 : trial.between(1, 40)); }

    // Most images end at the guard; some start behind it or lie a few samples off, so that every alignment comes up.
    static Placement placement(Trial& trial) {
        switch (trial.between(0, 3)) {
            case 0:
                return {Placement::kStartsBehindGuard, 0};
            case 1:
                return {Placement::kStartsBehindGuard, sizeof(T) * size_t(trial.between(0, 63))};
            default:
                return {Placement::kEndsAtGuard, 0};
        }
    }

    QelSize size_;
    int channels_;
    int step_;
    GuardedMemory memory_;
};

// Scratch of exactly `bytes` bytes for a call, filled with garbage, at an address that is a multiple of nothing.
class ScratchBlock {
public:
    explicit ScratchBlock(int bytes, size_t distance = 1)
        : memory_(size_t(bytes), {Placement::kStartsBehindGuard, distance}), atEnd_(size_t(bytes)) {
        std::memset(memory_.data(), 0x5C, memory_.bytes());
        std::memset(atEnd_.data(), 0x5C, atEnd_.bytes());
    }
    // Starts behind the guard, at an odd address.
    unsigned char* odd() { return memory_.data(); }
    // Ends at the guard.
    unsigned char* flush() { return atEnd_.data(); }
    bool intact() const { return memory_.surroundingsIntact() && atEnd_.surroundingsIntact(); }

private:
    GuardedMemory memory_;
    GuardedMemory atEnd_;
};

// A sample with all of its digits, and the bits of a NaN.
template <class T>
std::string digits(T value) {
    std::ostringstream out;
    if constexpr (std::is_floating_point_v<T>) {
        out << std::setprecision(std::numeric_limits<T>::max_digits10) << value;
        if (std::isnan(value)) {
            uint64_t bits = 0;
            std::memcpy(&bits, &value, sizeof value);
            out << ':' << std::hex << bits;
        }
    } else if constexpr (std::is_arithmetic_v<T>) {
        out << +value;
    } else {
        out << value;
    }
    return out.str();
}

// Bit for bit: -0 and +0 differ, a NaN equals itself.
template <class T>
bool sameBits(const T& a, const T& b) {
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}

template <class T>
testing::AssertionResult sameBits(const Image<T>& want, const Image<T>& got) {
    int differing = 0;
    int firstX = 0;
    int firstY = 0;
    const int width = want.size().width * want.channels();
    for (int y = 0; y < want.size().height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (sameBits(want.at(x, y), got.at(x, y))) continue;
            if (differing++ == 0) firstX = x, firstY = y;
        }
    }
    if (differing == 0 && got.gapsIntact()) return testing::AssertionSuccess();
    if (differing == 0) return testing::AssertionFailure() << "bytes outside of the region were written";

    std::ostringstream wantLine, gotLine, markLine;
    const int from = std::max(0, firstX - 2);
    for (int x = from; x < std::min(width, from + 10); ++x) {
        const std::string w = digits(want.at(x, firstY));
        const std::string g = digits(got.at(x, firstY));
        const size_t cell = 1 + std::max(w.size(), g.size());
        const bool same = sameBits(want.at(x, firstY), got.at(x, firstY));
        wantLine << std::string(cell - w.size(), ' ') << w;
        gotLine << std::string(cell - g.size(), ' ') << g;
        markLine << std::string(cell - 1, ' ') << (same ? ' ' : '^');
    }
    return testing::AssertionFailure() << differing << " of " << width * want.size().height
                                       << " samples differ, the first at x " << firstX << ", y " << firstY
                                       << "\n  want " << wantLine.str() << "\n  got  " << gotLine.str() << "\n       "
                                       << markLine.str() << "\n";
}

// Calls twice, the second time with other bytes in the gaps of all images, and compares the results, which are in
// `result` or, in place, replace it.
template <class Call, class T, class... Inputs>
testing::AssertionResult ignoresGaps(const Call& call, Image<T>& result, Inputs&... inputs) {
    const Image<T> before(result);
    call();
    const Image<T> first(result);
    result.assign(before);
    result.fillGaps(0x01);
    (inputs.fillGaps(0xFE), ...);
    call();
    return sameBits(first, result) << "with other bytes between the rows";
}

}  // namespace kit

#endif
