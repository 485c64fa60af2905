#include "digests/digest.h"
#include "qelcv/pyramid.h"

namespace {

template <class T>
constexpr int kDataType = std::is_same_v<T, Qel8u>   ? 1
                          : std::is_same_v<T, Qel8s> ? 3
                                                     : 13;

template <bool up>
struct Step {
    template <class T>
    qelStatus operator()(digest::Call& c, qelStatus (*function)(const T*, int, T*, int, QelSize, Qel8u*)) const {
        const QelSize size = c.size();
        const auto src = c.input<T>();
        const QelSize half = {(size.width + 1) / 2, (size.height + 1) / 2};
        const auto dst = c.output<T>(up ? QelSize{2 * size.width, 2 * size.height} : half, c.channels());
        int bytes = 0;
        (up ? qeliPyrUpGetBufSize_Gauss5x5 : qeliPyrDownGetBufSize_Gauss5x5)(size.width, kDataType<T>, c.channels(),
                                                                             &bytes);
        return function(src.data, src.step, dst.data, dst.step, size, c.scratch(bytes));
    }
};

qelStatus query(digest::Call& c, qelStatus (*function)(int, int, int, int*)) {
    for (const int dataType : {1, 3}) function(c.size().width, dataType, 1, c.results<int>(1));
    return function(c.size().width, 13, 3, c.results<int>(1));
}

}  // namespace

DIGESTS(Step<false>(), qeliPyrDown_Gauss5x5_8u_C1R, qeliPyrDown_Gauss5x5_8u_C3R, qeliPyrDown_Gauss5x5_8s_C1R,
        qeliPyrDown_Gauss5x5_8s_C3R, qeliPyrDown_Gauss5x5_32f_C1R, qeliPyrDown_Gauss5x5_32f_C3R);
DIGESTS(Step<true>(), qeliPyrUp_Gauss5x5_8u_C1R, qeliPyrUp_Gauss5x5_8u_C3R, qeliPyrUp_Gauss5x5_8s_C1R,
        qeliPyrUp_Gauss5x5_8s_C3R, qeliPyrUp_Gauss5x5_32f_C1R, qeliPyrUp_Gauss5x5_32f_C3R);
DIGESTS_UNDER(({.sizeQuery = true}), query, qeliPyrDownGetBufSize_Gauss5x5, qeliPyrUpGetBufSize_Gauss5x5);
