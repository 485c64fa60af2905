/**
 * @file
 * libqelcvt7: computer-vision primitives with exact arithmetic. This header brings in all of them.
 *
 * Names read `qeli<Operation>[_<Variant>]_<types>_<layout>`. Types: one sample type where source and destination agree
 * (`8u`), else source first, then what lies between, destination last (`8u32f`, `8u32s64f`). Layout: `C1`, `C3`, `C4`
 * interleaved channels, all processed; `C3C` three channels of which the argument `coi` picks one; `C3C1` from three
 * channels to one; `I` in place; `M` masked: a pixel takes part where its mask byte is not zero; `R` a region with row
 * steps; `Sfs` a result divided by 2 to the power `scaleFactor`, multiplied where that is negative. The prefix is
 * `qeli` for images, `qelib` for plain vectors, `qelcv` for the library itself.
 *
 * An image is a pointer to the first sample of a region, a step in bytes from one row to the next, and the region's
 * size. Bytes between the end of a row and the start of the next are neither read nor written. The caller owns every
 * image and every buffer; no pointer is kept after a call returns.
 *
 * Every function may be called from any thread, and two calls may run at once on distinct buffers. Large regions are
 * worked on by OpenMP threads; the call returns when the last of them is done. qelcore.h sets their number.
 */
#ifndef QELCV_H_
#define QELCV_H_

#include "qelcv/detect.h"
#include "qelcv/distance.h"
#include "qelcv/feature.h"
#include "qelcv/filter.h"
#include "qelcv/morph.h"
#include "qelcv/pyramid.h"
#include "qelcv/segment.h"
#include "qelcv/stats.h"
#include "qelcv/types.h"
#include "qelcv/version.h"

#endif
