#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

constexpr int kReach = 12;  // the pattern is a square of twice that and 1
constexpr int kMost = 400;

// The average-free correlation of a picture with the square around `centre`, from -1 to 1; 0 along the edges.
Image<Qel32f> correlation(const Image<Qel8u>& picture, QelPoint centre) {
    constexpr int kSide = 2 * kReach + 1, kArea = kSide * kSide;
    Image<Qel32f> out(picture.size());
    std::vector<float> pattern;
    double patternSum = 0;
    for (int j = -kReach; j <= kReach; ++j)
        for (int i = -kReach; i <= kReach; ++i) patternSum += picture.at(centre.x + i, centre.y + j);
    double patternEnergy = 0;
    for (int j = -kReach; j <= kReach; ++j) {
        for (int i = -kReach; i <= kReach; ++i) {
            pattern.push_back(static_cast<float>(picture.at(centre.x + i, centre.y + j) - patternSum / kArea));
            patternEnergy += double{pattern.back()} * pattern.back();
        }
    }
    for (int y = kReach; y < picture.height() - kReach; ++y) {
        for (int x = kReach; x < picture.width() - kReach; ++x) {
            double sum = 0, squares = 0, product = 0;
            const float* p = pattern.data();
            for (int j = -kReach; j <= kReach; ++j) {
                const Qel8u* const row = picture.row(y + j) + x - kReach;
                int rowSum = 0, rowSquares = 0;
                float rowProduct = 0;
                for (int i = 0; i < kSide; ++i) {
                    rowSum += row[i];
                    rowSquares += row[i] * row[i];
                    rowProduct += float(row[i]) * p[i];
                }
                sum += rowSum, squares += rowSquares, product += rowProduct;
                p += kSide;
            }
            const double energy = squares - sum * sum / kArea;
            out.at(x, y) = static_cast<Qel32f>(product / std::sqrt(std::max(energy * patternEnergy, 1.0)));
        }
    }
    return out;
}

Image<Qel32s> asIntegers(const Image<Qel32f>& image) {
    Image<Qel32s> out(image.size());
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) out.at(x, y) = static_cast<Qel32s>(std::lround(image.at(x, y) * 65536));
    return out;
}

struct Found {
    std::vector<QelPoint> peaks;
    Timing timing;
};

template <class T, class Function, class Size>
Found find(Section& section, const char* name, Function function, Size bufferSize, const Image<T>& image, T threshold,
           int norm) {
    int bytes = 0, count = 0;
    bufferSize(image.width(), &bytes);
    std::vector<Qel8u> scratch(static_cast<std::size_t>(bytes));
    std::vector<QelPoint> peaks(kMost);
    const Timing timing = section.time(name, image.size(), [&] {
        return function(image.data(), image.step(), image.size(), threshold, peaks.data(), kMost, &count, norm, 1,
                        scratch.data());
    });
    peaks.resize(static_cast<std::size_t>(count));
    return {peaks, timing};
}

template <class T>
Image<Qel8u> marked(const Image<Qel8u>& picture, const Found& found, const Image<T>& surface) {
    Canvas canvas(picture);
    for (const QelPoint& p : found.peaks) canvas.mark(p, surface.at(p.x, p.y) > 0 ? kMark : Colour{0.3f, 0.7f, 1.0f});
    return canvas.rgb();
}

void findPeaks(Section& section) {
    const Image<Qel8u> picture = reduced(section.gray(), 2);
    if (std::min(picture.width(), picture.height()) <= 4 * kReach) return;  // no room for a pattern
    // A place with texture: the point of strongest contrast to its neighbours, away from the edges.
    QelPoint centre = {picture.width() / 2, picture.height() / 2};
    int most = 0;
    for (int y = 2 * kReach; y < picture.height() - 2 * kReach; ++y) {
        for (int x = 2 * kReach; x < picture.width() - 2 * kReach; ++x) {
            const int contrast =
                std::abs(4 * picture.at(x, y) - picture.at(x - kReach / 2, y) - picture.at(x + kReach / 2, y) -
                         picture.at(x, y - kReach / 2) - picture.at(x, y + kReach / 2));
            if (contrast > most) most = contrast, centre = {x, y};
        }
    }
    const Image<Qel32f> surface = correlation(picture, centre);
    const Found of32f = find(section, "qeliFindPeaks3x3_32f_C1R", qeliFindPeaks3x3_32f_C1R,
                             qeliFindPeaks3x3GetBufferSize_32f_C1R, surface, 0.6F, 0);
    Canvas where(picture);
    where.frame({centre.x - kReach, centre.y - kReach, 2 * kReach + 1, 2 * kReach + 1}, 2, {1, 0.9f, 0.2f});
    section.add({.image = sideBySide({where.rgb(), marked(signedColours(surface, 1), of32f, surface)}),
                 .title = "Where a picture looks like a part of itself",
                 .text = "How well each place correlates with the framed square, orange for alike and blue for "
                         "inverted. Red marks are maxima above 0.6, blue ones minima below -0.6.",
                 .timings = {of32f.timing},
                 .facts = {{"peaks", std::to_string(of32f.peaks.size())}},
                 .wide = true});

    const Image<Qel32s> integers = asIntegers(surface);
    const Found block = find(section, "qeliFindPeaks3x3_32s_C1R", qeliFindPeaks3x3_32s_C1R,
                             qeliFindPeaks3x3GetBufferSize_32s_C1R, integers, 65536 / 4, 0);
    const Found plus = find(section, "qeliFindPeaks3x3_32s_C1R", qeliFindPeaks3x3_32s_C1R,
                            qeliFindPeaks3x3GetBufferSize_32s_C1R, integers, 65536 / 4, 1);
    section.add(
        {.image = sideBySide({marked(picture, block, integers), marked(picture, plus, integers)}),
         .title = "Among eight neighbours and among four",
         .text = "The same surface in integers, with a threshold of a quarter. Left: peaks of blocks of 3 by "
                 "3 pixels, right: peaks among the pixels left, right, above and below, which are more.",
         .timings = {block.timing, plus.timing},
         .facts = {{"of eight", std::to_string(block.peaks.size())}, {"of four", std::to_string(plus.peaks.size())}},
         .wide = true});
}

const Registration registration(Room::Feature, "Peaks",
                                "Lists the local maxima and minima of a surface whose magnitude exceeds a threshold: "
                                "the best places of a correlation, of a corner measure, of a vote.",
                                findPeaks);

}  // namespace
}  // namespace gallery
