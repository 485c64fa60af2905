#include <algorithm>
#include <cmath>

#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

QelSize larger(QelSize size, int by) { return {size.width + by, size.height + by}; }

// A table from dark to bright, with contour lines: a smooth surface alone tells the eye little.
template <class T>
Image<Qel8u> relief(const Image<T>& table) {
    const double full = std::max(1.0, double(extremes(table).max));
    Image<Qel32f> levels(table.size());
    for (int y = 0; y < table.height(); ++y) {
        for (int x = 0; x < table.width(); ++x) {
            const double level = double(table.at(x, y)) / full;
            const bool line = level * 24 - std::floor(level * 24) < 0.1;
            levels.at(x, y) = static_cast<Qel32f>(line ? level * 0.7 : level);
        }
    }
    return colourMap(levels, 0, 1);
}

void upright(Section& section) {
    const Image<Qel8u>& gray = section.gray();
    Image<Qel32s> table(larger(gray.size(), 1));
    Image<Qel32f> floats(larger(gray.size(), 1));
    const Timing integers = section.time("qeliIntegral_8u32s_C1R", gray.size(), [&] {
        return qeliIntegral_8u32s_C1R(gray.data(), gray.step(), table.data(), table.step(), gray.size(), 0);
    });
    const Timing singles = section.time("qeliIntegral_8u32f_C1R", gray.size(), [&] {
        return qeliIntegral_8u32f_C1R(gray.data(), gray.step(), floats.data(), floats.step(), gray.size(), 0);
    });
    section.add({.image = relief(table),
                 .title = "The integral of the picture",
                 .text = "Each element is the sum of all pixels above and to the left of it, from dark blue for none "
                         "to yellow for the whole picture. Along a contour line the sum is the same.",
                 .timings = {integers, singles},
                 .facts = {{"sum of all pixels", std::to_string(table.at(gray.width(), gray.height()))},
                           {"the same in 32f", digits(floats.at(gray.width(), gray.height()), 0)}}});

    // What the table is for: the sum of any window takes four reads, however large the window.
    constexpr int kReach = 12;
    Image<Qel8u> means(gray.size());
    for (int y = 0; y < gray.height(); ++y) {
        for (int x = 0; x < gray.width(); ++x) {
            const int left = std::max(x - kReach, 0), right = std::min(x + kReach + 1, gray.width());
            const int top = std::max(y - kReach, 0), bottom = std::min(y + kReach + 1, gray.height());
            const int sum =
                table.at(right, bottom) - table.at(left, bottom) - table.at(right, top) + table.at(left, top);
            means.at(x, y) = Qel8u(sum / ((right - left) * (bottom - top)));
        }
    }
    section.add({.image = means,
                 .title = "Means of 625 pixels, by four reads each",
                 .text = "The sum of a window is the difference of the table at its corners. A window a hundred times "
                         "as large costs the same."});
}

void squares(Section& section) {
    const Image<Qel8u>& gray = section.gray();
    Image<Qel32s> table(larger(gray.size(), 1)), sqr(larger(gray.size(), 1));
    Image<Qel32f> floats(larger(gray.size(), 1));
    Image<Qel64f> exact(larger(gray.size(), 1));
    const Timing integers = section.time("qeliSqrIntegral_8u32s_C1R", gray.size(), [&] {
        return qeliSqrIntegral_8u32s_C1R(gray.data(), gray.step(), table.data(), table.step(), sqr.data(), sqr.step(),
                                         gray.size(), 0, 0);
    });
    const Timing singles = section.time("qeliSqrIntegral_8u32f64f_C1R", gray.size(), [&] {
        return qeliSqrIntegral_8u32f64f_C1R(gray.data(), gray.step(), floats.data(), floats.step(), exact.data(),
                                            exact.step(), gray.size(), 0, 0);
    });
    const Timing mixed = section.time("qeliSqrIntegral_8u32s64f_C1R", gray.size(), [&] {
        return qeliSqrIntegral_8u32s64f_C1R(gray.data(), gray.step(), table.data(), table.step(), exact.data(),
                                            exact.step(), gray.size(), 0, 0);
    });
    section.add({.image = relief(exact),
                 .title = "The integral of its squares",
                 .text = "Formed in the same pass. With both tables the deviation of any window takes eight reads. In "
                         "32-bit integers this table wraps on large pictures; differences stay right while a window's "
                         "own sum fits.",
                 .timings = {mixed, singles, integers},
                 .facts = {{"sum of all squares", digits(exact.at(gray.width(), gray.height()), 0)},
                           {"in 32 bits", std::to_string(sqr.at(gray.width(), gray.height()))}}});
}

void tilted(Section& section) {
    const Image<Qel8u>& gray = section.gray();
    Image<Qel32s> table(larger(gray.size(), 2));
    Image<Qel32f> floats(larger(gray.size(), 2));
    const Timing integers = section.time("qeliTiltedIntegral_8u32s_C1R", gray.size(), [&] {
        return qeliTiltedIntegral_8u32s_C1R(gray.data(), gray.step(), table.data(), table.step(), gray.size(), 0);
    });
    Timing singles("qeliTiltedIntegral_8u32f_C1R", gray.size());
    singles.once([&] {  // once: a second call would add to column w
        return qeliTiltedIntegral_8u32f_C1R(gray.data(), gray.step(), floats.data(), floats.step(), gray.size(), 0);
    });
    section.add({.image = relief(table),
                 .title = "The integral over wedges",
                 .text = "Each element is the sum over the quarter of the picture that opens upwards from it, bounded "
                         "by two diagonals. Four reads give the sum of a rectangle that stands on its corner.",
                 .timings = {integers, singles}});

    Image<Qel64f> sqr(larger(gray.size(), 2));
    const Timing both = section.time("qeliTiltedSqrIntegral_8u32s64f_C1R", gray.size(), [&] {
        return qeliTiltedSqrIntegral_8u32s64f_C1R(gray.data(), gray.step(), table.data(), table.step(), sqr.data(),
                                                  sqr.step(), gray.size(), 0, 0);
    });
    section.add({.image = relief(sqr),
                 .title = "Wedges of squares",
                 .text = "The same on squared pixels, beside the table of sums in one pass.",
                 .timings = {both}});
}

void integralImages(Section& section) {
    upright(section);
    squares(section);
    tilted(section);
}

const Registration registration(Room::Detect, "Integral images",
                                "Tables of sums over everything above and to the left: with them the sum of any "
                                "rectangle, upright or on its corner, takes four reads. The ground on which windows "
                                "are compared with features by the million.",
                                integralImages);

}  // namespace
}  // namespace gallery
