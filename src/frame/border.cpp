#include "frame/border.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

#include "frame/check.h"
#include "frame/vector_primitives.h"

namespace qel {
namespace {

// Borders deal in bytes: what a pixel consists of matters as little as its alignment.
template <int kPixelBytes>
using Pixel = std::array<char, kPixelBytes>;

template <int kPixelBytes>
Pixel<kPixelBytes> pixelAt(const char* p) {
    Pixel<kPixelBytes> pixel;
    std::memcpy(pixel.data(), p, kPixelBytes);
    return pixel;
}

// Fills with a pattern of 16 bytes, of which `bytes` is a multiple of the period. The last store overlaps those before.
void fillPattern(char* pDst, const Pixel<16>& pattern, size_t bytes) {
    const auto store = [&](auto size, size_t x) { std::memcpy(pDst + x, pattern.data(), size); };
    const auto storeBothEnds = [&](auto size) {
        store(size, 0);
        store(size, bytes - size);
    };
    if (bytes >= 16) {
        for (size_t x = 0; x + 16 < bytes; x += 16) store(std::integral_constant<size_t, 16>(), x);
        store(std::integral_constant<size_t, 16>(), bytes - 16);
    } else if (bytes >= 8) {
        storeBothEnds(std::integral_constant<size_t, 8>());
    } else if (bytes >= 4) {
        storeBothEnds(std::integral_constant<size_t, 4>());
    } else if (bytes >= 2) {
        storeBothEnds(std::integral_constant<size_t, 2>());
    } else if (bytes == 1) {
        *pDst = pattern[0];
    }
}

// Writes `count` times the pixel. Where it does not fit a pattern evenly: a few one by one, then as many again as there
// are, and so on.
template <int kPixelBytes>
void fillPixels(char* pDst, const Pixel<kPixelBytes>& pixel, int count) {
    const size_t bytes = size_t(count) * kPixelBytes;
    if constexpr (16 % kPixelBytes == 0) {
        Pixel<16> pattern;
        for (int x = 0; x < 16; x += kPixelBytes) std::memcpy(pattern.data() + x, pixel.data(), kPixelBytes);
        fillPattern(pDst, pattern, bytes);
    } else {
        constexpr int kOneByOne = 16;
        size_t filled = std::min(bytes, size_t{kOneByOne * kPixelBytes});
        for (size_t x = 0; x < filled; x += kPixelBytes) std::memcpy(pDst + x, pixel.data(), kPixelBytes);
        for (; filled < bytes; filled *= 2) copyBytes(pDst, pDst + filled, std::min(filled, bytes - filled));
    }
}

// Copies pixels from left to right. Where the destination starts inside the source, what is copied comes round again.
template <int kPixelBytes>
void copyPixels(const char* pSrc, char* pDst, size_t bytes) {
    const size_t ahead = static_cast<size_t>(reinterpret_cast<uintptr_t>(pDst) - reinterpret_cast<uintptr_t>(pSrc));
    if (ahead == 0) return;
    if (ahead >= bytes && -ahead >= bytes) {
        copyBytes(pSrc, pDst, bytes);
    } else if (ahead >= bytes) {
        std::memmove(pDst, pSrc, bytes);
    } else {
        for (size_t x = 0; x < bytes; x += kPixelBytes) {
            const Pixel<kPixelBytes> pixel = pixelAt<kPixelBytes>(pSrc + x);
            std::memcpy(pDst + x, pixel.data(), kPixelBytes);
        }
    }
}

qelStatus checkBorder(bool pointers, bool steps, QelSize src, QelSize dst, int topBorderHeight, int leftBorderWidth) {
    return Check()
        .require(pointers, qelStatusNullPointer)
        .require(steps, qelStatusBadStep)
        .size(src)
        .size(dst)
        .require(topBorderHeight >= 0 && leftBorderWidth >= 0, qelStatusBadSize)
        .require(dst.width >= int64_t{src.width} + leftBorderWidth, qelStatusBadSize)
        .require(dst.height >= int64_t{src.height} + topBorderHeight, qelStatusBadSize)
        .status();
}

// A destination: its rows, and where in a row the source stands.
template <int kPixelBytes>
class Framed {
public:
    using Pixel = qel::Pixel<kPixelBytes>;

    Framed(void* pDst, int dstStep, QelSize dst, QelSize src, int topBorderHeight, int leftBorderWidth)
        : p_(static_cast<char*>(pDst)),
          step_(dstStep),
          left_(leftBorderWidth),
          width_(src.width),
          right_(dst.width - src.width - leftBorderWidth),
          first_(topBorderHeight),
          last_(topBorderHeight + src.height - 1),
          height_(dst.height) {}

    // The rows of the source.
    int first() const { return first_; }
    int last() const { return last_; }

    Pixel firstPixel(int y) const { return pixelAt<kPixelBytes>(sourcePart(y)); }
    Pixel lastPixel(int y) const { return pixelAt<kPixelBytes>(rightPart(y) - kPixelBytes); }

    void fillLeft(int y, const Pixel& pixel) { fillPixels<kPixelBytes>(rowAt(y), pixel, left_); }
    void fillRight(int y, const Pixel& pixel) { fillPixels<kPixelBytes>(rightPart(y), pixel, right_); }
    void copySource(int y, const char* source) { copyPixels<kPixelBytes>(source, sourcePart(y), bytesOf(width_)); }

    void fillTop(const Pixel& pixel) { fillRows(0, first_, pixel); }
    void fillBottom(const Pixel& pixel) { fillRows(last_ + 1, height_, pixel); }
    void replicateTop() { replicateRow(first_, 0, first_); }
    void replicateBottom() { replicateRow(last_, last_ + 1, height_); }

private:
    static size_t bytesOf(int pixels) { return size_t(pixels) * kPixelBytes; }
    char* rowAt(int y) const { return row(p_, step_, y); }
    char* sourcePart(int y) const { return rowAt(y) + bytesOf(left_); }
    char* rightPart(int y) const { return sourcePart(y) + bytesOf(width_); }
    int rowPixels() const { return left_ + width_ + right_; }

    void fillRows(int y, int end, const Pixel& pixel) {
        for (; y < end; ++y) fillPixels<kPixelBytes>(rowAt(y), pixel, rowPixels());
    }
    void replicateRow(int source, int y, int end) {
        for (; y < end; ++y) copyPixels<kPixelBytes>(rowAt(source), rowAt(y), bytesOf(rowPixels()));
    }

    char* p_;
    int step_;
    int left_, width_, right_;
    int first_, last_, height_;
};

template <int kPixelBytes>
qelStatus replicateBorder(const void* pSrc, int srcStep, QelSize srcRoiSize, void* pDst, int dstStep,
                          QelSize dstRoiSize, int topBorderHeight, int leftBorderWidth) {
    const qelStatus status = checkBorder(pSrc != nullptr && pDst != nullptr, srcStep >= 1 && dstStep >= 1, srcRoiSize,
                                         dstRoiSize, topBorderHeight, leftBorderWidth);
    if (status != qelStatusOk) return status;

    Framed<kPixelBytes> dst(pDst, dstStep, dstRoiSize, srcRoiSize, topBorderHeight, leftBorderWidth);
    const size_t toLastPixel = size_t(srcRoiSize.width - 1) * kPixelBytes;
    for (int y = dst.first(); y <= dst.last(); ++y) {
        const char* const source = row(static_cast<const char*>(pSrc), srcStep, y - dst.first());
        dst.fillLeft(y, pixelAt<kPixelBytes>(source));
        dst.copySource(y, source);
        dst.fillRight(y, pixelAt<kPixelBytes>(source + toLastPixel));
    }
    dst.replicateBottom();
    dst.replicateTop();
    return qelStatusOk;
}

template <int kPixelBytes>
qelStatus replicateBorderInPlace(void* pSrc, int srcDstStep, QelSize srcRoiSize, QelSize dstRoiSize,
                                 int topBorderHeight, int leftBorderWidth) {
    const qelStatus status =
        checkBorder(pSrc != nullptr, srcDstStep >= 1, srcRoiSize, dstRoiSize, topBorderHeight, leftBorderWidth);
    if (status != qelStatusOk) return status;

    char* const firstRow = row(static_cast<char*>(pSrc), srcDstStep, -topBorderHeight);
    Framed<kPixelBytes> dst(firstRow - size_t(leftBorderWidth) * kPixelBytes, srcDstStep, dstRoiSize, srcRoiSize,
                            topBorderHeight, leftBorderWidth);
    for (int y = dst.first(); y <= dst.last(); ++y) {
        dst.fillLeft(y, dst.firstPixel(y));
        dst.fillRight(y, dst.lastPixel(y));
        if (y == dst.first()) dst.replicateTop();
    }
    dst.replicateBottom();
    return qelStatusOk;
}

// Of any sample: only bits are copied.
template <class T>
void owniCopyConstBorder_C1R_W7(const T* pSrc, int srcStep, QelSize srcRoiSize, T* pDst, int dstStep,
                                QelSize dstRoiSize, int topBorderHeight, int leftBorderWidth, T value) {
    Framed<sizeof(T)> dst(pDst, dstStep, dstRoiSize, srcRoiSize, topBorderHeight, leftBorderWidth);
    const auto pixel = std::bit_cast<Pixel<sizeof(T)>>(value);
    dst.fillTop(pixel);
    for (int y = dst.first(); y <= dst.last(); ++y) {
        dst.fillLeft(y, pixel);
        dst.copySource(y, row(reinterpret_cast<const char*>(pSrc), srcStep, y - dst.first()));
        dst.fillRight(y, pixel);
    }
    dst.fillBottom(pixel);
}

template <class T>
qelStatus constBorder(const T* pSrc, int srcStep, QelSize srcRoiSize, T* pDst, int dstStep, QelSize dstRoiSize,
                      int topBorderHeight, int leftBorderWidth, T value) {
    const qelStatus status = checkBorder(pSrc != nullptr && pDst != nullptr, srcStep >= 1 && dstStep >= 1, srcRoiSize,
                                         dstRoiSize, topBorderHeight, leftBorderWidth);
    if (status != qelStatusOk) return status;
    owniCopyConstBorder_C1R_W7(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize, topBorderHeight, leftBorderWidth,
                               value);
    return qelStatusOk;
}

}  // namespace

#define REPLICATE_BORDER(name, nameInPlace, T, channels)                                                               \
    qelStatus name(const T* pSrc, int srcStep, QelSize srcRoiSize, T* pDst, int dstStep, QelSize dstRoiSize,           \
                   int topBorderHeight, int leftBorderWidth) {                                                         \
        return replicateBorder<sizeof(T) * channels>(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize,             \
                                                     topBorderHeight, leftBorderWidth);                                \
    }                                                                                                                  \
    qelStatus nameInPlace(T* pSrc, int srcDstStep, QelSize srcRoiSize, QelSize dstRoiSize, int topBorderHeight,        \
                          int leftBorderWidth) {                                                                       \
        return replicateBorderInPlace<sizeof(T) * channels>(pSrc, srcDstStep, srcRoiSize, dstRoiSize, topBorderHeight, \
                                                            leftBorderWidth);                                          \
    }
REPLICATE_BORDER(qeliCopyReplicateBorder_8u_C1R, qeliCopyReplicateBorder_8u_C1IR, Qel8u, 1)
REPLICATE_BORDER(qeliCopyReplicateBorder_8u_C3R, qeliCopyReplicateBorder_8u_C3IR, Qel8u, 3)
REPLICATE_BORDER(qeliCopyReplicateBorder_8u_C4R, qeliCopyReplicateBorder_8u_C4IR, Qel8u, 4)
REPLICATE_BORDER(qeliCopyReplicateBorder_32s_C1R, qeliCopyReplicateBorder_32s_C1IR, Qel32s, 1)
REPLICATE_BORDER(qeliCopyReplicateBorder_32s_C3R, qeliCopyReplicateBorder_32s_C3IR, Qel32s, 3)
REPLICATE_BORDER(qeliCopyReplicateBorder_32s_C4R, qeliCopyReplicateBorder_32s_C4IR, Qel32s, 4)
#undef REPLICATE_BORDER

#define CONST_BORDER(name, T)                                                                                      \
    qelStatus name(const T* pSrc, int srcStep, QelSize srcRoiSize, T* pDst, int dstStep, QelSize dstRoiSize,       \
                   int topBorderHeight, int leftBorderWidth, T value) {                                            \
        return constBorder(pSrc, srcStep, srcRoiSize, pDst, dstStep, dstRoiSize, topBorderHeight, leftBorderWidth, \
                           value);                                                                                 \
    }
CONST_BORDER(qeliCopyConstBorder_8u_C1R, Qel8u)
CONST_BORDER(qeliCopyConstBorder_16s_C1R, Qel16s)
CONST_BORDER(qeliCopyConstBorder_16u_C1R, Qel16u)
#undef CONST_BORDER

}  // namespace qel
