#include <algorithm>

#include "frame/check.h"
#include "qelcv/filter.h"

namespace qel {
namespace {

// Binomial smoothing by repeated sums, then `dx` differences. Integers wrap.
template <class T>
qelStatus genSobelKernel(T* pKernel, int kernelSize, int dx, int sign) {
    const qelStatus status = Check()
                                 .pointers(pKernel)
                                 .require(kernelSize >= 1 && kernelSize % 2 == 1, qelStatusBadSize)
                                 .require(dx >= 0 && dx < kernelSize, qelStatusBadSize)
                                 .status();
    if (status != qelStatusOk) return status;

    const int last = kernelSize - 1;
    std::fill_n(pKernel, last, T(0));
    pKernel[last] = 1;
    for (int i = 0; i < last - dx; ++i)
        for (int j = last - 1 - i; j < last; ++j) pKernel[j] = static_cast<T>(pKernel[j] + pKernel[j + 1]);
    for (int i = 0; i < dx; ++i)
        for (int j = dx - 1 - i; j < last; ++j) pKernel[j] = static_cast<T>(pKernel[j] - pKernel[j + 1]);
    if (sign < 0) std::transform(pKernel, pKernel + kernelSize, pKernel, [](T k) { return static_cast<T>(0 - k); });
    return qelStatusOk;
}

}  // namespace
}  // namespace qel

qelStatus qeliGenSobelKernel_16s(Qel16s* pKernel, int kernelSize, int dx, int sign) {
    return qel::genSobelKernel(pKernel, kernelSize, dx, sign);
}

qelStatus qeliGenSobelKernel_32f(Qel32f* pKernel, int kernelSize, int dx, int sign) {
    return qel::genSobelKernel(pKernel, kernelSize, dx, sign);
}
