#include "digests/digest.h"
#include "qelcv/filter.h"

namespace {

// Every mask and border on small regions, one of each on large ones, for the time it takes.
template <auto query>
struct Fixed {
    template <class S, class D>
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(const S*, int, D*, int, QelSize, int, int, S, Qel8u*)) const {
        return overMasks<S, D>(c, [=](auto src, auto dst, QelSize size, int mask, int mode, Qel8u* pBuffer) {
            return function(src.data, src.step, dst.data, dst.step, size, mask, mode, S(77), pBuffer);
        });
    }
    template <class S, class D>
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(const S*, int, D*, int, QelSize, int, int, S, int, Qel8u*)) const {
        return overMasks<S, D>(c, [=](auto src, auto dst, QelSize size, int mask, int mode, Qel8u* pBuffer) {
            return function(src.data, src.step, dst.data, dst.step, size, mask, mode, S(77), 3, pBuffer);
        });
    }
    template <class S, class D>
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(const S*, int, D*, int, QelSize, int, S, Qel8u*)) const {
        return overBorders<S, D>(c, 0, [=](auto src, auto dst, QelSize size, int, int mode, Qel8u* pBuffer) {
            return function(src.data, src.step, dst.data, dst.step, size, mode, S(77), pBuffer);
        });
    }
    template <class S, class D>
    qelStatus operator()(digest::Call& c,
                         qelStatus (*function)(const S*, int, D*, int, QelSize, int, S, int, Qel8u*)) const {
        return overBorders<S, D>(c, 0, [=](auto src, auto dst, QelSize size, int, int mode, Qel8u* pBuffer) {
            return function(src.data, src.step, dst.data, dst.step, size, mode, S(77), 3, pBuffer);
        });
    }

private:
    static bool isSmall(const digest::Call& c) { return c.size().width < 600; }

    static int bufferSize(QelSize size, int mask) {
        int bytes = 0;
        if constexpr (std::is_invocable_v<decltype(query), QelSize, int, int*>) {
            query(size, mask, &bytes);
        } else {
            query(size, &bytes);
        }
        return bytes;
    }

    template <class S, class D, class Run>
    static qelStatus overMasks(digest::Call& c, const Run& run) {
        const qelStatus status = overBorders<S, D>(c, 33, run);
        return status == qelStatusOk ? overBorders<S, D>(c, 55, run) : status;
    }
    template <class S, class D, class Run>
    static qelStatus overBorders(digest::Call& c, int mask, const Run& run) {
        const auto src = c.input<S>();
        Qel8u* const pBuffer = c.scratch(bufferSize(c.size(), mask));
        qelStatus status = qelStatusOk;
        for (int mode = isSmall(c) ? qelBorderConst : qelBorderMirrR; mode <= qelBorderMirrR; ++mode) {
            if (status == qelStatusOk) status = run(src, c.output<D>(), c.size(), mask, mode, pBuffer);
        }
        return status;
    }
};

// The size queries, for both masks.
struct BothMasks {
    qelStatus operator()(digest::Call& c, qelStatus (*function)(QelSize, int, int*)) const {
        function(c.size(), 33, c.results<int>(1));
        return function(c.size(), 55, c.results<int>(1));
    }
};

}  // namespace

DIGESTS(Fixed<qeliFilterSobelHorizGetBufferSize_32f_C1R>(), qeliFilterSobelHorizBorder_32f_C1R);
DIGESTS(Fixed<qeliFilterSobelHorizGetBufferSize_8u16s_C1R>(), qeliFilterSobelHorizBorder_8u16s_C1R);
DIGESTS(Fixed<qeliFilterSobelHorizGetBufferSize_8u8s_C1R>(), qeliFilterSobelHorizBorder_8u8s_C1R);
DIGESTS(Fixed<qeliFilterSobelVertGetBufferSize_32f_C1R>(), qeliFilterSobelVertBorder_32f_C1R);
DIGESTS(Fixed<qeliFilterSobelVertGetBufferSize_8u16s_C1R>(), qeliFilterSobelVertBorder_8u16s_C1R);
DIGESTS(Fixed<qeliFilterSobelVertGetBufferSize_8u8s_C1R>(), qeliFilterSobelVertBorder_8u8s_C1R);
DIGESTS(Fixed<qeliFilterSobelNegVertGetBufferSize_32f_C1R>(), qeliFilterSobelNegVertBorder_32f_C1R);
DIGESTS(Fixed<qeliFilterSobelNegVertGetBufferSize_8u16s_C1R>(), qeliFilterSobelNegVertBorder_8u16s_C1R);
DIGESTS(Fixed<qeliFilterSobelNegVertGetBufferSize_8u8s_C1R>(), qeliFilterSobelNegVertBorder_8u8s_C1R);
DIGESTS(Fixed<qeliFilterSobelHorizSecondGetBufferSize_32f_C1R>(), qeliFilterSobelHorizSecondBorder_32f_C1R);
DIGESTS(Fixed<qeliFilterSobelHorizSecondGetBufferSize_8u16s_C1R>(), qeliFilterSobelHorizSecondBorder_8u16s_C1R);
DIGESTS(Fixed<qeliFilterSobelHorizSecondGetBufferSize_8u8s_C1R>(), qeliFilterSobelHorizSecondBorder_8u8s_C1R);
DIGESTS(Fixed<qeliFilterSobelVertSecondGetBufferSize_32f_C1R>(), qeliFilterSobelVertSecondBorder_32f_C1R);
DIGESTS(Fixed<qeliFilterSobelVertSecondGetBufferSize_8u16s_C1R>(), qeliFilterSobelVertSecondBorder_8u16s_C1R);
DIGESTS(Fixed<qeliFilterSobelVertSecondGetBufferSize_8u8s_C1R>(), qeliFilterSobelVertSecondBorder_8u8s_C1R);
DIGESTS(Fixed<qeliFilterSobelCrossGetBufferSize_32f_C1R>(), qeliFilterSobelCrossBorder_32f_C1R);
DIGESTS(Fixed<qeliFilterSobelCrossGetBufferSize_8u16s_C1R>(), qeliFilterSobelCrossBorder_8u16s_C1R);
DIGESTS(Fixed<qeliFilterSobelCrossGetBufferSize_8u8s_C1R>(), qeliFilterSobelCrossBorder_8u8s_C1R);
DIGESTS(Fixed<qeliFilterScharrHorizGetBufferSize_32f_C1R>(), qeliFilterScharrHorizBorder_32f_C1R);
DIGESTS(Fixed<qeliFilterScharrHorizGetBufferSize_8u16s_C1R>(), qeliFilterScharrHorizBorder_8u16s_C1R);
DIGESTS(Fixed<qeliFilterScharrHorizGetBufferSize_8u8s_C1R>(), qeliFilterScharrHorizBorder_8u8s_C1R);
DIGESTS(Fixed<qeliFilterScharrVertGetBufferSize_32f_C1R>(), qeliFilterScharrVertBorder_32f_C1R);
DIGESTS(Fixed<qeliFilterScharrVertGetBufferSize_8u16s_C1R>(), qeliFilterScharrVertBorder_8u16s_C1R);
DIGESTS(Fixed<qeliFilterScharrVertGetBufferSize_8u8s_C1R>(), qeliFilterScharrVertBorder_8u8s_C1R);
DIGESTS(Fixed<qeliFilterLaplacianGetBufferSize_32f_C1R>(), qeliFilterLaplacianBorder_32f_C1R);
DIGESTS(Fixed<qeliFilterLaplacianGetBufferSize_8u16s_C1R>(), qeliFilterLaplacianBorder_8u16s_C1R);
DIGESTS(Fixed<qeliFilterLaplacianGetBufferSize_8u8s_C1R>(), qeliFilterLaplacianBorder_8u8s_C1R);
DIGESTS(Fixed<qeliFilterLowpassGetBufferSize_32f_C1R>(), qeliFilterLowpassBorder_32f_C1R);
DIGESTS(Fixed<qeliFilterLowpassGetBufferSize_8u_C1R>(), qeliFilterLowpassBorder_8u_C1R);

DIGESTS_UNDER(({.sizeQuery = true}), BothMasks(), qeliFilterSobelHorizGetBufferSize_32f_C1R,
              qeliFilterSobelHorizGetBufferSize_8u16s_C1R, qeliFilterSobelHorizGetBufferSize_8u8s_C1R,
              qeliFilterSobelVertGetBufferSize_32f_C1R, qeliFilterSobelVertGetBufferSize_8u16s_C1R,
              qeliFilterSobelVertGetBufferSize_8u8s_C1R, qeliFilterSobelNegVertGetBufferSize_32f_C1R,
              qeliFilterSobelNegVertGetBufferSize_8u16s_C1R, qeliFilterSobelNegVertGetBufferSize_8u8s_C1R,
              qeliFilterSobelHorizSecondGetBufferSize_32f_C1R, qeliFilterSobelHorizSecondGetBufferSize_8u16s_C1R,
              qeliFilterSobelHorizSecondGetBufferSize_8u8s_C1R, qeliFilterSobelVertSecondGetBufferSize_32f_C1R,
              qeliFilterSobelVertSecondGetBufferSize_8u16s_C1R, qeliFilterSobelVertSecondGetBufferSize_8u8s_C1R,
              qeliFilterSobelCrossGetBufferSize_32f_C1R, qeliFilterSobelCrossGetBufferSize_8u16s_C1R,
              qeliFilterSobelCrossGetBufferSize_8u8s_C1R, qeliFilterLaplacianGetBufferSize_32f_C1R,
              qeliFilterLaplacianGetBufferSize_8u16s_C1R, qeliFilterLaplacianGetBufferSize_8u8s_C1R,
              qeliFilterLowpassGetBufferSize_32f_C1R, qeliFilterLowpassGetBufferSize_8u_C1R);
DIGESTS_UNDER(({.sizeQuery = true}), digest::bySignature, qeliFilterScharrHorizGetBufferSize_32f_C1R,
              qeliFilterScharrHorizGetBufferSize_8u16s_C1R, qeliFilterScharrHorizGetBufferSize_8u8s_C1R,
              qeliFilterScharrVertGetBufferSize_32f_C1R, qeliFilterScharrVertGetBufferSize_8u16s_C1R,
              qeliFilterScharrVertGetBufferSize_8u8s_C1R);
