#include <algorithm>
#include <string>

#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

// A disc of `radius` in the middle.
template <class Inside>
void forDisc(QelSize size, double radius, const Inside& inside) {
    const QelPoint middle = {size.width / 2, size.height / 2};
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const double dx = x - middle.x, dy = y - middle.y;
            if (dx * dx + dy * dy <= radius * radius) inside(x, y);
        }
    }
}

double third(QelSize size) { return std::min(size.width, size.height) / 3.0; }

Image<Qel8u> roundMask(QelSize size) {
    Image<Qel8u> mask(size);
    forDisc(size, third(size), [&](int x, int y) { mask.at(x, y) = 255; });
    return mask;
}

// The image where the mask counts, darkened elsewhere.
Image<Qel8u> under(const Image<Qel8u>& mask, const Image<Qel8u>& image) {
    Image<Qel8u> shown = image;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width() * image.channels(); ++x) {
            Qel8u& sample = shown.row(y)[x];
            if (mask.at(x / image.channels(), y) == 0) sample = static_cast<Qel8u>(sample / 4);
        }
    }
    return shown;
}

template <class T>
using One = qelStatus (*)(const T*, int, const Qel8u*, int, QelSize, Qel64f*);
template <class T>
using Two = qelStatus (*)(const T*, int, const T*, int, const Qel8u*, int, QelSize, Qel64f*);

// Takes a norm, and keeps it with the time that it took.
struct Norms {
    Section& section;
    const Image<Qel8u>& mask;
    std::vector<Fact> facts = {};
    std::vector<Timing> timings = {};

    template <class Call>
    void take(const char* name, int decimals, const Call& call) {
        Qel64f value = 0;
        timings.push_back(section.time(name, mask.size(), [&] { return call(&value); }));
        facts.push_back({name, digits(value, decimals)});
    }
    template <class T>
    void of(const char* name, One<T> function, const Image<T>& a, int decimals = 1) {
        take(name, decimals, [&](Qel64f* pValue) {
            return function(a.data(), a.step(), mask.data(), mask.step(), mask.size(), pValue);
        });
    }
    template <class T>
    void of(const char* name, Two<T> function, const Image<T>& a, const Image<T>& b, int decimals = 1) {
        take(name, decimals, [&](Qel64f* pValue) {
            return function(a.data(), a.step(), b.data(), b.step(), mask.data(), mask.step(), mask.size(), pValue);
        });
    }
};

void onePicture(Section& section) {
    const Image<Qel8u> mask = roundMask(section.gray().size());
    Norms norms{section, mask};
    norms.of("qeliNorm_Inf_8u_C1MR", qeliNorm_Inf_8u_C1MR, section.gray(), 0);
    norms.of("qeliNorm_L1_8u_C1MR", qeliNorm_L1_8u_C1MR, section.gray(), 0);
    norms.of("qeliNorm_L2_8u_C1MR", qeliNorm_L2_8u_C1MR, section.gray());
    section.add({.image = under(mask, section.gray()),
                 .title = "Three measures of one picture",
                 .text = "The brightest pixel, the sum of all, and the root of the sum of squares, of what lies under "
                         "a round mask. The dark part takes no part.",
                 .timings = norms.timings,
                 .facts = norms.facts});
}

void blurredDisc(Section& section) {
    const Image<Qel8u>& gray = section.gray();
    const Image<Qel8u> soft = blurred(gray, 3);
    Image<Qel8u> changed = gray;
    forDisc(gray.size(), third(gray.size()) / 2, [&](int x, int y) { changed.at(x, y) = soft.at(x, y); });
    const Image<Qel8u> mask = roundMask(gray.size());
    Norms norms{section, mask};
    norms.of("qeliNormDiff_Inf_8u_C1MR", qeliNormDiff_Inf_8u_C1MR, gray, changed, 0);
    norms.of("qeliNormDiff_L1_8u_C1MR", qeliNormDiff_L1_8u_C1MR, gray, changed, 0);
    norms.of("qeliNormDiff_L2_8u_C1MR", qeliNormDiff_L2_8u_C1MR, gray, changed);
    norms.of("qeliNormRel_L1_8u_C1MR", qeliNormRel_L1_8u_C1MR, changed, gray, 4);
    norms.of("qeliNormRel_L2_8u_C1MR", qeliNormRel_L2_8u_C1MR, changed, gray, 4);
    section.add({.image = sideBySide({under(mask, gray), under(mask, changed)}),
                 .title = "How far a blurred disc is from the picture",
                 .text = "The middle of the right picture is blurred. Inf tells the worst pixel, L1 how much has "
                         "changed in all, L2 weighs large changes more. The relative norms are parts of the "
                         "picture's own.",
                 .timings = norms.timings,
                 .facts = norms.facts,
                 .wide = true});
}

void oneChannel(Section& section) {
    const Image<Qel8u>& rgb = section.rgb();
    Image<Qel8u> warm = rgb;
    forDisc(rgb.size(), third(rgb.size()), [&](int x, int y) {
        warm.at(x, y, 0) = static_cast<Qel8u>(std::min(255, warm.at(x, y, 0) + 40));
        warm.at(x, y, 2) = static_cast<Qel8u>(std::max(0, warm.at(x, y, 2) - 15));
    });
    const Image<Qel8u> mask = roundMask(rgb.size());
    Norms norms{section, mask};
    for (const int coi : {1, 2, 3}) {
        norms.take("qeliNormDiff_L1_8u_C3CMR", 0, [&](Qel64f* pValue) {
            return qeliNormDiff_L1_8u_C3CMR(rgb.data(), rgb.step(), warm.data(), warm.step(), mask.data(), mask.step(),
                                            rgb.size(), coi, pValue);
        });
        norms.facts.back().name += coi == 1 ? ", red" : coi == 2 ? ", green" : ", blue";
    }
    section.add({.image = sideBySide({under(mask, rgb), under(mask, warm)}),
                 .title = "Channel by channel",
                 .text = "Under the mask, red has been raised and blue lowered. The norm of one channel of interest at "
                         "a time tells which.",
                 .timings = norms.timings,
                 .facts = norms.facts,
                 .wide = true});
}

void deepSamples(Section& section) {
    const Image<Qel8u> mask = roundMask(section.gray().size());
    const Image<Qel8u> soft = blurred(section.gray(), 1);
    const Image<Qel16u> deep = to16u(section.gray()), deepSoft = to16u(soft);
    const Image<Qel32f> exact = to32f(section.gray()), exactSoft = to32f(soft);
    Norms norms{section, mask};
    norms.of("qeliNormDiff_L2_16u_C1MR", qeliNormDiff_L2_16u_C1MR, deep, deepSoft, 0);
    norms.of("qeliNormRel_L2_16u_C1MR", qeliNormRel_L2_16u_C1MR, deepSoft, deep, 5);
    norms.of("qeliNormDiff_L2_32f_C1MR", qeliNormDiff_L2_32f_C1MR, exact, exactSoft, 3);
    norms.of("qeliNormRel_L2_32f_C1MR", qeliNormRel_L2_32f_C1MR, exactSoft, exact, 5);
    section.add({.image = under(mask, soft),
                 .title = "Samples of 16 bits and of floating point",
                 .text = "The same comparison, with a copy blurred over 3 by 3 pixels, on samples up to 65535 and up "
                         "to 1: the relative norms agree.",
                 .timings = norms.timings,
                 .facts = norms.facts});
}

void maskedNorms(Section& section) {
    onePicture(section);
    blurredDisc(section);
    oneChannel(section);
    deepSamples(section);
}

const Registration registration(Room::Stats, "Masked norms",
                                "How large an image is, or how far apart two images are, as one number: the largest "
                                "magnitude (Inf), their sum (L1) "
                                "or the root of the sum of their squares (L2), over the pixels that a mask selects.",
                                maskedNorms);

}  // namespace
}  // namespace gallery
