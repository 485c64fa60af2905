#ifndef QELCV_FEATURE_CANNY_KERNELS_H_
#define QELCV_FEATURE_CANNY_KERNELS_H_

#include <type_traits>

#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// Of derivatives of type T.
template <class T>
using Magnitude = std::conditional_t<std::is_same_v<T, Qel16s>, Qel32s, Qel32f>;

// The magnitudes |dx| + |dy| of a row; 0 where the lower threshold drops them.
template <class T>
using CannyMagnitudeKernel = void(const T* pSrcDx, const T* pSrcDy, Magnitude<T>* pMagnitudes, int width,
                                  Magnitude<T> low);

extern const Kernel<CannyMagnitudeKernel<Qel16s>> ownCanny_16s8u_C1R_Mag_W7;
extern const Kernel<CannyMagnitudeKernel<Qel32f>> ownCanny_32f8u_C1R_Mag_W7;

// An entry of the stack of edge pixels whose neighbours are still to be looked at.
template <class Coordinate>
struct EdgePixel {
    Coordinate y;
    Coordinate x;
};

// In the map of edges: a pixel that is an edge if a neighbour is one.
constexpr Qel8u kEdgeCandidate = 0x80;
constexpr Qel8u kEdge = 255;

// Row y of the image: its derivatives, its magnitudes and those of the rows beside it, and where its edges go. A pixel
// left and right of the row has a magnitude, too, which is 0.
template <class T>
struct CannyRow {
    const T* pSrcDx;
    const T* pSrcDy;
    const Magnitude<T>* pPrevious;
    const Magnitude<T>* pCurrent;
    const Magnitude<T>* pNext;
    Qel8u* pEdgeMap;
    Qel8u* pDst;
    int y;
    int width;
};

// Suppresses what is no maximum across the edge. The others above `high` become edges and go on top of the stack, the
// rest candidates. Returns the stack's new top.
template <class T, class Coordinate>
using CannySuppressKernel = EdgePixel<Coordinate>*(const CannyRow<T>& row, Magnitude<T> high,
                                                   EdgePixel<Coordinate>* pTop);

extern const Kernel<CannySuppressKernel<Qel16s, Qel16u>> ownCanny_16s8u_C1R_16u_W7;
extern const Kernel<CannySuppressKernel<Qel16s, Qel32s>> ownCanny_16s8u_C1R_32s_W7;
extern const Kernel<CannySuppressKernel<Qel32f, Qel16u>> ownCanny_32f8u_C1R_16u_W7;
extern const Kernel<CannySuppressKernel<Qel32f, Qel32s>> ownCanny_32f8u_C1R_32s_W7;

}  // namespace qel

#endif
