#include "digests/digest.h"
#include "qelcv/filter.h"

namespace {

// Kernels of 3, 5 and 4 taps.
template <auto query>
struct Columns {
    template <class S, class D, class K, class... Tail>
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(const S* const*, D*, int, QelSize, const K*, int, Tail...)) const {
        const std::vector<std::vector<K>> kernels = {{1, 2, 1}, {-1, 3, 0, -3, 1}, {2, -5, 4, 1}};
        qelStatus status = qelStatusOk;
        for (const std::vector<K>& kernel : kernels) {
            const int taps = int(kernel.size());
            int bytes = 0;
            query(c.size(), taps, &bytes);
            const QelSize size = {c.size().width, c.size().height + taps - 1};
            const S** const rows = c.rows(c.input<S>(size, c.channels()), size.height);
            const auto dst = c.output<D>();
            if (status == qelStatusOk) {
                status = function(rows, dst.data, dst.step, c.size(), c.array(kernel), taps,
                                  tail<Tail>(c.scratch(bytes))...);
            }
        }
        return status;
    }

private:
    // The divisor, the buffer.
    template <class T>
    static T tail(Qel8u* pBuffer) {
        if constexpr (std::is_same_v<T, Qel8u*>) {
            return pBuffer;
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

DIGESTS(Columns<qeliFilterColumnPipelineGetBufferSize_16s_C1R>(), qeliFilterColumnPipeline_16s_C1R);
DIGESTS(Columns<qeliFilterColumnPipelineGetBufferSize_16s_C3R>(), qeliFilterColumnPipeline_16s_C3R);
DIGESTS(Columns<qeliFilterColumnPipelineGetBufferSize_16s8u_C1R>(), qeliFilterColumnPipeline_16s8u_C1R);
DIGESTS(Columns<qeliFilterColumnPipelineGetBufferSize_16s8u_C3R>(), qeliFilterColumnPipeline_16s8u_C3R);
DIGESTS(Columns<qeliFilterColumnPipelineGetBufferSize_16s8s_C1R>(), qeliFilterColumnPipeline_16s8s_C1R);
DIGESTS(Columns<qeliFilterColumnPipelineGetBufferSize_16s8s_C3R>(), qeliFilterColumnPipeline_16s8s_C3R);
DIGESTS(Columns<qeliFilterColumnPipelineGetBufferSize_Low_16s_C1R>(), qeliFilterColumnPipeline_Low_16s_C1R);
DIGESTS(Columns<qeliFilterColumnPipelineGetBufferSize_Low_16s_C3R>(), qeliFilterColumnPipeline_Low_16s_C3R);
DIGESTS(Columns<qeliFilterColumnPipelineGetBufferSize_32f_C1R>(), qeliFilterColumnPipeline_32f_C1R);
DIGESTS(Columns<qeliFilterColumnPipelineGetBufferSize_32f_C3R>(), qeliFilterColumnPipeline_32f_C3R);

DIGESTS_UNDER(({.sizeQuery = true}), FiveTaps(), qeliFilterColumnPipelineGetBufferSize_16s_C1R,
              qeliFilterColumnPipelineGetBufferSize_16s_C3R, qeliFilterColumnPipelineGetBufferSize_16s8u_C1R,
              qeliFilterColumnPipelineGetBufferSize_16s8u_C3R, qeliFilterColumnPipelineGetBufferSize_16s8s_C1R,
              qeliFilterColumnPipelineGetBufferSize_16s8s_C3R, qeliFilterColumnPipelineGetBufferSize_Low_16s_C1R,
              qeliFilterColumnPipelineGetBufferSize_Low_16s_C3R, qeliFilterColumnPipelineGetBufferSize_32f_C1R,
              qeliFilterColumnPipelineGetBufferSize_32f_C3R);
