#include <algorithm>
#include <cmath>
#include <vector>

#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

// Bright shapes, to whose ground distances are taken.
Image<Qel8u> shapes(QelSize size) {
    Canvas canvas(size);
    const float unit = static_cast<float>(std::min(size.width, size.height)) / 10;
    canvas.disc(2.7F * unit, 2.8F * unit, 2.2F * unit, {255, 255, 255});
    canvas.line(4 * unit, 8 * unit, 9 * unit, 1.5F * unit, 1.6F * unit, {255, 255, 255});
    canvas.text("EDT", 0.6F * unit, 6.2F * unit, 2.6F * unit, 0.8F * unit, {255, 255, 255});
    Image<Qel8u> binary = canvas.gray();
    for (int y = 0; y < binary.height(); ++y)
        std::transform(binary.row(y), binary.row(y) + binary.width(), binary.row(y),
                       [](Qel8u v) { return static_cast<Qel8u>(v < 128 ? 0 : 255); });
    return binary;
}

// Bands of equal distance, a few pixels wide.
Image<Qel8u> bands(const Image<Qel32f>& distance) {
    Image<Qel32f> banded(distance.size());
    for (int y = 0; y < distance.height(); ++y)
        for (int x = 0; x < distance.width(); ++x) banded.at(x, y) = 8 * std::floor(distance.at(x, y) / 8);
    return colourMap(banded, 0, extremes(distance).max);
}

void trueDistance(Section& section) {
    const Image<Qel8u> source = shapes(section.gray().size());
    int bytes = 0;
    qeliTrueDistanceTransformGetBufferSize_8u32f_C1R(source.size(), &bytes);
    std::vector<Qel8u> scratch(static_cast<size_t>(bytes));
    Image<Qel32f> distance(source.size());
    const Timing floats = section.time("qeliTrueDistanceTransform_8u32f_C1R", source.size(), [&] {
        return qeliTrueDistanceTransform_8u32f_C1R(source.data(), source.step(), distance.data(), distance.step(),
                                                   source.size(), scratch.data());
    });
    section.add({.image = sideBySide({source, bands(distance)}),
                 .title = "How far it is to the ground",
                 .text = "Each pixel of a shape gets its distance to the nearest pixel that belongs to none. Bands are "
                         "8 pixels wide.",
                 .timings = {floats},
                 .facts = {{"largest distance", digits(extremes(distance).max, 2) + " pixels"}}});

    qeliTrueDistanceTransformGetBufferSize_8u16u_C1RSfs(source.size(), &bytes);
    scratch.resize(static_cast<size_t>(bytes));
    Image<Qel16u> words(source.size());
    const Timing integers = section.time("qeliTrueDistanceTransform_8u16u_C1RSfs", source.size(), [&] {
        return qeliTrueDistanceTransform_8u16u_C1RSfs(source.data(), source.step(), words.data(), words.step(),
                                                      source.size(), -4, scratch.data());
    });
    section.add({.image = amplified(picture(words), 16),
                 .title = "In sixteenths of a pixel",
                 .text = "Integers by a scale of -4: sixteen times the distance, rounded.",
                 .timings = {integers}});
}

const Registration registration(Room::Distance, "Euclidean distance",
                                "The exact distance from each pixel of a shape to the nearest pixel outside of it, in "
                                "a time that does not depend on the shapes.",
                                trueDistance);

}  // namespace
}  // namespace gallery
