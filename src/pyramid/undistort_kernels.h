#ifndef QELCV_PYRAMID_UNDISTORT_KERNELS_H_
#define QELCV_PYRAMID_UNDISTORT_KERNELS_H_

#include "frame/image.h"
#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// Focal lengths and principal point in pixels; radial and, for maps, tangential coefficients.
struct Lens {
    Qel32f fx, fy, cx, cy, k1, k2, p1, p2;
};

// Source and result are of at least 2 by 2 pixels: in smaller ones no point lies between pixels.
template <class T>
using UndistortKernel = void(Plane<const T> src, Plane<T> dst, QelSize size, const Lens& lens);
using UndistortMapKernel = void(Plane<Qel32f> xMap, Plane<Qel32f> yMap, QelSize size, const Lens& lens);

extern const Kernel<UndistortKernel<Qel8u>> ownUndistortRadial_8u_C1R_W7;
extern const Kernel<UndistortKernel<Qel8u>> ownUndistortRadial_8u_C3R_W7;
extern const Kernel<UndistortKernel<Qel16u>> ownUndistortRadial_16u_C1R_W7;
extern const Kernel<UndistortKernel<Qel16u>> ownUndistortRadial_16u_C3R_W7;
extern const Kernel<UndistortKernel<Qel32f>> ownUndistortRadial_32f_C1R_W7;
extern const Kernel<UndistortKernel<Qel32f>> ownUndistortRadial_32f_C3R_W7;

// Any lens, and one without tangential distortion. The streaming ones take maps and steps of whole 16 bytes.
extern const Kernel<UndistortMapKernel> ownCreateMapCameraUndistort_32f_C1R_W7;
extern const Kernel<UndistortMapKernel> ownCreateMapCameraUndistort_32f_C1R_W7_Streaming;
extern const Kernel<UndistortMapKernel> ownCreateMapCameraUndistort_32f_C1R_W7_Short;
extern const Kernel<UndistortMapKernel> ownCreateMapCameraUndistort_32f_C1R_W7_Short_Streaming;

// The terms of a column take no longer to compute than to read back, so a caller's buffer changes nothing.
inline constexpr auto& ownUndistortRadial_8u_C1R_W7_Buffer = ownUndistortRadial_8u_C1R_W7;
inline constexpr auto& ownUndistortRadial_8u_C3R_W7_Buffer = ownUndistortRadial_8u_C3R_W7;
inline constexpr auto& ownUndistortRadial_16u_C1R_W7_Buffer = ownUndistortRadial_16u_C1R_W7;
inline constexpr auto& ownUndistortRadial_16u_C3R_W7_Buffer = ownUndistortRadial_16u_C3R_W7;
inline constexpr auto& ownUndistortRadial_32f_C1R_W7_Buffer = ownUndistortRadial_32f_C1R_W7;
inline constexpr auto& ownUndistortRadial_32f_C3R_W7_Buffer = ownUndistortRadial_32f_C3R_W7;
inline constexpr auto& ownCreateMapCameraUndistort_32f_C1R_W7_Buffer = ownCreateMapCameraUndistort_32f_C1R_W7;
inline constexpr auto& ownCreateMapCameraUndistort_32f_C1R_W7_Buffer_Short =
    ownCreateMapCameraUndistort_32f_C1R_W7_Short;

}  // namespace qel

#endif
