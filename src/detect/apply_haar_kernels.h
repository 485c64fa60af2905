#ifndef QELCV_DETECT_APPLY_HAAR_KERNELS_H_
#define QELCV_DETECT_APPLY_HAAR_KERNELS_H_

#include <cstddef>

#include "frame/image.h"
#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// A stage as tables that are read from front to back. W is the type of its numbers.
template <class W>
struct HaarStage {
    Qel32s numPairs;
    Qel32s numPairsAndTriples;
    Qel32s numClassifiers;
    const std::ptrdiff_t* offsets;  // per feature those of its corners, in elements from a pixel's own
    const W* weights;               // per feature
    const Qel32s* shapes;           // per classifier: its features times 2, plus 1 where it reads the tilted table
    const W* thresholds;
    const W* valuesBelow;
    const W* valuesAbove;
    W threshold;  // of the stage
};

// The tables that a stage reads, from the elements of the first pixel on. Plain forms have no tilted one.
template <class T>
struct HaarTables {
    Plane<const T> upright;
    Plane<const T> tilted;
};

// Returns how many pixels stay. N is the type of the normaliser.
template <class T, class N, class W>
using ApplyHaarKernel = int(const HaarStage<W>& stage, const HaarTables<T>& tables, Plane<const N> norm,
                            Plane<Qel8u> mask, QelSize size);

// Names with `dw` multiply every feature; the others take the first of a pair or triple with a weight of -1.
extern const Kernel<ApplyHaarKernel<Qel32f, Qel32f, Qel32f>> ownApplyHaarClassifierAllImg8Pix_W7;
extern const Kernel<ApplyHaarKernel<Qel32f, Qel32f, Qel32f>> ownApplyHaarClassifierAllImg4Pix_W7;
extern const Kernel<ApplyHaarKernel<Qel32f, Qel32f, Qel32f>> ownApplyHaarClassifierAllImg8PixSparceMask_W7;
extern const Kernel<ApplyHaarKernel<Qel32f, Qel32f, Qel32f>> ownApplyHaarClassifierAllImg8Pix_dw_W7;
extern const Kernel<ApplyHaarKernel<Qel32f, Qel32f, Qel32f>> ownApplyHaarClassifierAllImg8PixSparceMask_dw_W7;

extern const Kernel<ApplyHaarKernel<Qel32s, Qel32f, Qel32f>> ownApplyHaarClassifier_32s32f_C1R_W7;
extern const Kernel<ApplyHaarKernel<Qel32s, Qel32s, Qel32s>> ownApplyHaarClassifier_32s_C1RSfs_W7;
extern const Kernel<ApplyHaarKernel<Qel32f, Qel32f, Qel32f>> ownApplyMixedHaarClassifier_32f_C1R_W7;
extern const Kernel<ApplyHaarKernel<Qel32s, Qel32f, Qel32f>> ownApplyMixedHaarClassifier_32s32f_C1R_W7;

}  // namespace qel

#endif
