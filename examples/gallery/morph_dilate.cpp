#include <stdexcept>

#include "canvas.h"
#include "pixels.h"
#include "section.h"
#include "structuring.h"

namespace gallery {
namespace {

struct Result {
    Image<Qel8u> image;
    Timing timing;
};

Result morph(Section& section, bool dilate, const Image<Qel8u>& image, const Structuring& element) {
    QelMorphState* state = nullptr;
    if (qeliMorphologyInitAlloc_8u_C1R(image.width(), element.elements.data(), element.size, element.anchor, &state) !=
        qelStatusOk)
        throw std::runtime_error("qeliMorphologyInitAlloc_8u_C1R");
    const auto function = dilate ? qeliDilateBorderReplicate_8u_C1R : qeliErodeBorderReplicate_8u_C1R;
    const char* const name = dilate ? "qeliDilateBorderReplicate_8u_C1R" : "qeliErodeBorderReplicate_8u_C1R";
    Image<Qel8u> out(image.size());
    const Timing timing = section.time(name, image.size(), [&] {
        return function(image.data(), image.step(), out.data(), out.step(), image.size(), qelBorderRepl, state);
    });
    qeliMorphologyFree(state);
    return {std::move(out), timing};
}

void showBoth(Section& section, const std::string& shape, const Structuring& element, const std::string& text) {
    const Result dilated = morph(section, true, section.gray(), element);
    const Result eroded = morph(section, false, section.gray(), element);
    section.add({.image = sideBySide({eroded.image, dilated.image}),
                 .title = "Erosion and dilation by " + shape,
                 .text = text,
                 .timings = {eroded.timing, dilated.timing},
                 .wide = true});
}

// Sparks where the picture is brightest around, each of which becomes a copy of the mask, turned by half a circle.
void showWord(Section& section) {
    const Image<Qel8u>& gray = section.gray();
    Image<Qel8u> sparks(gray.size());
    Structuring element = word("QEL", 17);
    const QelSize tile = {element.size.width + 6, element.size.height + 6};
    for (int y = tile.height / 2; y < gray.height(); y += tile.height)
        for (int x = tile.width / 2; x < gray.width(); x += tile.width) sparks.at(x, y) = gray.at(x, y);
    std::vector<Qel8u> turned(element.elements.rbegin(), element.elements.rend());
    element.elements = turned;
    const Result words = morph(section, true, sparks, element);
    int count = 0;
    for (const Qel8u e : turned) count += e;
    section.add({.image = words.image,
                 .title = "Dilation by a word",
                 .text = "Any mask will do. Single pixels of the picture are dilated by letters, and become words as "
                         "bright as they are.",
                 .timings = {words.timing},
                 .facts = {{"elements set", std::to_string(count)}}});
}

void dilation(Section& section) {
    showBoth(section, "a rectangle", rectangle({9, 9}),
             "The smallest and the largest of 9 by 9 pixels. A rectangle costs the same whatever its size.");
    showBoth(section, "a disc", disc(7),
             "Within 7 pixels: edges and corners grow and shrink the same in all directions. Runs of each length are "
             "taken once along each row, and then the rows are combined.");
    showWord(section);
}

const Registration registration(
    Room::Morphology, "Dilation and erosion",
    "The largest and the smallest pixel under a mask. Dilation lets what is bright grow by the mask's shape, erosion "
    "what is dark.",
    dilation);

}  // namespace
}  // namespace gallery
