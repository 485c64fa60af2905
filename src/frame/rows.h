// The two ways through a region: once on the caller's thread, or once per thread of a team. All OpenMP stands here.
#ifndef QELCV_FRAME_ROWS_H_
#define QELCV_FRAME_ROWS_H_

#include <array>

#include "frame/image.h"
#include "frame/scratch.h"
#include "frame/threads.h"

namespace qel {

// From how many pixels on the rows of a region go to threads: in all, for each thread of the limit, or for each of them
// where there are several cores to run them. One limit that is reached is enough.
struct ParallelFrom {
    static constexpr int64_t kNever = INT64_MAX;
    int64_t inAll = kNever;
    int64_t perThread = kNever;
    int64_t perThreadOnCores = kNever;

    bool reachedBy(QelSize roi) const {
        if (area(roi) >= inAll) return true;
        const auto reached = [pixels = area(roi)](int64_t limit) {
            return limit != kNever && pixels >= limit * owncvGetMaxNumThreads();
        };
        return reached(perThread) || (reached(perThreadOnCores) && runomp() != 0);
    }
};

// Functions that work element by element.
constexpr ParallelFrom kElementwise = {.inAll = 0x40000};

// Likewise for functions that go by the shape of a region: all limits must be reached, and several cores be there.
struct ParallelFromRows {
    int width;
    int height;
    int heightPerThread;

    bool reachedBy(QelSize roi) const {
        const int threads = owncvGetMaxNumThreads();
        return threads > 1 && roi.height >= int64_t{heightPerThread} * threads && roi.width >= width &&
               roi.height >= height && runomp() != 0;
    }
};

// The rows of one thread: `size.height` of them from row y of the region.
struct Share {
    int thread;
    int y;
    QelSize size;
};

// Rows are divided evenly; the last thread takes the remainder, so a region of fewer rows than threads is all its own.
inline Share shareOf(QelSize roi, int team, int thread) {
    const int rows = roi.height / team;
    const int y = rows * thread;
    return {thread, y, {roi.width, thread + 1 < team ? rows : roi.height - y}};
}

// Calls work(share) for the whole region or, in parallel, once on each thread that has rows. A team of one is not
// formed: to start and end it costs as much as the work on a small region, on 32-bit systems several microseconds.
template <class Work>
void forRows(QelSize roi, bool parallel, const Work& work) {
    const int threads = parallel ? ownGetNumThreads() : 1;
    if (threads <= 1) return work(Share{0, 0, roi});
#pragma omp parallel num_threads(threads)
    {
        const Share share = shareOf(roi, owncvGetNumThreads(), owncvGetIdThreads());
        if (share.size.height > 0) work(share);
    }
}

// Calls work(y) for each row, on the caller's thread or, in parallel, on a team that shares the rows out in even runs.
template <class Work>
void forEachRow(int height, bool parallel, const Work& work) {
    const int threads = parallel && height > 1 ? ownGetNumThreads() : 1;
    if (threads <= 1) {
        for (int y = 0; y < height; ++y) work(y);
        return;
    }
#pragma omp parallel for schedule(static) num_threads(threads)
    for (int y = 0; y < height; ++y) work(y);
}

// Calls work(thread, team) on each thread of a team of at most `threads`.
template <class Work>
void onThreads(int threads, const Work& work) {
    if (threads <= 1) return work(0, 1);
#pragma omp parallel num_threads(threads)
    work(owncvGetIdThreads(), owncvGetNumThreads());
}

// Waits until each thread of the team of onThreads has come here, and seen what the others have written. All threads of
// the team must come as often.
inline void barrier() {
#pragma omp barrier
}

// As forRows for work that returns a Partial. *pTotal becomes the result of the one run or, in parallel, that of thread
// 0 with those of the other threads merged into it in thread order by merge(total, partial). A thread without rows
// counts as Partial(), the neutral value.
//
// Returns qelStatusNoMemory where there are more threads than stack slots and no memory for a table.
template <class Partial, class Work, class Merge>
qelStatus reduceRows(QelSize roi, bool parallel, Partial* pTotal, const Work& work, const Merge& merge) {
    const int threads = parallel ? ownGetNumThreads() : 1;
    if (threads <= 1) {
        *pTotal = work(Share{0, 0, roi});
        return qelStatusOk;
    }
    constexpr int kStackSlots = 32;
    std::array<Partial, kStackSlots> stackSlots;
    const Scratch<Partial> allocatedSlots(threads > kStackSlots ? threads : 0);
    Partial* const slots = threads > kStackSlots ? allocatedSlots.get() : stackSlots.data();
    if (slots == nullptr) return qelStatusNoMemory;

    int team = 1;
#pragma omp parallel num_threads(threads)
    {
        const int thread = owncvGetIdThreads();
        if (thread == 0) team = owncvGetNumThreads();
        const Share share = shareOf(roi, owncvGetNumThreads(), thread);
        slots[thread] = share.size.height > 0 ? work(share) : Partial();
    }
    *pTotal = slots[0];
    for (int thread = 1; thread < team; ++thread) merge(*pTotal, slots[thread]);
    return qelStatusOk;
}

}  // namespace qel

#endif
