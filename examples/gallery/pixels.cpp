#include "pixels.h"

#include <algorithm>
#include <cmath>

namespace gallery {
namespace {

// An image of the same size with convert(sample) for each sample.
template <class From, class To, class Convert>
Image<To> converted(const Image<From>& image, const Convert& convert) {
    Image<To> result(image.size(), image.channels());
    for (int y = 0; y < image.height(); ++y) {
        const From* from = image.row(y);
        std::transform(from, from + image.width() * image.channels(), result.row(y), convert);
    }
    return result;
}

// How far `value` is on the way from `from` to `to`, between 0 and 1; a NaN counts as `from`.
float share(float value, float from, float to) {
    return value > from ? std::min((value - from) / (to - from), 1.0f) : 0;
}

// Sums along x or y of `radius` neighbours on both sides; edge samples are repeated.
Image<Qel8u> boxMean(const Image<Qel8u>& image, int radius, int dx, int dy) {
    Image<Qel8u> result(image.size(), image.channels());
    const int taps = 2 * radius + 1;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            for (int c = 0; c < image.channels(); ++c) {
                int sum = taps / 2;
                for (int k = -radius; k <= radius; ++k) {
                    sum += image.at(std::clamp(x + k * dx, 0, image.width() - 1),
                                    std::clamp(y + k * dy, 0, image.height() - 1), c);
                }
                result.at(x, y, c) = static_cast<Qel8u>(sum / taps);
            }
        }
    }
    return result;
}

}  // namespace

Image<Qel8u> grayOf(const Image<Qel8u>& rgb) { return Canvas(rgb).gray(); }

Image<Qel16u> to16u(const Image<Qel8u>& image) {
    return converted<Qel8u, Qel16u>(image, [](Qel8u v) { return static_cast<Qel16u>(v * 257); });
}

Image<Qel32f> to32f(const Image<Qel8u>& image) {
    return converted<Qel8u, Qel32f>(image, [](Qel8u v) { return float(v) / 255; });
}

Image<Qel8u> shifted(const Image<Qel8u>& image, int dx, int dy) {
    Image<Qel8u> result(image.size(), image.channels());
    for (int y = 0; y < image.height(); ++y) {
        const int fromY = std::clamp(y - dy, 0, image.height() - 1);
        for (int x = 0; x < image.width(); ++x) {
            const int fromX = std::clamp(x - dx, 0, image.width() - 1);
            for (int c = 0; c < image.channels(); ++c) result.at(x, y, c) = image.at(fromX, fromY, c);
        }
    }
    return result;
}

Image<Qel8u> blurred(const Image<Qel8u>& image, int radius) {
    return boxMean(boxMean(image, radius, 1, 0), radius, 0, 1);
}

Image<Qel8u> picture(const Image<Qel16u>& image) {
    return converted<Qel16u, Qel8u>(image, [](Qel16u v) { return static_cast<Qel8u>(v >> 8); });
}

Image<Qel8u> picture(const Image<Qel32f>& image, float from, float to) {
    return converted<Qel32f, Qel8u>(
        image, [=](Qel32f v) { return static_cast<Qel8u>(std::lround(share(v, from, to) * 255)); });
}

Image<Qel8u> colourMap(const Image<Qel32f>& image, float from, float to) {
    // Even steps of lightness, so that equal differences look equal.
    constexpr Colour kStops[] = {{0.10f, 0.03f, 0.20f}, {0.25f, 0.18f, 0.50f}, {0.18f, 0.42f, 0.56f},
                                 {0.12f, 0.62f, 0.53f}, {0.48f, 0.80f, 0.32f}, {0.99f, 0.91f, 0.15f}};
    Canvas canvas(image.size());
    canvas.paint([&](int x, int y) {
        const float position = std::min(share(image.at(x, y), from, to) * 5, 4.999f);
        const int stop = static_cast<int>(position);
        return mix(kStops[stop], kStops[stop + 1], position - float(stop));
    });
    return canvas.rgb();
}

Colour signedColour(float value) {
    constexpr Colour kZero = {0.05f, 0.05f, 0.08f};
    constexpr Colour kSides[][2] = {{{0.16f, 0.45f, 0.85f}, {0.80f, 0.95f, 1}},
                                    {{0.93f, 0.42f, 0.16f}, {1, 0.93f, 0.72f}}};
    const auto& side = kSides[value > 0];
    const float size = std::min(std::abs(value), 1.0f);
    return size < 0.5f ? mix(kZero, side[0], size * 2) : mix(side[0], side[1], size * 2 - 1);
}

Image<Qel8u> amplified(const Image<Qel8u>& image, int factor) {
    return converted<Qel8u, Qel8u>(image, [=](Qel8u v) { return static_cast<Qel8u>(std::min(v * factor, 255)); });
}

Image<Qel8u> zoomed(const Image<Qel8u>& image, QelRect rect, int factor) {
    const int left = std::clamp(rect.x, 0, image.width() - 1),
              right = std::clamp(rect.x + rect.width, 1, image.width());
    const int top = std::clamp(rect.y, 0, image.height() - 1),
              bottom = std::clamp(rect.y + rect.height, 1, image.height());
    Image<Qel8u> result({std::max(right - left, 1) * factor, std::max(bottom - top, 1) * factor}, image.channels());
    for (int y = 0; y < result.height(); ++y) {
        for (int x = 0; x < result.width(); ++x) {
            for (int c = 0; c < image.channels(); ++c) {
                result.at(x, y, c) = image.at(left + x / factor, top + y / factor, c);
            }
        }
    }
    return result;
}

Image<Qel8u> sideBySide(const std::vector<Image<Qel8u>>& images) {
    constexpr int kGap = 6;
    QelSize size = {-kGap, 0};
    for (const Image<Qel8u>& image : images) {
        size.width += kGap + image.width();
        size.height = std::max(size.height, image.height());
    }
    Canvas all(size);
    all.paint([](int, int) { return Colour{1, 1, 1}; });
    int left = 0;
    for (const Image<Qel8u>& image : images) {
        const Canvas one(image);
        for (int y = 0; y < one.height(); ++y) {
            for (int x = 0; x < one.width(); ++x) all.set(left + x, y, one.get(x, y));
        }
        left += one.width() + kGap;
    }
    return all.rgb();
}

Image<Qel8u> reduced(const Image<Qel8u>& image, int factor) {
    if (factor <= 1) return image;
    const auto part = [factor](int length) { return std::max(length / factor, 1); };
    Image<Qel8u> result({part(image.width()), part(image.height())}, image.channels());
    for (int y = 0; y < result.height(); ++y) {
        for (int x = 0; x < result.width(); ++x) {
            for (int c = 0; c < image.channels(); ++c) {
                int sum = 0, count = 0;
                for (int dy = 0; dy < factor && y * factor + dy < image.height(); ++dy) {
                    for (int dx = 0; dx < factor && x * factor + dx < image.width(); ++dx, ++count) {
                        sum += image.at(x * factor + dx, y * factor + dy, c);
                    }
                }
                result.at(x, y, c) = static_cast<Qel8u>((sum + count / 2) / count);
            }
        }
    }
    return result;
}

}  // namespace gallery
