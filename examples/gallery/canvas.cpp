#include "canvas.h"

#include <cstdint>

namespace gallery {
namespace {

// Strokes on a grid of 5 by 7 points: polylines, parted by blanks, of points written as column and row.
struct Glyph {
    char sign;
    std::string_view strokes;
};
constexpr Glyph kGlyphs[] = {
    {'A', "062046 1434"},
    {'B', "003041423303 334445360600"},
    {'C', "4130100105163645"},
    {'D', "00204145260600"},
    {'E', "40000646 0333"},
    {'F', "400006 0333"},
    {'G', "41301001051636454323"},
    {'H', "0006 4046 0343"},
    {'I', "1030 2026 1636"},
    {'J', "4045361605"},
    {'K', "0006 400346"},
    {'L', "000646"},
    {'M', "0600234046"},
    {'N', "06004640"},
    {'O', "103041453616050110"},
    {'P', "06003041423303"},
    {'Q', "103041453616050110 2446"},
    {'R', "06003041423303 2346"},
    {'S', "413010010213334445361605"},
    {'T', "0040 2026"},
    {'U', "000516364540"},
    {'V', "002640"},
    {'W', "0016233640"},
    {'X', "0046 4006"},
    {'Y', "002340 2326"},
    {'Z', "00400646"},
    {'0', "103041453616050110 3115"},
    {'1', "112026 1636"},
    {'2', "01103041420646"},
    {'3', "01103041423323 334445361605"},
    {'4', "36300444"},
    {'5', "400003334445361605"},
    {'6', "4130100105163645443303"},
    {'7', "004016"},
    {'8', "103041423313020110 130405163645443313"},
    {'9', "4313020110304145361605"},
    {'-', "1333"},
    {'+', "1333 2224"},
    {'.', "2626"},
    {'/', "0640"},
};

std::string_view strokesOf(char sign) {
    for (const Glyph& glyph : kGlyphs) {
        if (glyph.sign == sign) return glyph.strokes;
    }
    return {};
}

Qel8u sample(float value) { return static_cast<Qel8u>(std::lround(std::clamp(value, 0.0f, 1.0f) * 255)); }

QelRect boxAround(float x0, float y0, float x1, float y1, float margin) {
    const int left = static_cast<int>(std::floor(std::min(x0, x1) - margin));
    const int top = static_cast<int>(std::floor(std::min(y0, y1) - margin));
    return {left, top, static_cast<int>(std::ceil(std::max(x0, x1) + margin)) - left + 1,
            static_cast<int>(std::ceil(std::max(y0, y1) + margin)) - top + 1};
}

}  // namespace

float noise(int x, int y, unsigned seed) {
    uint32_t bits =
        static_cast<uint32_t>(x) * 0x9E3779B1u + static_cast<uint32_t>(y) * 0x85EBCA77u + seed * 0xC2B2AE3Du;
    for (int round = 0; round < 2; ++round) {
        bits ^= bits >> 15;
        bits *= 0x2C1B3C6Du;
        bits ^= bits >> 13;
    }
    return static_cast<float>(bits >> 8) / 0xFFFFFF;
}

Canvas::Canvas(const Image<Qel8u>& image) : pixels_(image.size(), 3) {
    const int last = image.channels() - 1;
    paint([&](int x, int y) {
        return Colour{image.at(x, y) / 255.0f, image.at(x, y, std::min(1, last)) / 255.0f,
                      image.at(x, y, std::min(2, last)) / 255.0f};
    });
}

Colour Canvas::get(int x, int y) const {
    const Qel32f* pixel = &pixels_.at(x, y);
    return {pixel[0], pixel[1], pixel[2]};
}

void Canvas::set(int x, int y, Colour colour) {
    if (x < 0 || y < 0 || x >= width() || y >= height()) return;
    Qel32f* pixel = &pixels_.at(x, y);
    pixel[0] = colour.red;
    pixel[1] = colour.green;
    pixel[2] = colour.blue;
}

void Canvas::disc(float x, float y, float radius, Colour colour, float opacity) {
    fill(
        boxAround(x, y, x, y, radius + 1), colour,
        [=](float px, float py) { return std::hypot(px - x, py - y) - radius; }, opacity);
}

void Canvas::ring(float x, float y, float radius, float thickness, Colour colour) {
    fill(boxAround(x, y, x, y, radius + thickness), colour,
         [=](float px, float py) { return std::abs(std::hypot(px - x, py - y) - radius) - thickness / 2; });
}

void Canvas::line(float x0, float y0, float x1, float y1, float thickness, Colour colour) {
    const float dx = x1 - x0, dy = y1 - y0;
    const float length2 = std::max(dx * dx + dy * dy, 1e-6f);
    fill(boxAround(x0, y0, x1, y1, thickness), colour, [=](float px, float py) {
        const float t = std::clamp(((px - x0) * dx + (py - y0) * dy) / length2, 0.0f, 1.0f);
        return std::hypot(px - x0 - t * dx, py - y0 - t * dy) - thickness / 2;
    });
}

void Canvas::frame(QelRect rect, int thickness, Colour colour) {
    const auto bar = [&](QelRect box) { fill(box, colour, [](float, float) { return -1.0f; }); };
    bar({rect.x, rect.y, rect.width, thickness});
    bar({rect.x, rect.y + rect.height - thickness, rect.width, thickness});
    bar({rect.x, rect.y, thickness, rect.height});
    bar({rect.x + rect.width - thickness, rect.y, thickness, rect.height});
}

void Canvas::text(std::string_view text, float x, float y, float height, float thickness, Colour colour) {
    const float unit = height / 6;
    for (const char sign : text) {
        const std::string_view strokes = strokesOf(sign);
        const auto column = [&](std::size_t i) { return x + unit * float(strokes[i] - '0'); };
        const auto row = [&](std::size_t i) { return y + unit * float(strokes[i + 1] - '0'); };
        for (std::size_t i = 2; i < strokes.size(); i += 2) {
            if (strokes[i] == ' ') {
                i += 1;  // the next polyline begins behind the blank
            } else {
                line(column(i - 2), row(i - 2), column(i), row(i), thickness, colour);
            }
        }
        x += unit * 5.8f;
    }
}

void Canvas::mark(QelPoint point, Colour colour) {
    const float x = float(point.x), y = float(point.y);
    const float size = std::max(8.0f, float(std::max(width(), height())) / 80);
    const Colour shade = {0, 0, 0};
    ring(x, y, size, 5, shade);
    ring(x, y, size, 3, colour);
    const float directions[4][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
    for (const auto& [dx, dy] : directions) {
        line(x + dx * size * 0.5f, y + dy * size * 0.5f, x + dx * size * 1.6f, y + dy * size * 1.6f, 2, colour);
    }
}

Image<Qel8u> Canvas::rgb() const {
    Image<Qel8u> image(pixels_.size(), 3);
    for (int y = 0; y < height(); ++y) {
        const Qel32f* from = pixels_.row(y);
        Qel8u* to = image.row(y);
        for (int x = 0; x < width() * 3; ++x) to[x] = sample(from[x]);
    }
    return image;
}

Image<Qel8u> Canvas::gray() const {
    Image<Qel8u> image(pixels_.size());
    for (int y = 0; y < height(); ++y) {
        for (int x = 0; x < width(); ++x) {
            const Colour c = get(x, y);
            image.at(x, y) = sample(0.299f * c.red + 0.587f * c.green + 0.114f * c.blue);
        }
    }
    return image;
}

}  // namespace gallery
