#include "digests/digest.h"
#include "qelcv/feature.h"

namespace {

template <auto query>
struct Peaks {
    template <class T>
    qelStatus operator()(digest::Call& c, qelStatus (*function)(const T*, int, QelSize, T, QelPoint*, int, int*, int,
                                                                int, Qel8u*)) const {
        if (c.size().width < 3) return qelStatusOk;  // no room for the border
        constexpr int kMost = 5000;
        const auto src = c.input<T>();
        int bytes = 0;
        query(c.size().width, &bytes);
        QelPoint* const pPeak = reinterpret_cast<QelPoint*>(c.results<int>(2 * kMost));
        return function(src.data, src.step, c.size(), T(40), pPeak, kMost, c.results<int>(1), 1, 1, c.scratch(bytes));
    }
};

qelStatus query(digest::Call& c, qelStatus (*function)(int, int*)) {
    return function(c.size().width, c.results<int>(1));
}

}  // namespace

DIGESTS(Peaks<qeliFindPeaks3x3GetBufferSize_32s_C1R>(), qeliFindPeaks3x3_32s_C1R);
DIGESTS(Peaks<qeliFindPeaks3x3GetBufferSize_32f_C1R>(), qeliFindPeaks3x3_32f_C1R);
DIGESTS_UNDER(({.sizeQuery = true}), query, qeliFindPeaks3x3GetBufferSize_32s_C1R,
              qeliFindPeaks3x3GetBufferSize_32f_C1R);
