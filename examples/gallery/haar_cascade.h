// Cascades of boosted stumps over Haar features: training on painted examples, and detection at all scales.
#ifndef GALLERY_HAAR_CASCADE_H_
#define GALLERY_HAAR_CASCADE_H_

#include <memory>
#include <random>
#include <vector>

#include "image.h"

namespace gallery {

// The side of a window, in pixels.
constexpr int kWindow = 24;

// A window that survived, in the pixels of the picture.
using Detection = QelRect;

// What windows of a picture of at least one are judged by: sums, and the deviation within each window, the normaliser.
struct WindowTables {
    explicit WindowTables(const Image<Qel8u>& gray);

    Image<Qel32f> sums;
    Image<Qel32f> norms;
};

struct ReleaseState {
    void operator()(QelHaarClassifierState* pState) const { qeliHaarClassifierFree_32f(pState); }
};

struct HaarStage {
    std::unique_ptr<QelHaarClassifierState, ReleaseState> state;
    float threshold;
    int classifiers;
};

class HaarCascade {
public:
    // Adds a stage that tells the examples from the counterexamples, windows of kWindow by kWindow.
    void addStage(const std::vector<Image<Qel8u>>& examples, const std::vector<Image<Qel8u>>& counterexamples,
                  std::mt19937& random);

    // Calls found(x, y) for each window of a picture that passes all stages. Returns how many.
    template <class Found>
    int scan(const WindowTables& tables, const Found& found) const {
        const Image<Qel8u> mask = survivors(tables);
        int count = 0;
        for (int y = 0; y < mask.height(); ++y) {
            for (int x = 0; x < mask.width(); ++x) {
                if (mask.at(x, y) == 0) continue;
                found(x, y);
                ++count;
            }
        }
        return count;
    }

    // The windows that pass at all scales, each a fifth larger than the one before; those that lie together as one.
    std::vector<Detection> detect(const Image<Qel8u>& gray) const;

    const std::vector<HaarStage>& stages() const { return stages_; }
    int classifiers() const;

private:
    Image<Qel8u> survivors(const WindowTables& tables) const;

    std::vector<HaarStage> stages_;
};

// A picture reduced by any factor above 1: means of the pixels that each new one covers, to the nearest whole ones.
Image<Qel8u> shrunk(const Image<Qel8u>& gray, float factor);

}  // namespace gallery

#endif
