// Copies of images in memory of their own, with a border around them.
#ifndef QELCV_FILTER_COPY_WITH_BORDER_H_
#define QELCV_FILTER_COPY_WITH_BORDER_H_

#include "qelcv/types.h"

namespace qel {

// A border mode beyond QelBorderMode: columns mirror with the edge sample (qelBorderMirrR), rows without
// (qelBorderMirr).
constexpr int kBorderMirrorRowsOnly = 5;

// Pixels of border on each side.
struct BorderWidths {
    int left;
    int right;
    int top;
    int bottom;
};

// The image of size.width + left + right by size.height + top + bottom pixels, in rows without gaps, or null where it
// cannot be allocated; released by qelFree. `value` holds the constant of qelBorderConst for each channel. A width or
// height of 1 is mirrored with the edge sample.
Qel8u* ownCopyWithBorder_8u_C1R(const Qel8u* pSrc, int srcStep, QelSize size, int mode, const Qel8u* value,
                                BorderWidths border);
Qel8u* ownCopyWithBorder_8u_C3R(const Qel8u* pSrc, int srcStep, QelSize size, int mode, const Qel8u* value,
                                BorderWidths border);
Qel16u* ownCopyWithBorder_16u_C1R(const Qel16u* pSrc, int srcStep, QelSize size, int mode, const Qel16u* value,
                                  BorderWidths border);
Qel16u* ownCopyWithBorder_16u_C3R(const Qel16u* pSrc, int srcStep, QelSize size, int mode, const Qel16u* value,
                                  BorderWidths border);
Qel32f* ownCopyWithBorder_32f_C1R(const Qel32f* pSrc, int srcStep, QelSize size, int mode, const Qel32f* value,
                                  BorderWidths border);
Qel32f* ownCopyWithBorder_32f_C3R(const Qel32f* pSrc, int srcStep, QelSize size, int mode, const Qel32f* value,
                                  BorderWidths border);

}  // namespace qel

#endif
