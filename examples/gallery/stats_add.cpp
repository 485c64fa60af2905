#include <cmath>
#include <cstdlib>
#include <vector>

#include "canvas.h"
#include "pixels.h"
#include "scenes.h"
#include "section.h"

namespace gallery {
namespace {

constexpr QelSize kSize = {480, 300};
constexpr int kFrames = 75;

// Painting takes longer than all that is done with a frame here, so it is done once.
const Image<Qel8u>& frame(int t) {
    static std::vector<Image<Qel8u>> frames;
    while (int(frames.size()) <= t) frames.push_back(movingShapes(kSize, int(frames.size())).gray());
    return frames[t];
}

Image<Qel32f> toFloat(const Image<Qel8u>& image) {
    Image<Qel32f> out(image.size());
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) out.at(x, y) = image.at(x, y);
    return out;
}

// 1 where a frame is close to two earlier ones, so that only what stands still is learnt.
Image<Qel8u> still(const Image<Qel8u>& now, const Image<Qel8u>& before, const Image<Qel8u>& longBefore) {
    const auto isClose = [](int a, int b) { return std::abs(a - b) < 16; };
    Image<Qel8u> mask(now.size());
    for (int y = 0; y < now.height(); ++y)
        for (int x = 0; x < now.width(); ++x)
            mask.at(x, y) = isClose(now.at(x, y), before.at(x, y)) && isClose(now.at(x, y), longBefore.at(x, y));
    return mask;
}

void runningAverage(Section& section) {
    constexpr Qel32f kAlpha = 0.06f;
    Image<Qel32f> average = toFloat(frame(0));
    Timing timing("qeliAddWeighted_8u32f_C1IR", kSize);
    for (int t = 1; t < kFrames; ++t) {
        const Image<Qel8u> now = frame(t);
        timing.once([&] {
            return qeliAddWeighted_8u32f_C1IR(now.data(), now.step(), average.data(), average.step(), kSize, kAlpha);
        });
    }
    section.add({.image = sideBySide({frame(kFrames - 1), picture(average, 0, 255)}),
                 .title = "The background, learnt from a sequence",
                 .text = "Left: the last of 75 frames. Right: their running average, in which each frame counts 6 "
                         "percent. What moves fades to a veil, what stays and the noise become clear.",
                 .timings = {timing},
                 .wide = true});
}

void maskedAverage(Section& section) {
    constexpr Qel32f kAlpha = 0.15f;
    constexpr int kBefore = 13, kLongBefore = 30;
    Image<Qel32f> average = toFloat(frame(0));
    Image<Qel8u> mask;
    Timing timing("qeliAddWeighted_8u32f_C1IMR", kSize);
    for (int t = kLongBefore; t < kFrames; ++t) {
        const Image<Qel8u> now = frame(t);
        mask = still(now, frame(t - kBefore), frame(t - kLongBefore));
        timing.once([&] {
            return qeliAddWeighted_8u32f_C1IMR(now.data(), now.step(), mask.data(), mask.step(), average.data(),
                                               average.step(), kSize, kAlpha);
        });
    }
    section.add({.image = sideBySide({amplified(mask, 255), picture(average, 0, 255)}),
                 .title = "The same, but only from what stands still",
                 .text = "Left: the last mask, white where the frame is close to two earlier ones. Right: the average. "
                         "Where the mask is "
                         "black it stays as it is, bit for bit, so that what moves leaves no veil.",
                 .timings = {timing},
                 .wide = true});
}

void statistics(Section& section) {
    Image<Qel32f> sum(kSize), squares(kSize), squaresBefore(kSize), products(kSize);
    Timing sumTiming("qeliAdd_8u32f_C1IR", kSize);
    Timing squareTiming("qeliAddSquare_8u32f_C1IR", kSize);
    Timing productTiming("qeliAddProduct_8u32f_C1IR", kSize);
    Image<Qel8u> before = frame(0);
    for (int t = 1; t <= kFrames; ++t) {
        const Image<Qel8u> now = frame(t);
        sumTiming.once([&] { return qeliAdd_8u32f_C1IR(now.data(), now.step(), sum.data(), sum.step(), kSize); });
        squareTiming.once(
            [&] { return qeliAddSquare_8u32f_C1IR(now.data(), now.step(), squares.data(), squares.step(), kSize); });
        squareTiming.once([&] {
            return qeliAddSquare_8u32f_C1IR(before.data(), before.step(), squaresBefore.data(), squaresBefore.step(),
                                            kSize);
        });
        productTiming.once([&] {
            return qeliAddProduct_8u32f_C1IR(now.data(), now.step(), before.data(), before.step(), products.data(),
                                             products.step(), kSize);
        });
        before = now;
    }
    Image<Qel32f> deviation(kSize), change(kSize);
    for (int y = 0; y < kSize.height; ++y) {
        for (int x = 0; x < kSize.width; ++x) {
            const float mean = sum.at(x, y) / kFrames;
            deviation.at(x, y) = std::sqrt(std::max(squares.at(x, y) / kFrames - mean * mean, 0.0f));
            const float bothSquares = squares.at(x, y) + squaresBefore.at(x, y);
            change.at(x, y) = std::sqrt(std::max((bothSquares - 2 * products.at(x, y)) / kFrames, 0.0f));
        }
    }
    section.add({.image = sideBySide({colourMap(deviation, 0, 60), colourMap(change, 0, 60)}),
                 .title = "How much each pixel varies",
                 .text =
                     "Left: the standard deviation over 75 frames, from a sum and a sum of squares. Right: the "
                     "change from one frame to the next, from sums of squares and the sum of products of each frame "
                     "with the one before.",
                 .timings = {sumTiming, squareTiming, productTiming},
                 .facts = {{"largest deviation", digits(extremes(deviation).max, 1)}},
                 .wide = true});
}

void crossFade(Section& section) {
    const Image<Qel32f> from = to32f(section.gray());
    const Image<Qel32f> to = to32f(blurred(section.gray(), 9));
    Image<Qel32f> out(from.size());
    const Timing timing = section.time("qeliAddWeighted_32f_C1R", out.size(), [&] {
        return qeliAddWeighted_32f_C1R(from.data(), from.step(), to.data(), to.step(), out.data(), out.step(),
                                       out.size(), 1.8f);
    });
    section.add({.image = picture(out, 0, 1),
                 .title = "Sharper than sharp",
                 .text =
                     "The picture and its blurred copy in a weighted sum. A weight between 0 and 1 fades from one to "
                     "the other; the weight 1.8 goes beyond the picture, away from the blur.",
                 .timings = {timing}});
}

void accumulators(Section& section) {
    runningAverage(section);
    maskedAverage(section);
    statistics(section);
    crossFade(section);
}

const Registration registration(
    Room::Stats, "Accumulators",
    "Sums, sums of squares and of products, and running averages over the frames of a sequence: the background of a "
    "scene and how much it varies. Everywhere or where a mask says so.",
    accumulators);

}  // namespace
}  // namespace gallery
