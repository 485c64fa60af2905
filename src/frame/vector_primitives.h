// Copies, fills and arithmetic on vectors, for the families' own use.
//
// `len` counts elements. Vectors need no alignment. Unless a block says otherwise a function returns, tested in this
// order and with nothing written on an error:
//
//     qelStatusNullPointer  a pointer is null
//     qelStatusBadSize      len is below 1
//     qelStatusOk           the vector is written
#ifndef QELCV_FRAME_VECTOR_PRIMITIVES_H_
#define QELCV_FRAME_VECTOR_PRIMITIVES_H_

#include <bit>
#include <climits>
#include <cstdint>
#include <cstring>
#include <cwchar>

#include "frame/check.h"
#include "frame/vector_primitives_kernels.h"
#include "qelcore.h"
#include "qelcv/types.h"

namespace qel {

// The C library's copies and fills use the widest vectors on 64-bit systems, but stop at 16 bytes on 32-bit ones. What
// is short is the library's in any case, done before a kernel is chosen, and so are fills that outgrow the nearer
// caches.
inline bool libraryCopies(size_t bytes) { return sizeof(void*) == 8 || bytes < 512; }
inline bool librarySetsBytes(size_t bytes) { return sizeof(void*) == 8 || bytes < 1536 || bytes > 0x100000; }
inline bool librarySetsWords(size_t bytes) { return sizeof(void*) == 8 || bytes < 256; }

// Fills of 16 to 128 bytes take less time than a call: vectors from both ends on, which may overlap.
constexpr size_t kShortestFill = 16, kLongestShortFill = 128;
template <class T>
constexpr bool isShortFill(size_t count) {  // a count below the shortest wraps around
    return count - kShortestFill / sizeof(T) <= (kLongestShortFill - kShortestFill) / sizeof(T);
}
template <class T>
inline void setShort(T value, void* pDst, size_t count) {
    using Vector [[gnu::vector_size(16)]] = T;
    const Vector vector = Vector{} + value;
    const size_t bytes = count * sizeof(T);
    const auto storeAtBothEnds = [&](size_t x) {
        std::memcpy(static_cast<char*>(pDst) + x, &vector, 16);
        std::memcpy(static_cast<char*>(pDst) + bytes - 16 - x, &vector, 16);
    };
    storeAtBothEnds(0);
    if (bytes > 32) storeAtBothEnds(16);
    if (bytes > 64) {
        storeAtBothEnds(32);
        storeAtBothEnds(48);
    }
}

// The unchecked forms. The source of a copy and its destination do not overlap.
inline void copyBytes(const void* pSrc, void* pDst, size_t bytes) {
    if (libraryCopies(bytes)) {
        std::memcpy(pDst, pSrc, bytes);
    } else {
        ownsCopy_8u(static_cast<const Qel8u*>(pSrc), static_cast<Qel8u*>(pDst), bytes);
    }
}
inline void setBytes(Qel8u value, void* pDst, size_t bytes) {
    if (isShortFill<Qel8u>(bytes)) {
        setShort(value, pDst, bytes);
    } else if (librarySetsBytes(bytes)) {
        std::memset(pDst, value, bytes);
    } else {
        ownsSet_8u(value, static_cast<Qel8u*>(pDst), bytes);
    }
}
inline void zeroBytes(void* pDst, size_t bytes) {
    if (isShortFill<Qel8u>(bytes)) {
        setShort(Qel8u{0}, pDst, bytes);
    } else if (librarySetsBytes(bytes)) {
        std::memset(pDst, 0, bytes);
    } else {
        ownsZero_8u(static_cast<Qel8u*>(pDst), bytes);
    }
}
inline void setWords(Qel32s value, void* pDst, size_t count) {
    static_assert(sizeof(wchar_t) == sizeof(Qel32s));
    const bool aligned = reinterpret_cast<uintptr_t>(pDst) % sizeof(wchar_t) == 0;  // the library's needs it
    if (isShortFill<Qel32s>(count)) {
        setShort(value, pDst, count);
    } else if (aligned && librarySetsWords(count * sizeof(Qel32s))) {
        std::wmemset(static_cast<wchar_t*>(pDst), static_cast<wchar_t>(value), count);
    } else {
        ownsSet_32s(value, static_cast<Qel32s*>(pDst), count);
    }
}

// pDst[i] = pSrc[i]. The vectors do not overlap. These, the fills and the zeroes are a test and a call, in line.
template <class T>
inline qelStatus copyVector(const T* pSrc, T* pDst, int len) {
    const qelStatus status = Check().pointers(pSrc, pDst).length(len).status();
    if (status == qelStatusOk) copyBytes(pSrc, pDst, sizeof(T) * size_t(len));
    return status;
}
inline qelStatus qelsCopy_8u(const Qel8u* pSrc, Qel8u* pDst, int len) { return copyVector(pSrc, pDst, len); }
inline qelStatus qelsCopy_16s(const Qel16s* pSrc, Qel16s* pDst, int len) { return copyVector(pSrc, pDst, len); }
inline qelStatus qelsCopy_32f(const Qel32f* pSrc, Qel32f* pDst, int len) { return copyVector(pSrc, pDst, len); }

// Calls fill(len) where the arguments are right. Beside the call that a longer fill is, each test is felt: what is
// above the short fills needs no other test of its length, neither here nor in fill.
template <class T, class Fill>
inline qelStatus fillVector(const T* pDst, int len, const Fill& fill) {
    if (pDst != nullptr && len > int(kLongestShortFill / sizeof(T))) [[likely]] {
        fill(size_t(len));
        return qelStatusOk;
    }
    const qelStatus status = Check().pointers(pDst).length(len).status();
    if (status == qelStatusOk) fill(size_t(len));
    return status;
}

// pDst[i] = value. 32f sets the value's bits, also those of a NaN.
inline qelStatus qelsSet_8u(Qel8u value, Qel8u* pDst, int len) {
    return fillVector(pDst, len, [=](size_t count) { setBytes(value, pDst, count); });
}
inline qelStatus qelsSet_32s(Qel32s value, Qel32s* pDst, int len) {
    return fillVector(pDst, len, [=](size_t count) { setWords(value, pDst, count); });
}
inline qelStatus qelsSet_32f(Qel32f value, Qel32f* pDst, int len) {
    return fillVector(pDst, len, [=](size_t count) { setWords(std::bit_cast<Qel32s>(value), pDst, count); });
}

// pDst[i] = 0, all bits zero.
template <class T>
inline qelStatus zeroVector(T* pDst, int len) {
    return fillVector(pDst, len, [=](size_t count) { zeroBytes(pDst, count * sizeof(T)); });
}
inline qelStatus qelsZero_8u(Qel8u* pDst, int len) { return zeroVector(pDst, len); }
inline qelStatus qelsZero_16s(Qel16s* pDst, int len) { return zeroVector(pDst, len); }
inline qelStatus qelsZero_32s(Qel32s* pDst, int len) { return zeroVector(pDst, len); }
inline qelStatus qelsZero_32f(Qel32f* pDst, int len) { return zeroVector(pDst, len); }

// pDst[i] = pSrc[i] as a number of the same value, exactly. The vectors do not overlap.
qelStatus qelsConvert_16u32f(const Qel16u* pSrc, Qel32f* pDst, int len);

// pDst[i] = the smaller or larger of pSrc1[i] and pSrc2[i]. pDst may be one of the sources.
//
// 32f takes the first operand if it compares less (Max: greater) than the second, otherwise the second: a NaN in the
// first yields the second operand, a NaN in the second yields that NaN, and of two zeros the second is taken.
//
// These four check nothing and return qelStatusOk. With len below 1 they do nothing.
qelStatus qelsMinEvery_8u(const Qel8u* pSrc1, const Qel8u* pSrc2, Qel8u* pDst, int len);
qelStatus qelsMaxEvery_8u(const Qel8u* pSrc1, const Qel8u* pSrc2, Qel8u* pDst, int len);
qelStatus qelsMinEvery_32f(const Qel32f* pSrc1, const Qel32f* pSrc2, Qel32f* pDst, int len);
qelStatus qelsMaxEvery_32f(const Qel32f* pSrc1, const Qel32f* pSrc2, Qel32f* pDst, int len);

// The same with pSrcDst as the second operand and the destination, checked.
qelStatus qelsMinEvery_8u_I(const Qel8u* pSrc, Qel8u* pSrcDst, int len);
qelStatus qelsMaxEvery_8u_I(const Qel8u* pSrc, Qel8u* pSrcDst, int len);
qelStatus qelsMinEvery_32f_I(const Qel32f* pSrc, Qel32f* pSrcDst, int len);
qelStatus qelsMaxEvery_32f_I(const Qel32f* pSrc, Qel32f* pSrcDst, int len);

// pSrcDst[i] *= value, in single precision. A value of exactly 1 leaves the vector as it is, also its NaNs; a value of
// zero of either sign zeroes it, so that no NaN, infinity or sign survives.
qelStatus qelsMulC_32f_I(Qel32f value, Qel32f* pSrcDst, int len);

// pSrcDst[i] = pSrcDst[i] * value / 2^scaleFactor, rounded to nearest with ties to even and saturated. Exact for any
// scale factor: above 30 every element becomes 0, below -15 it becomes 32767, -32768 or 0 by the product's sign.
qelStatus qelsMulC_16s_ISfs(Qel16s value, Qel16s* pSrcDst, int len, int scaleFactor);

// pSrcDst[i] = its square root, correctly rounded. A negative element becomes a NaN; a negative zero is not negative.
//
// qelStatusSqrtNegative: an element was negative. A NaN is not.
qelStatus qelsSqrt_32f_I(Qel32f* pSrcDst, int len);

// pDst[i] = sqrt(pSrc[i]) / 2^scaleFactor, rounded to the nearest integer with ties to even and saturated at 32767.
// Exact for any scale factor: above 16 every element becomes 0, below -14 a positive element becomes 32767. A negative
// element becomes 0. The vectors do not overlap.
//
// qelStatusSqrtNegative: an element was negative.
qelStatus qelsSqrt_32s16s_Sfs(const Qel32s* pSrc, Qel16s* pDst, int len, int scaleFactor);

// Sorts the vector in ascending order. Equal elements, among them zeros of either sign, and NaNs come to stand in any
// order; a NaN also leaves the others in any order, but within the vector.
qelStatus qelsSortAscend_64f_I(Qel64f* pSrcDst, int len);

// Memory of `len` uninitialised elements, aligned for vectors. Null where len is below 1, where the bytes are more than
// the allocator can count, and where there is no memory. Released by qelsFree only, which takes null, too.
template <class T>
inline T* mallocVector(int len) {
    if (len < 1 || len > INT_MAX / int(sizeof(T))) return nullptr;
    return static_cast<T*>(qelMalloc(len * int(sizeof(T))));
}
inline Qel8u* qelsMalloc_8u(int len) { return mallocVector<Qel8u>(len); }
inline Qel16u* qelsMalloc_16u(int len) { return mallocVector<Qel16u>(len); }
inline Qel32s* qelsMalloc_32s(int len) { return mallocVector<Qel32s>(len); }
inline Qel32f* qelsMalloc_32f(int len) { return mallocVector<Qel32f>(len); }
inline Qel64f* qelsMalloc_64f(int len) { return mallocVector<Qel64f>(len); }
inline void qelsFree(void* p) { qelFree(p); }

}  // namespace qel

#endif
