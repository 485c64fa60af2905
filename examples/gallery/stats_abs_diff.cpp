#include "canvas.h"
#include "pixels.h"
#include "scenes.h"
#include "section.h"

namespace gallery {
namespace {

// The functions that compare two images, and those that compare an image with a constant, share a signature each.
template <class T>
using Pair = qelStatus (*)(const T*, int, const T*, int, T*, int, QelSize);

template <class T>
struct Result {
    Image<T> image;
    Timing timing;
};

template <class T>
Result<T> compare(Section& section, const char* name, Pair<T> function, const Image<T>& a, const Image<T>& b) {
    Image<T> out(a.size(), a.channels());
    Timing timing = section.time(name, a.size(), [&] {
        return function(a.data(), a.step(), b.data(), b.step(), out.data(), out.step(), out.size());
    });
    return {std::move(out), std::move(timing)};
}

template <class T, class Value>
Result<T> compare(Section& section, const char* name, qelStatus (*function)(const T*, int, T*, int, QelSize, Value),
                  const Image<T>& a, Value value) {
    Image<T> out(a.size());
    Timing timing = section.time(
        name, a.size(), [&] { return function(a.data(), a.step(), out.data(), out.step(), out.size(), value); });
    return {std::move(out), std::move(timing)};
}

// A part of the picture that is worth a closer look: around the largest difference.
QelRect closeUp(const Image<Qel8u>& difference) {
    const QelPoint at = extremes(difference).maxAt;
    const QelSize part = {std::min(difference.width(), 48), std::min(difference.height(), 32)};
    return {std::clamp(at.x - part.width / 2, 0, difference.width() - part.width),
            std::clamp(at.y - part.height / 2, 0, difference.height() - part.height), part.width, part.height};
}

void shift(Section& section) {
    const Image<Qel8u>& gray = section.gray();
    const Image<Qel8u> moved = shifted(gray, 3, 2);
    const auto [difference, timing] = compare(section, "qeliAbsDiff_8u_C1R", qeliAbsDiff_8u_C1R, gray, moved);
    const Extremes<Qel8u> range = extremes(difference);
    Canvas marked(amplified(difference, 2));
    marked.mark(range.maxAt);
    section.add({.image = marked.rgb(),
                 .title = "Against itself, moved by three pixels",
                 .text = "Flat areas vanish, edges across the movement stay. Twice as bright as computed; the mark is "
                         "at the largest difference.",
                 .timings = {timing},
                 .facts = {{"largest", std::to_string(range.max)},
                           {"at", std::to_string(range.maxAt.x) + ", " + std::to_string(range.maxAt.y)}}});

    const QelRect part = closeUp(difference);
    section.add({.image = sideBySide({zoomed(gray, part, 9), zoomed(moved, part, 9), zoomed(difference, part, 9)}),
                 .title = "The same, pixel by pixel",
                 .text = "Around the mark: the picture, the moved picture, and the magnitude of their difference.",
                 .wide = true});
}

void blur(Section& section) {
    const Image<Qel8u> soft = blurred(section.gray(), 3);
    const auto [difference, timing] = compare(section, "qeliAbsDiff_8u_C1R", qeliAbsDiff_8u_C1R, section.gray(), soft);
    section.add({.image = amplified(difference, 4),
                 .title = "What a blur takes away",
                 .text = "The picture against its mean over 7 by 7 pixels: fine texture, noise and edges. Four times "
                         "as bright as computed.",
                 .timings = {timing},
                 .facts = {{"largest", std::to_string(extremes(difference).max)}}});
}

void colour(Section& section) {
    const auto [difference, timing] =
        compare(section, "qeliAbsDiff_8u_C3R", qeliAbsDiff_8u_C3R, section.rgb(), shifted(section.rgb(), 6, 0));
    section.add({.image = amplified(difference, 2),
                 .title = "In colour",
                 .text = "Three interleaved channels against a copy moved to the right by six pixels: each channel is "
                         "compared with its own kind.",
                 .timings = {timing}});
}

void constants(Section& section) {
    const auto middle = compare(section, "qeliAbsDiffC_8u_C1R", qeliAbsDiffC_8u_C1R, section.gray(), 128);
    section.add({.image = amplified(middle.image, 2),
                 .title = "Distance from middle gray",
                 .text = "Each pixel against the constant 128: black is middle gray, both dark and bright parts of the "
                         "picture turn bright. Twice as bright as computed.",
                 .timings = {middle.timing}});
    const auto negative = compare(section, "qeliAbsDiffC_8u_C1R", qeliAbsDiffC_8u_C1R, section.gray(), 300);
    section.add({.image = negative.image,
                 .title = "Distance from 300: the negative",
                 .text = "A constant beyond the range of the samples is brought back to its end, here 255, so nothing "
                         "wraps around.",
                 .timings = {negative.timing}});
}

void deepSamples(Section& section) {
    const Image<Qel16u> deep = to16u(section.gray());
    const Image<Qel16u> soft = to16u(blurred(section.gray(), 1));
    const auto pair = compare(section, "qeliAbsDiff_16u_C1R", qeliAbsDiff_16u_C1R, deep, soft);
    const auto constant = compare(section, "qeliAbsDiffC_16u_C1R", qeliAbsDiffC_16u_C1R, deep, 32768);
    section.add({.image = sideBySide({amplified(picture(pair.image), 6), picture(constant.image)}),
                 .title = "Samples of 16 bits",
                 .text = "Left: the picture against its mean over 3 by 3 pixels, six times as bright. Right: against "
                         "the constant 32768.",
                 .timings = {pair.timing, constant.timing},
                 .facts = {{"largest of the pair", std::to_string(extremes(pair.image).max)}},
                 .wide = true});
}

void floats(Section& section) {
    const Image<Qel32f> exact = to32f(section.gray());
    const Image<Qel32f> soft = to32f(blurred(section.gray(), 6));
    const auto pair = compare(section, "qeliAbsDiff_32f_C1R", qeliAbsDiff_32f_C1R, exact, soft);
    const auto constant = compare(section, "qeliAbsDiffC_32f_C1R", qeliAbsDiffC_32f_C1R, exact, 0.5f);
    const auto facts = [](const Image<Qel32f>& image) {
        return std::vector<Fact>{{"from", digits(extremes(image).min, 4)}, {"to", digits(extremes(image).max, 4)}};
    };
    section.add({.image = colourMap(pair.image, 0, 0.5f),
                 .title = "Floating point, two images",
                 .text = "Against a blurred copy, from dark blue for no difference to yellow for one of 0.5.",
                 .timings = {pair.timing},
                 .facts = facts(pair.image)});
    section.add({.image = colourMap(constant.image, 0, 0.5f),
                 .title = "Floating point, a constant",
                 .text = "The distance of each sample from 0.5, in the same colours.",
                 .timings = {constant.timing},
                 .facts = facts(constant.image)});
}

void motion(Section& section) {
    const QelSize size = {640, 400};
    const Image<Qel8u> before = movingShapes(size, 40).gray(), after = movingShapes(size, 46).gray();
    const auto [difference, timing] = compare(section, "qeliAbsDiff_8u_C1R", qeliAbsDiff_8u_C1R, before, after);
    int moved = 0;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) moved += difference.at(x, y) > 24;
    }
    section.add({.image = sideBySide({before, after, amplified(difference, 2)}),
                 .title = "What has moved between two frames",
                 .text = "Two frames of a sequence and their difference: what stands still cancels, what moves shows "
                         "twice, where it was and where it is.",
                 .timings = {timing},
                 .facts = {{"pixels that differ by more than 24",
                            digits(100.0 * moved / (size.width * size.height), 1) + " %"}},
                 .wide = true});
}

void absoluteDifference(Section& section) {
    shift(section);
    blur(section);
    colour(section);
    constants(section);
    deepSamples(section);
    floats(section);
    motion(section);
}

const Registration registration(
    Room::Stats, "Absolute difference",
    "How far apart two images are, pixel by pixel, or an image and a constant. The first step of change detection, "
    "focus measures and background subtraction. Integer results are exact and cannot wrap around.",
    absoluteDifference);

}  // namespace
}  // namespace gallery
