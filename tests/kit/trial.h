// One random case. Sizes, steps, placements, contents and thread count all follow from the seed, so a printed seed is
// all it takes to run the case again.
#ifndef QELCV_TESTS_KIT_TRIAL_H_
#define QELCV_TESTS_KIT_TRIAL_H_

#include <cstdint>
#include <iosfwd>
#include <limits>
#include <random>
#include <string>
#include <type_traits>

#include "qelcv/types.h"

namespace kit {

// The kinds of content an image is filled with, by turns.
enum class Content { kRandom, kLowest, kHighest, kEnds, kSpecial };

// The seeds of a run of trials, or the one that the program was told to repeat by --seed=N, if it is among them:
//
//     for (const uint32_t seed : kit::seeds(300)) {
//         kit::Trial trial(seed);
class Seeds {
public:
    class Iterator {
    public:
        explicit Iterator(uint32_t seed) : seed_(seed) {}
        uint32_t operator*() const { return seed_; }
        Iterator& operator++() {
            ++seed_;
            return *this;
        }
        bool operator!=(const Iterator& other) const { return seed_ != other.seed_; }

    private:
        uint32_t seed_;
    };

    Seeds(uint32_t first, uint32_t end) : first_(first), end_(end) {}
    Iterator begin() const { return Iterator(first_); }
    Iterator end() const { return Iterator(end_); }

private:
    uint32_t first_;
    uint32_t end_;
};
Seeds seeds(uint32_t count);
void repeatOnly(uint32_t seed);

class Trial {
public:
    // A small region: the first seeds go through every width up to kEveryWidth, later ones are random.
    explicit Trial(uint32_t seed);
    // A region of this size.
    Trial(uint32_t seed, QelSize size, int threads = 1);
    ~Trial();
    Trial(const Trial&) = delete;
    Trial& operator=(const Trial&) = delete;

    // Twice the samples of the widest vector, plus 3.
    static constexpr int kEveryWidth = 2 * 64 + 3;

    QelSize size;
    int threads;

    // A number between the two, both included.
    int between(int low, int high);
    bool coin() { return between(0, 1) != 0; }

    // A sample of the trial's kind of content, or of any kind.
    template <class T>
    T sample() {
        return sampleOf<T>(content_);
    }
    template <class T>
    T anySample() {
        return sampleOf<T>(Content::kRandom);
    }

    // Fixes the content of the images that follow.
    void setContent(Content content) { content_ = content; }

    // What the gaps of its images hold.
    unsigned char gapByte() const { return static_cast<unsigned char>(0xA5 ^ (seed_ * 0x5B)); }

    // Adds to what a failure prints, beside the seed, the region, and what libqelcore's double reports at that time.
    void note(const std::string& text) { notes_ += ", " + text; }

    friend std::ostream& operator<<(std::ostream& out, const Trial& trial);
    std::string text() const;

private:
    template <class T>
    T sampleOf(Content content);
    Qel32f specialFloat();

    uint32_t seed_;
    std::mt19937 random_;
    Content content_;
    std::string notes_;
};

template <class T>
T Trial::sampleOf(Content content) {
    using Limits = std::numeric_limits<T>;
    if constexpr (std::is_floating_point_v<T>) {
        switch (content) {
            case Content::kLowest:
                return T(-1000);
            case Content::kHighest:
                return T(1000);
            case Content::kEnds:
                return (coin() ? T(1e30) : T(-1e30)) / T(between(1, 9));
            case Content::kSpecial:
                return specialFloat();
            case Content::kRandom:
                break;
        }
        return T(between(-1 << 20, 1 << 20)) / T(between(1, 1 << 12));
    } else {
        switch (content) {
            case Content::kLowest:
                return Limits::min();
            case Content::kHighest:
                return Limits::max();
            case Content::kEnds:
                return coin() ? T(Limits::min() + between(0, 3)) : T(Limits::max() - between(0, 3));
            default:
                return static_cast<T>(random_());
        }
    }
}

}  // namespace kit

#endif
