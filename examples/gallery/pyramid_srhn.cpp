#include <memory>

#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

// Four pictures of half the size, each the means of 2 by 2 pixels that begin at another one: what a camera sees that
// moves by half of its pixels.
struct Observations {
    std::vector<Qel8u> samples;
    std::vector<unsigned int> offsets;
    std::vector<Image<Qel8u>> pictures;
};

Observations observe(const Image<Qel8u>& truth) {
    Observations seen;
    const int rowElements = truth.step();  // of an image of floats with a row of as many samples
    for (int j = 0; j < 2; ++j)
        for (int i = 0; i < 2; ++i) {
            Image<Qel8u> small({(truth.width() - i) / 2, (truth.height() - j) / 2});
            for (int y = 0; y < small.height(); ++y)
                for (int x = 0; x < small.width(); ++x) {
                    const int left = 2 * x + i, top = 2 * y + j;
                    small.at(x, y) = static_cast<Qel8u>((truth.at(left, top) + truth.at(left + 1, top) +
                                                         truth.at(left, top + 1) + truth.at(left + 1, top + 1) + 2) /
                                                        4);
                    seen.samples.push_back(small.at(x, y));
                    seen.offsets.push_back(static_cast<unsigned int>(top * rowElements + left));
                }
            seen.pictures.push_back(std::move(small));
        }
    return seen;
}

Image<Qel8u> rounded(const std::vector<float>& estimate, QelSize size, int rowElements) {
    Image<Qel8u> out(size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const float value = estimate[static_cast<std::size_t>(y) * static_cast<std::size_t>(rowElements) +
                                         static_cast<std::size_t>(x)];
            out.at(x, y) = static_cast<Qel8u>(std::clamp(value + 0.5f, 0.0f, 255.0f));
        }
    return out;
}

double meanDifference(const Image<Qel8u>& a, const Image<Qel8u>& b) {
    double sum = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) sum += std::abs(a.at(x, y) - b.at(x, y));
    return sum / (a.width() * a.height());
}

void fromFourPictures(Section& section) {
    const Image<Qel8u>& gray = section.gray();
    const QelSize size = {std::min(gray.width(), 240) & ~1, std::min(gray.height(), 160) & ~1};
    if (size.width < 4 || size.height < 4) return;
    const Image<Qel8u> truth =
        zoomed(gray, {(gray.width() - size.width) / 2, (gray.height() - size.height) / 2, size.width, size.height}, 1);
    const Observations seen = observe(truth.channels() == 1 ? truth : grayOf(truth));
    const Image<Qel8u> original = truth.channels() == 1 ? truth : grayOf(truth);
    const int len = static_cast<int>(seen.samples.size());
    const std::size_t count = seen.samples.size();

    const Qel32f mean[4] = {0.25f, 0.25f, 0.25f, 0.25f};
    QelSRHNState* made = nullptr;
    qeliSRHNInitAlloc_PSF2x2(&made, mean, 1);
    const std::unique_ptr<QelSRHNState, decltype(&qeliSRHNFree_PSF2x2)> state(made, qeliSRHNFree_PSF2x2);

    const int rowElements = original.step(), step = rowElements * 4;
    std::vector<float> estimate(static_cast<std::size_t>(rowElements * size.height), 128.0f), gradient(estimate);
    std::vector<Qel16u> entries(count, 0);
    std::vector<Qel8u> weightIdx(count, 0);
    std::vector<float> residuals(count);
    const float weights[1] = {1};
    // The first estimate: each pixel as the small picture that covers it first.
    for (std::size_t i = count; i-- > 0;)
        for (const int tap : {0, 1, rowElements, rowElements + 1})
            estimate[seen.offsets[i] + static_cast<std::size_t>(tap)] = seen.samples[i];
    const Image<Qel8u> first = rounded(estimate, size, rowElements);

    Timing residualTiming("qeliSRHNCalcResidual_PSF2x2_8u32f_C1R", {len, 1});
    Timing gradientTiming("qeliSRHNUpdateGradient_PSF2x2_32f_C1R", {len, 1});
    constexpr int kRounds = 40;
    for (int round = 0; round < kRounds; ++round) {
        std::fill(gradient.begin(), gradient.end(), 0.0f);
        residualTiming.once([&] {
            return qeliSRHNCalcResidual_PSF2x2_8u32f_C1R(estimate.data(), step, seen.samples.data(),
                                                         seen.offsets.data(), entries.data(), residuals.data(), len,
                                                         state.get());
        });
        gradientTiming.once([&] {
            return qeliSRHNUpdateGradient_PSF2x2_32f_C1R(gradient.data(), step, seen.offsets.data(), entries.data(),
                                                         residuals.data(), weightIdx.data(), len, weights, state.get());
        });
        for (std::size_t i = 0; i < estimate.size(); ++i) estimate[i] -= 0.95f * gradient[i];
    }
    const Image<Qel8u> result = rounded(estimate, size, rowElements);
    const QelRect part = {size.width / 3, size.height / 3, std::min(size.width / 2, 60), std::min(size.height / 2, 45)};
    section.add({.image = sideBySide(seen.pictures),
                 .title = "Four small pictures",
                 .text = "What a camera of half the resolution sees, moved by half of its pixels each time.",
                 .wide = true});
    section.add({.image = sideBySide({zoomed(first, part, 6), zoomed(result, part, 6), zoomed(original, part, 6)}),
                 .title = "And one large one from them",
                 .text = "A part of what a single picture tells, of the estimate after 40 rounds, and of the original. "
                         "In each round, the difference between what the estimate would look like and what was seen "
                         "goes back to the pixels that it comes from.",
                 .timings = {residualTiming, gradientTiming},
                 .facts = {{"mean difference before", digits(meanDifference(first, original), 2)},
                           {"after", digits(meanDifference(result, original), 2)}},
                 .wide = true});
}

const Registration registration(Room::Pyramid, "Super-resolution",
                                "The two steps of a solver that finds the picture behind several smaller ones: how far "
                                "an estimate is from what was seen, and what to change about it.",
                                fromFourPictures);

}  // namespace
}  // namespace gallery
