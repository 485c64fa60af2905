// One stage of a cascade as its builders lay it out: the head, the classifiers, the features, in one block.
#ifndef QELCV_DETECT_HAAR_STATE_H_
#define QELCV_DETECT_HAAR_STATE_H_

#include "qelcv/detect.h"
#include "qelcv/types.h"

namespace qel {

// The corners of a rectangle as offsets from a window's origin, in table elements, and what its sum is multiplied by.
// The first and the last are added, the second and the third subtracted.
template <class T>
struct QelHaarFeature {
    Qel32s x0, y0;
    Qel32s x1, y1;
    Qel32s x2, y2;
    Qel32s x3, y3;
    T weight;
};

template <class T>
struct QelHaarClassifier {
    Qel32s featureCount;
    QelHaarFeature<T>* pFeatures;
    T threshold;
    T valueBelow;
    T valueAbove;
    Qel32s tag;  // position in the caller's arrays times 256; bit 0: the features are tilted

    bool isTilted() const { return (tag & 1) != 0; }
};

}  // namespace qel

struct QelHaarClassifierState {
    Qel32s numClassifiers;
    Qel32s numFeatures;
    void* pClassifiers;
    Qel32s boxX, boxY;
    Qel32s boxWidth, boxHeight;
    uint32_t tiltFlags;         // bit 0: some features are tilted
    Qel32s numPairs;            // classifiers of 2 features, which lie first
    Qel32s numPairsAndTriples;  // and of 3, which lie next
    Qel32s numFeatures2;
    Qel32s firstWeightIsMinusOne;

    template <class T>
    qel::QelHaarClassifier<T>* classifiers() {
        return static_cast<qel::QelHaarClassifier<T>*>(pClassifiers);
    }
    template <class T>
    const qel::QelHaarClassifier<T>* classifiers() const {
        return static_cast<const qel::QelHaarClassifier<T>*>(pClassifiers);
    }
};

namespace qel {

static_assert(sizeof(QelHaarFeature<Qel32f>) == 36);
static_assert(sizeof(void*) == 8 || sizeof(QelHaarClassifier<Qel32f>) == 24);
static_assert(sizeof(void*) == 8 || sizeof(QelHaarClassifierState) == 48);

}  // namespace qel

#endif
