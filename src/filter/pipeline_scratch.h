// What row and column pipelines share: when they go to threads, and the caller's scratch.
#ifndef QELCV_FILTER_PIPELINE_SCRATCH_H_
#define QELCV_FILTER_PIPELINE_SCRATCH_H_

#include "frame/image.h"
#include "frame/rows.h"
#include "frame/scratch.h"
#include "frame/threads.h"

namespace qel {

constexpr ParallelFrom kSeparable = {.perThread = 1 << 15};

// For what goes to threads by the number of its taps, too.
inline bool separableInParallel(QelSize roiSize, int kernelSize) {
    return kSeparable.reachedBy(roiSize) && runsepomp(kernelSize) != 0;
}

// One equal part for each thread that may run. A part has room for a pointer to each row it may read or write, for
// `ownBytes` bytes of the pipeline's own, and for moving its start to a multiple of 32.
class PipelineScratch {
public:
    PipelineScratch(QelSize roiSize, int kernelSize, int64_t ownBytes)
        : usable_((int64_t{roiSize.height} + kernelSize) * int64_t{sizeof(void*)} + ownBytes) {}

    // What the size query reports.
    int64_t bytes() const { return (kAlignment + usable_) * owncvGetMaxNumThreads(); }

    // The aligned part of one thread, numbered from 0, and its bytes.
    char* part(void* pBuffer, int thread) const {
        return alignUp(static_cast<char*>(pBuffer) + (kAlignment + usable_) * thread, kAlignment);
    }
    int64_t partBytes() const { return usable_; }

private:
    static constexpr int kAlignment = 32;

    int64_t usable_;
};

}  // namespace qel

#endif
