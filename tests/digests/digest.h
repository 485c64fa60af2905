// One digest for each exported function over fixed calls, in tests/digests.txt: the same under every instruction set,
// in both architectures, with 1, 2, 3 and 33 threads. A family lists its functions in <folder>_<family>_digests.cpp,
// below what calls them:
//
//     DIGESTS(bySignature, qeliAbsDiff_8u_C1R, qeliAbsDiff_8u_C3R);
//     DIGESTS([](digest::Call& c, auto function) {
//                 const auto src = c.input<Qel8u>();
//                 const auto dst = c.output<Qel8u>();
//                 return function(src.data, src.step, dst.data, dst.step, c.size(), 3, c.scratch(4096));
//             },
//             qeliSomething_8u_C1R);
//
// A caller with commas outside of parentheses, as in braces, is a function with a name, since the line is a macro.
// What the call returns and all that it was given to write make the digest. `digests_test --write` writes the file
// anew.
#ifndef QELCV_TESTS_DIGESTS_DIGEST_H_
#define QELCV_TESTS_DIGESTS_DIGEST_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "qelcv/types.h"

namespace digest {

// How the digest of a function may depend on more than the call.
struct Rule {
    bool oneThread = false;  // the documentation lets the last bits differ by threads: only one is tried
    bool sizeQuery = false;  // counts threads, and pointers, so that each architecture has a digest of its own
    bool smallOnly = false;  // slow: no large region; say why no thread path is missed
};

template <class T>
struct Image {
    T* data;
    int step;

    T* row(int y) const {
        using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
        return reinterpret_cast<T*>(reinterpret_cast<Byte*>(data) + std::ptrdiff_t{step} * y);
    }
};

// One call of a function: a region, and memory for its arguments.
class Call {
public:
    Call(std::string name, QelSize size);

    const std::string& name() const { return name_; }
    QelSize size() const { return size_; }
    // The number behind the C of the name: 3 for qeliMean_8u_C3CMR.
    int channels() const { return channels_; }

    // Images of noise in which one sample of four is 0, so that 8u serves as a mask; 32f is finite. An output is noise
    // before the call, too, and part of the digest.
    template <class T>
    Image<const T> input(QelSize size, int channels) {
        const Image<T> image = make<T>(size, channels, false);
        return {image.data, image.step};
    }
    template <class T>
    Image<const T> input() {
        return input<T>(size_, channels_);
    }
    template <class T>
    Image<T> output(QelSize size, int channels) {
        return make<T>(size, channels, true);
    }
    template <class T>
    Image<T> output() {
        return output<T>(size_, channels_);
    }

    // An array of these numbers.
    template <class T>
    const T* array(const std::vector<T>& numbers) {
        Qel8u* const p = scratch(int(numbers.size() * sizeof(T)));
        std::memcpy(p, numbers.data(), numbers.size() * sizeof(T));
        return reinterpret_cast<const T*>(p);
    }

    // Numbers of noise, as an image of one row.
    template <class T>
    const T* numbers(int count) {
        return input<T>({count, 1}, 1).data;
    }
    template <class T>
    T* results(int count) {
        return output<T>({count, 1}, 1).data;
    }

    // Pointers to the rows of an image.
    template <class T>
    T** rows(const Image<T>& image, int count) {
        T** const list = reinterpret_cast<T**>(scratch(count * int(sizeof(T*))));
        for (int y = 0; y < count; ++y) list[y] = image.row(y);
        return list;
    }

    // Memory of any contents, no part of the digest.
    Qel8u* scratch(int bytes);

    // The digest so far, with what the call returned.
    uint64_t digest(int64_t returned) const;

private:
    struct Block {
        std::unique_ptr<unsigned char[]> memory;
        size_t offset, rowBytes, step, rows;
        bool written;
    };

    template <class T>
    Image<T> make(QelSize size, int channels, bool written) {
        Block& block = addBlock(size_t(size.width) * size_t(channels) * sizeof(T), size_t(size.height), written);
        for (int y = 0; y < size.height; ++y)
            fillRow(block, size_t(y), std::is_floating_point_v<T> ? int(sizeof(T)) : 0);
        return {reinterpret_cast<T*>(block.memory.get() + block.offset), int(block.step)};
    }

    Block& addBlock(size_t rowBytes, size_t rows, bool written);
    void fillRow(Block& block, size_t y, int floatBytes);

    std::string name_;
    QelSize size_;
    int channels_;
    std::vector<Block> blocks_;
};

namespace internal {

// Argument I of a function: the step of the pointer ahead, or what its type asks for.
template <class Args, size_t I>
struct Maker {
    using T = std::tuple_element_t<I, Args>;

    static constexpr bool isStep() {
        if constexpr (I == 0 || !std::is_same_v<T, int>) {
            return false;
        } else {
            return std::is_pointer_v<std::tuple_element_t<I - 1, Args>>;
        }
    }
    static constexpr bool hasStep() {
        if constexpr (I + 1 < std::tuple_size_v<Args>) return Maker<Args, I + 1>::isStep();
        return false;
    }

    static void make(Call& c, Args& args, int& step) {
        T& arg = std::get<I>(args);
        if constexpr (std::is_pointer_v<T>) {
            using Sample = std::remove_const_t<std::remove_pointer_t<T>>;
            constexpr int kNumbers = 16;
            const QelSize size = hasStep() ? c.size() : QelSize{kNumbers, 1};
            const int channels = hasStep() ? c.channels() : 1;
            if constexpr (std::is_same_v<Sample, QelPoint>) {
                arg = reinterpret_cast<T>(c.results<int>(2 * kNumbers));
            } else if constexpr (std::is_const_v<std::remove_pointer_t<T>>) {
                const auto image = c.input<Sample>(size, channels);
                arg = image.data, step = image.step;
            } else {
                const auto image = c.output<Sample>(size, channels);
                arg = image.data, step = image.step;
            }
        } else if constexpr (std::is_same_v<T, QelSize>) {
            arg = c.size();
        } else if constexpr (isStep()) {
            arg = step;
        } else if constexpr (std::is_floating_point_v<T>) {
            arg = T(0.375);
        } else {
            arg = T(1);
        }
    }
};

template <class... A, size_t... I>
qelStatus callBySignature(Call& c, qelStatus (*function)(A...), std::index_sequence<I...>) {
    std::tuple<A...> args;
    int step = 0;
    (Maker<std::tuple<A...>, I>::make(c, args, step), ...);
    return std::apply(function, args);
}

}  // namespace internal

// A pointer ahead of an int is an image with its step, another pointer 16 numbers, a QelSize the region; integers are
// 1, floats 0.375.
struct BySignature {
    template <class... A>
    qelStatus operator()(Call& c, qelStatus (*function)(A...)) const {
        return internal::callBySignature(c, function, std::index_sequence_for<A...>());
    }
};
constexpr BySignature bySignature;

class Registration {
public:
    // `names` are those of the functions, with commas between them.
    template <class Caller, class... F>
    Registration(const char* names, Rule rule, Caller caller, F... functions) {
        (add(&names, rule, [caller, functions](Call& c) { return int64_t(caller(c, functions)); }), ...);
    }

private:
    static void add(const char** names, Rule rule, std::function<int64_t(Call&)> call);
};

}  // namespace digest

#define QEL_DIGESTS_PASTED(a, b) a##b
#define QEL_DIGESTS_NAME(line) QEL_DIGESTS_PASTED(digests, line)

// All functions behind the caller, which is called as caller(digest::Call&, function).
#define DIGESTS(...) DIGESTS_UNDER(({}), __VA_ARGS__)

// As DIGESTS, by a rule in parentheses: ({.oneThread = true}).
#define DIGESTS_UNDER(rule, caller, ...) \
    static const digest::Registration QEL_DIGESTS_NAME(__LINE__)(#__VA_ARGS__, digest::Rule rule, caller, __VA_ARGS__)

#endif
