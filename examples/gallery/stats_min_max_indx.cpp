#include <array>
#include <cmath>

#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

constexpr Colour kLow = {0.25f, 0.65f, 1.0f};
constexpr Colour kHigh = kMark;

// What a call finds.
struct Found {
    Qel32f low = 0, high = 0;
    QelPoint lowAt = {0, 0}, highAt = {0, 0};
};

std::string at(QelPoint point) { return std::to_string(point.x) + ", " + std::to_string(point.y); }

std::vector<Fact> facts(const Found& found, int decimals) {
    return {{"smallest", digits(found.low, decimals)},
            {"at", at(found.lowAt)},
            {"largest", digits(found.high, decimals)},
            {"at", at(found.highAt)}};
}

Image<Qel8u> marked(const Image<Qel8u>& picture, const Found& found) {
    Canvas canvas(picture);
    canvas.mark(found.lowAt, kLow);
    canvas.mark(found.highAt, kHigh);
    return canvas.rgb();
}

// Calls `function` on an image, with the arguments of its form in between, and times it.
template <class T, class Function, class... Arguments>
Timing find(Section& section, const char* name, Function function, const Image<T>& image, Found& found,
            Arguments... arguments) {
    return section.time(name, image.size(), [&] {
        return function(image.data(), image.step(), arguments..., &found.low, &found.high, &found.lowAt, &found.highAt);
    });
}

// A round window, and the picture dimmed where the mask leaves it out.
Image<Qel8u> window(QelSize size) {
    Image<Qel8u> mask(size);
    const float radius = 0.3f * float(std::min(size.width, size.height));
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const float dx = float(x) - 0.5f * float(size.width), dy = float(y) - 0.5f * float(size.height);
            mask.at(x, y) = std::hypot(dx, dy) < radius ? 255 : 0;
        }
    }
    return mask;
}

Image<Qel8u> dimmed(const Image<Qel8u>& picture, const Image<Qel8u>& mask) {
    Image<Qel8u> out(picture.size(), picture.channels());
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            for (int c = 0; c < picture.channels(); ++c) {
                out.at(x, y, c) = Qel8u(mask.at(x, y) != 0 ? picture.at(x, y, c) : picture.at(x, y, c) / 3);
            }
        }
    }
    return out;
}

void whole(Section& section) {
    Found found;
    const Image<Qel8u> soft = blurred(section.gray(), 4);
    const Timing timing = find(section, "qeliMinMaxIndx_8u_C1R", qeliMinMaxIndx_8u_C1R, soft, found, soft.size());
    section.add({.image = marked(soft, found),
                 .title = "The darkest and the brightest spot",
                 .text = "Of the picture averaged over 9 by 9 pixels, so that a spot is more than a pixel of "
                         "noise. Blue: the smallest sample, red: the largest. Of equal samples the first counts.",
                 .timings = {timing},
                 .facts = facts(found, 0)});
}

void masked(Section& section) {
    Found found;
    const Image<Qel8u> soft = blurred(section.gray(), 4);
    const Image<Qel8u> mask = window(soft.size());
    const Timing timing = find(section, "qeliMinMaxIndx_8u_C1MR", qeliMinMaxIndx_8u_C1MR, soft, found, mask.data(),
                               mask.step(), soft.size());
    section.add({.image = marked(dimmed(soft, mask), found),
                 .title = "The same under a mask",
                 .text = "Only pixels whose mask byte is not zero take part, here those of a round window.",
                 .timings = {timing},
                 .facts = facts(found, 0)});
}

void channels(Section& section) {
    const Image<Qel8u> mask = window(section.rgb().size());
    Canvas all(section.rgb()), within(dimmed(section.rgb(), mask));
    std::vector<Fact> largest;
    std::vector<Timing> timings;
    const std::array<const char*, 3> names = {"red", "green", "blue"};
    const std::array<Colour, 3> colours = {Colour{1, 0.3f, 0.3f}, {0.3f, 1, 0.3f}, {0.4f, 0.5f, 1}};
    for (int coi = 1; coi <= 3; ++coi) {
        Found found;
        const size_t i = size_t(coi - 1);
        const Timing plain = find(section, "qeliMinMaxIndx_8u_C3CR", qeliMinMaxIndx_8u_C3CR, section.rgb(), found,
                                  section.rgb().size(), coi);
        all.mark(found.highAt, colours[i]);
        largest.push_back({std::string("largest ") + names[i], digits(found.high, 0) + " at " + at(found.highAt)});
        const Timing underMask = find(section, "qeliMinMaxIndx_8u_C3CMR", qeliMinMaxIndx_8u_C3CMR, section.rgb(), found,
                                      mask.data(), mask.step(), section.rgb().size(), coi);
        within.mark(found.highAt, colours[i]);
        if (coi == 1) timings = {plain, underMask};
    }
    section.add({.image = sideBySide({all.rgb(), within.rgb()}),
                 .title = "One channel of three",
                 .text = "The largest red, green and blue sample, each found in the interleaved picture without taking "
                         "it apart. Left: of the whole picture, right: in the window.",
                 .timings = timings,
                 .facts = largest,
                 .wide = true});
}

// The samples of a picture about their middle, as signed bytes.
Image<Qel8s> to8s(const Image<Qel8u>& image) {
    Image<Qel8s> out(image.size());
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) out.at(x, y) = Qel8s(image.at(x, y) - 128);
    }
    return out;
}

void otherSamples(Section& section) {
    const Image<Qel8u> soft = blurred(section.gray(), 4);
    const Image<Qel8s> bytes = to8s(soft);
    const Image<Qel16u> deep = to16u(soft);
    const Image<Qel32f> floats = to32f(soft);
    Found ofBytes, ofDeep, ofFloats;
    const std::vector<Timing> timings = {
        find(section, "qeliMinMaxIndx_8s_C1R", qeliMinMaxIndx_8s_C1R, bytes, ofBytes, bytes.size()),
        find(section, "qeliMinMaxIndx_16u_C1R", qeliMinMaxIndx_16u_C1R, deep, ofDeep, deep.size()),
        find(section, "qeliMinMaxIndx_32f_C1R", qeliMinMaxIndx_32f_C1R, floats, ofFloats, floats.size())};
    const auto range = [](const Found& f, int decimals) {
        return digits(f.low, decimals) + " to " + digits(f.high, decimals);
    };
    section.add({.image = sideBySide({marked(soft, ofBytes), marked(soft, ofDeep), marked(soft, ofFloats)}),
                 .title = "Signed bytes, 16 bits, floating point",
                 .text = "The same picture in three other types: values differ, places do not.",
                 .timings = timings,
                 .facts = {{"8s", range(ofBytes, 0)}, {"16u", range(ofDeep, 0)}, {"32f", range(ofFloats, 4)}},
                 .wide = true});
}

void minMaxIndx(Section& section) {
    whole(section);
    masked(section);
    channels(section);
    otherSamples(section);
}

const Registration registration(
    Room::Stats, "Extremes with position",
    "The smallest and the largest sample of a region, and where each comes first in reading order: of an image or of "
    "one channel of three, with or without a mask. Finds peaks of a score, and the range to scale a picture by.",
    minMaxIndx);

}  // namespace
}  // namespace gallery
