#include "scenes.h"

namespace gallery {
namespace {

constexpr float kPi = 3.14159265f;
constexpr Colour kWhite = {0.97f, 0.96f, 0.93f};
constexpr Colour kInk = {0.09f, 0.10f, 0.16f};

// Heights between 0 and 1 that a mountain range has along x.
float ridge(float x, float seed) {
    return 0.5f + 0.26f * std::sin(x * 2.1f + seed) + 0.15f * std::sin(x * 5.3f + seed * 2.7f) +
           0.06f * std::sin(x * 13.7f + seed * 1.3f) + 0.03f * std::sin(x * 31.1f + seed);
}

Colour skyAt(float height) {
    constexpr Colour kStops[] = {
        {0.07f, 0.10f, 0.28f}, {0.24f, 0.20f, 0.45f}, {0.64f, 0.33f, 0.47f}, {0.96f, 0.58f, 0.42f}, {1, 0.82f, 0.55f}};
    const float position = std::clamp(height, 0.0f, 0.999f) * 4;
    const int stop = static_cast<int>(position);
    return mix(kStops[stop], kStops[stop + 1], position - float(stop));
}

// The landscape, in the picture's upper part: `unit` is its height.
struct Landscape {
    float unit;
    float horizon = 0.72f * unit;
    float sunX = 0.98f * unit;
    float sunY = 0.56f * unit;

    Colour sky(int x, int y) const {
        const float toSun = std::hypot(float(x) - sunX, float(y) - sunY) / unit;
        const Colour glow = mix(skyAt(float(y) / horizon), {1, 0.90f, 0.66f}, 0.75f * std::exp(-toSun * 6));
        const float star = noise(x, y, 7);
        const float night = 1 - float(y) / (horizon * 0.6f);
        return star > 0.9987f && night > 0 ? mix(glow, kWhite, night) : glow;
    }

    Colour water(int x, int y) const {
        const float depth = (float(y) - horizon) / (unit - horizon);
        const Colour mirrored = sky(x, static_cast<int>(horizon - (float(y) - horizon) * 1.6f));
        const float wave = std::sin(float(y) * (2.6f - 1.8f * depth) + 3 * std::sin(float(x) / unit * 9));
        const float path = std::exp(-std::abs(float(x) - sunX) / unit * (9 - 4 * depth));
        return mix(mix(mirrored, {0.06f, 0.10f, 0.22f}, 0.35f + 0.45f * depth), {1, 0.86f, 0.60f},
                   path * (0.35f + 0.35f * wave) + 0.05f * wave);
    }

    void paint(Canvas& canvas) const {
        canvas.paint([&](int x, int y) { return float(y) < horizon ? sky(x, y) : water(x, y); });
        canvas.disc(sunX, sunY, 0.085f * unit, {1, 0.93f, 0.72f});
        ranges(canvas);
    }

    void ranges(Canvas& canvas) const {
        constexpr Colour kRanges[] = {{0.52f, 0.32f, 0.46f}, {0.32f, 0.22f, 0.40f}, {0.14f, 0.13f, 0.27f}};
        for (int range = 0; range < 3; ++range) {
            const float rise = (0.30f - 0.085f * float(range)) * unit;
            const QelRect box = {0, 0, canvas.width(), static_cast<int>(horizon)};
            canvas.fill(box, kRanges[range], [=, this](float x, float y) {
                const float top = horizon - rise * ridge(x / unit * (1 + 0.7f * float(range)), 1.9f * float(range + 1));
                return (top - y) * 0.8f;
            });
        }
    }
};

// A balloon of eight stripes with its basket.
void balloon(Canvas& canvas, float x, float y, float radius, Colour first, Colour second) {
    canvas.line(x - radius * 0.5f, y + radius * 0.8f, x - radius * 0.14f, y + radius * 1.7f, 1, kInk);
    canvas.line(x + radius * 0.5f, y + radius * 0.8f, x + radius * 0.14f, y + radius * 1.7f, 1, kInk);
    canvas.line(x - radius * 0.1f, y + radius * 1.75f, x + radius * 0.1f, y + radius * 1.75f, radius * 0.2f, kInk);
    const QelRect box = {int(x - radius) - 1, int(y - radius) - 1, int(radius * 2) + 3, int(radius * 2) + 3};
    const auto inside = [=](float px, float py) { return std::hypot(px - x, py - y) - radius; };
    canvas.fill(box, first, inside);
    canvas.fill(box, second, [=](float px, float py) {
        const float across = std::sqrt(std::max(radius * radius - (py - y) * (py - y), 1.0f));
        const float turn = std::asin(std::clamp((px - x) / across, -1.0f, 1.0f)) / kPi;
        return std::max(inside(px, py), -std::sin(turn * 8 * kPi) * radius / 6);
    });
    canvas.fill(box, {0.05f, 0.03f, 0.15f}, inside, 0.12f);
    canvas.disc(x + radius * 0.3f, y - radius * 0.3f, radius * 0.45f, {1, 0.95f, 0.85f}, 0.16f);
}

// The test patterns, each for a rectangle of its own.
using Pattern = void (*)(Canvas& canvas, QelRect box);

template <class ShadeAt>
void shade(Canvas& canvas, QelRect box, const ShadeAt& shadeAt) {
    for (int y = 0; y < box.height; ++y) {
        for (int x = 0; x < box.width; ++x) canvas.set(box.x + x, box.y + y, mix(kInk, kWhite, shadeAt(x, y)));
    }
}

void checker(Canvas& canvas, QelRect box) {
    const int cell = std::max(box.height / 6, 2);
    shade(canvas, box, [=](int x, int y) { return float((x / cell + y / cell) % 2); });
}

// Stripes that get finer to the right, down to two pixels.
void stripes(Canvas& canvas, QelRect box) {
    const float width = float(box.width);
    shade(canvas, box, [=](int x, int) {
        const float t = float(x) / width;
        return 0.5f + 0.5f * std::cos(width * (0.10f * t + 1.30f * t * t));
    });
}

void star(Canvas& canvas, QelRect box) {
    shade(canvas, box, [=](int x, int y) {
        const float dx = float(x) - float(box.width) / 2, dy = float(y) - float(box.height) / 2;
        const float toEdge = std::sin(std::atan2(dy, dx) * 18) * std::hypot(dx, dy) / 18;
        return std::clamp(0.5f + toEdge, 0.0f, 1.0f);
    });
}

void letters(Canvas& canvas, QelRect box) {
    shade(canvas, box, [](int, int) { return 1.0f; });
    constexpr std::string_view kLines[] = {"QELCV", "EXACT AND FAST", "0123456789 ABCDEFGHIJ",
                                           "THE SAME BITS ON EVERY CPU"};
    float y = float(box.y) + float(box.height) * 0.09f;
    for (const std::string_view line : kLines) {
        const float height =
            std::min(float(box.height) * 0.30f, float(box.width) * 0.92f / (float(line.size()) * 0.97f));
        canvas.text(line, float(box.x) + float(box.width) * 0.05f, y, height, std::max(height / 8, 0.9f), kInk);
        y += height + float(box.height) * 0.10f;
    }
}

void grain(Canvas& canvas, QelRect box) {
    shade(canvas, box, [=](int x, int y) {
        const float spread = float(x) / float(box.width);
        return 0.5f + spread * (noise(x, y, 3) + noise(x, y, 4) - 1);
    });
}

void steps(Canvas& canvas, QelRect box) {
    shade(canvas, box, [=](int x, int y) {
        const float t = float(x) / float(box.width);
        return y < box.height / 2 ? t : std::floor(t * 8) / 7;
    });
}

void strip(Canvas& canvas, QelRect box) {
    constexpr struct {
        Pattern pattern;
        float share;
    } kPatterns[] = {{checker, 0.14f}, {stripes, 0.20f}, {star, 0.15f},
                     {letters, 0.21f}, {grain, 0.15f},   {steps, 0.15f}};
    canvas.fill(box, kInk, [](float, float) { return -1.0f; });
    const int gap = std::max(box.height / 16, 1);
    float x = float(box.x);
    for (const auto& [pattern, share] : kPatterns) {
        const float next = x + share * float(box.width);
        const QelRect inner = {int(x) + gap, box.y + gap, int(next) - int(x) - 2 * gap, box.height - 2 * gap};
        if (inner.width > 0 && inner.height > 0) pattern(canvas, inner);
        x = next;
    }
}

}  // namespace

Canvas testPicture(QelSize size) {
    Canvas canvas(size);
    const float unit = float(size.height) * 0.79f;
    Landscape{unit}.paint(canvas);
    balloon(canvas, 0.42f * unit, 0.34f * unit, 0.135f * unit, {0.93f, 0.28f, 0.25f}, {0.98f, 0.83f, 0.45f});
    balloon(canvas, 1.40f * unit, 0.24f * unit, 0.080f * unit, {0.18f, 0.58f, 0.66f}, {0.95f, 0.93f, 0.86f});
    balloon(canvas, 0.76f * unit, 0.20f * unit, 0.045f * unit, {0.35f, 0.28f, 0.58f}, {0.95f, 0.62f, 0.42f});
    const int top = static_cast<int>(unit);
    // As a sensor would: no area is perfectly flat.
    canvas.paint([&](int x, int y) {
        const float grainShade = (noise(x, y, 1) - 0.5f) * 0.02f;
        const Colour c = canvas.get(x, y);
        return Colour{c.red + grainShade, c.green + grainShade, c.blue + grainShade};
    });
    strip(canvas, {0, top, size.width, size.height - top});
    return canvas;
}

Canvas movingShapes(QelSize size, int t) {
    Canvas canvas(size);
    const float w = float(size.width), h = float(size.height), time = float(t);
    canvas.paint([=](int x, int y) {
        const float wall = 0.20f + 0.10f * float(y) / h + 0.05f * (noise(x / 3, y / 3, 5) - 0.5f);
        return mix({wall, wall * 1.04f, wall * 1.18f}, {0.30f, 0.24f, 0.20f}, float(y) > h * 0.8f ? 0.8f : 0.0f);
    });
    canvas.text("CAMERA 1", w * 0.03f, h * 0.05f, h * 0.05f, h * 0.008f, {0.55f, 0.60f, 0.70f});
    canvas.frame({int(w * 0.70f), int(h * 0.10f), int(w * 0.22f), int(h * 0.30f)}, int(h * 0.015f) + 1,
                 {0.45f, 0.47f, 0.52f});
    canvas.disc(w * 0.12f, h * 0.80f, h * 0.10f, {0.24f, 0.38f, 0.30f});

    const float orbit = time * 0.09f;
    canvas.disc(w * (0.40f + 0.22f * std::cos(orbit)), h * (0.45f + 0.22f * std::sin(orbit)), h * 0.10f,
                {0.95f, 0.62f, 0.26f});
    const float turn = time * 0.06f;
    const float dx = std::cos(turn) * h * 0.16f, dy = std::sin(turn) * h * 0.16f;
    canvas.line(w * 0.80f - dx, h * 0.60f - dy, w * 0.80f + dx, h * 0.60f + dy, h * 0.05f, {0.36f, 0.72f, 0.86f});
    const float phase = time * 0.045f;
    const float across = std::abs(2 * (phase / 2 - std::floor(phase / 2)) - 1);
    canvas.disc(w * (0.08f + 0.84f * across), h * (0.85f - 0.30f * std::abs(std::sin(time * 0.16f))), h * 0.05f,
                {0.92f, 0.34f, 0.42f});
    canvas.paint([&](int x, int y) {
        const float sensor = (noise(x, y, 100u + unsigned(t)) - 0.5f) * 0.03f;
        const Colour c = canvas.get(x, y);
        return Colour{c.red + sensor, c.green + sensor, c.blue + sensor};
    });
    return canvas;
}

}  // namespace gallery
