// The state of dilation and erosion: a mask that was analysed once, its tables, and the memory that calls work in.
#ifndef QELCV_MORPH_MORPHOLOGY_STATE_H_
#define QELCV_MORPH_MORPHOLOGY_STATE_H_

#include "frame/check.h"
#include "qelcv/morph.h"
#include "qelcv/types.h"

// What a mask turned out to be decides what it costs.
enum QelMorphClass : Qel32s {
    qelMorphGeneral = 0,  // none of the others
    qelMorphRect = 1,     // the set elements fill a rectangle, wherever the anchor is
    qelMorphEllipse = 2,  // one run of set elements in a row, each across the anchor's column, equal ones in line
    qelMorphEmpty = 3     // nothing is set
};

// The records may begin at any address, and the bytes of one that a caller provides are counted, so they are packed:
// their fields are read and written wherever they are.
struct [[gnu::packed]] QelMorphKernelInfo {
    Qel32s rectWidth;  // extent of the set elements
    Qel32s rectHeight;
    Qel32s anchorX;  // relative to that rectangle, in or out of it
    Qel32s anchorY;
    Qel32s rowCount;     // rows with a run
    Qel32s runCount;     // distinct lengths of runs
    Qel32s* pRowOffset;  // [rowCount] rows with a run, from the rectangle's first
    Qel32s* pRowRun;     // [rowCount] which of the lengths
    Qel32s* pRunLength;  // [runCount] in descending order
    Qel32s* pRunOffset;  // [runCount] from the run's first element to the anchor's column
};

struct [[gnu::packed]] QelMorphState {
    Qel8u* pMaskCopy;
    Qel8u* pErodeTable;   // general class: 16 bytes for each element
    Qel8u* pDilateTable;  // the same
    Qel8u* pWork;         // blocks of rows with their border, the rectangle filter's buffer, or the ellipse's rows
    QelMorphKernelInfo* pInfo;  // rectangle and ellipse
    Qel32s maskWidth;           // of the rectangle of set elements; in the general class of the whole mask
    Qel32s maskHeight;
    Qel32s anchorX;
    Qel32s anchorY;
    Qel32s rightExtent;  // general class: elements right of the anchor
    Qel32s bottomExtent;
    Qel32s blockStep;  // general class: bytes from one row to the next in pWork
    Qel32s stateSize;
    Qel32s dataType;  // a MorphType's
    Qel32s channels;
    Qel32s maxWidth;  // of a region
    Qel32s reserved;  // -1
    QelMorphClass maskClass;
};

namespace qel {

// Sizes are documented for pointers of 4 bytes; each pointer counts as many more as it has.
constexpr int kPointerGrowth = sizeof(void*) - 4;
static_assert(sizeof(QelMorphState) == 72 + 5 * kPointerGrowth);
static_assert(sizeof(QelMorphKernelInfo) == 40 + 4 * kPointerGrowth);

constexpr int kMaskCopyAlignment = 16;

// Sample type and channels of the images that a state serves.
struct MorphType {
    int dataType;  // 1: 8u, 13: 32f
    int sampleBytes;
    int channels;

    int64_t rowBytes(int width) const { return int64_t{width} * channels * sampleBytes; }
};

template <class T>
constexpr MorphType morphType(int channels) {
    return sizeof(T) == 1 ? MorphType{1, 1, channels} : MorphType{13, 4, channels};
}

// A mask and what it is for. Without `ellipses` masks of that class count as general, so that the size of a state does
// not depend on the anchor.
struct MorphMask {
    MorphType type;
    int roiWidth;
    const Qel8u* pMask;
    QelSize maskSize;
    QelPoint anchor;
    bool ellipses = true;

    Check& check(Check& c) const {
        return c.pointers(pMask).length(roiWidth).size(maskSize).require(
            anchor.x >= 0 && anchor.x < maskSize.width && anchor.y >= 0 && anchor.y < maskSize.height,
            qelStatusBadAnchor);
    }
};

constexpr QelPoint centreOf(QelSize maskSize) { return {maskSize.width >> 1, maskSize.height >> 1}; }

// The bytes of a mask's state. The mask has been checked; an overflow of the caller's int is his error.
qelStatus ownMorphologyGetSize(const MorphMask& mask, int* pSize);

// Builds a state in the caller's block; null is qelStatusNullPointer, tested last.
qelStatus ownMorphologyInit(const MorphMask& mask, void* pState);

// Builds a state in a block of its own, which qelsFree releases. A null ppState is qelStatusNullPointer, tested last;
// on an error it is left alone.
qelStatus ownMorphologyInitAlloc(const MorphMask& mask, QelMorphState** ppState);

}  // namespace qel

#endif
