// Plain conversions: what a family's section needs to make its inputs and to show its results.
#ifndef GALLERY_PIXELS_H_
#define GALLERY_PIXELS_H_

#include <vector>

#include "canvas.h"
#include "image.h"

namespace gallery {

// Inputs.
Image<Qel8u> grayOf(const Image<Qel8u>& rgb);
Image<Qel16u> to16u(const Image<Qel8u>& image);                   // 255 becomes 65535
Image<Qel32f> to32f(const Image<Qel8u>& image);                   // 255 becomes 1
Image<Qel8u> shifted(const Image<Qel8u>& image, int dx, int dy);  // edge samples are repeated
Image<Qel8u> blurred(const Image<Qel8u>& image, int radius);      // mean of 2 radius + 1 squared pixels

// Pictures of results: one or three channels of 8 bits.
Image<Qel8u> picture(const Image<Qel16u>& image);                          // the high bytes
Image<Qel8u> picture(const Image<Qel32f>& image, float from, float to);    // as grays, one or three channels
Image<Qel8u> colourMap(const Image<Qel32f>& image, float from, float to);  // dark blue over green to yellow
Colour signedColour(float value);  // from -1 to 1: orange above zero, blue below, nearly black at zero
Image<Qel8u> amplified(const Image<Qel8u>& image, int factor);
Image<Qel8u> zoomed(const Image<Qel8u>& image, QelRect rect, int factor);  // each pixel a square
Image<Qel8u> sideBySide(const std::vector<Image<Qel8u>>& images);          // from left to right, with a gap
Image<Qel8u> reduced(const Image<Qel8u>& image, int factor);               // means of factor by factor pixels

// As signedColour, where `full` and what lies beyond is brightest.
template <class T>
Image<Qel8u> signedColours(const Image<T>& image, float full) {
    Canvas canvas(image.size());
    canvas.paint([&](int x, int y) { return signedColour(static_cast<float>(image.at(x, y)) / full); });
    return canvas.rgb();
}

// The smallest and the largest sample.
template <class T>
struct Extremes {
    T min, max;
    QelPoint minAt, maxAt;
};
template <class T>
Extremes<T> extremes(const Image<T>& image) {
    Extremes<T> e = {image.at(0, 0), image.at(0, 0), {0, 0}, {0, 0}};
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width() * image.channels(); ++x) {
            const T value = image.row(y)[x];
            const QelPoint here = {x / image.channels(), y};
            if (value < e.min) e.min = value, e.minAt = here;
            if (value > e.max) e.max = value, e.maxAt = here;
        }
    }
    return e;
}

}  // namespace gallery

#endif
