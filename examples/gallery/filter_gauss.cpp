#include <algorithm>
#include <array>
#include <cmath>

#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

constexpr std::array<float, 3> kSigmas = {1.5f, 4, 12};

struct Blurred {
    Image<Qel32f> image;
    Timing timing;
};

// Three sigmas to either side: what lies further out weighs less than 1/80 of the middle.
int tapsFor(float sigma) { return 2 * static_cast<int>(std::ceil(3 * sigma)) + 1; }

Blurred gauss(Section& section, const Image<Qel32f>& image, float sigma) {
    const int taps = tapsFor(sigma);
    int bytes = 0;
    qeliFilterGaussGetBufferSize_32f_C1R(image.size(), taps, &bytes);
    std::vector<Qel8u> scratch(static_cast<std::size_t>(bytes));
    Image<Qel32f> soft(image.size());
    const Timing timing = section.time("qeliFilterGaussBorder_32f_C1R", image.size(), [&] {
        return qeliFilterGaussBorder_32f_C1R(image.data(), image.step(), soft.data(), soft.step(), image.size(), taps,
                                             sigma, qelBorderMirrR, 0, scratch.data());
    });
    return {std::move(soft), timing};
}

// fine - coarse
Image<Qel32f> difference(const Image<Qel32f>& fine, const Image<Qel32f>& coarse) {
    Image<Qel32f> band(fine.size());
    for (int y = 0; y < band.height(); ++y) {
        for (int x = 0; x < band.width(); ++x) band.at(x, y) = fine.at(x, y) - coarse.at(x, y);
    }
    return band;
}

double deviation(const Image<Qel32f>& band) {
    double squares = 0;
    for (int y = 0; y < band.height(); ++y) {
        for (int x = 0; x < band.width(); ++x) squares += static_cast<double>(band.at(x, y)) * band.at(x, y);
    }
    return std::sqrt(squares / (static_cast<double>(band.width()) * band.height()));
}

void showSigmas(Section& section, const std::vector<Blurred>& scales) {
    for (std::size_t i = 0; i < kSigmas.size(); ++i) {
        section.add({.image = picture(scales[i].image, 0, 1),
                     .title = "Sigma " + digits(kSigmas[i], kSigmas[i] < 2 ? 1 : 0),
                     .text = "As far as three sigmas to either side. Beyond its edge the picture is mirrored.",
                     .timings = {scales[i].timing},
                     .facts = {{"taps", std::to_string(tapsFor(kSigmas[i]))}}});
    }
}

void showBands(Section& section, const std::vector<Image<Qel32f>>& bands) {
    std::vector<Image<Qel8u>> pictures;
    std::vector<Fact> strengths;
    for (std::size_t i = 0; i < bands.size(); ++i) {
        pictures.push_back(signedColours(bands[i], 0.2f));
        const std::string from = i == 0 ? "0" : digits(kSigmas[i - 1], kSigmas[i - 1] < 2 ? 1 : 0);
        strengths.push_back({"sigma " + from + " less " + digits(kSigmas[i], kSigmas[i] < 2 ? 1 : 0),
                             digits(100 * deviation(bands[i]), 1) + " %"});
    }
    section.add({.image = sideBySide(pictures),
                 .title = "The picture taken apart",
                 .text = "Each blur less the next one: what is as small as grain and strokes, as letters and edges, as "
                         "balloons. Orange is brighter than its surroundings, blue darker. These differences of "
                         "Gaussians and the last blur add up to the picture.",
                 .facts = strengths,
                 .wide = true});
}

// Gains for the bands, from the finest on. The finest one is mostly noise.
constexpr std::array<float, kSigmas.size()> kGains = {1.4f, 2.2f, 1.6f};

void showDetail(Section& section, const std::vector<Image<Qel32f>>& bands, const Image<Qel32f>& rest) {
    Image<Qel32f> strong = rest;
    for (std::size_t i = 0; i < bands.size(); ++i) {
        for (int y = 0; y < rest.height(); ++y) {
            for (int x = 0; x < rest.width(); ++x) strong.at(x, y) += kGains[i] * bands[i].at(x, y);
        }
    }
    section.add({.image = sideBySide({section.gray(), picture(strong, 0, 1)}),
                 .title = "Put together with more detail",
                 .text =
                     "The last blur and the differences again, but these times 1.4, 2.2 and 1.6: an unsharp mask of "
                     "three radii, which leaves broad light and shade as they are.",
                 .wide = true});
}

void gaussian(Section& section) {
    const Image<Qel32f> gray = to32f(section.gray());
    std::vector<Blurred> scales;
    std::vector<Image<Qel32f>> bands;
    for (const float sigma : kSigmas) {
        scales.push_back(gauss(section, gray, sigma));
        const Image<Qel32f>& finer = bands.empty() ? gray : scales[scales.size() - 2].image;
        bands.push_back(difference(finer, scales.back().image));
    }
    showSigmas(section, scales);
    showBands(section, bands);
    showDetail(section, bands, scales.back().image);
}

const Registration registration(
    Room::Filter, "Gaussian blur",
    "The blur without a preferred direction, of any sigma, in floating point. It takes away what is smaller than its "
    "sigma, and so parts a picture by size.",
    gaussian);

}  // namespace
}  // namespace gallery
