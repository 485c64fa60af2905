#include <algorithm>
#include <chrono>
#include <cmath>
#include <random>

#include "canvas.h"
#include "haar_cascade.h"
#include "pixels.h"
#include "scenes.h"
#include "section.h"

namespace gallery {
namespace {

using Random = std::mt19937;

float between(Random& random, float low, float high) { return low + (high - low) * float(random() % 10001U) / 10000; }
Colour grayTone(float tone) { return {tone, tone, tone}; }

// The pattern to be found: a bright disc with two dark eyes and a dark mouth, `side` pixels wide.
void paintFace(Canvas& canvas, float x, float y, float side, Random& random) {
    const float tone = between(random, 0.65F, 0.95F), dark = between(random, 0.05F, 0.25F);
    canvas.disc(x + side * 0.5F, y + side * 0.5F, side * 0.44F, grayTone(tone));
    for (const float eye : {0.33F, 0.67F}) canvas.disc(x + side * eye, y + side * 0.38F, side * 0.08F, grayTone(dark));
    canvas.line(x + side * 0.33F, y + side * 0.68F, x + side * 0.67F, y + side * 0.68F, side * 0.09F, grayTone(dark));
}

void addNoise(Canvas& canvas, float amount, unsigned seed) {
    canvas.paint([&](int x, int y) {
        const Colour c = canvas.get(x, y);
        const float more = amount * (noise(x, y, seed) - 0.5F);
        return Colour{c.red + more, c.green + more, c.blue + more};
    });
}

// Things that are no faces: discs, with one eye or a mouth alone, rings, bars and letters.
Canvas clutter(QelSize size, Random& random) {
    Canvas canvas(size);
    const float from = between(random, 0.2F, 0.5F), to = between(random, 0.3F, 0.7F);
    canvas.paint(
        [&](int x, int y) { return grayTone(from + (to - from) * float(x + y) / float(size.width + size.height)); });
    for (int i = size.width * size.height / 2500; i > 0; --i) {
        const float x = between(random, 0, float(size.width)), y = between(random, 0, float(size.height));
        const float r = between(random, 4, 30), tone = between(random, 0, 1);
        switch (random() % 6) {
            case 0:
                canvas.disc(x, y, r, grayTone(tone));
                break;
            case 1:
                canvas.ring(x, y, r, r / 4, grayTone(tone));
                break;
            case 2:
                canvas.line(x, y, x + between(random, -60, 60), y + between(random, -60, 60), r / 5, grayTone(tone));
                break;
            case 3:
                canvas.disc(x, y, r, grayTone(0.85F));
                canvas.disc(x - r * 0.35F, y - r * 0.25F, r * 0.18F, grayTone(0.1F));
                break;
            case 4:
                canvas.disc(x, y, r, grayTone(0.85F));
                canvas.line(x - r * 0.4F, y + r * 0.4F, x + r * 0.4F, y + r * 0.4F, r * 0.2F, grayTone(0.1F));
                break;
            default:
                canvas.text("Q7", x, y, r, r / 6, grayTone(tone));
        }
    }
    addNoise(canvas, 0.06F, random());
    return canvas;
}

Image<Qel8u> crop(const Image<Qel8u>& from, int x, int y) {
    Image<Qel8u> window({kWindow, kWindow});
    for (int v = 0; v < kWindow; ++v) std::copy_n(from.row(y + v) + x, kWindow, window.row(v));
    return window;
}

std::vector<Image<Qel8u>> paintExamples(int count, Random& random) {
    std::vector<Image<Qel8u>> examples;
    for (int i = 0; i < count; ++i) {
        // A piece of clutter at a larger size, reduced with the face on it as a picture's levels are.
        const float zoom = between(random, 1, 2.2F);
        Canvas canvas({int(32 * zoom) + 2, int(32 * zoom) + 2});
        const float tone = between(random, 0.1F, 0.55F);
        canvas.paint([&](int x, int) { return grayTone(tone + 0.1F * float(x) / float(canvas.width())); });
        const float side = zoom * between(random, 22, 25.5F);
        const float centre = zoom * 16;
        paintFace(canvas, centre - side / 2 + zoom * between(random, -1, 1),
                  centre - side / 2 + zoom * between(random, -1, 1), side, random);
        addNoise(canvas, 0.08F, random());
        examples.push_back(crop(shrunk(canvas.gray(), zoom), 4, 4));
    }
    return examples;
}

struct Clutter {
    explicit Clutter(Image<Qel8u> picture) : gray(std::move(picture)), tables(gray) {}

    Image<Qel8u> gray;
    WindowTables tables;
};

// Windows of clutter that pass the cascade so far: those it still has to learn from.
std::vector<Image<Qel8u>> counterexamples(const HaarCascade& cascade, const std::vector<Clutter>& pictures,
                                          size_t count, Random& random) {
    struct Place {
        size_t picture;
        int x, y;
    };
    std::vector<Place> places;
    for (size_t i = 0; i < pictures.size(); ++i)
        cascade.scan(pictures[i].tables, [&](int x, int y) { places.push_back({i, x, y}); });
    std::shuffle(places.begin(), places.end(), random);
    places.resize(std::min(places.size(), count));
    std::vector<Image<Qel8u>> windows;
    windows.reserve(places.size());
    for (const Place& p : places) windows.push_back(crop(pictures[p.picture].gray, p.x, p.y));
    return windows;
}

HaarCascade train(const std::vector<Image<Qel8u>>& examples, Random& random) {
    constexpr int kStages = 20;
    constexpr size_t kCounterexamples = 400, kFewest = 4;
    std::vector<Clutter> pictures;
    for (int i = 0; i < 12; ++i) {
        const Image<Qel8u> gray = clutter({480, 360}, random).gray();
        for (const float scale : {1.0F, 1.44F, 2.07F, 3.0F})
            pictures.emplace_back(scale == 1 ? gray : shrunk(gray, scale));
    }
    HaarCascade cascade;
    for (int i = 0; i < kStages; ++i) {
        const auto others = counterexamples(cascade, pictures, kCounterexamples, random);
        if (others.size() < kFewest) break;
        cascade.addStage(examples, others, random);
    }
    return cascade;
}

// A mosaic of windows, twice as large.
Image<Qel8u> mosaic(const std::vector<Image<Qel8u>>& windows, int columns, int rows) {
    Image<Qel8u> all({columns * kWindow, rows * kWindow});
    for (int i = 0; i < columns * rows && i < int(windows.size()); ++i)
        for (int y = 0; y < kWindow; ++y)
            std::copy_n(windows[size_t(i)].row(y), kWindow, all.row(i / columns * kWindow + y) + i % columns * kWindow);
    return zoomed(all, {0, 0, all.width(), all.height()}, 2);
}

Canvas framed(const Image<Qel8u>& picture, const std::vector<Detection>& found) {
    Canvas canvas(picture);
    for (const Detection& d : found) canvas.frame(d, 2, kMark);
    return canvas;
}

// How a picture of clutter thins out from stage to stage.
void stages(Section& section, const HaarCascade& cascade, const Image<Qel8u>& gray) {
    const QelSize places = {gray.width() - kWindow + 1, gray.height() - kWindow + 1};
    Image<Qel32s> sums({gray.width() + 1, gray.height() + 1});
    Image<Qel64f> squares(sums.size());
    Image<Qel32f> norms(places);
    qeliSqrIntegral_8u32s64f_C1R(gray.data(), gray.step(), sums.data(), sums.step(), squares.data(), squares.step(),
                                 gray.size(), 0, 0);
    qeliRectStdDev_32s32f_C1R(sums.data(), sums.step(), squares.data(), squares.step(), norms.data(), norms.step(),
                              places, {1, 1, kWindow - 2, kWindow - 2});
    Image<Qel8u> mask(places), depth(places);
    for (int y = 0; y < places.height; ++y) std::fill_n(mask.row(y), places.width, Qel8u{1});
    Timing first("qeliApplyHaarClassifier_32s32f_C1R", places);
    std::vector<Fact> facts;
    const int count = int(cascade.stages().size());
    for (int i = 0; i < count; ++i) {
        const HaarStage& stage = cascade.stages()[size_t(i)];
        int positive = 0;
        const auto call = [&] {
            return qeliApplyHaarClassifier_32s32f_C1R(sums.data(), sums.step(), norms.data(), norms.step(), mask.data(),
                                                      mask.step(), places, &positive, stage.threshold,
                                                      stage.state.get());
        };
        if (i == 0) {
            first.once(call);
        } else {
            Timing("qeliApplyHaarClassifier_32s32f_C1R", places).once(call);
        }
        for (int y = 0; y < places.height; ++y)
            for (int x = 0; x < places.width; ++x)
                if (mask.at(x, y) != 0) depth.at(x, y) = Qel8u(255 * (i + 1) / count);
        if (i == 0 || i == 2 || i == 5 || i + 1 == count)
            facts.push_back({"windows after stage " + std::to_string(i + 1), std::to_string(positive)});
    }
    section.add({.image = depth,
                 .title = "How far each window gets",
                 .text = "The smallest scale: black is refused by the first stage, white passes all. Most of the "
                         "picture costs a few features.",
                 .timings = {first},
                 .facts = facts});
}

void haarClassifiers(Section& section) {
    Random random(11);
    const auto start = std::chrono::steady_clock::now();
    const std::vector<Image<Qel8u>> examples = paintExamples(300, random);
    const HaarCascade cascade = train(examples, random);
    const std::chrono::duration<double> training = std::chrono::steady_clock::now() - start;
    section.add({.image = mosaic(examples, 12, 8),
                 .title = "Examples to learn from",
                 .text = "Painted by this program, each a little different. Boosted stumps learn to tell them from "
                         "windows of clutter, stage by stage from those that still deceive the stages so far.",
                 .facts = {{"stages", std::to_string(cascade.stages().size())},
                           {"features", std::to_string(cascade.classifiers())},
                           {"training", digits(training.count(), 1) + " s"}}});

    Canvas canvas = clutter({640, 480}, random);
    const float faces[][3] = {{40, 40, 30},   {160, 300, 48}, {300, 60, 72}, {420, 340, 90},
                              {520, 120, 40}, {560, 400, 27}, {60, 180, 60}, {330, 220, 34}};
    for (const auto& f : faces) paintFace(canvas, f[0], f[1], f[2], random);
    addNoise(canvas, 0.04F, 5);
    const Image<Qel8u> scene = canvas.gray();
    std::vector<Detection> found;
    double shortest = 1e9;
    for (int i = 0; i < 5; ++i) {
        const auto before = std::chrono::steady_clock::now();
        found = cascade.detect(scene);
        const std::chrono::duration<double, std::milli> all = std::chrono::steady_clock::now() - before;
        shortest = std::min(shortest, all.count());
    }
    section.add({.image = framed(scene, found).rgb(),
                 .title = "Found at all scales",
                 .text = "Eight faces among things that resemble them. Each scale is one call for each stage over the "
                         "same mask of windows.",
                 .facts = {{"painted", std::to_string(std::size(faces))},
                           {"found", std::to_string(found.size())},
                           {"all scales, with the reduced pictures", digits(shortest, 1) + " ms"}},
                 .wide = true});
    stages(section, cascade, scene);
}

const Registration registration(Room::Detect, "Haar classifiers",
                                "Windows are judged by sums of rectangles, four reads each, one stage after the "
                                "other: what a stage refuses, the next ones never see. The detector below is trained "
                                "while this page is made.",
                                haarClassifiers);

}  // namespace
}  // namespace gallery
