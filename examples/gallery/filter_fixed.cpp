#include <algorithm>
#include <cmath>

#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

constexpr int k3x3 = 33;
constexpr int k5x5 = 55;

// The functions of one kind share a signature: a mask where there are two sizes, a divisor where the result is 8s.
template <class Src, class Dst>
using Masked = qelStatus (*)(const Src*, int, Dst*, int, QelSize, int, int, Src, Qel8u*);
template <class Src, class Dst>
using Unmasked = qelStatus (*)(const Src*, int, Dst*, int, QelSize, int, Src, Qel8u*);
using Divided = qelStatus (*)(const Qel8u*, int, Qel8s*, int, QelSize, int, int, Qel8u, int, Qel8u*);

template <class T>
struct Result {
    Image<T> image;
    Timing timing;
};

// Runs call(out, scratch) with an image and with scratch of `bytes` bytes.
template <class Dst, class Call>
Result<Dst> run(Section& section, const char* name, QelSize size, int bytes, const Call& call) {
    Image<Dst> out(size);
    std::vector<Qel8u> scratch(static_cast<std::size_t>(bytes));
    Timing timing = section.time(name, size, [&] { return call(out, scratch.data()); });
    return {std::move(out), std::move(timing)};
}

template <class Src, class Dst>
Result<Dst> filter(Section& section, const char* name, Masked<Src, Dst> function,
                   qelStatus (*query)(QelSize, int, int*), const Image<Src>& image, int mask) {
    int bytes = 0;
    query(image.size(), mask, &bytes);
    return run<Dst>(section, name, image.size(), bytes, [&](Image<Dst>& out, Qel8u* scratch) {
        return function(image.data(), image.step(), out.data(), out.step(), out.size(), mask, qelBorderMirr, 0,
                        scratch);
    });
}

template <class Src, class Dst>
Result<Dst> filter(Section& section, const char* name, Unmasked<Src, Dst> function, qelStatus (*query)(QelSize, int*),
                   const Image<Src>& image) {
    int bytes = 0;
    query(image.size(), &bytes);
    return run<Dst>(section, name, image.size(), bytes, [&](Image<Dst>& out, Qel8u* scratch) {
        return function(image.data(), image.step(), out.data(), out.step(), out.size(), qelBorderMirr, 0, scratch);
    });
}

Result<Qel8s> filter(Section& section, const char* name, Divided function, qelStatus (*query)(QelSize, int, int*),
                     const Image<Qel8u>& image, int mask, int divisor) {
    int bytes = 0;
    query(image.size(), mask, &bytes);
    return run<Qel8s>(section, name, image.size(), bytes, [&](Image<Qel8s>& out, Qel8u* scratch) {
        return function(image.data(), image.step(), out.data(), out.step(), out.size(), mask, qelBorderMirr, 0, divisor,
                        scratch);
    });
}

// An angle as a hue, as bright as `value` says.
Colour direction(float across, float down, float value) {
    constexpr float kThird = 2.0943951f;
    const float angle = std::atan2(down, across);
    const auto part = [&](float at) { return value * (0.55f + 0.45f * std::cos(angle - at)); };
    return {part(0), part(kThird), part(2 * kThird)};
}

// The colours of all directions as a ring in the lower right corner.
void addKey(Canvas& canvas) {
    const float radius = 0.07f * static_cast<float>(std::min(canvas.width(), canvas.height()));
    const float x0 = static_cast<float>(canvas.width()) - 1.5f * radius;
    const float y0 = static_cast<float>(canvas.height()) - 1.5f * radius;
    canvas.disc(x0, y0, 1.2f * radius, {0, 0, 0});
    for (int y = static_cast<int>(y0 - radius); y < canvas.height(); ++y) {
        for (int x = static_cast<int>(x0 - radius); x < canvas.width(); ++x) {
            const float dx = static_cast<float>(x) - x0, dy = static_cast<float>(y) - y0;
            const float edge = std::abs(std::hypot(dx, dy) - 0.8f * radius) - 0.2f * radius;
            canvas.blend(x, y, direction(dx, dy, 1), std::clamp(0.5f - edge, 0.0f, 1.0f));
        }
    }
}

// The window of the picture that changes most from pixel to pixel, in both directions.
QelRect busiest(const Image<Qel8u>& gray, QelSize part) {
    part = {std::min(part.width, gray.width()), std::min(part.height, gray.height())};
    QelRect best = {0, 0, part.width, part.height};
    int most = -1;
    for (int top = 0; top + part.height <= gray.height(); top += std::max(part.height / 4, 1)) {
        for (int left = 0; left + part.width <= gray.width(); left += std::max(part.width / 4, 1)) {
            int across = 0, down = 0;
            for (int y = top + 1; y < top + part.height; ++y) {
                for (int x = left + 1; x < left + part.width; ++x) {
                    across += std::abs(gray.at(x, y) - gray.at(x - 1, y));
                    down += std::abs(gray.at(x, y) - gray.at(x, y - 1));
                }
            }
            if (std::min(across, down) > most) {
                most = std::min(across, down);
                best = {left, top, part.width, part.height};
            }
        }
    }
    return best;
}

template <class T>
std::vector<Fact> range(const Image<T>& image, int decimals = 0) {
    const Extremes<T> e = extremes(image);
    return {{"from", digits(static_cast<double>(e.min), decimals)},
            {"to", digits(static_cast<double>(e.max), decimals)}};
}

void gradient(Section& section) {
    const auto across = filter(section, "qeliFilterScharrVertBorder_8u16s_C1R", qeliFilterScharrVertBorder_8u16s_C1R,
                               qeliFilterScharrVertGetBufferSize_8u16s_C1R, section.gray());
    const auto down = filter(section, "qeliFilterScharrHorizBorder_8u16s_C1R", qeliFilterScharrHorizBorder_8u16s_C1R,
                             qeliFilterScharrHorizGetBufferSize_8u16s_C1R, section.gray());
    Canvas canvas(section.gray().size());
    double steepest = 0;
    canvas.paint([&](int x, int y) {
        const float dx = across.image.at(x, y), dy = down.image.at(x, y);
        const float magnitude = std::hypot(dx, dy);
        steepest = std::max(steepest, static_cast<double>(magnitude));
        return direction(dx, dy, std::min(std::sqrt(magnitude / 2000), 1.0f));
    });
    addKey(canvas);
    section.add({.image = canvas.rgb(),
                 .title = "Where edges are, and which way they face",
                 .text = "Two Scharr filters, across and down. The longer the gradient, the brighter. Colour tells its "
                         "direction: the ring in the corner shows where the bright side lies.",
                 .timings = {across.timing, down.timing},
                 .facts = {{"steepest", digits(steepest, 0)}},
                 .wide = true});
}

void twoDirections(Section& section) {
    const auto vert = filter(section, "qeliFilterSobelVertBorder_8u16s_C1R", qeliFilterSobelVertBorder_8u16s_C1R,
                             qeliFilterSobelVertGetBufferSize_8u16s_C1R, section.gray(), k3x3);
    const auto horiz = filter(section, "qeliFilterSobelHorizBorder_8u16s_C1R", qeliFilterSobelHorizBorder_8u16s_C1R,
                              qeliFilterSobelHorizGetBufferSize_8u16s_C1R, section.gray(), k3x3);
    section.add({.image = signedColours(vert.image, 500),
                 .title = "Vertical edges",
                 .text = "A Sobel filter of 3 by 3. Orange: darker from left to right. Blue: brighter.",
                 .timings = {vert.timing},
                 .facts = range(vert.image)});
    section.add({.image = signedColours(horiz.image, 500),
                 .title = "Horizontal edges",
                 .text = "Its counterpart. Orange: brighter from top to bottom. Blue: darker.",
                 .timings = {horiz.timing},
                 .facts = range(horiz.image)});
}

void relief(Section& section) {
    constexpr int kDivisor = 8;
    const auto slope = filter(section, "qeliFilterSobelNegVertBorder_8u8s_C1R", qeliFilterSobelNegVertBorder_8u8s_C1R,
                              qeliFilterSobelNegVertGetBufferSize_8u8s_C1R, section.gray(), k3x3, kDivisor);
    Image<Qel8u> lit(slope.image.size());
    for (int y = 0; y < lit.height(); ++y) {
        for (int x = 0; x < lit.width(); ++x) {
            lit.at(x, y) = static_cast<Qel8u>(std::clamp(128 - 2 * slope.image.at(x, y), 0, 255));
        }
    }
    section.add({.image = lit,
                 .title = "A relief, lit from the right",
                 .text = "The brightness of the picture taken as height. The derivative is divided by 8 and saturates "
                         "to eight bits with a sign; gray is flat.",
                 .timings = {slope.timing},
                 .facts = range(slope.image)});
}

void laplacian(Section& section) {
    constexpr int kDivisor = 4;
    const auto curved = filter(section, "qeliFilterLaplacianBorder_8u8s_C1R", qeliFilterLaplacianBorder_8u8s_C1R,
                               qeliFilterLaplacianGetBufferSize_8u8s_C1R, section.gray(), k3x3, kDivisor);
    section.add({.image = signedColours(curved.image, 127),
                 .title = "Laplacian",
                 .text = "Each pixel against its diagonal neighbours: an edge is a pair of lines, orange on its dark "
                         "side and blue on its bright side.",
                 .timings = {curved.timing},
                 .facts = range(curved.image)});
}

// A sign change between neighbours counts where they differ by at least so much.
constexpr int kContrast = 160;

void zeroCrossings(Section& section) {
    const auto soft = filter(section, "qeliFilterLowpassBorder_8u_C1R", qeliFilterLowpassBorder_8u_C1R,
                             qeliFilterLowpassGetBufferSize_8u_C1R, section.gray(), k3x3);
    const auto curved = filter(section, "qeliFilterLaplacianBorder_8u16s_C1R", qeliFilterLaplacianBorder_8u16s_C1R,
                               qeliFilterLaplacianGetBufferSize_8u16s_C1R, soft.image, k5x5);
    const Image<Qel16s>& c = curved.image;
    const auto crosses = [](int a, int b) { return (a < 0) != (b < 0) && std::abs(a - b) >= kContrast; };
    Canvas paper(c.size());
    paper.paint([&](int x, int y) {
        const bool line = (x + 1 < c.width() && crosses(c.at(x, y), c.at(x + 1, y))) ||
                          (y + 1 < c.height() && crosses(c.at(x, y), c.at(x, y + 1)));
        return line ? Colour{0.13f, 0.15f, 0.30f} : Colour{0.98f, 0.96f, 0.92f};
    });
    section.add({.image = paper.rgb(),
                 .title = "A drawing made of zero crossings",
                 .text = "The mean over 3 by 3 pixels, then the Laplacian of 5 by 5, which passes through zero in the "
                         "middle of an edge. A line is drawn where it does so steeply.",
                 .timings = {soft.timing, curved.timing}});
}

void ridges(Section& section) {
    const Image<Qel32f> gray = to32f(section.gray());
    const auto soft = filter(section, "qeliFilterLowpassBorder_32f_C1R", qeliFilterLowpassBorder_32f_C1R,
                             qeliFilterLowpassGetBufferSize_32f_C1R, gray, k3x3);
    const auto xx = filter(section, "qeliFilterSobelVertSecondBorder_32f_C1R", qeliFilterSobelVertSecondBorder_32f_C1R,
                           qeliFilterSobelVertSecondGetBufferSize_32f_C1R, soft.image, k5x5);
    const auto yy =
        filter(section, "qeliFilterSobelHorizSecondBorder_32f_C1R", qeliFilterSobelHorizSecondBorder_32f_C1R,
               qeliFilterSobelHorizSecondGetBufferSize_32f_C1R, soft.image, k5x5);
    const auto xy = filter(section, "qeliFilterSobelCrossBorder_32f_C1R", qeliFilterSobelCrossBorder_32f_C1R,
                           qeliFilterSobelCrossGetBufferSize_32f_C1R, soft.image, k5x5);
    section.add(
        {.image = sideBySide({signedColours(xx.image, 6), signedColours(yy.image, 6), signedColours(xy.image, 6)}),
         .title = "Second derivatives in floating point",
         .text = "Across, down, and once in each direction, of 5 by 5, of the picture's mean over 3 by 3. "
                 "Orange above zero, blue below.",
         .timings = {soft.timing, xx.timing, yy.timing, xy.timing},
         .wide = true});

    // The curvature along the direction that bends most upwards: the larger eigenvalue of the three together.
    Image<Qel32f> bend(gray.size());
    for (int y = 0; y < bend.height(); ++y) {
        for (int x = 0; x < bend.width(); ++x) {
            const float a = xx.image.at(x, y), b = yy.image.at(x, y), c = xy.image.at(x, y);
            bend.at(x, y) = 0.5f * (a + b + std::hypot(a - b, 2 * c));
        }
    }
    section.add({.image = sideBySide({section.gray(), colourMap(bend, 0, 10)}),
                 .title = "Valleys",
                 .text = "The same three put together: how strongly brightness bends upwards in the direction where "
                         "it does so most. Dark strokes and the dark sides of edges light up.",
                 .facts = range(bend, 1),
                 .wide = true});
}

void sharper(Section& section) {
    const Image<Qel32f> gray = to32f(section.gray());
    const auto curved = filter(section, "qeliFilterLaplacianBorder_32f_C1R", qeliFilterLaplacianBorder_32f_C1R,
                               qeliFilterLaplacianGetBufferSize_32f_C1R, gray, k3x3);
    Image<Qel32f> crisp(gray.size());
    for (int y = 0; y < crisp.height(); ++y) {
        for (int x = 0; x < crisp.width(); ++x) crisp.at(x, y) = gray.at(x, y) - curved.image.at(x, y) / 8;
    }
    section.add({.image = picture(crisp, 0, 1),
                 .title = "Sharper",
                 .text = "The picture less an eighth of its Laplacian, in floating point: fine detail and noise grow "
                         "alike.",
                 .timings = {curved.timing},
                 .facts = range(curved.image, 2)});
}

void lowpass(Section& section) {
    const auto small = filter(section, "qeliFilterLowpassBorder_8u_C1R", qeliFilterLowpassBorder_8u_C1R,
                              qeliFilterLowpassGetBufferSize_8u_C1R, section.gray(), k3x3);
    const auto large = filter(section, "qeliFilterLowpassBorder_8u_C1R", qeliFilterLowpassBorder_8u_C1R,
                              qeliFilterLowpassGetBufferSize_8u_C1R, section.gray(), k5x5);
    const QelRect part = busiest(large.image, {48, 32});
    section.add({.image = sideBySide(
                     {zoomed(section.gray(), part, 9), zoomed(small.image, part, 9), zoomed(large.image, part, 9)}),
                 .title = "Low-pass, pixel by pixel",
                 .text = "A detail of the picture, its mean over 3 by 3 and over 5 by 5 pixels. The second timing is "
                         "that of 5 by 5.",
                 .timings = {small.timing, large.timing},
                 .wide = true});
}

void fixedFilters(Section& section) {
    gradient(section);
    twoDirections(section);
    relief(section);
    laplacian(section);
    zeroCrossings(section);
    sharper(section);
    ridges(section);
    lowpass(section);
}

const Registration registration(
    Room::Filter, "Derivatives, Laplacians and averages",
    "Small filters whose kernels are built in: Sobel, Scharr, Laplacian and low-pass, of 3 by 3 or 5 by 5 pixels, with "
    "five ways to go on beyond the border. The first step of edge detection, corner detection and optical flow.",
    fixedFilters);

}  // namespace
}  // namespace gallery
