#include "digests/digest.h"
#include "qelcv/feature.h"

namespace {

constexpr QelPointPolar kDelta = {2, 0.05F};
constexpr int kMost = 500;

QelPointPolar* polar(Qel32f* p) { return reinterpret_cast<QelPointPolar*>(p); }

Qel8u* scratch(digest::Call& c) {
    int bytes = 0;
    qeliHoughLineGetSize_8u_C1R(c.size(), kDelta, kMost, &bytes);
    return c.scratch(bytes);
}

qelStatus inRegion(digest::Call& c, decltype(&qeliHoughLine_Region_8u32f_C1R) function) {
    const auto src = c.input<Qel8u>();
    QelPointPolar region[2] = {{1, 0.5F}, {90, 2.5F}};
    return function(src.data, src.step, c.size(), polar(c.results<Qel32f>(2 * kMost)), region, kMost, c.results<int>(1),
                    kDelta, 9, scratch(c));
}

}  // namespace

DIGESTS(
    [](digest::Call& c, auto function) {
        const auto src = c.input<Qel8u>();
        return function(src.data, src.step, c.size(), kDelta, 9, polar(c.results<Qel32f>(2 * kMost)), kMost,
                        c.results<int>(1), scratch(c));
    },
    qeliHoughLine_8u32f_C1R);
DIGESTS(inRegion, qeliHoughLine_Region_8u32f_C1R);
DIGESTS_UNDER(({.sizeQuery = true}),
              [](digest::Call& c, auto function) { return function(c.size(), kDelta, kMost, c.results<int>(1)); },
              qeliHoughLineGetSize_8u_C1R);
