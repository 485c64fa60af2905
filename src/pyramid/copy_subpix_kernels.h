#ifndef QELCV_PYRAMID_COPY_SUBPIX_KERNELS_H_
#define QELCV_PYRAMID_COPY_SUBPIX_KERNELS_H_

#include "frame/image.h"
#include "frame/kernel.h"
#include "pyramid/subpix_weights.h"
#include "qelcv/types.h"

namespace qel {

// Each result is made of the four samples at its place, to the right, below, and to the right below: one row and one
// column more than `size` are read.
using SubpixQ14Kernel_8u = void(Plane<const Qel8u> src, Plane<Qel8u> dst, QelSize size, const WeightsQ14& weights);
using SubpixQ14Kernel_8u16u = void(Plane<const Qel8u> src, Plane<Qel16u> dst, QelSize size, const WeightsQ14& weights,
                                   const ScaleQ14& scale);
template <class T, class Out>
using SubpixKernel = void(Plane<const T> src, Plane<Out> dst, QelSize size, const WeightsFloat& weights);
// `ratio` takes the lower half of a result to the upper half of the result below it.
using PairedSubpixKernel = void(Plane<const Qel32f> src, Plane<Qel32f> dst, QelSize size, const WeightsFloat& weights,
                                Qel32f ratio);

extern const Kernel<SubpixQ14Kernel_8u> ownCopySubpix_8u_C1R_W7;
extern const Kernel<SubpixQ14Kernel_8u16u> ownCopySubpix_8u16u_C1R_Sfs_W7;
extern const Kernel<SubpixKernel<Qel8u, Qel32f>> ownCopySubpix_8u32f_C1R_W7;
extern const Kernel<SubpixKernel<Qel16u, Qel16u>> ownCopySubpix_16u_C1R_W7;
extern const Kernel<SubpixKernel<Qel16u, Qel32f>> ownCopySubpix_16u32f_C1R_W7;
extern const Kernel<PairedSubpixKernel> ownCopySubpix_32f_C1R_W7;
extern const Kernel<SubpixKernel<Qel32f, Qel32f>> ownCopySubpix_32f_C1R_W7_1;

// Narrow and wide images take the same loop, and so does what lies within the image of a window.
inline constexpr auto& ownCopySubpix_8u32f_C1R_new_W7 = ownCopySubpix_8u32f_C1R_W7;
inline constexpr auto& ownCopySubpix_16u32f_C1R_new_W7 = ownCopySubpix_16u32f_C1R_W7;
inline constexpr auto& ownCopySubpixIntersect_8u_C1R_W7 = ownCopySubpix_8u_C1R_W7;
inline constexpr auto& ownCopySubpixIntersect_8u16u_C1R_Sfs_W7 = ownCopySubpix_8u16u_C1R_Sfs_W7;
inline constexpr auto& ownCopySubpixIntersect_8u32f_C1R_W7 = ownCopySubpix_8u32f_C1R_W7;
inline constexpr auto& ownCopySubpixIntersect_16u_C1R_W7 = ownCopySubpix_16u_C1R_W7;
inline constexpr auto& ownCopySubpixIntersect_16u32f_C1R_W7 = ownCopySubpix_16u32f_C1R_W7;
inline constexpr auto& ownCopySubpixIntersect_32f_C1R_W7 = ownCopySubpix_32f_C1R_W7_1;

}  // namespace qel

#endif
