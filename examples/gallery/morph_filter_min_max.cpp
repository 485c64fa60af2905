#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

struct Filtered {
    Image<Qel8u> image;
    Timing timing;
};

template <class Function, class BufferSize>
Filtered filtered(Section& section, const char* name, Function* function, BufferSize* bufferSize,
                  const Image<Qel8u>& image, QelSize mask) {
    int bytes = 0;
    bufferSize(image.width(), mask.width, mask.height, &bytes);
    std::vector<Qel8u> scratch(static_cast<std::size_t>(bytes));
    Image<Qel8u> result(image.size(), image.channels());
    const Timing timing = section.time(name, image.size(), [&] {
        return function(image.data(), image.step(), result.data(), result.step(), image.size(), mask,
                        QelPoint{mask.width / 2, mask.height / 2}, scratch.data());
    });
    return {std::move(result), timing};
}

Filtered brightest(Section& section, int width, int height) {
    return filtered(section, "qeliFilterMaxBorderReplicate_8u_C1R", qeliFilterMaxBorderReplicate_8u_C1R,
                    qeliFilterMaxGetBufferSize_8u_C1R, section.gray(), {width, height});
}
Filtered darkest(Section& section, int width, int height) {
    return filtered(section, "qeliFilterMinBorderReplicate_8u_C1R", qeliFilterMinBorderReplicate_8u_C1R,
                    qeliFilterMinGetBufferSize_8u_C1R, section.gray(), {width, height});
}

void showColour(Section& section) {
    const Filtered max = filtered(section, "qeliFilterMaxBorderReplicate_8u_C3R", qeliFilterMaxBorderReplicate_8u_C3R,
                                  qeliFilterMaxGetBufferSize_8u_C3R, section.rgb(), {9, 9});
    const Filtered min = filtered(section, "qeliFilterMinBorderReplicate_8u_C3R", qeliFilterMinBorderReplicate_8u_C3R,
                                  qeliFilterMinGetBufferSize_8u_C3R, section.rgb(), {9, 9});
    section.add({.image = sideBySide({min.image, max.image}),
                 .title = "Smallest and largest of 9 by 9",
                 .text = "What is bright shrinks on the left and grows on the right, in each colour by itself.",
                 .timings = {min.timing, max.timing},
                 .wide = true});
}

// Where a square is as bright as its brightest pixel, and as dark as its darkest, nothing happens.
void showContrast(Section& section) {
    const Filtered max = brightest(section, 15, 15);
    const Filtered min = darkest(section, 15, 15);
    Image<Qel8u> range(section.gray().size());
    for (int y = 0; y < range.height(); ++y)
        for (int x = 0; x < range.width(); ++x) range.at(x, y) = Qel8u(max.image.at(x, y) - min.image.at(x, y));
    section.add({.image = range,
                 .title = "Local contrast",
                 .text = "The largest less the smallest sample of 15 by 15: bright where there is something to see.",
                 .timings = {max.timing, min.timing}});
}

// Each sample between the extremes of its surroundings.
void showStretched(Section& section) {
    const Image<Qel8u>& gray = section.gray();
    const Filtered max = brightest(section, 63, 63);
    const Filtered min = darkest(section, 63, 63);
    Image<Qel8u> stretched(gray.size());
    for (int y = 0; y < gray.height(); ++y) {
        for (int x = 0; x < gray.width(); ++x) {
            const int low = min.image.at(x, y);
            const int range = max.image.at(x, y) - low;
            stretched.at(x, y) = Qel8u(range == 0 ? 128 : (gray.at(x, y) - low) * 255 / range);
        }
    }
    section.add({.image = stretched,
                 .title = "Contrast stretched from place to place",
                 .text = "Each sample by where it lies between the extremes of 63 by 63 pixels. A window sixteen times "
                         "as large as that above costs little more.",
                 .timings = {max.timing, min.timing}});
}

void showDirections(Section& section) {
    const Filtered across = brightest(section, 41, 1);
    const Filtered down = brightest(section, 1, 41);
    section.add({.image = sideBySide({across.image, down.image}),
                 .title = "Windows of one row and of one column",
                 .text = "The largest sample of 41 pixels across and of 41 down.",
                 .timings = {across.timing, down.timing},
                 .wide = true});
}

void minMax(Section& section) {
    showColour(section);
    showContrast(section);
    showStretched(section);
    showDirections(section);
}

const Registration registration(
    Room::Morphology, "Minimum and maximum filters",
    "The darkest or the brightest sample of a rectangle around each pixel, at nearly the same cost for all sizes.",
    minMax);

}  // namespace
}  // namespace gallery
