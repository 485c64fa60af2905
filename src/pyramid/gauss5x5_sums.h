// The sums of the Gaussian steps, one sample at a time: what the ends of rows and small images are made of.
//
// The weights 1 4 6 4 1 add up to 16 in each direction, so 256 bytes fit in 16 bits. Signed bytes are worked on as
// unsigned ones, 128 above: every weight takes part in the total, and so all results are 128 above, too.
#ifndef QELCV_PYRAMID_GAUSS5X5_SUMS_H_
#define QELCV_PYRAMID_GAUSS5X5_SUMS_H_

#include <cstddef>
#include <type_traits>

#include "qelcv/types.h"

namespace qel {

// What samples are added up in.
template <class T>
using GaussSum = std::conditional_t<std::is_same_v<T, Qel32f>, Qel32f, Qel16u>;
template <class T>
using GaussTerm = std::conditional_t<std::is_same_v<T, Qel32f>, Qel32f, int>;

template <class T>
constexpr int kSignFlip = std::is_same_v<T, Qel8s> ? 0x80 : 0;

template <class T>
inline GaussTerm<T> gaussTerm(T sample) {
    if constexpr (std::is_same_v<T, Qel32f>) {
        return sample;
    } else {
        return static_cast<Qel8u>(sample) ^ kSignFlip<T>;
    }
}

// The sample that a total of all weights comes to.
template <class T, int kShift>
inline T gaussSample(GaussTerm<T> total) {
    if constexpr (std::is_same_v<T, Qel32f>) {
        return total * (1.0F / (1 << kShift));
    } else {
        return static_cast<T>(((total + (1 << (kShift - 1))) >> kShift) ^ kSignFlip<T>);
    }
}

// Row `width` pixels wide, at least 3, at output pixel i: `s` is a channel's first sample, the next is `pixel` away.
template <class T>
inline GaussTerm<T> downRowSum(const T* s, ptrdiff_t pixel, int width, int i) {
    const auto at = [=](int x) { return gaussTerm(s[x * pixel]); };
    const int c = 2 * i;
    if (i == 0) return at(0) * 6 + at(1) * 8 + at(2) * 2;
    if (c + 2 < width) return at(c) * 6 + (at(c - 1) + at(c + 1)) * 4 + at(c - 2) + at(c + 2);
    if (c + 1 < width) return (at(c - 1) + at(c + 1)) * 4 + at(c - 2) + at(c) * 7;
    return at(c) * 6 + at(c - 1) * 8 + at(c - 2) * 2;
}

// The five rows around an output row.
template <class Term>
inline Term downColumnSum(Term above2, Term above1, Term here, Term below1, Term below2) {
    return here * 6 + (above1 + below1) * 4 + above2 + below2;
}

// Row `width` pixels wide: the sums at twice pixel i, and half a pixel on.
template <class T>
inline GaussTerm<T> upRowEven(const T* s, ptrdiff_t pixel, int width, int i) {
    const auto at = [=](int x) { return gaussTerm(s[x * pixel]); };
    if (width == 1) return at(0) * 8;
    if (i == 0) return at(0) * 6 + at(1) * 2;
    if (i < width - 1) return at(i) * 6 + at(i - 1) + at(i + 1);
    return at(i) + at(i) * 6 + at(i - 1);
}
template <class T>
inline GaussTerm<T> upRowOdd(const T* s, ptrdiff_t pixel, int width, int i) {
    const auto at = [=](int x) { return gaussTerm(s[x * pixel]); };
    return width == 1 ? at(0) * 8 : (at(i) + at(i < width - 1 ? i + 1 : i)) * 4;
}

template <class Term>
inline Term upColumnEven(Term above, Term here, Term below) {
    return here * 6 + above + below;
}
template <class Term>
inline Term upColumnOdd(Term here, Term below) {
    return (here + below) * 4;
}

// The row that stands in for row y of `height`: reflected about the first and the last row, as often as it takes.
inline int reflected(int y, int height) {
    if (height == 1) return 0;
    while (y < 0 || y >= height) y = y < 0 ? -y : 2 * (height - 1) - y;
    return y;
}

}  // namespace qel

#endif
