#include "filter/copy_with_border.h"

#include <climits>
#include <cstring>

#include "filter/border_mode.h"
#include "frame/image.h"
#include "qelcore.h"

namespace qel {
namespace {

// The block's size is an int of bytes.
template <class T>
T* allocate(int64_t width, int64_t height, int channels) {
    const int64_t rowBytes = width * channels * int64_t{sizeof(T)};
    if (rowBytes > INT_MAX || rowBytes * height > INT_MAX) return nullptr;
    return static_cast<T*>(qelMalloc(static_cast<int>(rowBytes * height)));
}

template <class T, int channels>
void setPixels(T* p, int count, const T* value) {
    for (int i = 0; i < count; ++i) std::memcpy(p + i * channels, value, channels * sizeof(T));
}

// A row of the result from the row of the source.
template <class T, int channels>
void extendRow(T* out, const T* src, int width, int mode, const T* value, BorderWidths border) {
    const auto pixel = [=](int x) {
        const int i = extendedIndex(mode, x, width);
        return i == kConstantSample ? value : src + i * channels;
    };
    for (int x = 0; x < border.left; ++x) std::memcpy(out + x * channels, pixel(x - border.left), channels * sizeof(T));
    out += border.left * channels;
    std::memcpy(out, src, size_t(width) * channels * sizeof(T));
    out += width * channels;
    for (int x = 0; x < border.right; ++x) std::memcpy(out + x * channels, pixel(width + x), channels * sizeof(T));
}

template <class T, int channels>
T* copyWithBorder(const T* pSrc, int srcStep, QelSize size, int mode, const T* value, BorderWidths border) {
    const int64_t width = int64_t{size.width} + border.left + border.right;
    const int64_t height = int64_t{size.height} + border.top + border.bottom;
    T* const block = allocate<T>(width, height, channels);
    if (block == nullptr) return nullptr;

    const int rowsMode = mode == kBorderMirrorRowsOnly ? int{qelBorderMirr} : mode;
    const int columnsMode = mode == kBorderMirrorRowsOnly ? int{qelBorderMirrR} : mode;
    const auto rowOf = [=](int y) { return block + (y + border.top) * width * channels; };
    for (int y = 0; y < size.height; ++y)
        extendRow<T, channels>(rowOf(y), row(pSrc, srcStep, y), size.width, columnsMode, value, border);
    const auto fillRow = [=](int y) {
        const int from = extendedIndex(rowsMode, y, size.height);
        if (from == kConstantSample) {
            setPixels<T, channels>(rowOf(y), static_cast<int>(width), value);
        } else {
            std::memcpy(rowOf(y), rowOf(from), size_t(width) * channels * sizeof(T));
        }
    };
    for (int y = -border.top; y < 0; ++y) fillRow(y);
    for (int y = size.height; y < size.height + border.bottom; ++y) fillRow(y);
    return block;
}

}  // namespace

#define COPY_WITH_BORDER(name, T, channels)                                                            \
    T* name(const T* pSrc, int srcStep, QelSize size, int mode, const T* value, BorderWidths border) { \
        return copyWithBorder<T, channels>(pSrc, srcStep, size, mode, value, border);                  \
    }
COPY_WITH_BORDER(ownCopyWithBorder_8u_C1R, Qel8u, 1)
COPY_WITH_BORDER(ownCopyWithBorder_8u_C3R, Qel8u, 3)
COPY_WITH_BORDER(ownCopyWithBorder_16u_C1R, Qel16u, 1)
COPY_WITH_BORDER(ownCopyWithBorder_16u_C3R, Qel16u, 3)
COPY_WITH_BORDER(ownCopyWithBorder_32f_C1R, Qel32f, 1)
COPY_WITH_BORDER(ownCopyWithBorder_32f_C3R, Qel32f, 3)
#undef COPY_WITH_BORDER

}  // namespace qel
