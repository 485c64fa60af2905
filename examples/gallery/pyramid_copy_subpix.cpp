#include <cmath>

#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

// A window of the picture, resampled so that each pixel becomes factor by factor of them: one shifted copy for each
// of the fractions, and their pixels by turns.
Image<Qel8u> magnified(Section& section, QelRect part, int factor, Timing& timing) {
    const Image<Qel8u>& gray = section.gray();
    Image<Qel8u> out({part.width * factor, part.height * factor});
    Image<Qel8u> shiftedCopy({part.width, part.height});
    for (int j = 0; j < factor; ++j)
        for (int i = 0; i < factor; ++i) {
            const float dx = static_cast<float>(i) / static_cast<float>(factor);
            const float dy = static_cast<float>(j) / static_cast<float>(factor);
            timing.once([&] {
                return qeliCopySubpix_8u_C1R(&gray.at(part.x, part.y), gray.step(), shiftedCopy.data(),
                                             shiftedCopy.step(), shiftedCopy.size(), dx, dy);
            });
            for (int y = 0; y < part.height; ++y)
                for (int x = 0; x < part.width; ++x) out.at(x * factor + i, y * factor + j) = shiftedCopy.at(x, y);
        }
    return out;
}

void magnify(Section& section) {
    const Image<Qel8u>& gray = section.gray();
    const QelSize size = {std::min(gray.width() - 1, 48), std::min(gray.height() - 1, 36)};
    const QelRect part = {(gray.width() - size.width) / 2, (gray.height() - size.height) / 2, size.width, size.height};
    constexpr int kFactor = 8;
    Timing timing("qeliCopySubpix_8u_C1R", size);
    const Image<Qel8u> smooth = magnified(section, part, kFactor, timing);
    section.add({.image = sideBySide({zoomed(gray, part, kFactor), smooth}),
                 .title = "Between the pixels",
                 .text = "A part of the picture, its pixels as squares, and the same from 64 copies, each shifted by "
                         "another eighth of a pixel to the right or downward.",
                 .timings = {timing},
                 .wide = true});
}

// A window that follows a point out of the picture.
void windows(Section& section) {
    const Image<Qel8u>& gray = section.gray();
    const QelSize size = {64, 64};
    std::vector<Image<Qel8u>> pictures;
    std::vector<Fact> facts;
    Timing timing("qeliCopySubpixIntersect_8u_C1R", size);
    for (const float x : {40.5F, 20.25F, 4.0F, -12.75F}) {
        Image<Qel8u> window(size);
        QelPoint min, max;
        timing.once([&] {
            return qeliCopySubpixIntersect_8u_C1R(gray.data(), gray.step(), gray.size(), window.data(), window.step(),
                                                  size, x, x, &min, &max);
        });
        Canvas canvas(zoomed(window, {0, 0, size.width, size.height}, 4));
        if (min.x <= max.x && min.y <= max.y)
            canvas.frame({4 * min.x, 4 * min.y, 4 * (max.x - min.x + 1), 4 * (max.y - min.y + 1)}, 2, kMark);
        pictures.push_back(canvas.rgb());
        facts.push_back({"around " + digits(x, 2), "from " + std::to_string(min.x) + " to " + std::to_string(max.x)});
    }
    section.add({.image = sideBySide(pictures),
                 .title = "Windows that leave the picture",
                 .text = "Around a point that moves out of the upper left corner. What lies outside repeats the edge; "
                         "the frame is what the function reports as lying inside.",
                 .timings = {timing},
                 .facts = facts,
                 .wide = true});
}

void profile(Section& section) {
    const Image<Qel8u>& rgb = section.rgb();
    const QelPoint from = {0, rgb.height() / 3}, to = {rgb.width() - 1, rgb.height() * 2 / 3};
    const int count = std::max(to.x - from.x, to.y - from.y) + 1;
    std::vector<Qel8u> samples(static_cast<std::size_t>(count) * 3);
    const Timing timing = section.time("qeliSampleLine_8u_C3R", {count, 1}, [&] {
        return qeliSampleLine_8u_C3R(rgb.data(), rgb.step(), rgb.size(), samples.data(), from, to);
    });
    Canvas canvas(rgb);
    const auto draw = [&](QelPoint a, QelPoint b, Colour colour) {
        canvas.line(static_cast<float>(a.x), static_cast<float>(a.y), static_cast<float>(b.x), static_cast<float>(b.y),
                    1.5f, colour);
    };
    draw(from, to, {1, 1, 1});
    constexpr Colour kChannels[] = {{1, 0.25f, 0.25f}, {0.25f, 1, 0.25f}, {0.3f, 0.4f, 1}};
    for (int c = 0; c < 3; ++c) {
        const auto top = [&](int i) -> QelPoint {
            const int sample = samples[static_cast<std::size_t>(i) * 3 + static_cast<std::size_t>(c)];
            return {from.x + i * (to.x - from.x) / std::max(count - 1, 1),
                    rgb.height() - 1 - sample * rgb.height() / 4 / 255};
        };
        for (int i = 1; i < count; ++i) draw(top(i - 1), top(i), kChannels[c]);
    }
    section.add({.image = canvas.rgb(),
                 .title = "Along a line",
                 .text = "The samples on the white line, drawn below as one curve for each channel.",
                 .timings = {timing},
                 .facts = {{"samples", std::to_string(count)}}});
}

void subpixelSampling(Section& section) {
    if (section.gray().width() > 1 && section.gray().height() > 1) magnify(section);
    windows(section);
    profile(section);
}

const Registration registration(Room::Pyramid, "Subpixel sampling",
                                "Samples between the pixels, weighed by how near they are: shifted copies, windows "
                                "around a point that may leave the picture, and the pixels on a line.",
                                subpixelSampling);

}  // namespace
}  // namespace gallery
