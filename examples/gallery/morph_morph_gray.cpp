#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <vector>

#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

// A square mask with the anchor in its middle.
template <class Value>
struct Element {
    int radius;
    std::vector<Value> values;

    QelSize size() const { return {2 * radius + 1, 2 * radius + 1}; }
    QelPoint anchor() const { return {radius, radius}; }
};

// What no sum gets beyond: such an element is as good as absent.
constexpr Qel32s kAbsent = -255;

// The upper half of a ball that is as high as wide, its top at 0: what does not belong to it is absent. Negated for
// an erosion, which adds its values, too.
template <class Value>
Element<Value> ball(int radius, float height, bool negated) {
    Element<Value> element = {radius, {}};
    for (int j = -radius; j <= radius; ++j) {
        for (int i = -radius; i <= radius; ++i) {
            const float r = float(i * i + j * j) / float(radius * radius);
            const float value = r > 1 ? float(kAbsent) : height * (std::sqrt(1 - r) - 1);
            element.values.push_back(Value(negated ? -value : value));
        }
    }
    return element;
}

Timing gray8u(Section& section, bool dilate, const Image<Qel8u>& image, Image<Qel8u>& out,
              const Element<Qel32s>& element) {
    QelMorphGrayState* state = nullptr;
    if (qeliMorphGrayInitAlloc_8u_C1R(&state, image.size(), element.values.data(), element.size(), element.anchor()) !=
        qelStatusOk)
        throw std::runtime_error("qeliMorphGrayInitAlloc_8u_C1R");
    const auto function = dilate ? qeliGrayDilateBorder_8u_C1R : qeliGrayErodeBorder_8u_C1R;
    const char* const name = dilate ? "qeliGrayDilateBorder_8u_C1R" : "qeliGrayErodeBorder_8u_C1R";
    Timing timing = section.time(name, image.size(), [&] {
        return function(image.data(), image.step(), out.data(), out.step(), image.size(), qelBorderRepl, state);
    });
    qeliMorphGrayFree_8u_C1R(state);
    return timing;
}

// The picture under a lamp that stands aside and leaves a bright and a dark corner.
Image<Qel8u> underUnevenLight(const Image<Qel8u>& gray) {
    Image<Qel8u> lit(gray.size());
    for (int y = 0; y < gray.height(); ++y) {
        for (int x = 0; x < gray.width(); ++x) {
            const float light = float(x) / float(gray.width()) + float(y) / float(gray.height());
            lit.at(x, y) = Qel8u(float(gray.at(x, y)) * 0.5f + 60 * light);
        }
    }
    return lit;
}

void rollingBall(Section& section) {
    const Image<Qel8u> lit = underUnevenLight(section.gray());
    Image<Qel8u> low(lit.size()), ground(lit.size()), rest(lit.size());
    constexpr int kRadius = 12;
    const Timing erosion = gray8u(section, false, lit, low, ball<Qel32s>(kRadius, 60, true));
    const Timing dilation = gray8u(section, true, low, ground, ball<Qel32s>(kRadius, 60, false));
    for (int y = 0; y < lit.height(); ++y)
        for (int x = 0; x < lit.width(); ++x) rest.at(x, y) = Qel8u(lit.at(x, y) - ground.at(x, y));

    section.add({.image = lit,
                 .title = "Uneven light",
                 .text = "The picture with half of its contrast under a lamp that stands to the lower right."});
    section.add({.image = ground,
                 .title = "Where a ball can roll",
                 .text = "A ball rolls below the picture, which is taken as a landscape, and cannot get into what is "
                         "narrower than itself: an erosion by the negated ball, then a dilation by the ball.",
                 .timings = {erosion, dilation},
                 .facts = {{"radius", std::to_string(kRadius)}, {"height", "60"}}});
    section.add({.image = amplified(rest, 2),
                 .title = "What stands out above the ground",
                 .text = "The picture minus that ground: the light is even, the details stay. Twice as bright as "
                         "computed.",
                 .facts = {{"largest", std::to_string(extremes(rest).max)}}});
}

void growingCones(Section& section) {
    const Image<Qel8u>& gray = section.gray();
    Image<Qel8u> sparks(gray.size()), cones(gray.size());
    const int spacing = std::max(gray.width() / 24, 8);
    for (int y = spacing / 2; y < gray.height(); y += spacing)
        for (int x = spacing / 2; x < gray.width(); x += spacing) sparks.at(x, y) = gray.at(x, y);
    Element<Qel32s> cone = {32, {}};
    for (int j = -cone.radius; j <= cone.radius; ++j)
        for (int i = -cone.radius; i <= cone.radius; ++i)
            cone.values.push_back(Qel32s(-8 * std::hypot(float(i), float(j))));
    const Timing timing = gray8u(section, true, sparks, cones, cone);
    section.add({.image = cones,
                 .title = "A cone on each spark",
                 .text = "Single pixels of the picture, dilated by a cone: each becomes a copy of it, as high as the "
                         "pixel is bright. Where cones meet, the higher one is seen.",
                 .timings = {timing},
                 .facts = {{"mask", "65 by 65"}}});
}

void floats(Section& section) {
    const Image<Qel32f> image = to32f(section.gray());
    Image<Qel32f> wide(image.size()), narrow(image.size());
    Element<Qel32f> element = {2, {}};
    for (int j = -2; j <= 2; ++j)
        for (int i = -2; i <= 2; ++i) element.values.push_back(-0.04f * float(i * i + j * j));
    Element<Qel32f> negated = element;
    for (Qel32f& value : negated.values) value = -value;

    const auto run = [&](const char* name, const auto& function, const Element<Qel32f>& e, Image<Qel32f>& out) {
        QelMorphGrayState* state = nullptr;
        if (qeliMorphGrayInitAlloc_32f_C1R(&state, image.size(), e.values.data(), e.size(), e.anchor()) != qelStatusOk)
            throw std::runtime_error("qeliMorphGrayInitAlloc_32f_C1R");
        Timing timing = section.time(name, image.size(), [&] {
            return function(image.data(), image.step(), out.data(), out.step(), image.size(), qelBorderRepl, state);
        });
        qeliMorphGrayFree_32f_C1R(state);
        return timing;
    };
    const Timing dilation = run("qeliGrayDilateBorder_32f_C1R", qeliGrayDilateBorder_32f_C1R, element, wide);
    const Timing erosion = run("qeliGrayErodeBorder_32f_C1R", qeliGrayErodeBorder_32f_C1R, negated, narrow);
    section.add({.image = sideBySide({picture(wide, 0, 1), picture(narrow, 0, 1)}),
                 .title = "A paraboloid in single precision",
                 .text = "Dilated (left) and eroded (right) by a paraboloid of 5 by 5: softer than with a flat square, "
                         "for the rim counts less.",
                 .timings = {dilation, erosion},
                 .wide = true});
}

void grayMorphology(Section& section) {
    rollingBall(section);
    growingCones(section);
    floats(section);
}

const Registration registration(Room::Morphology, "Grey structuring elements",
                                "Each value of a mask is added to the sample under it, and the extreme of the sums "
                                "is taken: the structuring element has a relief of its own.",
                                grayMorphology);

}  // namespace
}  // namespace gallery
