// Masks for morphology.
#ifndef GALLERY_STRUCTURING_H_
#define GALLERY_STRUCTURING_H_

#include <string>
#include <string_view>
#include <vector>

#include "canvas.h"
#include "image.h"

namespace gallery {

// Elements without gaps between rows, not zero where set, and the anchor in the middle.
struct Structuring {
    std::vector<Qel8u> elements;
    QelSize size;
    QelPoint anchor;
};

template <class IsSet>
Structuring structuring(QelSize size, const IsSet& isSet) {
    Structuring s = {{}, size, {size.width / 2, size.height / 2}};
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) s.elements.push_back(isSet(x, y) ? 1 : 0);
    return s;
}

inline Structuring rectangle(QelSize size) {
    return structuring(size, [](int, int) { return true; });
}

inline Structuring disc(int radius) {
    return structuring({2 * radius + 1, 2 * radius + 1}, [=](int x, int y) {
        return (x - radius) * (x - radius) + (y - radius) * (y - radius) <= radius * radius + radius;
    });
}

// Rows of '#' and other signs.
inline Structuring drawn(const std::vector<std::string>& rows) {
    return structuring({static_cast<int>(rows[0].size()), static_cast<int>(rows.size())}, [&](int x, int y) {
        return rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] == '#';
    });
}

// A word as the mask, in letters of that height.
inline Structuring word(std::string_view text, int height) {
    const QelSize size = {static_cast<int>(text.size()) * height, height + 2};
    Canvas canvas(size);
    canvas.text(text, 1, 1, static_cast<float>(height), static_cast<float>(height) / 8, {1, 1, 1});
    const Image<Qel8u> letters = canvas.gray();
    return structuring(size, [&](int x, int y) { return letters.at(x, y) >= 128; });
}

}  // namespace gallery

#endif
