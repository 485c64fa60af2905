#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

template <class T>
using Step = qelStatus (*)(const T*, int, T*, int, QelSize, Qel8u*);
using SizeQuery = qelStatus (*)(int, int, int, int*);

struct Direction {
    SizeQuery scratchBytes;
    QelSize (*sizeOfResult)(QelSize source);
};
constexpr Direction kDown = {qeliPyrDownGetBufSize_Gauss5x5, [](QelSize s) -> QelSize {
                                 return {(s.width + 1) / 2, (s.height + 1) / 2};
                             }};
constexpr Direction kUp = {qeliPyrUpGetBufSize_Gauss5x5, [](QelSize s) -> QelSize {
                               return {2 * s.width, 2 * s.height};
                           }};

template <class T>
struct Result {
    Image<T> image;
    Timing timing;
};

template <class T>
Result<T> step(Section& section, const char* name, Step<T> function, const Direction& direction,
               const Image<T>& source) {
    constexpr int kDataType = sizeof(T) == 4 ? 13 : 1;
    int bytes = 0;
    direction.scratchBytes(source.width(), kDataType, source.channels(), &bytes);
    std::vector<Qel8u> scratch(static_cast<std::size_t>(bytes));
    Image<T> out(direction.sizeOfResult(source.size()), source.channels());
    Timing timing = section.time(name, source.size(), [&] {
        return function(source.data(), source.step(), out.data(), out.step(), source.size(), scratch.data());
    });
    return {std::move(out), std::move(timing)};
}

// A part of the picture with even sides, so that half of it doubles to the same size.
Image<Qel8u> even(const Image<Qel8u>& image) {
    return zoomed(image, {0, 0, image.width() & ~1, image.height() & ~1}, 1);
}

void colourLevels(Section& section) {
    Image<Qel8u> level = section.rgb();
    std::vector<Timing> timings;
    std::vector<Image<Qel8u>> levels = {level};
    for (int i = 0; i < 4 && level.width() > 1 && level.height() > 1; ++i) {
        auto half = step(section, "qeliPyrDown_Gauss5x5_8u_C3R", qeliPyrDown_Gauss5x5_8u_C3R, kDown, level);
        if (i == 0) timings.push_back(half.timing);
        level = std::move(half.image);
        levels.push_back(level);
    }
    section.add({.image = sideBySide(levels),
                 .title = "Half, and half again",
                 .text = "Each picture is the one before, smoothed by the weights 1 4 6 4 1 in both directions, and "
                         "every other pixel of that.",
                 .timings = timings,
                 .wide = true});
}

void downAndUp(Section& section) {
    const Image<Qel8u> gray = even(section.gray());
    const auto half = step(section, "qeliPyrDown_Gauss5x5_8u_C1R", qeliPyrDown_Gauss5x5_8u_C1R, kDown, gray);
    const auto back = step(section, "qeliPyrUp_Gauss5x5_8u_C1R", qeliPyrUp_Gauss5x5_8u_C1R, kUp, half.image);
    section.add({.image = back.image,
                 .title = "Down and up again",
                 .text = "Half the size and back: what a quarter of the pixels can tell.",
                 .timings = {half.timing, back.timing}});

    Image<Qel32f> difference(gray.size());
    for (int y = 0; y < gray.height(); ++y)
        for (int x = 0; x < gray.width(); ++x)
            difference.at(x, y) = static_cast<float>(gray.at(x, y) - back.image.at(x, y));
    section.add(
        {.image = signedColours(difference, 40),
         .title = "What is lost on the way",
         .text = "The picture less the one above: orange where it is brighter, blue where it is darker. Kept "
                 "level by level, such differences are a Laplacian pyramid, from which the picture can be "
                 "restored without loss.",
         .facts = {{"from", digits(extremes(difference).min, 0)}, {"to", digits(extremes(difference).max, 0)}}});
}

void colourAndFloat(Section& section) {
    const auto twice = step(section, "qeliPyrUp_Gauss5x5_8u_C3R", qeliPyrUp_Gauss5x5_8u_C3R, kUp, section.rgb());
    const QelRect part = {section.rgb().width() / 3, section.rgb().height() / 3,
                          std::clamp(section.rgb().width() / 2, 1, 40), std::clamp(section.rgb().height() / 2, 1, 30)};
    const QelRect doubled = {2 * part.x, 2 * part.y, 2 * part.width, 2 * part.height};
    section.add({.image = sideBySide({zoomed(section.rgb(), part, 10), zoomed(twice.image, doubled, 5)}),
                 .title = "Twice the size, closely",
                 .text = "A part of the picture as it is, and doubled.",
                 .timings = {twice.timing},
                 .wide = true});

    const Image<Qel32f> exact = to32f(section.gray());
    const auto half = step(section, "qeliPyrDown_Gauss5x5_32f_C1R", qeliPyrDown_Gauss5x5_32f_C1R, kDown, exact);
    const auto back = step(section, "qeliPyrUp_Gauss5x5_32f_C1R", qeliPyrUp_Gauss5x5_32f_C1R, kUp, half.image);
    section.add({.image = colourMap(half.image, 0, 1),
                 .title = "Floating point",
                 .text = "Half the size in single precision, from dark blue for black to yellow for white. The order "
                         "of the additions is fixed, so every machine finds the same bits.",
                 .timings = {half.timing, back.timing}});
}

void gaussianSteps(Section& section) {
    colourLevels(section);
    if (section.gray().width() > 1 && section.gray().height() > 1) downAndUp(section);
    colourAndFloat(section);
}

const Registration registration(
    Room::Pyramid, "Gaussian steps",
    "One level down or up a Gaussian pyramid: half the size, smoothed so that nothing folds into false patterns, or "
    "twice the size without edges between pixels.",
    gaussianSteps);

}  // namespace
}  // namespace gallery
