#include <algorithm>
#include <vector>

#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

// Derivatives to the right and downward.
template <class T>
struct Derivatives {
    Image<T> dx, dy;
};

Derivatives<Qel16s> derivatives(const Image<Qel8u>& picture) {
    const QelSize size = picture.size();
    Derivatives<Qel16s> d = {Image<Qel16s>(size), Image<Qel16s>(size)};
    constexpr int kMask3x3 = 33;
    int across = 0, down = 0;
    qeliFilterSobelNegVertGetBufferSize_8u16s_C1R(size, kMask3x3, &across);
    qeliFilterSobelHorizGetBufferSize_8u16s_C1R(size, kMask3x3, &down);
    std::vector<Qel8u> scratch(static_cast<std::size_t>(std::max(across, down)));
    qeliFilterSobelNegVertBorder_8u16s_C1R(picture.data(), picture.step(), d.dx.data(), d.dx.step(), size, kMask3x3,
                                           qelBorderRepl, 0, scratch.data());
    qeliFilterSobelHorizBorder_8u16s_C1R(picture.data(), picture.step(), d.dy.data(), d.dy.step(), size, kMask3x3,
                                         qelBorderRepl, 0, scratch.data());
    return d;
}

template <class T>
Image<Qel32f> asFloats(const Image<T>& image) {
    Image<Qel32f> out(image.size());
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) out.at(x, y) = static_cast<Qel32f>(image.at(x, y));
    return out;
}

struct Edges {
    Image<Qel8u> image;
    Timing timing;

    std::string share() const {
        int count = 0;
        for (int y = 0; y < image.height(); ++y)
            count += static_cast<int>(std::count(image.row(y), image.row(y) + image.width(), Qel8u{255}));
        return digits(100.0 * count / (image.width() * image.height()), 1) + " % edges";
    }
};

template <class T, class Function>
Edges edges(Section& section, const char* name, Function function, const Derivatives<T>& d, Qel32f low, Qel32f high) {
    Image<Qel8u> out(d.dx.size());
    int bytes = 0;
    qeliCannyGetSize(out.size(), &bytes);
    std::vector<Qel8u> scratch(static_cast<std::size_t>(bytes));
    const Timing timing = section.time(name, out.size(), [&] {
        return function(d.dx.data(), d.dx.step(), d.dy.data(), d.dy.step(), out.data(), out.step(), out.size(), low,
                        high, scratch.data());
    });
    return {out, timing};
}

void canny(Section& section) {
    const Image<Qel8u> soft = blurred(section.gray(), 1);
    const Derivatives<Qel16s> d = derivatives(soft);
    struct Case {
        Qel32f low, high;
        const char* title;
        const char* text;
    };
    for (const Case& c : {Case{30, 60, "Low thresholds", "Weak edges, texture and some noise come through."},
                          Case{60, 180, "Thresholds far apart",
                               "A line starts where it is strong and goes on as long as it is not too weak: whole "
                               "outlines, little noise."},
                          Case{180, 240, "High thresholds", "The strongest edges only."}}) {
        const Edges e = edges(section, "qeliCanny_16s8u_C1R", qeliCanny_16s8u_C1R, d, c.low, c.high);
        section.add({.image = e.image,
                     .title = c.title,
                     .text = c.text,
                     .timings = {e.timing},
                     .facts = {{"thresholds", digits(c.low, 0) + " and " + digits(c.high, 0)}, {"found", e.share()}}});
    }
    const Derivatives<Qel32f> floats = {asFloats(d.dx), asFloats(d.dy)};
    const Edges e = edges(section, "qeliCanny_32f8u_C1R", qeliCanny_32f8u_C1R, floats, 60, 180);
    section.add({.image = e.image,
                 .title = "From derivatives in floating point",
                 .text = "The same picture, and the thresholds that are far apart.",
                 .timings = {e.timing},
                 .facts = {{"found", e.share()}}});
}

const Registration registration(
    Room::Feature, "Canny edges",
    "Thin lines along the steepest places of a picture, from its derivatives to the right and downward. One threshold "
    "says where a line may start, a lower one how far it goes on. Here the picture is averaged over 3 by 3 pixels and "
    "derived by Sobel's filter before.",
    canny);

}  // namespace
}  // namespace gallery
