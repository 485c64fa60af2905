// Windows at points between pixels, unchecked and without what lies outside of the image.
#ifndef QELCV_PYRAMID_COPY_SUBPIX_INTERSECT_H_
#define QELCV_PYRAMID_COPY_SUBPIX_INTERSECT_H_

#include "frame/image.h"
#include "qelcv/types.h"

namespace qel {

// As qeliCopySubpixIntersect_..., but the arguments are right, and of pDst only the columns pMin->x to pMax->x of the
// rows pMin->y to pMax->y are written; nothing where a maximum is below its minimum.
void ownGetRectSubpix_8u16u_C1R_Sfs(const Qel8u* pSrc, int srcStep, QelSize srcRoiSize, Qel16u* pDst, int dstStep,
                                    QelSize dstRoiSize, Qel32f x, Qel32f y, QelPoint* pMin, QelPoint* pMax,
                                    int scaleFactor);
void ownGetRectSubpix_16u32f_C1R(const Qel16u* pSrc, int srcStep, QelSize srcRoiSize, Qel32f* pDst, int dstStep,
                                 QelSize dstRoiSize, Qel32f x, Qel32f y, QelPoint* pMin, QelPoint* pMax);
void ownGetRectSubpix_32f_C1R(const Qel32f* pSrc, int srcStep, QelSize srcRoiSize, Qel32f* pDst, int dstStep,
                              QelSize dstRoiSize, Qel32f x, Qel32f y, QelPoint* pMin, QelPoint* pMax);

}  // namespace qel

#endif
