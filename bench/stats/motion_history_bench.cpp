#include "kit/bench.h"
#include "qelcv.h"

namespace {

template <class T>
void plainUpdate(const T* silhouette, Qel32f* history, int count, Qel32f timeStamp, Qel32f limit) {
    for (int x = 0; x < count; ++x) {
        if (silhouette[x] != 0) {
            history[x] = timeStamp;
        } else if (history[x] < limit) {
            history[x] = 0;
        }
    }
}

// Half of the silhouette moves, half of the rest is forgotten. The history settles after the first call.
template <class T, auto function>
void updateMotionHistory(bench::Case& c) {
    const auto silhouette = c.input<T>();
    const auto history = c.update<Qel32f>();
    const QelSize size = c.size();
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x)
            if (int(silhouette.row(y)[x]) & 1) silhouette.row(y)[x] = 0;
    c.ours([=] { return function(silhouette.data, silhouette.step, history.data, history.step, size, 228, 100); });
    c.plain([=] {
        for (int y = 0; y < size.height; ++y) plainUpdate(silhouette.row(y), history.row(y), size.width, 228, 128);
    });
}

}  // namespace

BENCH_ROWS({"qeliUpdateMotionHistory_8u32f_C1IR", updateMotionHistory<Qel8u, qeliUpdateMotionHistory_8u32f_C1IR>},
           {"qeliUpdateMotionHistory_16u32f_C1IR", updateMotionHistory<Qel16u, qeliUpdateMotionHistory_16u32f_C1IR>},
           {"qeliUpdateMotionHistory_32f_C1IR", updateMotionHistory<Qel32f, qeliUpdateMotionHistory_32f_C1IR>});
