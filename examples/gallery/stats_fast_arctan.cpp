#include <algorithm>
#include <cmath>

#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

// Degrees as the colours of a wheel, red at 0, as bright as `value`.
Colour hue(float degrees, float value) {
    const auto channel = [=](float offset) {
        const float position = std::fmod(degrees + offset + 720, 360.0f) / 60;
        return value * std::clamp(std::fabs(position - 3) - 1, 0.0f, 1.0f);
    };
    return {channel(0), channel(240), channel(120)};
}

// Angles of whole images, row by row.
Timing angles(Section& section, const Image<Qel32f>& y, const Image<Qel32f>& x, Image<Qel32f>& out) {
    return section.time("qelibFastArctan_32f", out.size(), [&] {
        qelStatus status = qelStatusOk;
        for (int row = 0; row < out.height() && status == qelStatusOk; ++row)
            status = qelibFastArctan_32f(y.row(row), x.row(row), out.row(row), out.width());
        return status;
    });
}

void wheel(Section& section) {
    const QelSize size = {360, 360};
    Image<Qel32f> x(size), y(size), angle(size);
    for (int row = 0; row < size.height; ++row) {
        for (int column = 0; column < size.width; ++column) {
            x.at(column, row) = column + 0.5f - size.width / 2.0f;
            y.at(column, row) = size.height / 2.0f - row - 0.5f;
        }
    }
    const Timing timing = angles(section, y, x, angle);
    Image<Qel32f> error(size);
    float largest = 0;
    for (int row = 0; row < size.height; ++row) {
        for (int column = 0; column < size.width; ++column) {
            const double exact = std::atan2(double(y.at(column, row)), double(x.at(column, row))) * 180 / M_PI;
            const double turn = std::remainder(angle.at(column, row) - exact, 360.0);
            error.at(column, row) = static_cast<float>(turn);
            largest = std::max(largest, std::fabs(error.at(column, row)));
        }
    }
    Canvas canvas(size);
    canvas.paint([&](int column, int row) {
        const float radius = std::hypot(x.at(column, row), y.at(column, row)) / (size.width / 2.0f);
        return radius <= 1 ? hue(angle.at(column, row), 0.4f + 0.6f * radius) : Colour{1, 1, 1};
    });
    section.add({.image = sideBySide({canvas.rgb(), colourMap(error, -0.15f, 0.15f)}),
                 .title = "Angles around a point",
                 .text =
                     "Left: the angle of each pixel, red at 0 degrees. Right: how far it is from the true one, from "
                     "-0.15 degrees in dark blue to 0.15 in yellow: a parabola stands in for each of eight parts.",
                 .timings = {timing},
                 .facts = {{"largest error", digits(largest, 3) + " degrees"}},
                 .wide = true});
}

void directions(Section& section) {
    const Image<Qel8u> soft = blurred(section.gray(), 1);
    Image<Qel32f> x(soft.size()), y(soft.size()), angle(soft.size());
    for (int row = 0; row < soft.height(); ++row) {
        const int above = std::max(row - 1, 0), below = std::min(row + 1, soft.height() - 1);
        for (int column = 0; column < soft.width(); ++column) {
            const int left = std::max(column - 1, 0), right = std::min(column + 1, soft.width() - 1);
            x.at(column, row) = float(soft.at(right, row) - soft.at(left, row));
            y.at(column, row) = float(soft.at(column, above) - soft.at(column, below));
        }
    }
    const Timing timing = angles(section, y, x, angle);
    Canvas canvas(soft.size());
    canvas.paint([&](int column, int row) {
        const float strength = std::hypot(x.at(column, row), y.at(column, row)) / 60;
        return hue(angle.at(column, row), std::min(strength, 1.0f));
    });
    section.add({.image = canvas.rgb(),
                 .title = "Directions of the picture's gradient",
                 .text =
                     "The colour tells where it gets brighter: red to the right, and on around the wheel above; the "
                     "brightness tells how steeply.",
                 .timings = {timing}});
}

void arctangent(Section& section) {
    wheel(section);
    directions(section);
}

const Registration registration(Room::Stats, "Arctangent",
                                "Directions in degrees from pairs of coordinates, fast and to about 0.15 degrees: what "
                                "histograms of gradients and orientations of corners begin with.",
                                arctangent);

}  // namespace
}  // namespace gallery
