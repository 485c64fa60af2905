// Building, tilting and measuring the stages of a cascade.
#include <algorithm>

#include "detect/haar_state.h"
#include "frame/check.h"
#include "frame/vector_primitives.h"
#include "qelcv/detect.h"

namespace qel {
namespace {

// What a caller builds a stage from.
template <class T>
struct Source {
    const QelRect* pFeature;
    const T* pWeight;
    const T* pThreshold;
    const T* pVal1;
    const T* pVal2;
    const int* pNum;
    int length;

    // Calls visit(i, first) for each classifier, with its position and that of its first rectangle.
    template <class Visit>
    void forEach(const Visit& visit) const {
        int64_t first = 0;
        for (int i = 0; i < length; ++i) {
            visit(i, first);
            first += pNum[i];
        }
    }

    int64_t numFeatures() const {
        int64_t features = 0;
        for (int i = 0; i < length; ++i) features += pNum[i];
        return features;
    }
};

// Offsets are 32 bits wide and wrap, whatever rectangle the caller gives.
Qel32s wrap(int64_t value) { return static_cast<Qel32s>(value); }

bool isUpright(QelRect r) { return r.x >= 0 && r.y >= 0 && r.width >= 1 && r.height >= 1; }
bool isTilted(QelRect r) { return isUpright(r) && int64_t{r.x} + 1 >= r.height; }

template <class T>
void setUpright(QelHaarFeature<T>& f, QelRect r) {
    const int64_t x = r.x, y = r.y, right = x + r.width, bottom = y + r.height;
    f.x0 = wrap(right), f.y0 = wrap(bottom);
    f.x1 = wrap(x), f.y1 = wrap(bottom);
    f.x2 = wrap(right), f.y2 = wrap(y);
    f.x3 = wrap(x), f.y3 = wrap(y);
}

// Turned by 45 degrees: the top corner at x, y, the width down to the right, the height down to the left.
template <class T>
void setTilted(QelHaarFeature<T>& f, QelRect r) {
    const int64_t x = r.x, y = r.y, w = r.width, h = r.height;
    f.x0 = wrap(x + w - h), f.y0 = wrap(y + w + h);
    f.x1 = wrap(x - h), f.y1 = wrap(y + h);
    f.x2 = wrap(x + w), f.y2 = wrap(y + w);
    f.x3 = r.x, f.y3 = r.y;
}

// Turned about its lower left corner instead.
template <class T>
void setTiltedAtLowerLeft(QelHaarFeature<T>& f, QelRect r) {
    const int64_t x = r.x, y = r.y, w = r.width, h = r.height;
    f.x0 = r.x, f.y0 = wrap(y + h);
    f.x1 = wrap(x - h), f.y1 = r.y;
    f.x2 = wrap(x + w), f.y2 = wrap(y + h - w);
    f.x3 = wrap(x + w - h), f.y3 = wrap(y - w);
}

// Grows the box by a feature. An edge is compared with a width that already counts from the origin and is then stored
// in its place: callers know the numbers that come of it.
template <class T>
void growBox(QelHaarClassifierState& state, const QelHaarFeature<T>& f) {
    state.boxX = std::min(state.boxX, f.x3);
    state.boxY = std::min(state.boxY, f.y3);
    if (f.x0 > int64_t{state.boxWidth} + state.boxX) state.boxWidth = f.x0;
    if (f.y0 > int64_t{state.boxHeight} + state.boxY) state.boxHeight = f.y0;
}

// The block with its head and the places of its parts, or null. Classifiers and features are not set yet.
template <class T>
QelHaarClassifierState* allocateState(const Source<T>& source) {
    using Feature = QelHaarFeature<T>;
    using Classifier = QelHaarClassifier<T>;
    const int64_t features = source.numFeatures();
    const int64_t bytes = features * int64_t{sizeof(Feature)} + source.length * int64_t{sizeof(Classifier)} +
                          int64_t{sizeof(QelHaarClassifierState)};
    Qel8u* const block = bytes <= INT_MAX ? qelsMalloc_8u(static_cast<int>(bytes)) : nullptr;
    if (block == nullptr) return nullptr;
    auto* const state = new (block) QelHaarClassifierState{};
    auto* const classifiers = new (block + sizeof(QelHaarClassifierState)) Classifier[size_t(source.length)]{};
    state->numClassifiers = source.length;
    state->numFeatures = state->numFeatures2 = static_cast<Qel32s>(features);
    state->pClassifiers = classifiers;
    return state;
}

// Copies classifiers one behind the other, with their features.
template <class T>
class Copier {
public:
    Copier(QelHaarClassifierState& state, const Source<T>& source)
        : state_(state),
          source_(source),
          classifier_(state.classifiers<T>()),
          feature_(reinterpret_cast<QelHaarFeature<T>*>(classifier_ + state.numClassifiers)) {}

    // `set` is how a rectangle becomes a feature.
    template <class Set>
    void copy(int i, int64_t first, Qel32s tagBits, const Set& set) {
        const Qel32s tag = static_cast<Qel32s>(static_cast<unsigned>(i) << 8) | tagBits;
        *classifier_++ = {source_.pNum[i], feature_, source_.pThreshold[i], source_.pVal1[i], source_.pVal2[i], tag};
        for (int64_t k = first; k < first + source_.pNum[i]; ++k) {
            set(*feature_, source_.pFeature[k]);
            feature_->weight = source_.pWeight[k];
            growBox(state_, *feature_++);
        }
    }

private:
    QelHaarClassifierState& state_;
    const Source<T>& source_;
    QelHaarClassifier<T>* classifier_;
    QelHaarFeature<T>* feature_;
};

template <class T>
Check checkSource(QelHaarClassifierState** pState, const Source<T>& s) {
    Check check;
    check.pointers(pState, s.pFeature, s.pWeight, s.pThreshold, s.pVal1, s.pVal2, s.pNum)
        .require(s.length >= 0, qelStatusBadSize);
    for (int i = 0; check.status() == qelStatusOk && i < s.length; ++i) check.require(s.pNum[i] >= 1, qelStatusBadSize);
    return check;
}

template <class T>
bool allRectangles(const Source<T>& s, bool (*isValid)(QelRect)) {
    return std::all_of(s.pFeature, s.pFeature + (s.length > 0 ? s.numFeatures() : 0), isValid);
}

// Classifiers of 2 features, then those of 3, then the others, each in the caller's order.
template <class T>
void fillUpright(QelHaarClassifierState& state, const Source<T>& source) {
    if (source.length > 0) {
        const QelRect first = source.pFeature[0];
        state.boxX = first.x, state.boxY = first.y;
        state.boxWidth = first.width, state.boxHeight = first.height;
    }
    Copier<T> copier(state, source);
    const auto copyWhere = [&](const auto& isWanted) {
        Qel32s copied = 0;
        source.forEach([&](int i, int64_t first) {
            if (!isWanted(source.pNum[i])) return;
            copier.copy(i, first, 0, setUpright<T>);
            ++copied;
        });
        return copied;
    };
    state.numPairs = copyWhere([](int features) { return features == 2; });
    state.numPairsAndTriples = state.numPairs + copyWhere([](int features) { return features == 3; });
    copyWhere([](int features) { return features != 2 && features != 3; });
    state.boxWidth = wrap(int64_t{state.boxWidth} - state.boxX);
    state.boxHeight = wrap(int64_t{state.boxHeight} - state.boxY);
}

// Whether the first weight of every classifier is -1 once its fraction is cut off.
bool firstWeightsAreMinusOne(const Source<Qel32f>& source) {
    bool all = true;
    source.forEach([&](int, int64_t first) {
        const Qel32f weight = source.pWeight[first];
        all = all && weight > -2 && weight <= -1;
    });
    return all;
}

// Single precision tests its rectangles before it allocates, integers afterwards: it shows where there is no memory.
template <class T>
qelStatus initUpright(QelHaarClassifierState** pState, const Source<T>& source) {
    constexpr bool kTestsFirst = std::is_same_v<T, Qel32f>;
    const qelStatus status = checkSource(pState, source).status();
    if (status != qelStatusOk) return status;
    if (kTestsFirst && !allRectangles(source, isUpright)) return qelStatusBadArg;

    QelHaarClassifierState* const state = allocateState(source);
    if (state == nullptr) return qelStatusNoMemory;
    if (!kTestsFirst && !allRectangles(source, isUpright)) {
        qelsFree(state);
        return qelStatusBadArg;
    }
    fillUpright(*state, source);
    if constexpr (std::is_same_v<T, Qel32f>) state->firstWeightIsMinusOne = firstWeightsAreMinusOne(source) ? 1 : 0;
    *pState = state;
    return qelStatusOk;
}

// The caller's order is kept, and every classifier counts as one of any number of features.
template <class T>
qelStatus initTilted(QelHaarClassifierState** pState, const Source<T>& source) {
    const qelStatus status = checkSource(pState, source).status();
    if (status != qelStatusOk) return status;
    QelHaarClassifierState* const state = allocateState(source);
    if (state == nullptr) return qelStatusNoMemory;
    if (!allRectangles(source, isTilted)) {
        qelsFree(state);
        *pState = nullptr;
        return qelStatusBadArg;
    }
    state->tiltFlags = 1;
    if (source.length > 0) {
        const QelRect first = source.pFeature[0];
        state->boxX = first.x, state->boxY = first.y;
        state->boxWidth = wrap(int64_t{first.width} - first.height);
        state->boxHeight = wrap(int64_t{first.width} + first.height);
    }
    Copier<T> copier(*state, source);
    source.forEach([&](int i, int64_t first) { copier.copy(i, first, 1, setTilted<T>); });
    state->boxWidth = wrap(int64_t{state->boxWidth} - state->boxX);
    state->boxHeight = wrap(int64_t{state->boxHeight} - state->boxY);
    *pState = state;
    return qelStatusOk;
}

qelStatus freeState(QelHaarClassifierState* pState) {
    if (pState == nullptr) return qelStatusNullPointer;
    qelsFree(pState);
    return qelStatusOk;
}

template <class T>
qelStatus getSize(const QelHaarClassifierState* pState, QelSize* pSize) {
    const qelStatus status = Check().pointers(pState, pSize).status();
    if (status != qelStatusOk) return status;
    QelSize size = {0, 0};
    const QelHaarClassifier<T>* const classifiers = pState->classifiers<T>();
    for (int i = 0; i < pState->numClassifiers; ++i) {
        for (int k = 0; k < classifiers[i].featureCount; ++k) {
            size.width = std::max(size.width, classifiers[i].pFeatures[k].x2);
            size.height = std::max(size.height, classifiers[i].pFeatures[k].y0);
        }
    }
    *pSize = size;
    return qelStatusOk;
}

// Every feature holds its rectangle's corners: upright, they give it back.
template <class T>
void tilt(QelHaarClassifier<T>& classifier, bool atTopCorner) {
    classifier.tag = 1;
    for (int k = 0; k < classifier.featureCount; ++k) {
        QelHaarFeature<T>& f = classifier.pFeatures[k];
        const int64_t width = int64_t{f.x0} - f.x3;
        const int64_t height = int64_t{f.y0} - f.y3;
        const QelRect r = {f.x3, f.y3, wrap(width), wrap(height)};
        atTopCorner ? setTilted(f, r) : setTiltedAtLowerLeft(f, r);
    }
}

template <class T>
qelStatus tiltFeatures(const Qel8u* pMask, bool atTopCorner, QelHaarClassifierState* pState) {
    const qelStatus status = Check()
                                 .pointers(pMask, pState)
                                 .require(pState == nullptr || (pState->tiltFlags & 1) == 0, qelStatusBadArg)
                                 .status();
    if (status != qelStatusOk) return status;
    const int length = pState->numClassifiers;
    if (std::all_of(pMask, pMask + length, [](Qel8u byte) { return byte == 0; })) return qelStatusOk;

    QelHaarClassifier<T>* const first = pState->classifiers<T>();
    QelHaarClassifier<T>* const last = first + length;
    for (int i = 0; i < length; ++i) {
        if (pMask[i] == 0) continue;
        auto* const found = std::find_if(first, last, [=](const auto& c) { return c.tag >> 8 == i; });
        if (found != last) tilt(*found, atTopCorner);
    }
    pState->tiltFlags |= 1;
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

#define HAAR_INIT(name, T, init)                                                                                    \
    qelStatus name(QelHaarClassifierState** pState, const QelRect* pFeature, const T* pWeight, const T* pThreshold, \
                   const T* pVal1, const T* pVal2, const int* pNum, int length) {                                   \
        return qel::init<T>(pState, {pFeature, pWeight, pThreshold, pVal1, pVal2, pNum, length});                   \
    }
HAAR_INIT(qeliHaarClassifierInitAlloc_32f, Qel32f, initUpright)
HAAR_INIT(qeliHaarClassifierInitAlloc_32s, Qel32s, initUpright)
HAAR_INIT(qeliTiltedHaarClassifierInitAlloc_32f, Qel32f, initTilted)
HAAR_INIT(qeliTiltedHaarClassifierInitAlloc_32s, Qel32s, initTilted)
#undef HAAR_INIT

qelStatus qeliHaarClassifierFree_32f(QelHaarClassifierState* pState) { return qel::freeState(pState); }
qelStatus qeliHaarClassifierFree_32s(QelHaarClassifierState* pState) { return qel::freeState(pState); }

qelStatus qeliGetHaarClassifierSize_32f(const QelHaarClassifierState* pState, QelSize* pSize) {
    return qel::getSize<Qel32f>(pState, pSize);
}
qelStatus qeliGetHaarClassifierSize_32s(const QelHaarClassifierState* pState, QelSize* pSize) {
    return qel::getSize<Qel32s>(pState, pSize);
}

qelStatus qeliTiltHaarFeatures_32f(const Qel8u* pMask, int flag, QelHaarClassifierState* pState) {
    return qel::tiltFeatures<Qel32f>(pMask, flag != 0, pState);
}
qelStatus qeliTiltHaarFeatures_32s(const Qel8u* pMask, int flag, QelHaarClassifierState* pState) {
    return qel::tiltFeatures<Qel32s>(pMask, flag != 0, pState);
}
