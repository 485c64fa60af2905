#include <array>
#include <cmath>

#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

struct Moments {
    Qel64f mean = 0;
    Qel64f stdDev = 0;
};

std::vector<Fact> facts(const Moments& m, int decimals = 2) {
    return {{"mean", digits(m.mean, decimals)}, {"deviation", digits(m.stdDev, decimals)}};
}

struct Disc {
    float x, y, radius;
};

// The disc that the masked forms look at.
Disc discIn(QelSize size) {
    const float side = static_cast<float>(std::min(size.width, size.height));
    return {0.5f * static_cast<float>(size.width), 0.45f * static_cast<float>(size.height), 0.3f * side};
}

Image<Qel8u> maskOf(const Disc& disc, QelSize size) {
    Image<Qel8u> mask(size);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const float dx = static_cast<float>(x) - disc.x, dy = static_cast<float>(y) - disc.y;
            mask.at(x, y) = dx * dx + dy * dy <= disc.radius * disc.radius ? 255 : 0;
        }
    }
    return mask;
}

// A bar of grays at the bottom of the picture: the mean as a stroke, one deviation to either side as a box.
void drawScale(Canvas& canvas, const Moments& m) {
    const int height = std::max(canvas.height() / 20, 8), top = canvas.height() - height;
    const auto column = [&](double gray) { return static_cast<int>(std::lround(gray / 255 * (canvas.width() - 1))); };
    for (int y = top; y < canvas.height(); ++y) {
        for (int x = 0; x < canvas.width(); ++x) {
            const float gray = static_cast<float>(x) / static_cast<float>(std::max(canvas.width() - 1, 1));
            canvas.set(x, y, {gray, gray, gray});
        }
    }
    const int left = std::max(column(m.mean - m.stdDev), 0);
    const int right = std::min(column(m.mean + m.stdDev), canvas.width() - 1);
    canvas.frame({left, top, right - left + 1, height}, 2, kMark);
    const float mean = static_cast<float>(column(m.mean));
    canvas.line(mean, static_cast<float>(top), mean, static_cast<float>(canvas.height()), 3, kMark);
}

void whole(Section& section) {
    const Image<Qel8u>& gray = section.gray();
    Moments m;
    const Timing timing = section.time("qeliMean_StdDev_8u_C1R", gray.size(), [&] {
        return qeliMean_StdDev_8u_C1R(gray.data(), gray.step(), gray.size(), &m.mean, &m.stdDev);
    });
    Canvas canvas(gray);
    drawScale(canvas, m);
    section.add({.image = canvas.rgb(),
                 .title = "The whole picture",
                 .text =
                     "On the scale of grays below, the stroke is at the mean; the box reaches one standard deviation "
                     "to either side.",
                 .timings = {timing},
                 .facts = facts(m)});
}

void underMask(Section& section) {
    const Image<Qel8u>& gray = section.gray();
    const Disc disc = discIn(gray.size());
    const Image<Qel8u> mask = maskOf(disc, gray.size());
    Moments m;
    Qel64f meanAlone = 0;
    const Timing both = section.time("qeliMean_StdDev_8u_C1MR", gray.size(), [&] {
        return qeliMean_StdDev_8u_C1MR(gray.data(), gray.step(), mask.data(), mask.step(), gray.size(), &m.mean,
                                       &m.stdDev);
    });
    const Timing mean = section.time("qeliMean_8u_C1MR", gray.size(), [&] {
        return qeliMean_8u_C1MR(gray.data(), gray.step(), mask.data(), mask.step(), gray.size(), &meanAlone);
    });
    Canvas canvas(gray);
    for (int y = 0; y < gray.height(); ++y) {
        for (int x = 0; x < gray.width(); ++x) {
            if (mask.at(x, y) == 0) canvas.blend(x, y, {0, 0, 0}, 0.6f);
        }
    }
    canvas.ring(disc.x, disc.y, disc.radius, 3, kMark);
    drawScale(canvas, m);
    section.add({.image = canvas.rgb(),
                 .title = "Under a round mask",
                 .text = "Only pixels inside of the ring take part: the others have a mask byte of zero.",
                 .timings = {both, mean},
                 .facts = facts(m)});
}

void meanColour(Section& section) {
    const Image<Qel8u>& rgb = section.rgb();
    const Disc disc = discIn(rgb.size());
    const Image<Qel8u> mask = maskOf(disc, rgb.size());
    std::array<Moments, 3> m;
    std::vector<Fact> values;
    for (int coi = 1; coi <= 3; ++coi) {
        Moments& channel = m[static_cast<size_t>(coi - 1)];
        qeliMean_StdDev_8u_C3CMR(rgb.data(), rgb.step(), mask.data(), mask.step(), rgb.size(), coi, &channel.mean,
                                 &channel.stdDev);
        const std::string name = std::array{"red", "green", "blue"}[static_cast<size_t>(coi - 1)];
        values.push_back({name + ": mean", digits(channel.mean, 2)});
        values.push_back({name + ": deviation", digits(channel.stdDev, 2)});
    }
    const Timing timing = section.time("qeliMean_8u_C3CMR", rgb.size(), [&] {
        return qeliMean_8u_C3CMR(rgb.data(), rgb.step(), mask.data(), mask.step(), rgb.size(), 1, &m[0].mean);
    });
    const auto level = [](const Moments& channel) { return static_cast<float>(channel.mean / 255); };
    Canvas canvas(rgb);
    canvas.disc(disc.x, disc.y, disc.radius, {level(m[0]), level(m[1]), level(m[2])});
    canvas.ring(disc.x, disc.y, disc.radius, 3, kMark);
    section.add(
        {.image = canvas.rgb(),
         .title = "The mean colour",
         .text = "The three channels under the same mask, one call for each; the disc is painted in their mean.",
         .timings = {timing},
         .facts = values});
}

// A region is a pointer, a step and a size: a tile is a region of the same image.
void tiles(Section& section) {
    constexpr int kTile = 16;
    const Image<Qel8u>& gray = section.gray();
    Image<Qel8u> means(gray.size()), deviations(gray.size());
    Timing timing("qeliMean_StdDev_8u_C1R", {kTile, kTile});
    for (int y = 0; y < gray.height(); y += kTile) {
        for (int x = 0; x < gray.width(); x += kTile) {
            const QelSize tile = {std::min(kTile, gray.width() - x), std::min(kTile, gray.height() - y)};
            Moments m;
            timing.once([&] { return qeliMean_StdDev_8u_C1R(&gray.at(x, y), gray.step(), tile, &m.mean, &m.stdDev); });
            for (int ty = y; ty < y + tile.height; ++ty) {
                for (int tx = x; tx < x + tile.width; ++tx) {
                    means.at(tx, ty) = static_cast<Qel8u>(std::lround(m.mean));
                    deviations.at(tx, ty) = static_cast<Qel8u>(std::lround(std::min(2 * m.stdDev, 255.0)));
                }
            }
        }
    }
    section.add({.image = sideBySide({means, deviations}),
                 .title = "Tile by tile",
                 .text = "Means of tiles of 16 by 16 pixels, and their deviations, twice as bright as computed: flat "
                         "areas are dark, edges and texture bright.",
                 .timings = {timing},
                 .wide = true});
}

void largeOffset(Section& section) {
    constexpr Qel32f kOffset = 10000;
    Image<Qel32f> moved = to32f(section.gray());
    Moments before, after;
    const Timing plain = section.time("qeliMean_StdDev_32f_C1R", moved.size(), [&] {
        return qeliMean_StdDev_32f_C1R(moved.data(), moved.step(), moved.size(), &before.mean, &before.stdDev);
    });
    for (int y = 0; y < moved.height(); ++y) {
        for (int x = 0; x < moved.width(); ++x) moved.at(x, y) += kOffset;
    }
    const Timing twice = section.time("qeliMean_StdDev_32f_C1R", moved.size(), [&] {
        return qeliMean_StdDev_32f_C1R(moved.data(), moved.step(), moved.size(), &after.mean, &after.stdDev);
    });
    section.add({.image = picture(moved, kOffset, kOffset + 1),
                 .title = "Small differences on a large offset",
                 .text =
                     "Samples from 0 to 1, then the same plus 10000. Squares of such samples drown what they differ "
                     "by, so a second pass measures the distances from the mean; it shows in the time.",
                 .timings = {plain, twice},
                 .facts = {{"deviation", digits(before.stdDev, 5)},
                           {"with the offset", digits(after.stdDev, 5)},
                           {"mean with the offset", digits(after.mean, 3)}}});
}

void fill(Section& section) {
    whole(section);
    underMask(section);
    meanColour(section);
    tiles(section);
    largeOffset(section);
}

const Registration registration(Room::Stats, "Mean and standard deviation",
                                "How bright a region is, and how much its pixels differ. Sums of integers are exact; "
                                "masks choose pixels, and of three channels one is read.",
                                fill);

}  // namespace
}  // namespace gallery
