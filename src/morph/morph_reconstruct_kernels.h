#ifndef QELCV_MORPH_MORPH_RECONSTRUCT_KERNELS_H_
#define QELCV_MORPH_MORPH_RECONSTRUCT_KERNELS_H_

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// Turns floats into integers of the same order, in place, or such integers into the floats that they were.
extern const Kernel<void(Qel32f* pRow, int width)> ownReorder_32f_C1R;

// A sweep along a row of the marker, in place. In a dilation each sample becomes the largest of itself, its neighbours
// in the row pNear above or below, and the new value of the sample before it, but no more than the mask. Forward the
// sample before is the one to the left, backward that to the right. ...Rev02... look at no other row; ...Inf take the
// diagonal neighbours of pNear, too. 32f: pNear
// and pRow are reordered, the mask is not. ...Check... return whether a sample has changed, others false.
template <class T>
using SweepKernel = bool(const T* pNear, const T* pMask, T* pRow, int width);

extern const Kernel<SweepKernel<Qel8u>> ownDilateForwardRev02_8u_C1R;
extern const Kernel<SweepKernel<Qel8u>> ownDilateForwardCheckRev02_8u_C1R;
extern const Kernel<SweepKernel<Qel8u>> ownDilateBackwardRev02_8u_C1R;
extern const Kernel<SweepKernel<Qel8u>> ownDilateBackwardCheckRev02_8u_C1R;
extern const Kernel<SweepKernel<Qel8u>> ownDilateForward02_8u_C1R;
extern const Kernel<SweepKernel<Qel8u>> ownDilateForwardCheck02_8u_C1R;
extern const Kernel<SweepKernel<Qel8u>> ownDilateBackwardCheck02_8u_C1R;
extern const Kernel<SweepKernel<Qel8u>> ownDilateForward02_8u_C1RInf;
extern const Kernel<SweepKernel<Qel8u>> ownDilateForwardCheck02_8u_C1RInf;
extern const Kernel<SweepKernel<Qel8u>> ownDilateBackwardCheck02_8u_C1RInf;
extern const Kernel<SweepKernel<Qel32f>> ownDilateForwardRev02_32f_C1R;
extern const Kernel<SweepKernel<Qel32f>> ownDilateForwardCheckRev02_32f_C1R;
extern const Kernel<SweepKernel<Qel32f>> ownDilateBackwardRev02_32f_C1R;
extern const Kernel<SweepKernel<Qel32f>> ownDilateBackwardCheckRev02_32f_C1R;
extern const Kernel<SweepKernel<Qel32f>> ownDilateForward02_32f_C1R;
extern const Kernel<SweepKernel<Qel32f>> ownDilateForwardCheck02_32f_C1R;
extern const Kernel<SweepKernel<Qel32f>> ownDilateBackwardCheck02_32f_C1R;
extern const Kernel<SweepKernel<Qel32f>> ownDilateForward02_32f_C1RInf;
extern const Kernel<SweepKernel<Qel32f>> ownDilateForwardCheck02_32f_C1RInf;
extern const Kernel<SweepKernel<Qel32f>> ownDilateBackwardCheck02_32f_C1RInf;

// An erosion has smallest for largest and no less for no more.
extern const Kernel<SweepKernel<Qel8u>> ownErodeForwardRev02_8u_C1R;
extern const Kernel<SweepKernel<Qel8u>> ownErodeForwardCheckRev02_8u_C1R;
extern const Kernel<SweepKernel<Qel8u>> ownErodeBackwardRev02_8u_C1R;
extern const Kernel<SweepKernel<Qel8u>> ownErodeBackwardCheckRev02_8u_C1R;
extern const Kernel<SweepKernel<Qel8u>> ownErodeForward02_8u_C1R;
extern const Kernel<SweepKernel<Qel8u>> ownErodeForwardCheck02_8u_C1R;
extern const Kernel<SweepKernel<Qel8u>> ownErodeBackwardCheck02_8u_C1R;
extern const Kernel<SweepKernel<Qel8u>> ownErodeForward02_8u_C1RInf;
extern const Kernel<SweepKernel<Qel8u>> ownErodeForwardCheck02_8u_C1RInf;
extern const Kernel<SweepKernel<Qel8u>> ownErodeBackwardCheck02_8u_C1RInf;
extern const Kernel<SweepKernel<Qel32f>> ownErodeForwardRev02_32f_C1R;
extern const Kernel<SweepKernel<Qel32f>> ownErodeForwardCheckRev02_32f_C1R;
extern const Kernel<SweepKernel<Qel32f>> ownErodeBackwardRev02_32f_C1R;
extern const Kernel<SweepKernel<Qel32f>> ownErodeBackwardCheckRev02_32f_C1R;
extern const Kernel<SweepKernel<Qel32f>> ownErodeForward02_32f_C1R;
extern const Kernel<SweepKernel<Qel32f>> ownErodeForwardCheck02_32f_C1R;
extern const Kernel<SweepKernel<Qel32f>> ownErodeBackwardCheck02_32f_C1R;
extern const Kernel<SweepKernel<Qel32f>> ownErodeForward02_32f_C1RInf;
extern const Kernel<SweepKernel<Qel32f>> ownErodeForwardCheck02_32f_C1RInf;
extern const Kernel<SweepKernel<Qel32f>> ownErodeBackwardCheck02_32f_C1RInf;

}  // namespace qel

#endif
