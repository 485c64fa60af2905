#include <algorithm>

#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

QelSize larger(QelSize size, int by) { return {size.width + by, size.height + by}; }

// A window this wide around each pixel that has one.
constexpr int kSide = 9;

void upright(Section& section) {
    const Image<Qel8u>& gray = section.gray();
    const QelSize places = larger(gray.size(), 1 - kSide);
    const QelRect window = {0, 0, kSide, kSide};
    Image<Qel32s> sums(larger(gray.size(), 1)), integerSquares(larger(gray.size(), 1)), integers(places);
    Image<Qel32f> singles(larger(gray.size(), 1)), deviation(places);
    Image<Qel64f> squares(larger(gray.size(), 1));
    qeliSqrIntegral_8u32f64f_C1R(gray.data(), gray.step(), singles.data(), singles.step(), squares.data(),
                                 squares.step(), gray.size(), 0, 0);
    qeliSqrIntegral_8u32s_C1R(gray.data(), gray.step(), sums.data(), sums.step(), integerSquares.data(),
                              integerSquares.step(), gray.size(), 0, 0);

    const Timing mixed = section.time("qeliRectStdDev_32s32f_C1R", places, [&] {
        return qeliRectStdDev_32s32f_C1R(sums.data(), sums.step(), squares.data(), squares.step(), deviation.data(),
                                         deviation.step(), places, window);
    });
    const Extremes<Qel32f> range = extremes(deviation);
    section.add({.image = colourMap(deviation, 0, 60),
                 .title = "A map of texture",
                 .text = "The standard deviation of the 9 by 9 pixels around each place, from dark blue for flat areas "
                         "to yellow for edges and strong texture. The tables are summed in integers.",
                 .timings = {mixed},
                 .facts = {{"smallest", digits(range.min, 2)}, {"largest", digits(range.max, 2)}}});

    const Timing floats = section.time("qeliRectStdDev_32f_C1R", places, [&] {
        return qeliRectStdDev_32f_C1R(singles.data(), singles.step(), squares.data(), squares.step(), deviation.data(),
                                      deviation.step(), places, window);
    });
    section.add({.image = colourMap(deviation, 0, 60),
                 .title = "The same from single-precision tables",
                 .text = "Sums beyond 16 million are rounded as they are tabled. On a large picture that shows as a "
                         "rough floor in flat areas near its lower right corner.",
                 .timings = {floats}});

    const Timing whole = section.time("qeliRectStdDev_32s_C1RSfs", places, [&] {
        return qeliRectStdDev_32s_C1RSfs(sums.data(), sums.step(), integerSquares.data(), integerSquares.step(),
                                         integers.data(), integers.step(), places, window, -2);
    });
    section.add({.image = signedColours(integers, 400),
                 .title = "As integers, four times as fine",
                 .text = "A scale of -2 multiplies the result by four before it is rounded.",
                 .timings = {whole},
                 .facts = {{"largest", std::to_string(extremes(integers).max)}}});
}

void tilted(Section& section) {
    const Image<Qel8u>& gray = section.gray();
    // A square that stands on its corner, seven diagonals to a side. The table is read from as far to the right as the
    // square reaches to the left.
    constexpr int kDiagonals = 7;
    const QelRect window = {kDiagonals, 0, kDiagonals, kDiagonals};
    const QelSize places = {gray.width() - 2 * kDiagonals, gray.height() - 3 * kDiagonals};
    if (places.width < 1 || places.height < 1) return;
    // Steps are tested against rows that would hold the whole window beside the last place.
    Image<Qel32s> sums(larger(gray.size(), kDiagonals));
    Image<Qel64f> squares(larger(gray.size(), kDiagonals));
    Image<Qel32f> deviation(places);
    qeliTiltedSqrIntegral_8u32s64f_C1R(gray.data(), gray.step(), sums.data(), sums.step(), squares.data(),
                                       squares.step(), gray.size(), 0, 0);
    const Timing timing = section.time("qeliTiltedRectStdDev_32s32f_C1R", places, [&] {
        return qeliTiltedRectStdDev_32s32f_C1R(sums.data(), sums.step(), squares.data(), squares.step(),
                                               deviation.data(), deviation.step(), places, window);
    });
    section.add({.image = colourMap(deviation, 0, 60),
                 .title = "Under a square on its corner",
                 .text = "From tilted tables, in double precision: 98 pixels in a diamond.",
                 .timings = {timing}});
}

void deviations(Section& section) {
    if (section.gray().width() <= kSide || section.gray().height() <= kSide) return;
    upright(section);
    tilted(section);
}

const Registration registration(Room::Detect, "Standard deviation of windows",
                                "How much the pixels of a window differ, at every place of it, from two integral "
                                "images: a measure of texture and focus, and what makes detectors indifferent to "
                                "contrast.",
                                deviations);

}  // namespace
}  // namespace gallery
