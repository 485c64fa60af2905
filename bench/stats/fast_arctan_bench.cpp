#include <cmath>

#include "kit/bench.h"
#include "peers/opencv.h"
#include "qelcv.h"

namespace {

void plainArctan(const Qel32f* y, const Qel32f* x, Qel32f* out, int count) {
    for (int i = 0; i < count; ++i) {
        const Qel32f angle = std::atan2(y[i], x[i]) * 57.2957795F;
        out[i] = angle < 0 ? angle + 360 : angle;
    }
}

// Against the exact angle, from which the parabola is up to 0.15 degrees away. Coordinates are moved to lie around zero
// and kept off the axes, where a small difference is a large part of the angle.
void arctan(bench::Case& c) {
    const int len = c.size().width * c.size().height;
    const auto y = c.input<Qel32f>({.size = {len, 1}});
    const auto x = c.input<Qel32f>({.size = {len, 1}});
    const auto out = c.output<Qel32f>({.size = {len, 1}});
    for (int i = 0; i < len; ++i) {
        y.data[i] = std::copysign(40 + std::fabs(y.data[i] - 128), y.data[i] - 128);
        x.data[i] = std::copysign(40 + std::fabs(x.data[i] - 128), x.data[i] - 128);
    }
    c.tolerance(0.02);
    c.ours([=] { return qelibFastArctan_32f(y.data, x.data, out.data, len); });
    c.plain([=] { plainArctan(y.data, x.data, out.data, len); });
    OPENCV(c.peer([y = mat(y), x = mat(x), out = mat(out)]() mutable { cv::phase(x, y, out, true); });)
}

}  // namespace

BENCH_ROWS({"qelibFastArctan_32f", arctan});
