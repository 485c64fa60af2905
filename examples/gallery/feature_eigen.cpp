#include <algorithm>
#include <cmath>
#include <vector>

#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

constexpr int kNumbers = 6;

struct Measure {
    Image<Qel32f> image;
    Timing timing;
};

// Scratch of the size that a function of this family tells.
template <class Size>
std::vector<Qel8u> scratchFor(Size bufferSize, QelSize size, int apertureSize, int avgWindow) {
    int bytes = 0;
    bufferSize(size, apertureSize, avgWindow, &bytes);
    return std::vector<Qel8u>(static_cast<std::size_t>(bytes));
}

template <class T, class Function, class Size>
Measure measure(Section& section, const char* name, Function function, Size bufferSize, const Image<T>& picture,
                int kernType, int apertureSize, int avgWindow, int numbers = 1) {
    Image<Qel32f> out(picture.size(), numbers);
    std::vector<Qel8u> scratch = scratchFor(bufferSize, picture.size(), apertureSize, avgWindow);
    const Timing timing = section.time(name, picture.size(), [&] {
        return function(picture.data(), picture.step(), out.data(), out.step(), picture.size(), kernType, apertureSize,
                        avgWindow, scratch.data());
    });
    return {out, timing};
}

// The strongest maxima, none near a stronger one.
std::vector<QelPoint> corners(const Image<Qel32f>& measure, int most, int apart) {
    int bytes = 0, count = 0;
    qeliFindPeaks3x3GetBufferSize_32f_C1R(measure.width(), &bytes);
    std::vector<Qel8u> scratch(static_cast<std::size_t>(bytes));
    std::vector<QelPoint> peaks(20000);
    qeliFindPeaks3x3_32f_C1R(measure.data(), measure.step(), measure.size(), extremes(measure).max / 50, peaks.data(),
                             static_cast<int>(peaks.size()), &count, 0, 2, scratch.data());
    peaks.resize(static_cast<std::size_t>(count));
    std::sort(peaks.begin(), peaks.end(),
              [&](QelPoint a, QelPoint b) { return measure.at(a.x, a.y) > measure.at(b.x, b.y); });
    std::vector<QelPoint> kept;
    for (const QelPoint& p : peaks) {
        const auto isNear = [&](QelPoint q) { return std::hypot(p.x - q.x, p.y - q.y) < apart; };
        if (static_cast<int>(kept.size()) < most && std::none_of(kept.begin(), kept.end(), isNear)) kept.push_back(p);
    }
    return kept;
}

Image<Qel32f> roots(const Image<Qel32f>& image) {
    Image<Qel32f> out(image.size());
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) out.at(x, y) = std::sqrt(std::max(image.at(x, y), 0.0f));
    return out;
}

Image<Qel8u> heat(const Image<Qel32f>& measure) {
    const Image<Qel32f> root = roots(measure);
    return colourMap(root, 0, extremes(root).max * 0.6f);
}

// The direction of the larger eigenvalue at strong places, as short strokes.
Image<Qel8u> directions(const Image<Qel8u>& picture, const Image<Qel32f>& numbers) {
    constexpr int kCell = 12;
    Canvas canvas(picture);
    canvas.paint([&](int x, int y) { return mix(canvas.get(x, y), {0, 0, 0}, 0.6f); });
    for (int y = 0; y + kCell <= picture.height(); y += kCell) {
        for (int x = 0; x + kCell <= picture.width(); x += kCell) {
            QelPoint best = {x, y};
            for (int v = y; v < y + kCell; ++v)
                for (int u = x; u < x + kCell; ++u)
                    if (numbers.at(u, v, 0) > numbers.at(best.x, best.y, 0)) best = {u, v};
            if (numbers.at(best.x, best.y, 0) <= 0) continue;
            // Sobel's filter points against the x axis, and the vectors allow for it.
            const float dx = 7 * numbers.at(best.x, best.y, 2), dy = 7 * numbers.at(best.x, best.y, 3);
            canvas.line(float(best.x) - dx, float(best.y) - dy, float(best.x) + dx, float(best.y) + dy, 1.5f,
                        {1, 0.8f, 0.2f});
        }
    }
    return canvas.rgb();
}

void eigen(Section& section) {
    const Image<Qel8u>& gray = section.gray();
    const Measure small = measure(section, "qeliMinEigenVal_8u32f_C1R", qeliMinEigenVal_8u32f_C1R,
                                  qeliMinEigenValGetBufferSize_8u32f_C1R, gray, 0, 3, 3);
    Canvas marks(gray);
    const std::vector<QelPoint> strongest = corners(small.image, 60, 12);
    for (const QelPoint& p : strongest) marks.mark(p);
    section.add({.image = sideBySide({heat(small.image), marks.rgb()}),
                 .title = "The smaller eigenvalue, and where it peaks",
                 .text = "Left: its root, from dark blue for flat areas and edges to yellow for corners. Right: the "
                         "strongest peaks, none within 12 pixels of a stronger one.",
                 .timings = {small.timing},
                 .facts = {{"corners", std::to_string(strongest.size())}},
                 .wide = true});

    const Image<Qel32f> floats = [&] {
        Image<Qel32f> out(gray.size());
        for (int y = 0; y < gray.height(); ++y) std::copy_n(gray.row(y), gray.width(), out.row(y));
        return out;
    }();
    const Measure wide = measure(section, "qeliMinEigenVal_32f_C1R", qeliMinEigenVal_32f_C1R,
                                 qeliMinEigenValGetBufferSize_32f_C1R, floats, 0, 5, 5);
    const Measure scharr = measure(section, "qeliMinEigenVal_32f_C1R", qeliMinEigenVal_32f_C1R,
                                   qeliMinEigenValGetBufferSize_32f_C1R, floats, 1, 3, 3);
    section.add({.image = sideBySide({heat(wide.image), heat(scharr.image)}),
                 .title = "Larger masks, and Scharr's",
                 .text =
                     "Left: derivatives and averages over 5 by 5 pixels respond to coarser corners. Right: Scharr's "
                     "derivatives, which favour no direction.",
                 .timings = {wide.timing, scharr.timing},
                 .wide = true});

    const Measure of8u = measure(section, "qeliEigenValsVecs_8u32f_C1R", qeliEigenValsVecs_8u32f_C1R,
                                 qeliEigenValsVecsGetBufferSize_8u32f_C1R, gray, 0, 5, 5, kNumbers);
    const Measure of32f = measure(section, "qeliEigenValsVecs_32f_C1R", qeliEigenValsVecs_32f_C1R,
                                  qeliEigenValsVecsGetBufferSize_32f_C1R, floats, 0, 5, 5, kNumbers);
    section.add({.image = directions(gray, of8u.image),
                 .title = "Both eigenvalues and their directions",
                 .text =
                     "A stroke along the vector of the larger eigenvalue, across the strongest edge there, wherever "
                     "the smaller one is not negligible.",
                 .timings = {of8u.timing, of32f.timing}});
}

const Registration registration(
    Room::Feature, "Corner measures",
    "The eigenvalues of the gradient's covariance around each pixel: both small in flat areas, one large at an edge, "
    "both at a corner, which is a place that can be found again in another picture.",
    eigen);

}  // namespace
}  // namespace gallery
