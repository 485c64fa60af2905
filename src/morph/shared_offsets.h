// The places under a mask whose samples several rows of results take: each is read once for all of them.
#ifndef QELCV_MORPH_SHARED_OFFSETS_H_
#define QELCV_MORPH_SHARED_OFFSETS_H_

#include <array>

#include "morph/dilate_kernels.h"
#include "morph/morphology_state.h"

namespace qel {

// Calls use(x, y) for each set element of a general mask or an ellipse, relative to the state's mask.
template <class Use>
void forElements(const QelMorphState& state, const Use& use) {
    if (state.maskClass == qelMorphGeneral) {
        const Qel8u* pMask = state.pMaskCopy;
        for (int y = 0; y < state.maskHeight; ++y, pMask += state.maskWidth)
            for (int x = 0; x < state.maskWidth; ++x)
                if (pMask[x] != 0) use(x, y);
        return;
    }
    const QelMorphKernelInfo& info = *state.pInfo;
    for (int i = 0; i < info.rowCount; ++i) {
        const int run = info.pRowRun[i];
        const int begin = info.anchorX - info.pRunOffset[run];
        for (int x = begin; x < begin + info.pRunLength[run]; ++x) use(x, info.pRowOffset[i]);
    }
}

class SharedPlaces {
public:
    // Of a state's mask that has set elements, relative to the mask's first element.
    explicit SharedPlaces(const QelMorphState& state);

    // False where the mask is too large.
    bool exist() const { return elements_ > 0; }
    // How many the mask has.
    int elements() const { return elements_; }

    // In images of that step, with pixels of that many bytes.
    SharedOffsets offsets(int step, int pixelBytes) const;

private:
    void add(int x, int y);

    int width_;
    int elements_ = 0;
    int first_ = 0;                                            // place of the first set element
    std::array<Qel8u, size_t{SharedOffsets::kMost}> by_ = {};  // for each place a bit for each row that takes it
};

}  // namespace qel

#endif
