#include <cstring>

#include "frame/check.h"
#include "frame/rows.h"
#include "frame/scratch.h"
#include "frame/vector_primitives.h"
#include "morph/morph_reconstruct_kernels.h"
#include "qelcv/morph.h"

namespace qel {
namespace {

template <class T>
struct Images {
    Plane<const T> mask;
    Plane<T> marker;
    QelSize size;
    Qel8u* flags;  // one for each row: that it may change in the next pass
};

// The sweeps of a norm: within a row, and from a row nearby into it.
template <class T>
struct SweepKernels {
    using Sample = T;
    const Kernel<SweepKernel<T>>& forwardRev;
    const Kernel<SweepKernel<T>>& backwardRev;
    const Kernel<SweepKernel<T>>& forward;
    const Kernel<SweepKernel<T>>& forwardCheckRev;
    const Kernel<SweepKernel<T>>& backwardCheckRev;
    const Kernel<SweepKernel<T>>& forwardCheck;
    const Kernel<SweepKernel<T>>& backwardCheck;
};

constexpr SweepKernels<Qel8u> kDilate_8u_C1R = {.forwardRev = ownDilateForwardRev02_8u_C1R,
                                                .backwardRev = ownDilateBackwardRev02_8u_C1R,
                                                .forward = ownDilateForward02_8u_C1R,
                                                .forwardCheckRev = ownDilateForwardCheckRev02_8u_C1R,
                                                .backwardCheckRev = ownDilateBackwardCheckRev02_8u_C1R,
                                                .forwardCheck = ownDilateForwardCheck02_8u_C1R,
                                                .backwardCheck = ownDilateBackwardCheck02_8u_C1R};
constexpr SweepKernels<Qel8u> kDilate_8u_C1RInf = {.forwardRev = ownDilateForwardRev02_8u_C1R,
                                                   .backwardRev = ownDilateBackwardRev02_8u_C1R,
                                                   .forward = ownDilateForward02_8u_C1RInf,
                                                   .forwardCheckRev = ownDilateForwardCheckRev02_8u_C1R,
                                                   .backwardCheckRev = ownDilateBackwardCheckRev02_8u_C1R,
                                                   .forwardCheck = ownDilateForwardCheck02_8u_C1RInf,
                                                   .backwardCheck = ownDilateBackwardCheck02_8u_C1RInf};
constexpr SweepKernels<Qel32f> kDilate_32f_C1R = {.forwardRev = ownDilateForwardRev02_32f_C1R,
                                                  .backwardRev = ownDilateBackwardRev02_32f_C1R,
                                                  .forward = ownDilateForward02_32f_C1R,
                                                  .forwardCheckRev = ownDilateForwardCheckRev02_32f_C1R,
                                                  .backwardCheckRev = ownDilateBackwardCheckRev02_32f_C1R,
                                                  .forwardCheck = ownDilateForwardCheck02_32f_C1R,
                                                  .backwardCheck = ownDilateBackwardCheck02_32f_C1R};
constexpr SweepKernels<Qel32f> kDilate_32f_C1RInf = {.forwardRev = ownDilateForwardRev02_32f_C1R,
                                                     .backwardRev = ownDilateBackwardRev02_32f_C1R,
                                                     .forward = ownDilateForward02_32f_C1RInf,
                                                     .forwardCheckRev = ownDilateForwardCheckRev02_32f_C1R,
                                                     .backwardCheckRev = ownDilateBackwardCheckRev02_32f_C1R,
                                                     .forwardCheck = ownDilateForwardCheck02_32f_C1RInf,
                                                     .backwardCheck = ownDilateBackwardCheck02_32f_C1RInf};
constexpr SweepKernels<Qel8u> kErode_8u_C1R = {.forwardRev = ownErodeForwardRev02_8u_C1R,
                                               .backwardRev = ownErodeBackwardRev02_8u_C1R,
                                               .forward = ownErodeForward02_8u_C1R,
                                               .forwardCheckRev = ownErodeForwardCheckRev02_8u_C1R,
                                               .backwardCheckRev = ownErodeBackwardCheckRev02_8u_C1R,
                                               .forwardCheck = ownErodeForwardCheck02_8u_C1R,
                                               .backwardCheck = ownErodeBackwardCheck02_8u_C1R};
constexpr SweepKernels<Qel8u> kErode_8u_C1RInf = {.forwardRev = ownErodeForwardRev02_8u_C1R,
                                                  .backwardRev = ownErodeBackwardRev02_8u_C1R,
                                                  .forward = ownErodeForward02_8u_C1RInf,
                                                  .forwardCheckRev = ownErodeForwardCheckRev02_8u_C1R,
                                                  .backwardCheckRev = ownErodeBackwardCheckRev02_8u_C1R,
                                                  .forwardCheck = ownErodeForwardCheck02_8u_C1RInf,
                                                  .backwardCheck = ownErodeBackwardCheck02_8u_C1RInf};
constexpr SweepKernels<Qel32f> kErode_32f_C1R = {.forwardRev = ownErodeForwardRev02_32f_C1R,
                                                 .backwardRev = ownErodeBackwardRev02_32f_C1R,
                                                 .forward = ownErodeForward02_32f_C1R,
                                                 .forwardCheckRev = ownErodeForwardCheckRev02_32f_C1R,
                                                 .backwardCheckRev = ownErodeBackwardCheckRev02_32f_C1R,
                                                 .forwardCheck = ownErodeForwardCheck02_32f_C1R,
                                                 .backwardCheck = ownErodeBackwardCheck02_32f_C1R};
constexpr SweepKernels<Qel32f> kErode_32f_C1RInf = {.forwardRev = ownErodeForwardRev02_32f_C1R,
                                                    .backwardRev = ownErodeBackwardRev02_32f_C1R,
                                                    .forward = ownErodeForward02_32f_C1RInf,
                                                    .forwardCheckRev = ownErodeForwardCheckRev02_32f_C1R,
                                                    .backwardCheckRev = ownErodeBackwardCheckRev02_32f_C1R,
                                                    .forwardCheck = ownErodeForwardCheck02_32f_C1RInf,
                                                    .backwardCheck = ownErodeBackwardCheck02_32f_C1RInf};

template <class T>
bool along(SweepKernel<T>* sweep, const Images<T>& images, int y) {
    return sweep(nullptr, images.mask.row(y), images.marker.row(y), images.size.width);
}

template <class T>
bool fromRow(SweepKernel<T>* sweep, const Images<T>& images, int near, int y) {
    return sweep(images.marker.row(near), images.mask.row(y), images.marker.row(y), images.size.width);
}

// Rows from `start` to `end`, which is excluded, each with both sweeps. The first row takes the row before it into
// account, too, unless `first` says that there is none.
template <class T>
using PlainPass = void(const Images<T>& images, int start, int end, bool first);

template <const auto& kernels, int step, class T = typename std::remove_cvref_t<decltype(kernels)>::Sample>
void plainPass(const Images<T>& images, int start, int end, bool first) {
    for (int y = start; y != end; y += step) {
        if (y == start && first) {
            along<T>(kernels.forwardRev, images, y);
        } else {
            fromRow<T>(kernels.forward, images, y - step, y);
        }
        along<T>(kernels.backwardRev, images, y);
    }
}

// As a plain pass, but only for rows with a flag, and those after a row that has changed. Returns how many rows have
// changed; those, and the rows before them, have their flags set for the next pass, which comes the other way.
//
// A mode above 0 stands for one sweep per row: forward in passes downward, backward in passes upward. With other modes
// both are done. Even modes: there is no row before the first one, which is left out where the mode is below 0, since
// the pass before has done with it. Odd modes: there is one, whose flag is not this pass's to set.
template <class T>
using CheckPass = int(const Images<T>& images, int start, int end, int mode);

template <const auto& kernels, int step, class T = typename std::remove_cvref_t<decltype(kernels)>::Sample>
int checkPass(const Images<T>& images, int start, int end, int mode) {
    constexpr bool kDown = step > 0;
    SweepKernel<T>* const across = kDown ? kernels.forwardCheck : kernels.backwardCheck;
    SweepKernel<T>* const back = kDown ? kernels.backwardCheckRev : kernels.forwardCheckRev;
    Qel8u* const flags = images.flags;
    const bool continues = mode % 2 != 0;
    bool changed = false;
    int count = 0;
    int y = start;
    if (!continues) {
        if (mode >= 0 && flags[y] != 0) {
            changed = along<T>(kDown ? kernels.forwardCheckRev : kernels.backwardCheckRev, images, y);
            flags[y] = changed;
            count += changed;
        }
        y += step;
    }
    for (; y != end; y += step) {
        if (flags[y] == 0 && !changed) continue;
        changed = fromRow<T>(across, images, y - step, y);
        if (mode <= 0) changed |= along<T>(back, images, y);
        flags[y] = changed;
        if (y != start) flags[y - step] |= changed;
        count += changed;
    }
    return count;
}

constexpr auto& ownDilateDown_8u_C1R = plainPass<kDilate_8u_C1R, 1>;
constexpr auto& ownDilateUp_8u_C1R = plainPass<kDilate_8u_C1R, -1>;
constexpr auto& ownDilateDownCheck_8u_C1R = checkPass<kDilate_8u_C1R, 1>;
constexpr auto& ownDilateUpCheck_8u_C1R = checkPass<kDilate_8u_C1R, -1>;
constexpr auto& ownDilateDown_8u_C1RInf = plainPass<kDilate_8u_C1RInf, 1>;
constexpr auto& ownDilateUp_8u_C1RInf = plainPass<kDilate_8u_C1RInf, -1>;
constexpr auto& ownDilateDownCheck_8u_C1RInf = checkPass<kDilate_8u_C1RInf, 1>;
constexpr auto& ownDilateUpCheck_8u_C1RInf = checkPass<kDilate_8u_C1RInf, -1>;
constexpr auto& ownDilateDown_32f_C1R = plainPass<kDilate_32f_C1R, 1>;
constexpr auto& ownDilateUp_32f_C1R = plainPass<kDilate_32f_C1R, -1>;
constexpr auto& ownDilateDownCheck_32f_C1R = checkPass<kDilate_32f_C1R, 1>;
constexpr auto& ownDilateUpCheck_32f_C1R = checkPass<kDilate_32f_C1R, -1>;
constexpr auto& ownDilateDown_32f_C1RInf = plainPass<kDilate_32f_C1RInf, 1>;
constexpr auto& ownDilateUp_32f_C1RInf = plainPass<kDilate_32f_C1RInf, -1>;
constexpr auto& ownDilateDownCheck_32f_C1RInf = checkPass<kDilate_32f_C1RInf, 1>;
constexpr auto& ownDilateUpCheck_32f_C1RInf = checkPass<kDilate_32f_C1RInf, -1>;
constexpr auto& ownErodeDown_8u_C1R = plainPass<kErode_8u_C1R, 1>;
constexpr auto& ownErodeUp_8u_C1R = plainPass<kErode_8u_C1R, -1>;
constexpr auto& ownErodeDownCheck_8u_C1R = checkPass<kErode_8u_C1R, 1>;
constexpr auto& ownErodeUpCheck_8u_C1R = checkPass<kErode_8u_C1R, -1>;
constexpr auto& ownErodeDown_8u_C1RInf = plainPass<kErode_8u_C1RInf, 1>;
constexpr auto& ownErodeUp_8u_C1RInf = plainPass<kErode_8u_C1RInf, -1>;
constexpr auto& ownErodeDownCheck_8u_C1RInf = checkPass<kErode_8u_C1RInf, 1>;
constexpr auto& ownErodeUpCheck_8u_C1RInf = checkPass<kErode_8u_C1RInf, -1>;
constexpr auto& ownErodeDown_32f_C1R = plainPass<kErode_32f_C1R, 1>;
constexpr auto& ownErodeUp_32f_C1R = plainPass<kErode_32f_C1R, -1>;
constexpr auto& ownErodeDownCheck_32f_C1R = checkPass<kErode_32f_C1R, 1>;
constexpr auto& ownErodeUpCheck_32f_C1R = checkPass<kErode_32f_C1R, -1>;
constexpr auto& ownErodeDown_32f_C1RInf = plainPass<kErode_32f_C1RInf, 1>;
constexpr auto& ownErodeUp_32f_C1RInf = plainPass<kErode_32f_C1RInf, -1>;
constexpr auto& ownErodeDownCheck_32f_C1RInf = checkPass<kErode_32f_C1RInf, 1>;
constexpr auto& ownErodeUpCheck_32f_C1RInf = checkPass<kErode_32f_C1RInf, -1>;

constexpr PlainPass<Qel8u>* tabDilateDown_8u_C1R[] = {ownDilateDown_8u_C1R, ownDilateDown_8u_C1RInf};
constexpr PlainPass<Qel8u>* tabDilateUp_8u_C1R[] = {ownDilateUp_8u_C1R, ownDilateUp_8u_C1RInf};
constexpr CheckPass<Qel8u>* tabDilateDownCheck_8u_C1R[] = {ownDilateDownCheck_8u_C1R, ownDilateDownCheck_8u_C1RInf};
constexpr CheckPass<Qel8u>* tabDilateUpCheck_8u_C1R[] = {ownDilateUpCheck_8u_C1R, ownDilateUpCheck_8u_C1RInf};
constexpr PlainPass<Qel32f>* tabDilateDown_32f_C1R[] = {ownDilateDown_32f_C1R, ownDilateDown_32f_C1RInf};
constexpr PlainPass<Qel32f>* tabDilateUp_32f_C1R[] = {ownDilateUp_32f_C1R, ownDilateUp_32f_C1RInf};
constexpr CheckPass<Qel32f>* tabDilateDownCheck_32f_C1R[] = {ownDilateDownCheck_32f_C1R, ownDilateDownCheck_32f_C1RInf};
constexpr CheckPass<Qel32f>* tabDilateUpCheck_32f_C1R[] = {ownDilateUpCheck_32f_C1R, ownDilateUpCheck_32f_C1RInf};
constexpr PlainPass<Qel8u>* tabErodeDown_8u_C1R[] = {ownErodeDown_8u_C1R, ownErodeDown_8u_C1RInf};
constexpr PlainPass<Qel8u>* tabErodeUp_8u_C1R[] = {ownErodeUp_8u_C1R, ownErodeUp_8u_C1RInf};
constexpr CheckPass<Qel8u>* tabErodeDownCheck_8u_C1R[] = {ownErodeDownCheck_8u_C1R, ownErodeDownCheck_8u_C1RInf};
constexpr CheckPass<Qel8u>* tabErodeUpCheck_8u_C1R[] = {ownErodeUpCheck_8u_C1R, ownErodeUpCheck_8u_C1RInf};
constexpr PlainPass<Qel32f>* tabErodeDown_32f_C1R[] = {ownErodeDown_32f_C1R, ownErodeDown_32f_C1RInf};
constexpr PlainPass<Qel32f>* tabErodeUp_32f_C1R[] = {ownErodeUp_32f_C1R, ownErodeUp_32f_C1RInf};
constexpr CheckPass<Qel32f>* tabErodeDownCheck_32f_C1R[] = {ownErodeDownCheck_32f_C1R, ownErodeDownCheck_32f_C1RInf};
constexpr CheckPass<Qel32f>* tabErodeUpCheck_32f_C1R[] = {ownErodeUpCheck_32f_C1R, ownErodeUpCheck_32f_C1RInf};

template <class T>
struct Routines {
    PlainPass<T>* down;
    PlainPass<T>* up;
    CheckPass<T>* downCheck;
    CheckPass<T>* upCheck;
    const SweepKernels<T>& sweeps;
};

// Below 0 all modes of a parity are the same.
int nextMode(int mode) { return mode > -2 ? mode - 2 : mode; }

template <class T>
void reconstructOnOneThread(const Images<T>& images, const Routines<T>& r) {
    const int height = images.size.height;
    std::memset(images.flags, 1, static_cast<size_t>(height));
    r.down(images, 0, height, true);
    r.up(images, height - 2, -1, false);
    for (int mode = 2;;) {
        const int changedDown = r.downCheck(images, 0, height, mode);
        if (changedDown == 0) return;
        const int changedUp = r.upCheck(images, height - 1, -1, mode);
        if (changedUp == 0) return;
        if (changedDown * 0.9 < changedUp) mode = nextMode(mode);
    }
}

// The upper half, without row `middle`, is thread 0's, the lower thread 1's. Passes go from the outside to the middle,
// then thread 0 joins the halves there, then they go back. Between two barriers a thread writes only what the other
// does not look at, so both come to the same decisions.
template <class T>
class Halves {
public:
    Halves(const Images<T>& images, const Routines<T>& r) : images_(images), r_(r), middle_(images.size.height / 2) {}

    void reconstruct(int thread) {
        std::memset(images_.flags + (thread == 0 ? 0 : middle_), 1,
                    static_cast<size_t>(thread == 0 ? middle_ : images_.size.height - middle_));
        plainPasses(thread);
        for (int mode = 2;;) {
            barrier();
            changedInward_[thread] = thread == 0 ? r_.downCheck(images_, 0, middle_, mode)
                                                 : r_.upCheck(images_, images_.size.height - 1, middle_, mode);
            barrier();
            if (thread == 0) joinAtMiddle();
            barrier();
            const int total = changedInward_[0] + changedInward_[1] + (images_.flags[middle_] != 0);
            if (total == 0) return;
            changedOutward_[thread] = thread == 0 ? r_.upCheck(images_, middle_ - 1, -1, mode - 1)
                                                  : r_.downCheck(images_, middle_ + 1, images_.size.height, mode - 1);
            barrier();
            const int outward = changedOutward_[0] + changedOutward_[1];
            if (outward == 0) return;
            if (outward > total * 0.9 || mode == 0) mode = nextMode(mode);
        }
    }

private:
    void plainPasses(int thread) {
        const int height = images_.size.height;
        thread == 0 ? r_.down(images_, 0, middle_, true) : r_.up(images_, height - 1, middle_, true);
        barrier();
        if (thread == 0) joinAtMiddle();
        barrier();
        thread == 0 ? r_.up(images_, middle_ - 1, -1, false) : r_.down(images_, middle_ + 1, height, false);
    }

    // The middle row takes in both rows beside it.
    void joinAtMiddle() {
        bool changed = fromRow<T>(r_.sweeps.forwardCheck, images_, middle_ - 1, middle_);
        changed |= fromRow<T>(r_.sweeps.forwardCheck, images_, middle_ + 1, middle_);
        changed |= along<T>(r_.sweeps.backwardCheckRev, images_, middle_);
        images_.flags[middle_] = changed;
        images_.flags[middle_ - 1] |= changed;
        images_.flags[middle_ + 1] |= changed;
    }

    const Images<T>& images_;
    const Routines<T>& r_;
    const int middle_;
    int changedInward_[2] = {};
    int changedOutward_[2] = {};
};

// False where there is no team of two.
template <class T>
bool reconstructOnTwoThreads(const Images<T>& images, const Routines<T>& r) {
    bool ran = false;
    Halves<T> halves(images, r);
    onThreads(2, [&](int thread, int team) {
        if (team != 2) return;
        halves.reconstruct(thread);
        if (thread == 0) ran = true;
    });
    return ran;
}

// Sweeps take a marker of floats reordered.
template <class T>
void reorder(const Images<T>& images) {
    if constexpr (std::is_same_v<T, Qel32f>) {
        for (int y = 0; y < images.size.height; ++y) ownReorder_32f_C1R(images.marker.row(y), images.size.width);
    }
}

template <class T>
qelStatus morphReconstruct(const T* pSrc, int srcStep, T* pSrcDst, int srcDstStep, QelSize roiSize, Qel8u* pBuffer,
                           int norm, const Routines<T>& l1, const Routines<T>& inf) {
    const qelStatus status = Check()
                                 .pointers(pSrc, pSrcDst, pBuffer)
                                 .size(roiSize)
                                 .steps(rowOf<T>(roiSize.width), srcStep, srcDstStep)
                                 .require(norm == qelMorphNormInf || norm == qelMorphNormL1, qelStatusBadArg)
                                 .status();
    if (status != qelStatusOk) return status;

    const Images<T> images = {{pSrc, srcStep}, {pSrcDst, srcDstStep}, roiSize, pBuffer};
    const Routines<T>& r = norm == qelMorphNormL1 ? l1 : inf;
    const bool forTwo = roiSize.height > 10 && roiSize.width > 10 && owncvGetMaxNumThreads() > 1;
    reorder(images);
    if (!forTwo || !reconstructOnTwoThreads(images, r)) reconstructOnOneThread(images, r);
    reorder(images);
    return qelStatusOk;
}

// The contract counts four lines of a row each, which the sweeps do without, and the flags.
qelStatus writeReconstructBufferSize(QelSize roiSize, int lineBytesPerPixel, int more, int* pBufferSize) {
    const qelStatus status = Check().pointers(pBufferSize).size(roiSize).status();
    if (status != qelStatusOk) return status;

    return writeBufferSize(int64_t{4} * lineBytesPerPixel * roiSize.width + roiSize.height + more, pBufferSize);
}

}  // namespace
}  // namespace qel

#define MORPH_RECONSTRUCT(name, T, ...)                                                                           \
    qelStatus name(const T* pSrc, int srcStep, T* pSrcDst, int srcDstStep, QelSize roiSize, Qel8u* pBuffer,       \
                   int norm) {                                                                                    \
        return qel::morphReconstruct<T>(pSrc, srcStep, pSrcDst, srcDstStep, roiSize, pBuffer, norm, __VA_ARGS__); \
    }
MORPH_RECONSTRUCT(qeliMorphReconstructDilate_8u_C1IR, Qel8u,
                  {qel::tabDilateDown_8u_C1R[0], qel::tabDilateUp_8u_C1R[0], qel::tabDilateDownCheck_8u_C1R[0],
                   qel::tabDilateUpCheck_8u_C1R[0], qel::kDilate_8u_C1R},
                  {qel::tabDilateDown_8u_C1R[1], qel::tabDilateUp_8u_C1R[1], qel::tabDilateDownCheck_8u_C1R[1],
                   qel::tabDilateUpCheck_8u_C1R[1], qel::kDilate_8u_C1RInf})
MORPH_RECONSTRUCT(qeliMorphReconstructDilate_32f_C1IR, Qel32f,
                  {qel::tabDilateDown_32f_C1R[0], qel::tabDilateUp_32f_C1R[0], qel::tabDilateDownCheck_32f_C1R[0],
                   qel::tabDilateUpCheck_32f_C1R[0], qel::kDilate_32f_C1R},
                  {qel::tabDilateDown_32f_C1R[1], qel::tabDilateUp_32f_C1R[1], qel::tabDilateDownCheck_32f_C1R[1],
                   qel::tabDilateUpCheck_32f_C1R[1], qel::kDilate_32f_C1RInf})
MORPH_RECONSTRUCT(qeliMorphReconstructErode_8u_C1IR, Qel8u,
                  {qel::tabErodeDown_8u_C1R[0], qel::tabErodeUp_8u_C1R[0], qel::tabErodeDownCheck_8u_C1R[0],
                   qel::tabErodeUpCheck_8u_C1R[0], qel::kErode_8u_C1R},
                  {qel::tabErodeDown_8u_C1R[1], qel::tabErodeUp_8u_C1R[1], qel::tabErodeDownCheck_8u_C1R[1],
                   qel::tabErodeUpCheck_8u_C1R[1], qel::kErode_8u_C1RInf})
MORPH_RECONSTRUCT(qeliMorphReconstructErode_32f_C1IR, Qel32f,
                  {qel::tabErodeDown_32f_C1R[0], qel::tabErodeUp_32f_C1R[0], qel::tabErodeDownCheck_32f_C1R[0],
                   qel::tabErodeUpCheck_32f_C1R[0], qel::kErode_32f_C1R},
                  {qel::tabErodeDown_32f_C1R[1], qel::tabErodeUp_32f_C1R[1], qel::tabErodeDownCheck_32f_C1R[1],
                   qel::tabErodeUpCheck_32f_C1R[1], qel::kErode_32f_C1RInf})
#undef MORPH_RECONSTRUCT

qelStatus qeliMorphReconstructGetBufferSize_8u_C1(QelSize roiSize, int* pBufferSize) {
    return qel::writeReconstructBufferSize(roiSize, 1, 161, pBufferSize);
}
qelStatus qeliMorphReconstructGetBufferSize_32f_C1(QelSize roiSize, int* pBufferSize) {
    return qel::writeReconstructBufferSize(roiSize, 4, 164, pBufferSize);
}
