#include <cmath>

#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

struct Lens {
    float fx, fy, cx, cy, k1, k2;
};

Lens lensFor(QelSize size) {
    const float focal = 0.8f * static_cast<float>(std::max(size.width, size.height));
    return {focal, focal, static_cast<float>(size.width) / 2, static_cast<float>(size.height) / 2, -0.28f, 0.05f};
}

// Where a straight point comes to lie behind the lens.
struct Place {
    float x, y;
};
Place bent(const Lens& l, float x, float y) {
    const float dx = x - l.cx, dy = y - l.cy;
    const float r2 = dx * dx / (l.fx * l.fx) + dy * dy / (l.fy * l.fy);
    const float t = l.k1 * r2 + l.k2 * r2 * r2;
    return {x + dx * t, y + dy * t};
}

// What a camera with this lens makes of a grid of straight lines on the wall.
Canvas photographedGrid(QelSize size, const Lens& lens) {
    Canvas canvas(size);
    canvas.paint([&](int x, int y) -> Colour {
        const float shade = 0.2f + 0.1f * static_cast<float>(x) / static_cast<float>(size.width);
        return {shade, shade, 0.3f + 0.1f * static_cast<float>(y) / static_cast<float>(size.height)};
    });
    constexpr int kGap = 40;
    constexpr float kPiece = 8;
    const auto piece = [&](float x0, float y0, float x1, float y1) {
        const Place a = bent(lens, x0, y0), b = bent(lens, x1, y1);
        canvas.line(a.x, a.y, b.x, b.y, 2.5f, {0.95f, 0.85f, 0.5f});
    };
    for (int i = -2; i * kGap <= size.width + 2 * kGap; ++i)
        for (float t = -2 * kGap; t < static_cast<float>(size.height + 2 * kGap); t += kPiece)
            piece(static_cast<float>(i * kGap), t, static_cast<float>(i * kGap), t + kPiece);
    for (int i = -2; i * kGap <= size.height + 2 * kGap; ++i)
        for (float t = -2 * kGap; t < static_cast<float>(size.width + 2 * kGap); t += kPiece)
            piece(t, static_cast<float>(i * kGap), t + kPiece, static_cast<float>(i * kGap));
    return canvas;
}

void grid(Section& section) {
    const QelSize size = {560, 400};
    const Lens l = lensFor(size);
    const Image<Qel8u> taken = photographedGrid(size, l).rgb();
    Image<Qel8u> straight(size, 3);
    const Timing timing = section.time("qeliUndistortRadial_8u_C3R", size, [&] {
        return qeliUndistortRadial_8u_C3R(taken.data(), taken.step(), straight.data(), straight.step(), size, l.fx,
                                          l.fy, l.cx, l.cy, l.k1, l.k2, nullptr);
    });
    section.add({.image = sideBySide({taken, straight}),
                 .title = "A grid put right",
                 .text = "Straight lines as a wide lens shows them, bent outward like a barrel, and with the lens "
                         "undone. What the camera did not see would stay black.",
                 .timings = {timing},
                 .facts = {{"k1", digits(l.k1, 2)}, {"k2", digits(l.k2, 2)}},
                 .wide = true});
}

void maps(Section& section) {
    const QelSize size = section.gray().size();
    const Lens l = lensFor(size);
    Image<Qel32f> xMap(size), yMap(size);
    const Timing timing = section.time("qeliCreateMapCameraUndistort_32f_C1R", size, [&] {
        return qeliCreateMapCameraUndistort_32f_C1R(xMap.data(), xMap.step(), yMap.data(), yMap.step(), size, l.fx,
                                                    l.fy, l.cx, l.cy, l.k1, l.k2, 0.01f, -0.02f, nullptr);
    });
    Image<Qel32f> moved(size);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            moved.at(x, y) = std::hypot(xMap.at(x, y) - static_cast<float>(x), yMap.at(x, y) - static_cast<float>(y));
    section.add({.image = colourMap(moved, 0, std::max(extremes(moved).max, 1.0f)),
                 .title = "How far pixels move",
                 .text = "The distance between a pixel and where the maps send it, for a lens that also stands askew: "
                         "dark blue near the middle, yellow in the corners.",
                 .timings = {timing},
                 .facts = {{"farthest", digits(extremes(moved).max, 1) + " pixels"}}});
}

void undistortion(Section& section) {
    grid(section);
    maps(section);
}

const Registration registration(Room::Pyramid, "Camera undistortion",
                                "Lenses bend straight lines. With the coefficients of a calibration, a picture is put "
                                "right at once, or maps are made that put many pictures right.",
                                undistortion);

}  // namespace
}  // namespace gallery
