#include "frame/check.h"
#include "frame/scratch.h"
#include "pyramid/undistort_kernels.h"
#include "qelcv/pyramid.h"

namespace qel {
namespace {

template <class T>
qelStatus undistortRadial(Plane<const T> src, Plane<T> dst, QelSize roiSize, int channels, const Lens& lens,
                          const Kernel<UndistortKernel<T>>& kernel) {
    const qelStatus status = Check()
                                 .pointers(src.p, dst.p)
                                 .size(roiSize)
                                 .steps(rowOf<T>(roiSize.width, channels), src.step, dst.step)
                                 .require(lens.fx != 0 && lens.fy != 0, qelStatusBadArg)
                                 .status();
    if (status != qelStatusOk) return status;

    if (roiSize.width > 1 && roiSize.height > 1) kernel(src, dst, roiSize, lens);
    return qelStatusOk;
}

bool isAligned(Plane<Qel32f> map) { return reinterpret_cast<uintptr_t>(map.p) % 16 == 0 && map.step % 16 == 0; }

// Large maps bypass the cache.
bool streams(Plane<Qel32f> xMap, Plane<Qel32f> yMap, QelSize roiSize) {
    constexpr int64_t kFrom = 0x20000;
    return int64_t{roiSize.width} * roiSize.height >= kFrom && isAligned(xMap) && isAligned(yMap);
}

}  // namespace
}  // namespace qel

qelStatus qeliUndistortGetSize(QelSize roiSize, int* pBufferSize) {
    const qelStatus status = qel::Check().pointers(pBufferSize).size(roiSize).status();
    if (status != qelStatusOk) return status;
    // Six rows of terms, each of whole groups of four.
    return qel::writeBufferSize(qel::alignUp(int64_t{roiSize.width}, 4) * 6 * int64_t{sizeof(Qel32f)} + 32,
                                pBufferSize);
}

// The buffer is optional, and its use is over: see undistort_kernels.h.
#define UNDISTORT_RADIAL(name, T, channels, kernel)                                                                    \
    qelStatus name(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, Qel32f fx, Qel32f fy, Qel32f cx, \
                   Qel32f cy, Qel32f k1, Qel32f k2, Qel8u* /*pBuffer*/) {                                              \
        return qel::undistortRadial<T>({pSrc, srcStep}, {pDst, dstStep}, roiSize, channels,                            \
                                       {fx, fy, cx, cy, k1, k2, 0, 0}, kernel);                                        \
    }
UNDISTORT_RADIAL(qeliUndistortRadial_8u_C1R, Qel8u, 1, qel::ownUndistortRadial_8u_C1R_W7)
UNDISTORT_RADIAL(qeliUndistortRadial_8u_C3R, Qel8u, 3, qel::ownUndistortRadial_8u_C3R_W7)
UNDISTORT_RADIAL(qeliUndistortRadial_16u_C1R, Qel16u, 1, qel::ownUndistortRadial_16u_C1R_W7)
UNDISTORT_RADIAL(qeliUndistortRadial_16u_C3R, Qel16u, 3, qel::ownUndistortRadial_16u_C3R_W7)
UNDISTORT_RADIAL(qeliUndistortRadial_32f_C1R, Qel32f, 1, qel::ownUndistortRadial_32f_C1R_W7)
UNDISTORT_RADIAL(qeliUndistortRadial_32f_C3R, Qel32f, 3, qel::ownUndistortRadial_32f_C3R_W7)
#undef UNDISTORT_RADIAL

qelStatus qeliCreateMapCameraUndistort_32f_C1R(Qel32f* pxMap, int xStep, Qel32f* pyMap, int yStep, QelSize roiSize,
                                               Qel32f fx, Qel32f fy, Qel32f cx, Qel32f cy, Qel32f k1, Qel32f k2,
                                               Qel32f p1, Qel32f p2, Qel8u* /*pBuffer*/) {
    using namespace qel;
    const qelStatus status = Check()
                                 .pointers(pxMap, pyMap)
                                 .size(roiSize)
                                 .steps(rowOf<Qel32f>(roiSize.width), xStep, yStep)
                                 .require(fx != 0 && fy != 0, qelStatusBadArg)
                                 .status();
    if (status != qelStatusOk) return status;

    const Plane<Qel32f> xMap = {pxMap, xStep}, yMap = {pyMap, yStep};
    const bool isShort = p1 == 0 && p2 == 0, isStreaming = streams(xMap, yMap, roiSize);
    const Kernel<UndistortMapKernel>* const kernels[2][2] = {
        {&ownCreateMapCameraUndistort_32f_C1R_W7, &ownCreateMapCameraUndistort_32f_C1R_W7_Streaming},
        {&ownCreateMapCameraUndistort_32f_C1R_W7_Short, &ownCreateMapCameraUndistort_32f_C1R_W7_Short_Streaming}};
    (*kernels[isShort][isStreaming])(xMap, yMap, roiSize, {fx, fy, cx, cy, k1, k2, p1, p2});
    return qelStatusOk;
}
