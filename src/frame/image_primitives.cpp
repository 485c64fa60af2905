#include "frame/image_primitives.h"

#include "frame/check.h"
#include "frame/image_primitives_kernels.h"
#include "frame/vector_primitives.h"

namespace qel {
namespace {

// Images of more samples than this are written past the cache.
constexpr int64_t kCachedSamples = 0x100000;

// Rows without gaps between them are one long row.
struct Rows {
    Rows(int64_t rowBytes, int height, auto... step) : bytes(static_cast<size_t>(rowBytes)), count(height) {
        if ((... && (step == rowBytes))) {
            bytes *= static_cast<size_t>(height);
            count = 1;
        }
    }
    size_t bytes;
    int count;
};

template <class T>
qelStatus copyImage(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize, int channels = 1) {
    const qelStatus status = Check().pointers(pSrc, pDst).size(roiSize).status();
    if (status != qelStatusOk) return status;

    const Qel8u* const in = reinterpret_cast<const Qel8u*>(pSrc);
    Qel8u* const out = reinterpret_cast<Qel8u*>(pDst);
    const Rows rows(rowOf<T>(roiSize.width, channels).bytes, roiSize.height, srcStep, dstStep);
    if (int64_t{roiSize.width} * channels * roiSize.height > kCachedSamples) {
        owniCopy_8u_C1_W7(in, srcStep, out, dstStep, rows.bytes, rows.count);
    } else {
        for (int y = 0; y < rows.count; ++y) copyBytes(row(in, srcStep, y), row(out, dstStep, y), rows.bytes);
    }
    return qelStatusOk;
}

}  // namespace

#define COPY(name, T, channels)                                                         \
    qelStatus name(const T* pSrc, int srcStep, T* pDst, int dstStep, QelSize roiSize) { \
        return copyImage(pSrc, srcStep, pDst, dstStep, roiSize, channels);              \
    }
COPY(qeliCopy_8u_C1R, Qel8u, 1)
COPY(qeliCopy_8u_C3R, Qel8u, 3)
COPY(qeliCopy_8u_C4R, Qel8u, 4)
COPY(qeliCopy_16s_C1R, Qel16s, 1)
COPY(qeliCopy_16u_C1R, Qel16u, 1)
COPY(qeliCopy_32f_C1R, Qel32f, 1)
COPY(qeliCopy_32f_C3R, Qel32f, 3)
COPY(qeliCopy_32f_C4R, Qel32f, 4)
#undef COPY

qelStatus qeliSet_8u_C1R(Qel8u value, Qel8u* pDst, int dstStep, QelSize roiSize) {
    const qelStatus status = Check().pointers(pDst).size(roiSize).status();
    if (status != qelStatusOk) return status;

    const Rows rows(roiSize.width, roiSize.height, dstStep);
    if (int64_t{roiSize.width} * roiSize.height > kCachedSamples && outgrowsCache(1, roiSize)) {
        owniSet_8u_C1_W7(value, pDst, dstStep, rows.bytes, rows.count);
    } else {
        for (int y = 0; y < rows.count; ++y) setBytes(value, row(pDst, dstStep, y), rows.bytes);
    }
    return qelStatusOk;
}

}  // namespace qel
