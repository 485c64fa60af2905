// What a family's benchmark file needs: images, competitors, and the list of its rows. README.md shows a whole file.
#ifndef QELCV_BENCH_KIT_BENCH_H_
#define QELCV_BENCH_KIT_BENCH_H_

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <memory>
#include <type_traits>
#include <vector>

#include "qelcv/types.h"

namespace bench {

// A region of pixels, each of `channels` interleaved samples, in an image that belongs to a Case.
template <class T>
struct Image {
    T* data;
    int step;
    QelSize size;
    int channels;

    T* row(int y) const { return reinterpret_cast<T*>(reinterpret_cast<char*>(data) + std::ptrdiff_t{step} * y); }
};

// An image of a Case. Without a size it has the Case's; `border` pixels around the region exist, too.
struct Shape {
    QelSize size = {};
    int channels = 1;
    int border = 0;
};

// Where images begin, in bytes from a line of the cache, and how long their steps are. Large blocks of malloc begin 16
// bytes off a line, and a region begins anywhere.
struct Place {
    const char* name;
    int offset;
    bool mixed;  // each image begins 16 bytes further than the one before it; no step is a multiple of a line
};

// Random bits, the same on every run.
class Noise {
public:
    explicit Noise(uint32_t seed) : state_(seed * 2654435769u | 1) {}
    uint32_t next() {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 17;
        return state_ ^= state_ << 5;
    }
    // Integers take any value; floating-point samples lie in [0, 256) and have a fraction.
    template <class T>
    void fill(T* p, size_t count) {
        for (size_t i = 0; i < count; ++i) {
            if constexpr (std::is_floating_point_v<T>) {
                p[i] = static_cast<T>(next() >> 8) / 65536;
            } else {
                p[i] = static_cast<T>(next() >> 8);
            }
        }
    }

private:
    uint32_t state_;
};

// Calls the benchmarked function `n` times.
using Runs = std::function<void(int n)>;

// One function at one size: the images it works on, and what competes over them.
//
// A row's setup function is run twice, by two builds of its file: at -O3, which gives all competitors, and at -O2,
// which adds that build's plain loop. The second run is handed the images of the first in their order.
class Case {
public:
    enum class Build { O3, O2 };

    explicit Case(QelSize size, Place place = {"0", 0, false}) : size_(size), place_(place) {}
    Case(const Case&) = delete;
    Case& operator=(const Case&) = delete;

    // The region's size. Images are of this size unless their shape says otherwise.
    QelSize size() const { return size_; }

    // Images of noise that the function reads, writes, or both. Their bytes count as moved.
    template <class T>
    Image<T> input(Shape shape = {}) {
        return image<T>(shape, 1, 0);
    }
    template <class T>
    Image<T> output(Shape shape = {}) {
        return image<T>(shape, 0, 1);
    }
    template <class T>
    Image<T> update(Shape shape = {}) {
        return image<T>(shape, 1, 1);
    }

    // A mask that selects every other pixel on average.
    Image<Qel8u> mask(Shape shape = {});

    // Numbers that the function writes, such as a norm. They are compared, but do not count as moved.
    template <class T>
    T* values(int count) {
        return image<T>({.size = {count, 1}}, 0, 0, {"0", 0, false}).data;
    }

    // Memory of any contents, not compared.
    char* scratch(size_t bytes);

    // An object that ends with the case: keep(state, qeliSomethingFree).
    template <class T, class Release>
    T* keep(T* object, Release release) {
        kept_.emplace_back(object, release);
        return object;
    }

    // Results of floating point may differ by this much, relative to the larger one. Without it, bits are compared.
    void tolerance(double relative) { tolerance_ = relative; }

    // What one call handles, where that is not the pixels of the region: points, say.
    void elements(double count) { elements_ = count; }

    // The competitors, as functions without arguments. `ours` may return the status, which must not be an error.
    template <class F>
    void ours(F f) {
        if (build_ == Build::O3) ours_ = looped(f, &failed_);
    }
    template <class F>
    void plain(F f) {
        (build_ == Build::O3 ? plainO3_ : plainO2_) = looped(f, &failed_);
    }
    template <class F>
    void peer(F f) {
        if (build_ == Build::O3) peer_ = looped(f, &failed_);
    }

private:
    friend class Contest;

    using Close = bool(const void* a, const void* b, size_t bytes, double tolerance);
    struct Block {
        std::unique_ptr<char, decltype(&std::free)> memory;
        size_t bytes;
        char* first;  // sample of the region
        Close* close;
    };

    template <class T>
    static bool close(const void* a, const void* b, size_t bytes, double tolerance) {
        const T* x = static_cast<const T*>(a);
        const T* y = static_cast<const T*>(b);
        for (size_t i = 0; i < bytes / sizeof(T); ++i) {
            if (std::memcmp(x + i, y + i, sizeof(T)) == 0) continue;
            const double distance = std::abs(double(x[i]) - double(y[i]));
            if (!(distance <= tolerance * std::fmax(std::abs(double(x[i])), std::abs(double(y[i]))))) return false;
        }
        return true;
    }

    // The pause between calls keeps the compiler from joining them.
    template <class F>
    static Runs looped(F f, bool* failed) {
        return [f, failed](int n) {
            F call = f;  // NOLINT(performance-unnecessary-copy-initialization): it may change what it captured
            for (int i = 0; i < n; ++i) {
                if constexpr (std::is_same_v<decltype(call()), qelStatus>) {
                    *failed |= call() < qelStatusOk;
                } else {
                    call();
                }
                asm volatile("" ::: "memory");
            }
        };
    }

    static constexpr int kLine = 64;

    static int stepOf(int rowBytes, Place place) {
        if (!place.mixed) return (rowBytes + kLine - 1) & -kLine;
        const int step = (rowBytes + 15) & -16;
        return step % kLine == 0 ? step + 16 : step;
    }

    template <class T>
    Image<T> image(Shape shape, int reads, int writes) {
        return image<T>(shape, reads, writes, place_);
    }
    template <class T>
    Image<T> image(Shape shape, int reads, int writes, Place place) {
        const QelSize size = shape.size.width == 0 ? size_ : shape.size;
        const int rowBytes = (size.width + 2 * shape.border) * shape.channels * int(sizeof(T));
        const int step = stepOf(rowBytes, place);
        const size_t border = size_t(step) * shape.border + shape.border * shape.channels * sizeof(T);
        moved_ += double(size.width) * size.height * shape.channels * sizeof(T) * (reads + writes);
        writes_ |= writes != 0;
        if (build_ == Build::O3) {
            Block& block = allocate(size_t(step) * (size.height + 2 * shape.border), border, place);
            Noise(uint32_t(blocks_.size())).fill(reinterpret_cast<T*>(block.memory.get()), block.bytes / sizeof(T));
            block.close = close<T>;
        }
        return {reinterpret_cast<T*>(blocks_[replayed_++].first), step, size, shape.channels};
    }

    Block& allocate(size_t bytes, size_t border, Place place);

    QelSize size_;
    Place place_;
    Build build_ = Build::O3;
    std::vector<Block> blocks_;
    size_t replayed_ = 0;
    std::vector<std::shared_ptr<void>> kept_;
    double moved_ = 0;
    bool writes_ = false;
    double elements_ = 0;
    double tolerance_ = 0;
    bool failed_ = false;
    Runs ours_, plainO3_, plainO2_, peer_;
};

// An exported function and what sets up its competition. Functions that do not work on pixels are called at one size.
enum class Sizes { All, One };
struct Row {
    const char* name;
    void (*setup)(Case&);
    Sizes sizes = Sizes::All;
};

// The rows of one build of one file.
struct Rows {
    Rows(Case::Build build, std::initializer_list<Row> rows);
};

}  // namespace bench

// Lists a file's rows. All else in the file stands in an unnamed namespace, since the program holds two builds of it.
#define BENCH_ROWS(...) static const bench::Rows benchRows(bench::Case::Build::QEL_BENCH_BUILD, {__VA_ARGS__})

#endif
