#include <algorithm>
#include <vector>

#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

// The four functions by type; two of a type share a signature.
struct Functions8u {
    static constexpr auto bufferSize = qeliMorphReconstructGetBufferSize_8u_C1;
    static constexpr auto dilate = qeliMorphReconstructDilate_8u_C1IR;
    static constexpr auto erode = qeliMorphReconstructErode_8u_C1IR;
};
struct Functions32f {
    static constexpr auto bufferSize = qeliMorphReconstructGetBufferSize_32f_C1;
    static constexpr auto dilate = qeliMorphReconstructDilate_32f_C1IR;
    static constexpr auto erode = qeliMorphReconstructErode_32f_C1IR;
};
enum class Way { Dilate, Erode };

template <class Functions, class T>
Timing reconstruct(const char* name, Way way, const Image<T>& mask, Image<T>& marker, int norm) {
    int bytes = 0;
    Functions::bufferSize(mask.size(), &bytes);
    std::vector<Qel8u> scratch(static_cast<std::size_t>(bytes));
    const auto function = way == Way::Dilate ? Functions::dilate : Functions::erode;
    Timing timing(name, mask.size());
    timing.once([&] {
        return function(mask.data(), mask.step(), marker.data(), marker.step(), mask.size(), scratch.data(), norm);
    });
    return timing;
}

Image<Qel8u> minus(const Image<Qel8u>& a, const Image<Qel8u>& b) {
    Image<Qel8u> out(a.size());
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) out.at(x, y) = Qel8u(a.at(x, y) - b.at(x, y));
    return out;
}

void domes(Section& section) {
    constexpr int kHeight = 40;
    const Image<Qel8u>& gray = section.gray();
    Image<Qel8u> levelled(gray.size());
    for (int y = 0; y < gray.height(); ++y)
        for (int x = 0; x < gray.width(); ++x) levelled.at(x, y) = Qel8u(std::max(gray.at(x, y) - kHeight, 0));
    const Timing timing =
        reconstruct<Functions8u>("qeliMorphReconstructDilate_8u_C1IR", Way::Dilate, gray, levelled, qelMorphNormInf);
    section.add({.image = levelled,
                 .title = "Peaks cut off",
                 .text = "The picture minus 40, grown back under the picture: every summit is a plateau now, 40 lower "
                         "than it was at most.",
                 .timings = {timing}});
    section.add({.image = amplified(minus(gray, levelled), 6),
                 .title = "Domes",
                 .text = "What was cut off: whatever stands out of its surroundings by its height, whether large or "
                         "small, bright or dark. Six times as bright as computed.",
                 .facts = {{"height", std::to_string(kHeight)}}});
}

// The mask along the edge, and the largest value within.
Image<Qel8u> floodedFromTheEdge(const Image<Qel8u>& mask) {
    Image<Qel8u> marker(mask.size());
    for (int y = 0; y < mask.height(); ++y) {
        for (int x = 0; x < mask.width(); ++x) {
            const bool edge = x == 0 || y == 0 || x == mask.width() - 1 || y == mask.height() - 1;
            marker.at(x, y) = edge ? mask.at(x, y) : Qel8u{255};
        }
    }
    return marker;
}

void holes(Section& section) {
    Canvas canvas(section.gray().size());
    const float w = float(canvas.width()), h = float(canvas.height());
    for (int i = 0; i < 9; ++i) {
        const float x = w * (0.1f + 0.1f * float(i)), y = h * (0.3f + 0.4f * noise(i, 1));
        canvas.ring(x, y, h * (0.06f + 0.1f * noise(i, 2)), 3 + 4 * noise(i, 3), {0.9f, 0.9f, 0.9f});
    }
    canvas.text("ABOQR", w * 0.15f, h * 0.72f, h * 0.2f, 6, {0.7f, 0.7f, 0.7f});
    const Image<Qel8u> rings = canvas.gray();
    Image<Qel8u> filled = floodedFromTheEdge(rings);
    const Timing timing =
        reconstruct<Functions8u>("qeliMorphReconstructErode_8u_C1IR", Way::Erode, rings, filled, qelMorphNormL1);
    section.add({.image = sideBySide({rings, filled}),
                 .title = "Filled holes",
                 .text = "White water sinks onto the picture and can only leave over the edge: what is closed stays "
                         "full up to the lowest point of its rim.",
                 .timings = {timing},
                 .wide = true});

    const Image<Qel8u>& gray = section.gray();
    Image<Qel8u> lakes = floodedFromTheEdge(gray);
    const Timing grayTiming =
        reconstruct<Functions8u>("qeliMorphReconstructErode_8u_C1IR", Way::Erode, gray, lakes, qelMorphNormInf);
    section.add({.image = lakes,
                 .title = "Lakes",
                 .text = "The same on the picture, taken as a landscape.",
                 .timings = {grayTiming}});
}

void connected(Section& section) {
    // Of what is bright, only what the middle of the picture is connected with.
    const Image<Qel32f> mask = to32f(section.gray());
    Image<Qel32f> marker(mask.size());
    const QelPoint middle = {mask.width() / 2, mask.height() / 2};
    marker.at(middle.x, middle.y) = mask.at(middle.x, middle.y);
    const Timing dilation =
        reconstruct<Functions32f>("qeliMorphReconstructDilate_32f_C1IR", Way::Dilate, mask, marker, qelMorphNormL1);
    Canvas marked(picture(marker, 0, 1));
    marked.mark(middle);
    section.add({.image = marked.rgb(),
                 .title = "Light from one pixel",
                 .text = "Everywhere the best way from the marked pixel: how dark is the darkest place that it must "
                         "pass? Single precision, four neighbours.",
                 .timings = {dilation}});

    Image<Qel32f> shade(mask.size());
    for (int y = 0; y < shade.height(); ++y)
        for (int x = 0; x < shade.width(); ++x) shade.at(x, y) = mask.at(x, y) + 0.15f;
    const Timing erosion =
        reconstruct<Functions32f>("qeliMorphReconstructErode_32f_C1IR", Way::Erode, mask, shade, qelMorphNormInf);
    for (int y = 0; y < shade.height(); ++y)
        for (int x = 0; x < shade.width(); ++x) shade.at(x, y) -= mask.at(x, y);
    section.add({.image = colourMap(shade, 0, 0.15f),
                 .title = "Basins",
                 .text = "The picture plus 0.15, shrunk onto it again, minus the picture: dark places by their depth, "
                         "up to 0.15.",
                 .timings = {erosion}});
}

void reconstruction(Section& section) {
    domes(section);
    holes(section);
    connected(section);
}

const Registration registration(Room::Morphology, "Reconstruction",
                                "A marker grows under a mask, or shrinks onto it, until nothing changes: what the "
                                "marker does not touch is gone, all else keeps its shape.",
                                reconstruction);

}  // namespace
}  // namespace gallery
