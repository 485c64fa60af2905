#include <algorithm>
#include <cstdlib>

#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

// The larger of the horizontal and the vertical difference of neighbours, in each channel.
Image<Qel8u> edges(const Image<Qel8u>& rgb) {
    Image<Qel8u> out(rgb.size(), 3);
    for (int y = 0; y < rgb.height(); ++y) {
        for (int x = 0; x < rgb.width(); ++x) {
            const int right = std::min(x + 1, rgb.width() - 1), below = std::min(y + 1, rgb.height() - 1);
            for (int channel = 0; channel < 3; ++channel) {
                const int here = rgb.at(x, y, channel);
                out.at(x, y, channel) = static_cast<Qel8u>(
                    std::max(std::abs(rgb.at(right, y, channel) - here), std::abs(rgb.at(x, below, channel) - here)));
            }
        }
    }
    return out;
}

template <class T>
struct Result {
    Image<T> image;
    Timing timing;
};

template <class T>
Result<T> toGray(Section& section, const char* name, qelStatus (*function)(const T*, int, T*, int, QelSize, int),
                 const Image<T>& gradient, int norm) {
    Image<T> out(gradient.size());
    Timing timing = section.time(name, out.size(), [&] {
        return function(gradient.data(), gradient.step(), out.data(), out.step(), out.size(), norm);
    });
    return {std::move(out), std::move(timing)};
}

void colourGradient(Section& section) {
    const Image<Qel8u> gradient = edges(section.rgb());
    section.add({.image = amplified(gradient, 3),
                 .title = "A gradient with three channels",
                 .text = "Differences of neighbours in red, green and blue, three times as bright. An edge between two "
                         "colours of the same brightness shows here, and would not in a gray picture."});
    const struct {
        const char* title;
        const char* text;
    } norms[] = {{"The largest channel", "Norm 0: the strongest of the three decides. Three times as bright."},
                 {"The mean", "Norm 1: the rounded mean of the three. Three times as bright."},
                 {"The root of the mean square", "Norm 2: between the two others. Three times as bright."}};
    for (int norm = 0; norm < 3; ++norm) {
        const auto [image, timing] =
            toGray(section, "qeliGradientColorToGray_8u_C3C1R", qeliGradientColorToGray_8u_C3C1R, gradient, norm);
        section.add({.image = amplified(image, 3),
                     .title = norms[norm].title,
                     .text = norms[norm].text,
                     .timings = {timing},
                     .facts = {{"largest", std::to_string(extremes(image).max)}}});
    }
    const auto deep =
        toGray(section, "qeliGradientColorToGray_16u_C3C1R", qeliGradientColorToGray_16u_C3C1R, to16u(gradient), 2);
    const auto single =
        toGray(section, "qeliGradientColorToGray_32f_C3C1R", qeliGradientColorToGray_32f_C3C1R, to32f(gradient), 2);
    section.add({.image = sideBySide({amplified(picture(deep.image), 3), colourMap(single.image, 0, 0.6f)}),
                 .title = "Samples of 16 bits, and floating point",
                 .text = "Norm 2 of both. In floating point the squares are added without a division by three.",
                 .timings = {deep.timing, single.timing},
                 .facts = {{"largest of 16 bits", std::to_string(extremes(deep.image).max)},
                           {"largest of floats", digits(extremes(single.image).max, 3)}},
                 .wide = true});
}

const Registration registration(
    Room::Stats, "Colour gradient",
    "One magnitude out of the gradients of three channels: the largest, the mean, or the root "
    "of the mean square. The step from a colour picture to its edges.",
    colourGradient);

}  // namespace
}  // namespace gallery
