#include <climits>

#include "feature/canny_kernels.h"
#include "frame/check.h"
#include "frame/scratch.h"
#include "frame/vector_primitives.h"
#include "qelcv/feature.h"

namespace qel {
namespace {

constexpr int kMapAlignment = 32;
constexpr int kRingRows = 4;

// The map of edges and the rows of magnitudes have a pixel more on each side than the image.
constexpr int64_t framed(int side) { return int64_t{side} + 2; }

// Coordinates that 16 bits hold, those of the frame included.
bool isShort(QelSize roiSize) { return roiSize.width < 65533 && roiSize.height < 65533; }

// The pieces of the scratch, which the documented size has room for wherever it begins.
template <class T>
struct CannyScratch {
    CannyScratch(Qel8u* pBuffer, QelSize roiSize)
        : pitch(static_cast<std::ptrdiff_t>(framed(roiSize.width))),
          map(alignUp(pBuffer, kMapAlignment)),
          mapBytes(static_cast<size_t>(pitch) * static_cast<size_t>(framed(roiSize.height))),
          // Ahead of the first pixel lies that of the frame; the first itself is aligned.
          ring(reinterpret_cast<Magnitude<T>*>(alignUp(map + mapBytes, kMapAlignment) + 12)),
          stack(ring + kRingRows * pitch) {}

    // From the first pixel of the image in row y, which may be one of the frame's.
    Qel8u* mapRow(int y) const { return reinterpret_cast<Qel8u*>(map) + (y + 1) * pitch + 1; }
    Magnitude<T>* magnitudes(int y) const { return ring + (y + 1) % kRingRows * pitch + 1; }

    std::ptrdiff_t pitch;
    char* map;
    size_t mapBytes;
    Magnitude<T>* ring;
    void* stack;
};

template <class T>
struct Kernels {
    CannyMagnitudeKernel<T>* magnitudes;
    CannySuppressKernel<T, Qel16u>* suppress_16u;
    CannySuppressKernel<T, Qel32s>* suppress_32s;
};

template <class T>
struct Images {
    Plane<const T> dx;
    Plane<const T> dy;
    Plane<Qel8u> dst;
    QelSize roiSize;
};

// Makes edges of all candidates that touch one. A candidate that became an edge leaves the map, whose frame has none:
// it keeps the walk inside.
template <class Coordinate>
void hysteresisThresholding(Qel8u* pEdgeMap, std::ptrdiff_t pitch, Plane<Qel8u> dst, EdgePixel<Coordinate>* pStack,
                            EdgePixel<Coordinate>* pTop) {
    while (pTop != pStack) {
        const auto [y, x] = *--pTop;
        for (int dy = -1; dy <= 1; ++dy) {
            Qel8u* const near = pEdgeMap + (y + dy) * pitch + x;
            constexpr uint32_t kNone = 0x00808080;  // among three bytes, in memory's order
            if ((sampleAt(reinterpret_cast<const uint32_t*>(near - 1)) & kNone) == 0) continue;
            for (int dx = -1; dx <= 1; ++dx) {
                if (near[dx] != kEdgeCandidate) continue;
                near[dx] = 0;
                dst.row(y + dy)[x + dx] = kEdge;
                *pTop++ = {static_cast<Coordinate>(y + dy), static_cast<Coordinate>(x + dx)};
            }
        }
    }
}
constexpr auto& ownHysteresisThresholding_16u = hysteresisThresholding<Qel16u>;
constexpr auto& ownHysteresisThresholding_32s = hysteresisThresholding<Qel32s>;

// Finds the edges that stand on their own and the candidates, row after row. Returns the stack's top.
template <class T, class Coordinate>
EdgePixel<Coordinate>* suppressRows(const Images<T>& images, Magnitude<T> low, Magnitude<T> high,
                                    const CannyScratch<T>& scratch, CannyMagnitudeKernel<T>* magnitudes,
                                    CannySuppressKernel<T, Coordinate>* suppress) {
    const int width = images.roiSize.width;
    const int height = images.roiSize.height;
    auto* pTop = static_cast<EdgePixel<Coordinate>*>(scratch.stack);
    const auto take = [&](int y) { magnitudes(images.dx.row(y), images.dy.row(y), scratch.magnitudes(y), width, low); };
    take(0);
    for (int y = 0; y < height; ++y) {
        if (y + 1 < height) {
            take(y + 1);
        } else {
            zeroBytes(scratch.magnitudes(height), static_cast<size_t>(width) * sizeof(Magnitude<T>));
        }
        pTop = suppress({images.dx.row(y), images.dy.row(y), scratch.magnitudes(y - 1), scratch.magnitudes(y),
                         scratch.magnitudes(y + 1), scratch.mapRow(y), images.dst.row(y), y, width},
                        high, pTop);
    }
    return pTop;
}

template <class T>
void findEdges(const Images<T>& images, Magnitude<T> low, Magnitude<T> high, Qel8u* pBuffer,
               const Kernels<T>& kernels) {
    const CannyScratch<T> scratch(pBuffer, images.roiSize);
    zeroBytes(images.dst.p, static_cast<size_t>(images.dst.step) * static_cast<size_t>(images.roiSize.height));
    zeroBytes(scratch.map, scratch.mapBytes);
    zeroBytes(scratch.ring, kRingRows * static_cast<size_t>(scratch.pitch) * sizeof(Magnitude<T>));
    const auto run = [&](auto* suppress, auto& hysteresis) {
        auto* const pTop = suppressRows(images, low, high, scratch, kernels.magnitudes, suppress);
        hysteresis(scratch.mapRow(0), scratch.pitch, images.dst, static_cast<decltype(pTop + 0)>(scratch.stack), pTop);
    };
    if (isShort(images.roiSize)) {
        run(kernels.suppress_16u, ownHysteresisThresholding_16u);
    } else {
        run(kernels.suppress_32s, ownHysteresisThresholding_32s);
    }
}

Qel32f thresholdOf(Qel32f, Qel32f threshold) { return threshold; }
// Truncated. No magnitude reaches the largest int.
Qel32s thresholdOf(Qel32s, Qel32f threshold) {
    return threshold < static_cast<Qel32f>(INT_MAX) ? static_cast<Qel32s>(threshold) : INT_MAX;
}

template <class T>
qelStatus canny(const Images<T>& images, Qel32f lowThreshold, Qel32f highThreshold, Qel8u* pBuffer,
                const Kernels<T>& kernels) {
    const RowOf srcRow = rowOf<T>(images.roiSize.width);
    const qelStatus status = Check()
                                 .pointers(images.dx.p, images.dy.p, images.dst.p, pBuffer)
                                 .size(images.roiSize)
                                 .stepSizes(srcRow, images.dx.step, images.dy.step)
                                 .stepSizes(rowOf<Qel8u>(images.roiSize.width), images.dst.step)
                                 .stepAlignments(srcRow, images.dx.step, images.dy.step)
                                 .require(!(lowThreshold < 0) && !(lowThreshold > highThreshold), qelStatusBadArg)
                                 .status();
    if (status != qelStatusOk) return status;

    findEdges(images, thresholdOf(Magnitude<T>(), lowThreshold), thresholdOf(Magnitude<T>(), highThreshold), pBuffer,
              kernels);
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

#define CANNY(name, T, magnitudes, suppress_16u, suppress_32s)                                                   \
    qelStatus name(const T* pSrcDx, int srcDxStep, const T* pSrcDy, int srcDyStep, Qel8u* pDst, int dstStep,     \
                   QelSize roiSize, Qel32f lowThreshold, Qel32f highThreshold, Qel8u* pBuffer) {                 \
        return qel::canny<T>({{pSrcDx, srcDxStep}, {pSrcDy, srcDyStep}, {pDst, dstStep}, roiSize}, lowThreshold, \
                             highThreshold, pBuffer, {qel::magnitudes, qel::suppress_16u, qel::suppress_32s});   \
    }
CANNY(qeliCanny_16s8u_C1R, Qel16s, ownCanny_16s8u_C1R_Mag_W7, ownCanny_16s8u_C1R_16u_W7, ownCanny_16s8u_C1R_32s_W7)
CANNY(qeliCanny_32f8u_C1R, Qel32f, ownCanny_32f8u_C1R_Mag_W7, ownCanny_32f8u_C1R_16u_W7, ownCanny_32f8u_C1R_32s_W7)
#undef CANNY

qelStatus qeliCannyGetSize(QelSize roiSize, int* pBufferSize) {
    using namespace qel;
    const qelStatus status = Check().pointers(pBufferSize).size(roiSize).status();
    if (status != qelStatusOk) return status;
    const int64_t pixels = framed(roiSize.width) * framed(roiSize.height);
    if (pixels > INT_MAX) return qelStatusOverflow;
    const int bytesPerPixel = 1 + (isShort(roiSize) ? sizeof(EdgePixel<Qel16u>) : sizeof(EdgePixel<Qel32s>));
    return writeBufferSize(bytesPerPixel * pixels + int64_t{16} * roiSize.width + 160, pBufferSize);
}
