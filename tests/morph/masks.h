// Masks of all kinds, and dilation and erosion by the definition.
#ifndef QELCV_TESTS_MORPH_MASKS_H_
#define QELCV_TESTS_MORPH_MASKS_H_

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/types.h"

namespace masks {

struct Mask {
    std::vector<Qel8u> elements;
    QelSize size;
    QelPoint anchor;

    bool at(int x, int y) const { return elements[size_t(y) * size_t(size.width) + size_t(x)] != 0; }
    void set(int x, int y, Qel8u value = 1) { elements[size_t(y) * size_t(size.width) + size_t(x)] = value; }
    std::string text() const {
        std::string s = "mask " + std::to_string(size.width) + "x" + std::to_string(size.height) + " anchor " +
                        std::to_string(anchor.x) + "," + std::to_string(anchor.y) + " ";
        for (int y = 0; y < size.height; ++y) {
            for (int x = 0; x < size.width; ++x) s += at(x, y) ? '#' : '.';
            s += '/';
        }
        return s;
    }
};

inline Mask clear(QelSize size, QelPoint anchor) {
    return {std::vector<Qel8u>(size_t(size.width * size.height)), size, anchor};
}

// Rows as text: '#' is set. Bytes other than 1 count as well.
inline Mask drawn(const std::vector<std::string>& rows, QelPoint anchor) {
    Mask mask = clear({int(rows[0].size()), int(rows.size())}, anchor);
    for (int y = 0; y < mask.size.height; ++y)
        for (int x = 0; x < mask.size.width; ++x)
            mask.set(x, y, rows[size_t(y)][size_t(x)] == '#' ? Qel8u(1 + 37 * x + y) : Qel8u(0));
    return mask;
}

enum class Kind { kAny, kRect, kEllipse, kSparse, kDense };

// A random mask. Ellipses have runs across the anchor's column, and runs of one length in line.
inline Mask randomMask(kit::Trial& trial, Kind kind, int largest) {
    Mask mask = clear({trial.between(1, largest), trial.between(1, largest)}, {});
    const auto [width, height] = mask.size;
    mask.anchor = {trial.between(0, width - 1), trial.between(0, height - 1)};
    const int left = trial.between(0, width - 1);
    const int right = trial.between(left, width - 1);
    const int top = trial.between(0, height - 1);
    const int bottom = trial.between(top, height - 1);
    std::vector<int> beginOf(size_t(width + 1), -1);
    for (int y = 0; y < height; ++y) {
        if (kind == Kind::kEllipse) {
            const int length = trial.between(1, width);
            int& begin = beginOf[size_t(length)];
            if (begin < 0)
                begin = trial.between(std::max(0, mask.anchor.x - length + 1), std::min(mask.anchor.x, width - length));
            if (y != mask.anchor.y && trial.between(0, 9) == 0) continue;
            for (int x = begin; x < begin + length; ++x) mask.set(x, y, Qel8u(trial.between(1, 255)));
            continue;
        }
        for (int x = 0; x < width; ++x) {
            const bool set = kind == Kind::kRect     ? x >= left && x <= right && y >= top && y <= bottom
                             : kind == Kind::kSparse ? trial.between(0, 5) == 0
                             : kind == Kind::kDense  ? trial.between(0, 5) != 0
                                                     : trial.coin();
            if (set) mask.set(x, y, Qel8u(trial.between(1, 255)));
        }
    }
    return mask;
}

template <class T>
void model(const kit::Image<T>& src, kit::Image<T>& dst, const Mask& mask, bool dilates) {
    const auto [width, height] = src.size();
    const int channels = src.channels();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int c = 0; c < channels; ++c) {
                bool any = false;
                T result = src.at(x * channels + c, y);
                for (int j = 0; j < mask.size.height; ++j) {
                    for (int i = 0; i < mask.size.width; ++i) {
                        if (!mask.at(i, j)) continue;
                        const T s = src.at(std::clamp(x + i - mask.anchor.x, 0, width - 1) * channels + c,
                                           std::clamp(y + j - mask.anchor.y, 0, height - 1));
                        if (!any || (dilates ? s > result : s < result)) result = s;
                        any = true;
                    }
                }
                dst.at(x * channels + c, y) = result;
            }
        }
    }
}

// Zeros of both signs and NaNs have tests of their own.
inline void setContent(kit::Trial& trial, uint32_t seed) {
    constexpr kit::Content kContents[] = {kit::Content::kRandom, kit::Content::kEnds,   kit::Content::kRandom,
                                          kit::Content::kLowest, kit::Content::kRandom, kit::Content::kHighest};
    trial.setContent(kContents[seed % 6]);
}

}  // namespace masks

#endif
