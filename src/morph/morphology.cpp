#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>
#include <limits>

#include "frame/scratch.h"
#include "frame/vector_primitives.h"
#include "morph/filter_min_max.h"
#include "morph/morphology_state.h"

namespace qel {
namespace {

// A row of the mask that has set elements: begin..end - 1, relative to the mask.
struct MaskRow {
    Qel32s y;
    Qel32s begin;
    Qel32s end;
};

// Memory for the analysis of a mask: a MaskRow and four numbers for each row.
class AnalysisScratch {
public:
    explicit AnalysisScratch(int maskHeight) : rows_(maskHeight), tables_(4 * int64_t{maskHeight}) {}

    explicit operator bool() const { return rows_ && tables_; }
    MaskRow* rows() const { return rows_.get(); }

    void placeTables(QelMorphKernelInfo& info, int maskHeight) const {
        info.pRowOffset = tables_.get();
        info.pRowRun = info.pRowOffset + maskHeight;
        info.pRunLength = info.pRowRun + maskHeight;
        info.pRunOffset = info.pRunLength + maskHeight;
    }

private:
    Scratch<MaskRow> rows_;
    Scratch<Qel32s> tables_;
};

bool isSet(Qel8u element) { return element != 0; }

// Finds the rows that have a run. Returns false where one has two.
bool findRuns(const Qel8u* pMask, QelSize maskSize, MaskRow* rows, int& rowCount) {
    rowCount = 0;
    for (int y = 0; y < maskSize.height; ++y) {
        const Qel8u* const row = pMask + static_cast<std::ptrdiff_t>(y) * maskSize.width;
        const Qel8u* const rowEnd = row + maskSize.width;
        const Qel8u* const begin = std::find_if(row, rowEnd, isSet);
        if (begin == rowEnd) continue;
        const Qel8u* const end = std::find(begin, rowEnd, 0);
        if (std::find_if(end, rowEnd, isSet) != rowEnd) return false;
        rows[rowCount++] = {y, static_cast<Qel32s>(begin - row), static_cast<Qel32s>(end - row)};
    }
    return true;
}

bool fillsRectangle(const MaskRow* rows, int rowCount) {
    return std::all_of(rows, rows + rowCount, [&](const MaskRow& r) {
        return r.y == rows[0].y + (&r - rows) && r.begin == rows[0].begin && r.end == rows[0].end;
    });
}

// The place of a length in the list, or where it would be inserted.
int placeOf(const QelMorphKernelInfo& info, int length) {
    const Qel32s* const lengths = info.pRunLength;
    return static_cast<int>(std::lower_bound(lengths, lengths + info.runCount, length, std::greater<>()) - lengths);
}

// Adds the length of a row's run to the list. Returns false where it is there with another offset.
bool addLength(QelMorphKernelInfo& info, int length, int offset) {
    const int i = placeOf(info, length);
    if (i < info.runCount && info.pRunLength[i] == length) return info.pRunOffset[i] == offset;
    std::copy_backward(info.pRunLength + i, info.pRunLength + info.runCount, info.pRunLength + info.runCount + 1);
    std::copy_backward(info.pRunOffset + i, info.pRunOffset + info.runCount, info.pRunOffset + info.runCount + 1);
    info.pRunLength[i] = length;
    info.pRunOffset[i] = offset;
    info.runCount += 1;
    return true;
}

// Lists the distinct lengths, and for each row its place in the list. Returns false where rows of one length do not
// stand in line.
bool listRuns(const MaskRow* rows, int rowCount, QelPoint anchor, QelMorphKernelInfo& info) {
    info.rowCount = rowCount;
    for (int i = 0; i < rowCount; ++i)
        if (!addLength(info, rows[i].end - rows[i].begin, anchor.x - rows[i].begin)) return false;
    for (int i = 0; i < rowCount; ++i) {
        info.pRowOffset[i] = rows[i].y - rows[0].y;
        info.pRowRun[i] = placeOf(info, rows[i].end - rows[i].begin);
    }
    return true;
}

// The class of the mask. The tables of `info` stand in memory for as many rows as the mask has, and are filled for the
// ellipse class.
QelMorphClass ownCheckKernel(const Qel8u* pMask, QelSize maskSize, QelPoint anchor, MaskRow* rows,
                             QelMorphKernelInfo& info) {
    int rowCount = 0;
    if (!findRuns(pMask, maskSize, rows, rowCount)) return qelMorphGeneral;
    if (rowCount == 0) {
        info.rectWidth = info.rectHeight = 1;
        return qelMorphEmpty;
    }
    const MaskRow& last = rows[rowCount - 1];
    int begin = maskSize.width;
    int end = 0;
    bool missed = anchor.y < rows[0].y || anchor.y > last.y;
    for (int i = 0; i < rowCount; ++i) {
        begin = std::min(begin, rows[i].begin);
        end = std::max(end, rows[i].end);
        missed |= anchor.x < rows[i].begin || anchor.x >= rows[i].end;
    }
    info.rectWidth = end - begin;
    info.rectHeight = last.y - rows[0].y + 1;
    info.anchorX = anchor.x - begin;
    info.anchorY = anchor.y - rows[0].y;
    if (fillsRectangle(rows, rowCount)) return qelMorphRect;
    return !missed && listRuns(rows, rowCount, anchor, info) ? qelMorphEllipse : qelMorphGeneral;
}

// Single-precision ellipses of many channels and few elements are as fast as general masks.
bool isWorthRuns(const MorphMask& mask) {
    if (!mask.ellipses) return false;
    if (mask.type.sampleBytes == 1 || mask.type.channels == 1) return true;
    return int64_t{mask.maskSize.width} * mask.maskSize.height >= (mask.type.channels == 3 ? 17 : 49);
}

QelMorphClass classOf(const MorphMask& mask, const AnalysisScratch& scratch, QelMorphKernelInfo& info) {
    info = {};
    scratch.placeTables(info, mask.maskSize.height);
    const QelMorphClass found = ownCheckKernel(mask.pMask, mask.maskSize, mask.anchor, scratch.rows(), info);
    return found == qelMorphEllipse && !isWorthRuns(mask) ? qelMorphGeneral : found;
}

// Bytes of the mask's copy.
int64_t copyBytesOf(const MorphMask& mask) {
    return alignUp(int64_t{mask.maskSize.width} * mask.maskSize.height, kMaskCopyAlignment);
}

int64_t blockStepOf(const MorphMask& mask) {
    return alignUp((int64_t{mask.roiWidth} + mask.maskSize.width) * mask.type.channels * mask.type.sampleBytes, 16);
}

// What the ellipse's engine works in, ahead of its tables: for each row of the rectangle a row of each length and the
// pointers to them.
int64_t ownMorphEllipseGetBufferSize(const MorphMask& mask, const QelMorphKernelInfo& info) {
    return (int64_t{info.rectHeight} * info.runCount + 1) * (mask.type.rowBytes(mask.roiWidth) + 32) +
           info.rectHeight * 5 * int64_t{sizeof(void*)} + 36;
}

constexpr int64_t kRecordBytes = 80 + 5 * kPointerGrowth;

int64_t stateBytes(const MorphMask& mask, QelMorphClass maskClass, const QelMorphKernelInfo& info) {
    constexpr int64_t kRecords = sizeof(QelMorphState) + sizeof(QelMorphKernelInfo);
    const int64_t copy = copyBytesOf(mask);
    // All but empty masks have work rows; where one exceeds any block, products of several could leave 64 bits.
    if (maskClass != qelMorphEmpty && mask.type.rowBytes(mask.roiWidth) > INT_MAX) return int64_t{INT_MAX} + 1;
    switch (maskClass) {
        case qelMorphEmpty:
            return copy + kRecordBytes;
        case qelMorphRect:
            return copy + kRecords + extremesBytes(mask.type.rowBytes(mask.roiWidth), info.rectHeight);
        case qelMorphEllipse:
            return copy + kRecords + 16 + (int64_t{info.rowCount} + info.runCount) * 8 +
                   ownMorphEllipseGetBufferSize(mask, info);
        case qelMorphGeneral:
            break;
    }
    const int64_t blocks = mask.maskSize.height * 2 * blockStepOf(mask);
    return 33 * copy + kRecordBytes + 16 + std::max(blocks, mask.type.rowBytes(mask.maskSize.height));
}

// A 16-byte vector for each element, which lets a sample through or makes it neutral: for bytes by AND in dilations and
// by OR in erosions, for floats by the minimum in dilations and by the maximum in erosions.
void fillTables(QelMorphState& state, int64_t elements, bool integers) {
    const auto fill = [&](Qel8u* pVector, Qel32s value) {
        for (int i = 0; i < 4; ++i) std::memcpy(pVector + i * sizeof(value), &value, sizeof(value));
    };
    const auto ofFloat = [](Qel32f value) { return std::bit_cast<Qel32s>(value); };
    constexpr Qel32f kInfinity = std::numeric_limits<Qel32f>::infinity();
    const Qel32s lowest = integers ? 0 : ofFloat(-kInfinity);
    const Qel32s highest = integers ? -1 : ofFloat(kInfinity);
    for (int64_t i = 0; i < elements; ++i) {
        const bool set = isSet(state.pMaskCopy[i]);
        fill(state.pErodeTable + 16 * i, set ? lowest : highest);
        fill(state.pDilateTable + 16 * i, set ? highest : lowest);
    }
}

void copyMask(const MorphMask& mask, QelMorphState& state, Qel8u* pCopy) {
    state.pMaskCopy = pCopy;
    const size_t elements = static_cast<size_t>(mask.maskSize.width) * mask.maskSize.height;
    std::memcpy(pCopy, mask.pMask, elements);
    std::memset(pCopy + elements, 0, static_cast<size_t>(copyBytesOf(mask)) - elements);
}

void placeGeneral(const MorphMask& mask, QelMorphState& state) {
    const int64_t copy = copyBytesOf(mask);
    Qel8u* const block = reinterpret_cast<Qel8u*>(&state);
    copyMask(mask, state, reinterpret_cast<Qel8u*>(alignUp(block + kRecordBytes, size_t{kMaskCopyAlignment})));
    state.pErodeTable = state.pMaskCopy + copy;
    state.pDilateTable = state.pMaskCopy + 17 * copy;
    state.pWork = state.pMaskCopy + 33 * copy;
    state.maskWidth = mask.maskSize.width;
    state.maskHeight = mask.maskSize.height;
    state.anchorX = mask.anchor.x;
    state.anchorY = mask.anchor.y;
    state.rightExtent = mask.maskSize.width - mask.anchor.x - 1;
    state.bottomExtent = mask.maskSize.height - mask.anchor.y - 1;
    state.blockStep = static_cast<Qel32s>(blockStepOf(mask));
    fillTables(state, copy, mask.type.sampleBytes == 1);
}

// Copies the tables of runs to pTables and returns their end.
Qel8u* placeTables(QelMorphKernelInfo& info, Qel8u* pTables) {
    Qel32s* next = reinterpret_cast<Qel32s*>(alignUp(pTables, sizeof(Qel32s)));
    const auto place = [&](const Qel32s* from, int count) {
        Qel32s* const table = next;
        next = std::copy(from, from + count, table);
        return table;
    };
    info.pRowOffset = place(info.pRowOffset, info.rowCount);
    info.pRowRun = place(info.pRowRun, info.rowCount);
    info.pRunLength = place(info.pRunLength, info.runCount);
    info.pRunOffset = place(info.pRunOffset, info.runCount);
    return reinterpret_cast<Qel8u*>(next);
}

void placeRuns(const MorphMask& mask, QelMorphState& state, const QelMorphKernelInfo& info) {
    state.pInfo = reinterpret_cast<QelMorphKernelInfo*>(&state + 1);
    *state.pInfo = info;
    state.maskWidth = info.rectWidth;
    state.maskHeight = info.rectHeight;
    state.anchorX = info.anchorX;
    state.anchorY = info.anchorY;
    copyMask(mask, state, reinterpret_cast<Qel8u*>(state.pInfo + 1));
    state.pWork = state.pMaskCopy + copyBytesOf(mask);
    if (state.maskClass == qelMorphEllipse) {
        state.pWork = placeTables(*state.pInfo, state.pWork);
    } else {
        state.pInfo->pRowOffset = state.pInfo->pRowRun = nullptr;
        state.pInfo->pRunLength = state.pInfo->pRunOffset = nullptr;
    }
}

void buildState(const MorphMask& mask, QelMorphClass maskClass, const QelMorphKernelInfo& info, QelMorphState& state) {
    state = {};
    state.stateSize = static_cast<Qel32s>(stateBytes(mask, maskClass, info));
    state.dataType = mask.type.dataType;
    state.channels = mask.type.channels;
    state.maxWidth = mask.roiWidth;
    state.reserved = -1;
    state.maskClass = maskClass;
    switch (maskClass) {
        case qelMorphGeneral:
            return placeGeneral(mask, state);
        case qelMorphRect:
        case qelMorphEllipse:
            return placeRuns(mask, state, info);
        case qelMorphEmpty:
            state.maskWidth = state.maskHeight = 1;
            return copyMask(mask, state, reinterpret_cast<Qel8u*>(&state + 1));
    }
}

// Analyses the mask and hands the result to use(class, info, bytes).
template <class Use>
qelStatus withAnalysis(const MorphMask& mask, const Use& use) {
    Check checks;
    if (const qelStatus status = mask.check(checks).status(); status != qelStatusOk) return status;
    const AnalysisScratch scratch(mask.maskSize.height);
    if (!scratch) return qelStatusNoMemory;
    QelMorphKernelInfo info;
    const QelMorphClass maskClass = classOf(mask, scratch, info);
    return use(maskClass, info, stateBytes(mask, maskClass, info));
}

}  // namespace

qelStatus ownMorphologyGetSize(const MorphMask& mask, int* pSize) {
    return withAnalysis(mask, [&](QelMorphClass, const QelMorphKernelInfo&, int64_t bytes) {
        return pSize == nullptr ? qelStatusNullPointer : writeBufferSize(bytes, pSize);
    });
}

qelStatus ownMorphologyInit(const MorphMask& mask, void* pState) {
    return withAnalysis(mask, [&](QelMorphClass maskClass, const QelMorphKernelInfo& info, int64_t bytes) {
        if (pState == nullptr) return qelStatusNullPointer;
        if (bytes > INT_MAX) return qelStatusOverflow;
        buildState(mask, maskClass, info, *static_cast<QelMorphState*>(pState));
        return qelStatusOk;
    });
}

qelStatus ownMorphologyInitAlloc(const MorphMask& mask, QelMorphState** ppState) {
    return withAnalysis(mask, [&](QelMorphClass maskClass, const QelMorphKernelInfo& info, int64_t bytes) {
        Scratch<Qel8u> block(bytes);
        if (!block) return qelStatusNoMemory;
        if (ppState == nullptr) return qelStatusNullPointer;
        *ppState = reinterpret_cast<QelMorphState*>(block.release());
        buildState(mask, maskClass, info, **ppState);
        return qelStatusOk;
    });
}

}  // namespace qel

#define MORPHOLOGY(getSize, init, initAlloc, T, channels)                                                              \
    qelStatus getSize(int roiWidth, const Qel8u* pMask, QelSize maskSize, int* pSize) {                                \
        return qel::ownMorphologyGetSize(                                                                              \
            {qel::morphType<T>(channels), roiWidth, pMask, maskSize, qel::centreOf(maskSize)}, pSize);                 \
    }                                                                                                                  \
    qelStatus init(int roiWidth, const Qel8u* pMask, QelSize maskSize, QelPoint anchor, QelMorphState* pState) {       \
        return qel::ownMorphologyInit({qel::morphType<T>(channels), roiWidth, pMask, maskSize, anchor}, pState);       \
    }                                                                                                                  \
    qelStatus initAlloc(int roiWidth, const Qel8u* pMask, QelSize maskSize, QelPoint anchor,                           \
                        QelMorphState** ppState) {                                                                     \
        return qel::ownMorphologyInitAlloc({qel::morphType<T>(channels), roiWidth, pMask, maskSize, anchor}, ppState); \
    }
MORPHOLOGY(qeliMorphologyGetSize_8u_C1R, qeliMorphologyInit_8u_C1R, qeliMorphologyInitAlloc_8u_C1R, Qel8u, 1)
MORPHOLOGY(qeliMorphologyGetSize_8u_C3R, qeliMorphologyInit_8u_C3R, qeliMorphologyInitAlloc_8u_C3R, Qel8u, 3)
MORPHOLOGY(qeliMorphologyGetSize_8u_C4R, qeliMorphologyInit_8u_C4R, qeliMorphologyInitAlloc_8u_C4R, Qel8u, 4)
MORPHOLOGY(qeliMorphologyGetSize_32f_C1R, qeliMorphologyInit_32f_C1R, qeliMorphologyInitAlloc_32f_C1R, Qel32f, 1)
MORPHOLOGY(qeliMorphologyGetSize_32f_C3R, qeliMorphologyInit_32f_C3R, qeliMorphologyInitAlloc_32f_C3R, Qel32f, 3)
MORPHOLOGY(qeliMorphologyGetSize_32f_C4R, qeliMorphologyInit_32f_C4R, qeliMorphologyInitAlloc_32f_C4R, Qel32f, 4)
#undef MORPHOLOGY

qelStatus qeliMorphologyFree(QelMorphState* pState) {
    if (pState == nullptr) return qelStatusNullPointer;
    qel::qelsFree(pState);
    return qelStatusOk;
}
