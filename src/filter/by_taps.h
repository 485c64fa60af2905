// Kernels that differ by the number of taps.
#ifndef QELCV_FILTER_BY_TAPS_H_
#define QELCV_FILTER_BY_TAPS_H_

#include "frame/kernel.h"

namespace qel {

// The kernels for 3 taps, 5 taps and any other number.
template <class Fn>
struct ByTaps {
    const Kernel<Fn>& three;
    const Kernel<Fn>& five;
    const Kernel<Fn>& any;

    const Kernel<Fn>& of(int kernelSize) const { return kernelSize == 3 ? three : kernelSize == 5 ? five : any; }

    // As a choice for a call that is described by a filter.
    template <class Filter>
    Fn* operator()(const Filter& filter, QelSize rows) const {
        return pick(of(filter.kernelSize), rows);
    }
};
template <class Fn>
ByTaps(const Kernel<Fn>&, const Kernel<Fn>&, const Kernel<Fn>&) -> ByTaps<Fn>;

}  // namespace qel

#endif
