#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "canvas.h"
#include "pixels.h"
#include "section.h"
#include "structuring.h"

namespace gallery {
namespace {

using Operation = qelStatus (*)(const Qel8u*, int, Qel8u*, int, QelSize, int, QelMorphAdvState*);

struct Result {
    Image<Qel8u> image;
    Timing timing;
};

Result run(Section& section, const char* name, Operation operation, const Image<Qel8u>& image,
           const Structuring& element) {
    QelMorphAdvState* state = nullptr;
    if (qeliMorphAdvInitAlloc_8u_C1R(&state, image.size(), element.elements.data(), element.size, element.anchor) !=
        qelStatusOk)
        throw std::runtime_error("qeliMorphAdvInitAlloc_8u_C1R");
    Image<Qel8u> out(image.size());
    const Timing timing = section.time(name, image.size(), [&] {
        return operation(image.data(), image.step(), out.data(), out.step(), image.size(), qelBorderRepl, state);
    });
    qeliMorphAdvFree(state);
    return {std::move(out), timing};
}

// Dark letters on paper, with grains of salt and pepper.
Image<Qel8u> noisyText(QelSize size) {
    Canvas canvas(size);
    canvas.paint([](int, int) { return Colour{0.85f, 0.85f, 0.85f}; });
    const float height = std::min(static_cast<float>(size.height) / 7, static_cast<float>(size.width) / 12);
    const char* const lines[] = {"OPEN TAKES", "THE BRIGHT,", "CLOSE TAKES", "THE DARK."};
    for (int i = 0; i < 4; ++i)
        canvas.text(lines[i], height / 2, height * (0.7f + 1.5f * static_cast<float>(i)), height, height / 5,
                    {0.15f, 0.15f, 0.15f});
    Image<Qel8u> text = canvas.gray();
    for (int y = 0; y < text.height(); ++y) {
        for (int x = 0; x < text.width(); ++x) {
            const float grain = noise(x, y, 3);
            if (grain < 0.03f) text.at(x, y) = 0;
            if (grain > 0.97f) text.at(x, y) = 255;
        }
    }
    return text;
}

void showText(Section& section) {
    const Image<Qel8u> text = noisyText(section.gray().size());
    const Structuring cross = drawn({".#.", "###", ".#."});
    const Result opened = run(section, "qeliMorphOpenBorder_8u_C1R", qeliMorphOpenBorder_8u_C1R, text, cross);
    const Result closed = run(section, "qeliMorphCloseBorder_8u_C1R", qeliMorphCloseBorder_8u_C1R, text, cross);
    const Result both = run(section, "qeliMorphOpenBorder_8u_C1R", qeliMorphOpenBorder_8u_C1R, closed.image, cross);
    section.add(
        {.image = text, .title = "Salt and pepper", .text = "Letters, and grains of noise on six pixels of 100."});
    section.add({.image = opened.image,
                 .title = "Opened by a cross",
                 .text = "What is bright and smaller than the cross is gone: the salt. The pepper stays.",
                 .timings = {opened.timing}});
    section.add({.image = closed.image,
                 .title = "Closed by a cross",
                 .text = "What is dark and smaller than the cross is gone: the pepper. The salt stays.",
                 .timings = {closed.timing}});
    section.add({.image = both.image,
                 .title = "Closed, then opened",
                 .text = "First the pepper, then the salt; the letters are hardly touched.",
                 .timings = {both.timing}});
}

// The picture under a lamp in a corner.
Image<Qel8u> underUnevenLight(const Image<Qel8u>& gray) {
    Image<Qel8u> lit(gray.size());
    for (int y = 0; y < gray.height(); ++y) {
        for (int x = 0; x < gray.width(); ++x) {
            const float light = static_cast<float>(x) / static_cast<float>(gray.width()) +
                                static_cast<float>(y) / static_cast<float>(gray.height());
            lit.at(x, y) = static_cast<Qel8u>(static_cast<float>(gray.at(x, y)) / 3 + 80 * light);
        }
    }
    return lit;
}

void showHats(Section& section) {
    const Image<Qel8u> lit = underUnevenLight(section.gray());
    const Structuring square = rectangle({15, 15});
    const Result bright = run(section, "qeliMorphTophatBorder_8u_C1R", qeliMorphTophatBorder_8u_C1R, lit, square);
    const Result dark = run(section, "qeliMorphBlackhatBorder_8u_C1R", qeliMorphBlackhatBorder_8u_C1R, lit, square);
    section.add({.image = lit,
                 .title = "Uneven light",
                 .text = "The picture with a third of its contrast, under a lamp in the lower right corner."});
    section.add({.image = amplified(bright.image, 3),
                 .title = "Top-hat",
                 .text = "The picture less its opening by a square of 15 pixels: what is bright and smaller, without "
                         "the light. Three times as bright as computed.",
                 .timings = {bright.timing}});
    section.add({.image = amplified(dark.image, 3),
                 .title = "Black-hat",
                 .text = "The closing less the picture: what is dark and smaller. Three times as bright as computed.",
                 .timings = {dark.timing}});
}

void showGradient(Section& section) {
    const Result edges = run(section, "qeliMorphGradientBorder_8u_C1R", qeliMorphGradientBorder_8u_C1R, section.gray(),
                             rectangle({3, 3}));
    section.add({.image = amplified(edges.image, 2),
                 .title = "Gradient",
                 .text = "The largest less the smallest of nine neighbours: edges of any direction. Twice as bright "
                         "as computed.",
                 .timings = {edges.timing}});
}

void advanced(Section& section) {
    showText(section);
    showHats(section);
    showGradient(section);
}

const Registration registration(Room::Morphology, "Opening, closing, hats and gradient",
                                "Dilation and erosion one after the other take away what is small and leave the rest "
                                "as it was; differences show what was taken.",
                                advanced);

}  // namespace
}  // namespace gallery
