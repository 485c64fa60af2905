#include <cstdlib>

#include "canvas.h"
#include "pixels.h"
#include "scenes.h"
#include "section.h"

namespace gallery {
namespace {

constexpr QelSize kSize = {480, 300};
constexpr int kFrames = 60;
constexpr Qel32f kDuration = 30;

// 1 where two frames differ by more than noise.
Image<Qel8u> silhouette(const Image<Qel8u>& before, const Image<Qel8u>& now) {
    Image<Qel8u> out(now.size());
    for (int y = 0; y < now.height(); ++y)
        for (int x = 0; x < now.width(); ++x) out.at(x, y) = std::abs(now.at(x, y) - before.at(x, y)) > 24;
    return out;
}

void motionHistory(Section& section) {
    Image<Qel32f> history(kSize);
    Image<Qel8u> before = movingShapes(kSize, 0).gray();
    Image<Qel8u> moving;
    Timing timing("qeliUpdateMotionHistory_8u32f_C1IR", kSize);
    for (int t = 1; t <= kFrames; ++t) {
        const Image<Qel8u> now = movingShapes(kSize, t).gray();
        moving = silhouette(before, now);
        timing.once([&] {
            return qeliUpdateMotionHistory_8u32f_C1IR(moving.data(), moving.step(), history.data(), history.step(),
                                                      kSize, Qel32f(t), kDuration);
        });
        before = now;
    }
    int remembered = 0;
    for (int y = 0; y < kSize.height; ++y)
        for (int x = 0; x < kSize.width; ++x) remembered += history.at(x, y) > 0;
    section.add(
        {.image = sideBySide({before, amplified(moving, 255), colourMap(history, kFrames - kDuration, kFrames)}),
         .title = "Where things moved, and how long ago",
         .text = "The last of 60 frames; its silhouette, where it differs from the frame before; and the history: "
                 "yellow is now, darker is longer ago, and after 30 frames a motion is forgotten. The slope of "
                 "the colours points along the motion.",
         .timings = {timing},
         .facts = {{"pixels with a history", digits(100.0 * remembered / (kSize.width * kSize.height), 1) + " %"}},
         .wide = true});
}

const Registration registration(Room::Stats, "Motion history",
                                "The time of the last motion at each pixel, kept up to date frame by frame: the trail "
                                "of everything that moves, for "
                                "gestures and for the direction of motion.",
                                motionHistory);

}  // namespace
}  // namespace gallery
