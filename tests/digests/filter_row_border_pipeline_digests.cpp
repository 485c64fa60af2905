#include "digests/digest.h"
#include "qelcv/filter.h"

namespace {

// Kernels of 3, 5 and 4 taps, every border in turn.
template <auto query>
struct Rows {
    template <class S, class D, class K, class... Tail>
    qelStatus operator()(digest::Call& c, qelStatus (*function)(const S*, int, D* const*, QelSize, const K*, int, int,
                                                                int, Tail...)) const {
        const std::vector<std::vector<K>> kernels = {{1, 2, 1}, {-1, 3, 0, -3, 1}, {2, -5, 4, 1}};
        const auto src = c.input<S>();
        qelStatus status = qelStatusOk;
        int mode = qelBorderConst;
        for (const std::vector<K>& kernel : kernels) {
            const int taps = int(kernel.size());
            int bytes = 0;
            query(c.size(), taps, &bytes);
            D** const rows = c.rows(c.output<D>(), c.size().height);
            const S* const values = c.array<S>({11, 22, 33});
            if (status == qelStatusOk) {
                status = function(src.data, src.step, rows, c.size(), c.array(kernel), taps, taps / 2, mode++,
                                  tail<Tail>(values, c.scratch(bytes))...);
            }
        }
        return status;
    }

private:
    // The border's value or values, the divisor, the buffer.
    template <class T, class S>
    static T tail(const S* values, Qel8u* pBuffer) {
        if constexpr (std::is_same_v<T, Qel8u*>) {
            return pBuffer;
        } else if constexpr (std::is_pointer_v<T>) {
            return values;
        } else {
            return 3;
        }
    }
};

struct FiveTaps {
    qelStatus operator()(digest::Call& c, qelStatus (*function)(QelSize, int, int*)) const {
        return function(c.size(), 5, c.results<int>(1));
    }
};

}  // namespace

DIGESTS(Rows<qeliFilterRowBorderPipelineGetBufferSize_8u16s_C1R>(), qeliFilterRowBorderPipeline_8u16s_C1R);
DIGESTS(Rows<qeliFilterRowBorderPipelineGetBufferSize_8u16s_C3R>(), qeliFilterRowBorderPipeline_8u16s_C3R);
DIGESTS(Rows<qeliFilterRowBorderPipelineGetBufferSize_16s_C1R>(), qeliFilterRowBorderPipeline_16s_C1R);
DIGESTS(Rows<qeliFilterRowBorderPipelineGetBufferSize_16s_C3R>(), qeliFilterRowBorderPipeline_16s_C3R);
DIGESTS(Rows<qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C1R>(), qeliFilterRowBorderPipeline_Low_16s_C1R);
DIGESTS(Rows<qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C3R>(), qeliFilterRowBorderPipeline_Low_16s_C3R);
DIGESTS(Rows<qeliFilterRowBorderPipelineGetBufferSize_32f_C1R>(), qeliFilterRowBorderPipeline_32f_C1R);
DIGESTS(Rows<qeliFilterRowBorderPipelineGetBufferSize_32f_C3R>(), qeliFilterRowBorderPipeline_32f_C3R);

DIGESTS_UNDER(({.sizeQuery = true}), FiveTaps(), qeliFilterRowBorderPipelineGetBufferSize_8u16s_C1R,
              qeliFilterRowBorderPipelineGetBufferSize_8u16s_C3R, qeliFilterRowBorderPipelineGetBufferSize_16s_C1R,
              qeliFilterRowBorderPipelineGetBufferSize_16s_C3R, qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C1R,
              qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C3R, qeliFilterRowBorderPipelineGetBufferSize_32f_C1R,
              qeliFilterRowBorderPipelineGetBufferSize_32f_C3R);
