#include <algorithm>
#include <cmath>
#include <vector>

#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

constexpr QelPointPolar kDelta = {1, 0.0174532925f};
constexpr int kMost = 40;

// The strongest edges of the picture.
Image<Qel8u> edgesOf(const Image<Qel8u>& gray) {
    const Image<Qel8u> soft = blurred(gray, 1);
    const QelSize size = gray.size();
    Image<Qel32f> dx(size), dy(size);
    for (int y = 1; y + 1 < size.height; ++y) {
        for (int x = 1; x + 1 < size.width; ++x) {
            dx.at(x, y) = Qel32f(soft.at(x + 1, y) - soft.at(x - 1, y));
            dy.at(x, y) = Qel32f(soft.at(x, y + 1) - soft.at(x, y - 1));
        }
    }
    Image<Qel8u> edges(size);
    int bytes = 0;
    qeliCannyGetSize(size, &bytes);
    std::vector<Qel8u> scratch(static_cast<std::size_t>(bytes));
    qeliCanny_32f8u_C1R(dx.data(), dx.step(), dy.data(), dy.step(), edges.data(), edges.step(), size, 15, 40,
                        scratch.data());
    return edges;
}

struct Lines {
    std::vector<QelPointPolar> lines;
    Timing timing;
};

// `find` takes the list, its count and the scratch.
template <class Find>
Lines linesOf(Section& section, const char* name, QelSize size, const Find& find) {
    int bytes = 0, count = 0;
    qeliHoughLineGetSize_8u_C1R(size, kDelta, kMost, &bytes);
    std::vector<Qel8u> scratch(static_cast<std::size_t>(bytes));
    std::vector<QelPointPolar> lines(kMost);
    const Timing timing = section.time(name, size, [&] { return find(lines.data(), &count, scratch.data()); });
    lines.resize(static_cast<std::size_t>(count));
    return {lines, timing};
}

Image<Qel8u> drawn(const Image<Qel8u>& picture, const std::vector<QelPointPolar>& lines) {
    Canvas canvas(picture);
    const float reach = float(picture.width() + picture.height());
    for (const QelPointPolar& line : lines) {
        const float c = std::cos(line.theta), s = std::sin(line.theta);
        canvas.line(line.rho * c - reach * s, line.rho * s + reach * c, line.rho * c + reach * s,
                    line.rho * s - reach * c, 1.5f, kMark);
    }
    return canvas.rgb();
}

void houghLine(Section& section) {
    const Image<Qel8u> edges = edgesOf(section.gray());
    const QelSize size = edges.size();
    const int threshold = size.height / 5;
    if (threshold < 3 || size.width < 16) return;  // no room for lines
    const Lines all = linesOf(section, "qeliHoughLine_8u32f_C1R", size, [&](auto* pLine, int* pCount, Qel8u* pBuffer) {
        return qeliHoughLine_8u32f_C1R(edges.data(), edges.step(), size, kDelta, threshold, pLine, kMost, pCount,
                                       pBuffer);
    });
    section.add({.image = sideBySide({drawn(edges, {}), drawn(section.gray(), all.lines)}),
                 .title = "The strongest lines",
                 .text = "Left: the edges that vote. Right: at most 40 lines that more than a fifth of the picture's "
                         "height lies on, at a resolution of one pixel and one degree.",
                 .timings = {all.timing},
                 .facts = {{"lines", std::to_string(all.lines.size())}},
                 .wide = true});

    const Lines steep =
        linesOf(section, "qeliHoughLine_Region_8u32f_C1R", size, [&](auto* pLine, int* pCount, Qel8u* pBuffer) {
            QelPointPolar corners[] = {{0, 0}, {Qel32f(size.width) / 2, 0.3f}};
            return qeliHoughLine_Region_8u32f_C1R(edges.data(), edges.step(), size, pLine, corners, kMost, pCount,
                                                  kDelta, threshold / 3, pBuffer);
        });
    section.add({.image = drawn(section.gray(), steep.lines),
                 .title = "Upright lines of the left half",
                 .text = "Only angles up to 0.3 and distances up to half of the width are looked at, so that fewer "
                         "votes are enough, and angles cost nothing that do not count.",
                 .timings = {steep.timing},
                 .facts = {{"lines", std::to_string(steep.lines.size())}}});
}

const Registration registration(Room::Feature, "Hough lines",
                                "The straight lines that most edge pixels lie on, as distances from the corner and "
                                "angles: each pixel votes for all lines through it, and peaks of the vote are lines.",
                                houghLine);

}  // namespace
}  // namespace gallery
