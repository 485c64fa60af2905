#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <numeric>

#include "canvas.h"
#include "pixels.h"
#include "section.h"

namespace gallery {
namespace {

// The weights 1, 2, ..., 16, ..., 2, 1 across and down.
constexpr int kReach = 15;
constexpr int kTaps = 2 * kReach + 1;
constexpr std::array<Qel16s, kTaps> kTent = [] {
    std::array<Qel16s, kTaps> weights = {};
    for (int i = 0; i < kTaps; ++i) weights[i] = static_cast<Qel16s>(1 + std::min(i, kTaps - 1 - i));
    return weights;
}();
constexpr int kSum = std::accumulate(kTent.begin(), kTent.end(), 0);

// Between the two halves a row holds pixels times 64: six bits of fraction, lest rounding twice shows.
constexpr int kScale = 64;
constexpr int kRowDivisor = kSum / kScale, kColumnDivisor = kSum * kScale;
static_assert(255 * kScale <= 32767 && kSum % kScale == 0);

// What a mode takes for pixel i of a row or a column of n pixels that ends at 0 and n - 1; -1 is the constant.
int beyond(int i, int n, int borderMode) {
    const auto modulo = [](int a, int b) { return (a % b + b) % b; };
    if (i >= 0 && i < n) return i;
    if (borderMode == qelBorderConst) return -1;
    if (borderMode == qelBorderRepl || n == 1) return std::clamp(i, 0, n - 1);
    if (borderMode == qelBorderWrap) return modulo(i, n);
    // The image, its mirror image, the image again. MirrR has the pixels of the edge in both, Mirr only in the image.
    const bool inBoth = borderMode == qelBorderMirrR;
    const int period = inBoth ? 2 * n : 2 * n - 2;
    const int phase = modulo(i, period);
    return std::min(phase, inBoth ? period - 1 - phase : period - phase);
}

// The constant of qelBorderConst.
constexpr Qel8u kPink[3] = {255, 45, 135};

Image<Qel8u> constantRow(int width) {
    Image<Qel8u> row({width, 1}, 3);
    for (int x = 0; x < width * 3; ++x) row.data()[x] = kPink[x % 3];
    return row;
}

// What the two halves work with besides images. A region of one row needs no more than this for each of its calls.
struct Scratch {
    explicit Scratch(QelSize size) {
        int rowBytes = 0, columnBytes = 0;
        qeliFilterRowBorderPipelineGetBufferSize_8u16s_C3R(size, kTaps, &rowBytes);
        qeliFilterColumnPipelineGetBufferSize_16s8u_C3R(size, kTaps, &columnBytes);
        row.resize(static_cast<std::size_t>(rowBytes));
        column.resize(static_cast<std::size_t>(columnBytes));
    }
    std::vector<Qel8u> row, column;
};

// Blurs an image with the memory of a few rows. Each row is filtered across when it enters the ring, in the place of
// the oldest one; then the rows in the ring give one row of the result. To the left and right of a row the border is
// the pipeline's. Above and below the image it is made here: the rows that enter are those which the mode would take.
class Ring {
public:
    explicit Ring(int width)
        : line_{width, 1}, memory_({width, kTaps}, 3), constant_(constantRow(width)), scratch_(line_) {
        for (int i = 0; i < kTaps; ++i) rows_[i] = memory_.row(i);
    }

    qelStatus blur(const Image<Qel8u>& image, int borderMode, Image<Qel8u>& out) {
        for (int y = -kReach; y < image.height() + kReach; ++y) {
            const int from = beyond(y, image.height(), borderMode);
            const Image<Qel8u>& source = from < 0 ? constant_ : image;
            std::rotate(rows_.begin(), rows_.begin() + 1, rows_.end());
            qelStatus status = qeliFilterRowBorderPipeline_8u16s_C3R(
                source.row(std::max(from, 0)), source.step(), &rows_.back(), line_, kTent.data(), kTaps, kReach,
                borderMode, kPink, kRowDivisor, scratch_.row.data());
            if (status == qelStatusOk && y >= kReach) {
                status =
                    qeliFilterColumnPipeline_16s8u_C3R(rows_.data(), out.row(y - kReach), out.step(), line_,
                                                       kTent.data(), kTaps, kColumnDivisor, scratch_.column.data());
            }
            if (status != qelStatusOk) return status;
        }
        return qelStatusOk;
    }

    std::size_t bytes() const { return static_cast<std::size_t>(memory_.step()) * kTaps; }

private:
    QelSize line_;
    Image<Qel16s> memory_;
    std::array<Qel16s*, kTaps> rows_;  // from the oldest to the newest
    Image<Qel8u> constant_;
    Scratch scratch_;
};

// The same in two calls, which share the image among threads and need all of its rows in between. A row that stands
// above or below the image is there already: its pointer stands in the list again.
class TwoCalls {
public:
    explicit TwoCalls(QelSize size) : memory_(size, 3), scratch_(size) {
        for (int y = 0; y < size.height; ++y) across_.push_back(memory_.row(y));
        for (int y = -kReach; y < size.height + kReach; ++y) {
            down_.push_back(memory_.row(beyond(y, size.height, kMode)));
        }
    }

    qelStatus filterRows(const Image<Qel8u>& image) {
        return qeliFilterRowBorderPipeline_8u16s_C3R(image.data(), image.step(), across_.data(), image.size(),
                                                     kTent.data(), kTaps, kReach, kMode, nullptr, kRowDivisor,
                                                     scratch_.row.data());
    }
    qelStatus filterColumns(Image<Qel8u>& out) {
        return qeliFilterColumnPipeline_16s8u_C3R(down_.data(), out.data(), out.step(), out.size(), kTent.data(), kTaps,
                                                  kColumnDivisor, scratch_.column.data());
    }

    std::size_t bytes() const { return static_cast<std::size_t>(memory_.step()) * across_.size(); }

    static constexpr int kMode = qelBorderMirrR;

private:
    Image<Qel16s> memory_;
    std::vector<Qel16s*> across_;
    std::vector<const Qel16s*> down_;
    Scratch scratch_;
};

int differences(const Image<Qel8u>& a, const Image<Qel8u>& b) {
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) count += !std::equal(&a.at(x, y), &a.at(x, y) + 3, &b.at(x, y));
    }
    return count;
}

std::string kilobytes(std::size_t bytes) { return digits(static_cast<double>(bytes) / 1024, 0) + " KB"; }

// The picture, blurred in both ways.
Image<Qel8u> wholePicture(Section& section) {
    const Image<Qel8u>& rgb = section.rgb();
    Image<Qel8u> soft(rgb.size(), 3), same(rgb.size(), 3);
    Ring ring(rgb.width());
    const Timing loop =
        section.time("a loop of both, row by row", rgb.size(), [&] { return ring.blur(rgb, TwoCalls::kMode, soft); });
    TwoCalls halves(rgb.size());
    const Timing rows =
        section.time("qeliFilterRowBorderPipeline_8u16s_C3R", rgb.size(), [&] { return halves.filterRows(rgb); });
    const Timing columns =
        section.time("qeliFilterColumnPipeline_16s8u_C3R", rgb.size(), [&] { return halves.filterColumns(same); });
    section.add({.image = sideBySide({rgb, soft}),
                 .title = "A blur of 31 by 31 pixels",
                 .text = "Weights that rise from 1 to 16 and fall again, across and then down. The two halves can take "
                         "turns row by row, through a ring of as many rows as the kernel has taps, while a picture "
                         "comes in from a camera or a file; or each filters the whole picture in one call, with "
                         "threads, and all rows are kept in between.",
                 .timings = {loop, rows, columns},
                 .facts = {{"rows in the ring", kilobytes(ring.bytes())},
                           {"all rows", kilobytes(halves.bytes())},
                           {"pixels that differ", std::to_string(differences(soft, same))}},
                 .wide = true});
    return soft;
}

// A part of the picture, on its own. Around it there is picture as far as the kernel reaches, if it is large enough.
QelRect window(QelSize size) {
    const QelSize part = {std::min(84, size.width), std::min(60, size.height)};
    return {(size.width - part.width) / 4, (size.height - part.height) / 5, part.width, part.height};
}

// The blurred window and, around it, the pixels that the blur took for its surroundings: each pixel a square, and a
// line between the two. surrounding(x, y) tells those outside.
template <class Surrounding>
Image<Qel8u> withSurroundings(const Image<Qel8u>& soft, const Surrounding& surrounding) {
    constexpr int kZoom = 8;
    const QelSize inner = soft.size();
    Canvas canvas({(inner.width + 2 * kReach) * kZoom, (inner.height + 2 * kReach) * kZoom});
    canvas.paint([&](int column, int row) {
        const int x = column / kZoom - kReach, y = row / kZoom - kReach;
        const bool inside = x >= 0 && x < inner.width && y >= 0 && y < inner.height;
        const Qel8u* pixel = inside ? &soft.at(x, y) : surrounding(x, y);
        return Colour{pixel[0] / 255.0f, pixel[1] / 255.0f, pixel[2] / 255.0f};
    });
    constexpr int kLine = 2, kEdge = kReach * kZoom - kLine;
    canvas.frame({kEdge, kEdge, inner.width * kZoom + 2 * kLine, inner.height * kZoom + 2 * kLine}, kLine, {1, 1, 1});
    return canvas.rgb();
}

// How far the pixels that the border reaches are from those of the blurred picture, on average.
double meanError(const Image<Qel8u>& soft, const Image<Qel8u>& truth) {
    double sum = 0;
    int count = 0;
    const auto far = [](int i, int n) { return i >= kReach && i < n - kReach; };
    for (int y = 0; y < soft.height(); ++y) {
        for (int x = 0; x < soft.width(); ++x) {
            if (far(x, soft.width()) && far(y, soft.height())) continue;
            for (int c = 0; c < 3; ++c, ++count) sum += std::abs(soft.at(x, y, c) - truth.at(x, y, c));
        }
    }
    return sum / count;
}

void fiveModes(Section& section, const Image<Qel8u>& softPicture) {
    constexpr struct Mode {
        int number;
        const char *name, *text;
    } kModes[] = {
        {qelBorderConst, "qelBorderConst", "One value everywhere, here a pink that bleeds into the picture."},
        {qelBorderRepl, "qelBorderRepl", "The nearest pixel of the edge: each one becomes a stripe."},
        {qelBorderWrap, "qelBorderWrap", "The opposite edge follows, as on a tile that repeats."},
        {qelBorderMirr, "qelBorderMirr",
         "A mirror whose axis runs through the pixels of the edge: they stand there once."},
        {qelBorderMirrR, "qelBorderMirrR",
         "A mirror whose axis runs outside of the pixels of the edge: they stand there twice."},
    };
    const Image<Qel8u>& rgb = section.rgb();
    const QelRect rect = window(rgb.size());
    const Image<Qel8u> alone = zoomed(rgb, rect, 1), truth = zoomed(softPicture, rect, 1);
    section.add({.image = withSurroundings(truth,
                                           [&](int x, int y) {
                                               return &rgb.at(std::clamp(rect.x + x, 0, rgb.width() - 1),
                                                              std::clamp(rect.y + y, 0, rgb.height() - 1));
                                           }),
                 .title = "A window of the blurred picture",
                 .text = "Within the white line, part of the blurred picture; around it, the picture as it was, as far "
                         "as the kernel reaches. In the pictures that follow, the same window is blurred as a picture "
                         "of its own, and each border mode invents what lies around it."});
    Ring ring(rect.width);
    for (const Mode& mode : kModes) {
        Image<Qel8u> soft(alone.size(), 3);
        const Timing timing = section.time("a loop of both, row by row", alone.size(),
                                           [&] { return ring.blur(alone, mode.number, soft); });
        const auto pixelAt = [&](int x, int y) {
            const int fromX = beyond(x, alone.width(), mode.number), fromY = beyond(y, alone.height(), mode.number);
            return fromX < 0 || fromY < 0 ? kPink : &alone.at(fromX, fromY);
        };
        section.add({.image = withSurroundings(soft, pixelAt),
                     .title = mode.name,
                     .text = mode.text,
                     .timings = {timing},
                     .facts = {{"mean error near the edge", digits(meanError(soft, truth), 2)}}});
    }
}

void pipelines(Section& section) {
    const Image<Qel8u> soft = wholePicture(section);
    fiveModes(section, soft);
}

const Registration registration(
    Room::Filter, "Separable filters, row by row",
    "A kernel that is a product of one across and one down is applied in two halves. Rows come and go through "
    "pointers, so that a program decides which rows there are, where they are kept and what lies beyond the picture.",
    pipelines);

}  // namespace
}  // namespace gallery
