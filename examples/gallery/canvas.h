// Painting with smooth edges: shapes are signed distances in pixels, negative inside.
#ifndef GALLERY_CANVAS_H_
#define GALLERY_CANVAS_H_

#include <algorithm>
#include <cmath>
#include <string_view>

#include "image.h"

namespace gallery {

// Red, green and blue from 0 to 1.
struct Colour {
    float red, green, blue;
};

// Colour of the way from `a` at 0 to `b` at 1.
inline Colour mix(Colour a, Colour b, float t) {
    t = std::clamp(t, 0.0f, 1.0f);
    return {a.red + (b.red - a.red) * t, a.green + (b.green - a.green) * t, a.blue + (b.blue - a.blue) * t};
}

// What the gallery marks things with.
constexpr Colour kMark = {1.0f, 0.25f, 0.2f};

// A number from 0 to 1 that looks random, the same on every machine.
float noise(int x, int y, unsigned seed = 0);

class Canvas {
public:
    explicit Canvas(QelSize size) : pixels_(size, 3) {}
    // To draw on a picture of one or three channels.
    explicit Canvas(const Image<Qel8u>& image);

    int width() const { return pixels_.width(); }
    int height() const { return pixels_.height(); }
    Colour get(int x, int y) const;
    void set(int x, int y, Colour colour);
    void blend(int x, int y, Colour colour, float share) { set(x, y, mix(get(x, y), colour, share)); }

    // Sets every pixel to colourAt(x, y).
    template <class ColourAt>
    void paint(const ColourAt& colourAt) {
        for (int y = 0; y < height(); ++y) {
            for (int x = 0; x < width(); ++x) set(x, y, colourAt(x, y));
        }
    }

    // Paints where distance(x, y) is below zero, within `box`; a pixel on the edge takes part of the colour.
    template <class Distance>
    void fill(QelRect box, Colour colour, const Distance& distance, float opacity = 1) {
        for (int y = std::max(box.y, 0); y < std::min(box.y + box.height, height()); ++y) {
            for (int x = std::max(box.x, 0); x < std::min(box.x + box.width, width()); ++x) {
                const float share = opacity * std::clamp(0.5f - distance(float(x), float(y)), 0.0f, 1.0f);
                if (share > 0) blend(x, y, colour, share);
            }
        }
    }

    void disc(float x, float y, float radius, Colour colour, float opacity = 1);
    void ring(float x, float y, float radius, float thickness, Colour colour);
    void line(float x0, float y0, float x1, float y1, float thickness, Colour colour);
    void frame(QelRect rect, int thickness, Colour colour);

    // Capital letters, digits and a few signs, as strokes; (x, y) is the top left corner, `height` that of a capital.
    void text(std::string_view text, float x, float y, float height, float thickness, Colour colour);

    // Puts a cross hair around a pixel.
    void mark(QelPoint point, Colour colour = kMark);

    Image<Qel8u> rgb() const;   // three channels
    Image<Qel8u> gray() const;  // their weighted sum

private:
    Image<Qel32f> pixels_;
};

}  // namespace gallery

#endif
