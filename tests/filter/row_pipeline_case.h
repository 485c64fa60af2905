// Random calls of a row pipeline, and what they must give: models that are written from the documented rules, with the
// arithmetic of each zone of a row spelled out.
#ifndef QELCV_TESTS_FILTER_ROW_PIPELINE_CASE_H_
#define QELCV_TESTS_FILTER_ROW_PIPELINE_CASE_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "kit/checks.h"
#include "kit/core_double.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/filter.h"

namespace rows {

template <class K>
struct Kernel {
    std::vector<K> taps;
    int anchor;
    int size() const { return int(taps.size()); }
};

// The place of a result in its row.
struct Place {
    bool interior;
    int index;  // among the samples of the interior
    int count;  // samples of the interior
    int width;  // pixels of the row
};

// The pixel that stands at x, which may lie outside of 0..width-1, or -1 for the constant: found by walking.
inline int extendedPixel(int mode, int x, int width) {
    if (x >= 0 && x < width) return x;
    int at = x < 0 ? 0 : width - 1;
    int direction = x < 0 ? 1 : -1;
    int steps = x < 0 ? -x : x - (width - 1);
    switch (mode) {
        case qelBorderConst:
            return -1;
        case qelBorderRepl:
            return at;
        case qelBorderWrap:
            for (; steps > 0; --steps) at = x < 0 ? (at + width - 1) % width : (at + 1) % width;
            return at;
        case qelBorderMirr:
            if (width == 1) return 0;
            for (; steps > 0; --steps) {
                if (at + direction < 0 || at + direction >= width) direction = -direction;
                at += direction;
            }
            return at;
        default:
            for (; steps > 1; --steps) {
                if (at + direction < 0 || at + direction >= width) {
                    direction = -direction;
                } else {
                    at += direction;
                }
            }
            return at;
    }
}

inline int saturated16s(int64_t v) { return int(std::clamp<int64_t>(v, -32768, 32767)); }
inline int truncated16s(float v) { return int(std::fmin(std::fmax(v, -32768.0F), 32767.0F)); }

// A float as the processor converts it to an integer: to nearest, ties to even, and to the lowest one beyond the range.
inline int32_t nearest32s(float v) {
    if (!(v >= -2147483648.0F && v < 2147483648.0F)) return INT32_MIN;
    return int32_t(std::nearbyint(double(v)));
}

// Memory for the rows of a result: each at any byte, in any order, some of them for several slots of the list.
template <class T>
class RowList {
public:
    RowList(kit::Trial& trial, int rowSamples, bool repeats)
        : samples_(rowSamples),
          distance_(rowSamples * int(sizeof(T)) + (trial.coin() ? 0 : trial.between(1, 33))),
          memory_(size_t(distance_) * size_t(trial.size.height - 1) + size_t(rowSamples) * sizeof(T),
                  {trial.coin() ? kit::Placement::kEndsAtGuard : kit::Placement::kStartsBehindGuard,
                   size_t(trial.coin() ? 0 : trial.between(0, 63))}) {
        std::memset(memory_.data(), kit::kCanary, memory_.bytes());
        const int height = trial.size.height;
        std::vector<int> order(static_cast<size_t>(height));
        for (int i = 0; i < height; ++i) order[size_t(i)] = i;
        for (int i = height - 1; i > 0; --i) std::swap(order[size_t(i)], order[size_t(trial.between(0, i))]);
        if (repeats) {
            const int ring = trial.between(1, height);
            for (int i = ring; i < height; ++i) order[size_t(i)] = order[size_t(i % ring)];
        }
        for (const int i : order) pointers_.push_back(reinterpret_cast<T*>(memory_.data() + ptrdiff_t{distance_} * i));
    }

    T* const* list() const { return pointers_.data(); }
    T* operator[](int y) const { return pointers_[size_t(y)]; }
    void forget(int y) { pointers_[size_t(y)] = nullptr; }

    // The last slot that a row stands in decides what it holds.
    bool isLast(int y) const {
        return std::find(pointers_.begin() + y + 1, pointers_.end(), pointers_[size_t(y)]) == pointers_.end();
    }

    bool untouched(int y) const {
        const unsigned char* const bytes = reinterpret_cast<const unsigned char*>(pointers_[size_t(y)]);
        return std::all_of(bytes, bytes + size_t(samples_) * sizeof(T),
                           [](unsigned char c) { return c == kit::kCanary; });
    }

    bool gapsIntact() const {
        const size_t rowBytes = size_t(samples_) * sizeof(T);
        for (size_t i = rowBytes; i + rowBytes < memory_.bytes(); ++i)
            if (i % size_t(distance_) >= rowBytes && memory_.data()[i] != kit::kCanary) return false;
        return memory_.surroundingsIntact();
    }

private:
    int samples_;
    int distance_;
    kit::GuardedMemory memory_;
    std::vector<T*> pointers_;
};

// A source whose samples may begin at any byte.
template <class T>
class Source {
public:
    Source(kit::Trial& trial, int channels)
        : image_(trial, channels),
          odd_(size_t(image_.step()) * size_t(trial.size.height - 1) + size_t(trial.size.width) * channels * sizeof(T),
               {kit::Placement::kStartsBehindGuard, 1}),
          moved_(sizeof(T) > 1 && trial.coin()) {
        for (int y = 0; moved_ && y < trial.size.height; ++y)
            std::memcpy(odd_.data() + ptrdiff_t{image_.step()} * y, &image_.at(0, y),
                        size_t(trial.size.width) * size_t(channels) * sizeof(T));
    }
    const T* data() const { return moved_ ? reinterpret_cast<const T*>(odd_.data()) : image_.data(); }
    int step() const { return image_.step(); }
    T at(int x, int y) const { return image_.at(x, y); }

private:
    kit::Image<T> image_;
    kit::GuardedMemory odd_;
    bool moved_;
};

template <class T>
bool equal(T a, T b) {
    if constexpr (std::is_floating_point_v<T>) {
        if (std::isnan(a) && std::isnan(b)) return true;  // which of several NaNs comes through is not promised
    }
    return std::memcmp(&a, &b, sizeof(T)) == 0;
}

// Kernels of all kinds of size and symmetry; 3 and 5 taps have code of their own.
template <class K>
Kernel<K> randomKernel(kit::Trial& trial) {
    const int sizes[] = {3, 3, 5, 5, trial.between(1, 9), trial.between(1, 31)};
    const int size = sizes[trial.between(0, 5)];
    const int kind = trial.between(0, 5);
    Kernel<K> kernel{std::vector<K>(size_t(size)), trial.coin() ? size / 2 : trial.between(0, size - 1)};
    for (K& k : kernel.taps) {
        if constexpr (std::is_floating_point_v<K>) {
            k = K(trial.between(-999, 999)) / K(trial.between(1, 300));
            if (kind == 3 && trial.between(0, 4) == 0) k = trial.coin() ? K(NAN) : K(-0.0);
        } else {
            k = K(kind == 0   ? trial.between(-20, 20)
                  : kind == 1 ? trial.between(0, 64)
                  : kind == 2 ? (trial.coin() ? -32768 : 32767)
                  : kind == 3 ? trial.between(65534 / size - 1, 65535 / size + 1) / (size == 1 ? 2 : 1)
                              : trial.between(-32768, 32767));
        }
    }
    const int symmetry = trial.between(0, 3);
    for (size_t i = 0; symmetry < 2 && i < kernel.taps.size() / 2; ++i)
        kernel.taps[kernel.taps.size() - 1 - i] = symmetry == 0 ? kernel.taps[i] : K(-kernel.taps[i]);
    if (symmetry == 1 && size % 2 == 1 && trial.coin()) kernel.taps[size_t(size / 2)] = 0;
    return kernel;
}

inline int randomDivisor(kit::Trial& trial) {
    const int divisors[] = {1, 1, 3, 16, 16, -7, 1024, 20000, -1, trial.between(2, 300)};
    return divisors[trial.between(0, 9)];
}

// The types and the functions of a form. What derives from it adds the model.
template <class T, class Out, class K, int channels, auto function, auto bufferSize>
struct FormOf {
    using Sample = T;
    using Result = Out;
    using Coefficient = K;
    static constexpr int kChannels = channels;

    static qelStatus getBufferSize(QelSize size, int taps, int* bytes) { return bufferSize(size, taps, bytes); }

    static qelStatus call(const auto& c, Qel8u* pBuffer) {
        const auto run = [&](auto... tail) {
            return function(c.source.data(), c.source.step(), c.list.list(), c.size, c.kernel.taps.data(),
                            c.kernel.size(), c.kernel.anchor, c.mode, tail..., pBuffer);
        };
        const auto withBorder = [&](auto border) {
            if constexpr (std::is_floating_point_v<T>) {
                return run(border);
            } else {
                return run(border, c.divisor);
            }
        };
        if constexpr (channels == 1) {
            return withBorder(c.border[0]);
        } else {
            return withBorder(c.border);
        }
    }
};

// One call of a form: its types, its functions, and Form::model(samples, kernel, divisor, place), which gives a result
// from the samples under the kernel.
template <class Form>
class Case {
public:
    using T = typename Form::Sample;
    using Out = typename Form::Result;
    using K = typename Form::Coefficient;

    Case(kit::Trial& trial, Kernel<K> kernel, bool repeats)
        : size(trial.size),
          kernel(std::move(kernel)),
          mode(trial.between(0, 4)),
          divisor(randomDivisor(trial)),
          source(trial, Form::kChannels),
          list(trial, size.width * Form::kChannels, repeats) {
        for (T& v : border) v = trial.sample<T>();
        describe(trial);
    }

    qelStatus call() {
        int bytes = 0;
        const qelStatus status = Form::getBufferSize(size, kernel.size(), &bytes);
        if (status != qelStatusOk) return status;
        kit::ScratchBlock scratch(bytes, size_t(kernel.size() % 32));
        const qelStatus result = Form::call(*this, size.width % 2 == 0 ? scratch.odd() : scratch.flush());
        EXPECT_TRUE(scratch.intact());
        return result;
    }

    Out want(int x, int y) const {
        constexpr int kChannels = Form::kChannels;
        const int pixel = x / kChannels;
        under.clear();
        for (int i = 0; i < kernel.size(); ++i) {
            const int from = extendedPixel(mode, pixel - kernel.anchor + i, size.width);
            under.push_back(from < 0 ? border[x % kChannels] : source.at(from * kChannels + x % kChannels, y));
        }
        const int inside = size.width - kernel.size() + 1;
        const Place place = {pixel >= kernel.anchor && pixel < kernel.anchor + inside, x - kernel.anchor * kChannels,
                             std::max(inside, 0) * kChannels, size.width};
        return Form::model(*this, under, place);
    }

    void checkRows(const kit::Trial& trial, int rows) const {
        for (int y = 0; y < rows; ++y) {
            if (!list.isLast(y)) continue;
            for (int x = 0; x < size.width * Form::kChannels; ++x) {
                Out got;
                std::memcpy(&got, reinterpret_cast<const char*>(list[y]) + size_t(x) * sizeof(Out), sizeof(Out));
                ASSERT_TRUE(equal(want(x, y), got))
                    << trial << "\nsample " << x << " of row " << y << ": want " << want(x, y) << ", got " << got;
            }
        }
        ASSERT_TRUE(list.gapsIntact()) << trial << ": bytes outside of the rows were written";
    }

    QelSize size;
    Kernel<K> kernel;
    int mode;
    int divisor;
    T border[3];
    Source<T> source;
    RowList<Out> list;

private:
    mutable std::vector<T> under;  // the samples under the kernel

    void describe(kit::Trial& trial) const {
        std::string text = "mode " + std::to_string(mode) + ", divisor " + std::to_string(divisor) + ", anchor " +
                           std::to_string(kernel.anchor) + ", kernel";
        for (const K k : kernel.taps) text += " " + std::to_string(k);
        trial.note(text);
    }
};

template <class Form>
void agrees(kit::Trial& trial, Kernel<typename Form::Coefficient> kernel, bool repeats = false) {
    Case<Form> c(trial, std::move(kernel), repeats);
    ASSERT_EQ(qelStatusOk, c.call()) << trial;
    c.checkRows(trial, trial.size.height);
}

template <class Form>
void agreesOnSmallRegions() {
    for (uint32_t seed = 0; seed < 350; ++seed) {
        kit::Trial trial(seed);
        trial.size.height = std::min(trial.size.height, 8);
        kit::core().cacheSize = seed % 3 == 0 ? 0 : 1 << 22;
        ASSERT_NO_FATAL_FAILURE(agrees<Form>(trial, randomKernel<typename Form::Coefficient>(trial), seed % 5 == 0));
    }
}

// Every width up to 70 under every anchor and border mode that comes up, for each small number of taps.
template <class Form>
void agreesAroundTheKernelsWidth() {
    uint32_t seed = 0;
    for (int taps = 1; taps <= 8; ++taps) {
        for (int width = 1; width <= 2 * taps + 24; ++width) {
            kit::Trial trial(seed++, {width, 2});
            auto kernel = randomKernel<typename Form::Coefficient>(trial);
            kernel.taps.resize(size_t(taps), typename Form::Coefficient(seed % 7));
            kernel.anchor = trial.between(0, taps - 1);
            ASSERT_NO_FATAL_FAILURE(agrees<Form>(trial, kernel));
        }
    }
}

// Kernels beyond what is written for them, on rows wider and narrower than they are.
template <class Form>
void agreesWithLargeKernels() {
    uint32_t seed = 0;
    for (const int taps : {49, 50, 64, 200, 333}) {
        for (const int width : {1, 7, taps - 2, taps, taps + 20, 2 * taps}) {
            kit::Trial trial(seed++, {width, 2});
            Kernel<typename Form::Coefficient> kernel{{}, trial.between(0, taps - 1)};
            for (int i = 0; i < taps; ++i) kernel.taps.push_back(typename Form::Coefficient(trial.between(-9, 9)));
            ASSERT_NO_FATAL_FAILURE(agrees<Form>(trial, kernel));
        }
    }
}

// Areas that take the parallel path, of few and of many rows, under teams of every kind.
template <class Form>
void agreesInParallel() {
    uint32_t seed = 0;
    for (const int threads : {1, 2, 3, 33}) {
        const int area = threads * 0x8000;
        for (const QelSize size : {QelSize{area / 3 + 1, 3}, {area / 2, 2}, {area, 1}, {311, area / 311 + 1}}) {
            if (threads == 33 && (Form::kChannels > 1 || size.height != 3)) continue;
            kit::Trial trial(seed, size, threads);
            const int taps[] = {3, 5, 4};
            auto kernel = randomKernel<typename Form::Coefficient>(trial);
            kernel.taps.resize(size_t(taps[seed++ % 3]));
            kernel.anchor = kernel.size() / 2;
            ASSERT_NO_FATAL_FAILURE(agrees<Form>(trial, kernel));
        }
    }
}

// Which rows are written beside a null pointer tells the path: the first thread of two stops at once, the second one
// goes on.
template <class Form>
bool runsInParallel(QelSize size, int taps, int threads, int cores) {
    kit::Trial trial(0, size, threads);
    kit::core().cores = cores;
    Kernel<typename Form::Coefficient> kernel{std::vector<typename Form::Coefficient>(size_t(taps)), 0};
    Case<Form> c(trial, kernel, false);
    const int last = size.height - 1;
    const typename Form::Result* const lastRow = c.list[last];
    c.list.forget(0);
    EXPECT_EQ(qelStatusNullPointer, c.call()) << trial;
    EXPECT_EQ(lastRow, c.list[last]);
    return !c.list.untouched(last);
}

// For two threads, the least area that takes the parallel path, and less.
constexpr QelSize kAtLimit = {0x8000, 2};
constexpr QelSize kBelowLimit = {0x8000 - 1, 2};

// Rows ahead of a null pointer are written, the ones behind it are not.
template <class Form>
void stopsAtNullRows(int width, int taps) {
    for (const int null : {0, 1, 3, 4}) {
        kit::Trial trial(uint32_t(null), {width, 5});
        using K = typename Form::Coefficient;
        Case<Form> c(trial, Kernel<K>{std::vector<K>(size_t(taps), K(1)), taps / 2}, false);
        c.list.forget(null);
        EXPECT_EQ(qelStatusNullPointer, c.call()) << trial;
        ASSERT_NO_FATAL_FAILURE(c.checkRows(trial, null));
        for (int y = null + 1; y < 5; ++y) EXPECT_TRUE(c.list.untouched(y)) << trial << ", row " << y;
    }
}

// Both forms with any number of taps.
template <class C1, class C3>
void bothStopAtNullRows() {
    for (const int taps : {1, 3, 5, 7}) {
        stopsAtNullRows<C1>(40, taps);
        stopsAtNullRows<C3>(40, taps);
    }
}

// Threads share a region from the limit on, and none below it, whatever the cores.
template <class Form>
void runsInParallelFromLimit() {
    for (const int taps : {2, 3, 4, 5}) {
        EXPECT_TRUE(runsInParallel<Form>(kAtLimit, taps, 2, 1));
        EXPECT_FALSE(runsInParallel<Form>(kBelowLimit, taps, 2, 2));
    }
}

// The faults of a form with a divisor, beyond those of all forms.
template <class Checks>
void reportsFaultsOfC1(Checks& checks) {
    checks.template fault<7>("mode 5", qelStatusBadArg, 5)
        .template fault<7>("mode -1", qelStatusBadArg, -1)
        .template fault<9>("divisor 0", qelStatusBadArg, 0)
        .run();
}
template <class Checks>
void reportsFaultsOfC3(Checks& checks) {
    checks.template channels<0>(3)
        .template value<7>(qelBorderConst)
        .template notAnImage<8>()
        .template optional<8>()
        .template fault<7>("mode 5", qelStatusBadArg, 5)
        .template fault<7>("mode -1", qelStatusBadArg, -1)
        .template fault<8>("pBorderValue null", qelStatusNullPointer, nullptr)
        .template fault<9>("divisor 0", qelStatusBadArg, 0)
        .run();
}

// The size query: its value by the formula, its errors, its range.
template <class Form>
void tellsBufferSize(int64_t perTap, int64_t fixed) {
    int bytes = -1;
    EXPECT_EQ(qelStatusNullPointer, Form::getBufferSize({0, 1}, 0, nullptr));
    for (const QelSize bad : {QelSize{0, 1}, {1, 0}, {-5, 5}, {5, -5}})
        EXPECT_EQ(qelStatusBadSize, Form::getBufferSize(bad, 3, &bytes));
    EXPECT_EQ(qelStatusBadSize, Form::getBufferSize({1, 1}, 0, &bytes));
    EXPECT_EQ(-1, bytes);
    for (const int threads : {1, 2, 33}) {
        kit::core().threads = threads;
        for (const QelSize size : {QelSize{1, 1}, {4000, 3}, {3, 4000}, {INT_MAX, 100000}}) {
            for (const int taps : {1, 2, 3, 5, 31, 1000}) {
                const int64_t rows = int64_t{size.height} + taps;
                const int64_t want =
                    threads * 32 + rows * threads * int64_t{sizeof(void*)} + threads * (taps * perTap + fixed);
                ASSERT_EQ(qelStatusOk, Form::getBufferSize(size, taps, &bytes));
                ASSERT_EQ(want, bytes) << taps << " taps";
            }
        }
        bytes = -1;
        EXPECT_EQ(qelStatusOverflow, Form::getBufferSize({1, INT_MAX}, 3, &bytes));
        EXPECT_EQ(qelStatusOverflow, Form::getBufferSize({1, 1}, INT_MAX, &bytes));
        EXPECT_EQ(-1, bytes);
    }
    kit::core().reset();
}

// What every form is tested for.
template <class Form>
void meetsItsModel() {
    ASSERT_NO_FATAL_FAILURE(agreesOnSmallRegions<Form>());
    ASSERT_NO_FATAL_FAILURE(agreesAroundTheKernelsWidth<Form>());
    ASSERT_NO_FATAL_FAILURE(agreesWithLargeKernels<Form>());
    ASSERT_NO_FATAL_FAILURE(agreesInParallel<Form>());
}

// Good arguments for a sweep over the checks.
template <class Out>
struct Arguments {
    Out line[64] = {};
    Out* list[5] = {line, line, line, line, line};
    Qel8u buffer[4096];
};

}  // namespace rows

// The checks of a row pipeline up to its steps, with a kernel of one tap.
#define ROW_CHECKS_OF(function, arguments)                         \
    CHECKS_OF(function)                                            \
        .value<2>(arguments.list)                                  \
        .notAnImage<4>()                                           \
        .value<6>(0)                                               \
        .faultAheadOfSteps<5>("no taps", qelStatusBadMaskSize, 0)  \
        .faultAheadOfSteps<5>("-1 taps", qelStatusBadMaskSize, -1) \
        .faultAheadOfSteps<6>("anchor -1", qelStatusBadAnchor, -1) \
        .faultAheadOfSteps<6>("anchor 1", qelStatusBadAnchor, 1)

#endif
