#include "pyramid/copy_subpix_intersect.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "frame/check.h"
#include "pyramid/copy_subpix_kernels.h"
#include "qelcv/pyramid.h"

namespace qel {
namespace {

// One axis of a window: the results from min to max lie between source samples, the first of them behind `first`. Those
// before min repeat the source's first sample, those behind max its last one.
struct Axis {
    int min, max, first;
    Qel32f fraction;

    int count() const { return max - min + 1; }
};

Axis axisOf(int srcSize, int dstSize, Qel32f centre) {
    constexpr Qel32f kFar = 1e12F;  // beyond every image
    const Qel32f start = centre - static_cast<Qel32f>(dstSize - 1) * 0.5F;
    // Adding the size first makes a floor of the truncation, as far as there is something to see.
    const Qel32f shifted = start + static_cast<Qel32f>(dstSize);
    const int64_t whole = static_cast<int64_t>(shifted < kFar ? std::max(shifted, -kFar) : kFar) - dstSize;
    const Qel32f fraction = start - static_cast<Qel32f>(whole);
    if (whole >= srcSize) return {0, -1, srcSize - 1, fraction};
    const int64_t min = std::clamp<int64_t>(-whole, 0, dstSize);
    const int64_t max = whole + dstSize - 1 > srcSize - 2 ? srcSize - whole - 2 : dstSize - 1;
    return {static_cast<int>(min), static_cast<int>(max), static_cast<int>(std::max<int64_t>(whole, 0)), fraction};
}

struct Window {
    Axis x, y;

    Window(QelSize srcRoiSize, QelSize dstRoiSize, Qel32f centreX, Qel32f centreY)
        : x(axisOf(srcRoiSize.width, dstRoiSize.width, centreX)),
          y(axisOf(srcRoiSize.height, dstRoiSize.height, centreY)) {}

    QelPoint min() const { return {x.min, y.min}; }
    QelPoint max() const { return {x.max, y.max}; }
    bool isEmpty() const { return x.count() < 1 || y.count() < 1; }
};

// How a form weighs samples: `inside` runs its kernel, `one` and `two` make a result of one sample or two.
template <class T, class R>
struct FloatForm {
    using In = T;
    using Out = R;

    const Kernel<SubpixKernel<T, R>>& kernel;

    static R one(T sample) { return sample; }
    static R two(T first, T second, Qel32f fraction) {
        const Qel32f sum = static_cast<Qel32f>(first) * (1 - fraction) + static_cast<Qel32f>(second) * fraction;
        if constexpr (std::is_same_v<R, Qel32f>) {
            return sum;
        } else {
            // A centre that is rounded up to a whole number leaves a fraction just below zero.
            return static_cast<R>(std::clamp<long>(std::lrintf(sum), 0, std::numeric_limits<R>::max()));
        }
    }
    void inside(Plane<const T> src, Plane<R> dst, QelSize size, Qel32f fx, Qel32f fy) const {
        kernel(src, dst, size, weightsFloat(fx, fy));
    }
};

template <class R>
struct FormQ14 {
    using In = Qel8u;
    using Out = R;

    ScaleQ14 scale;

    R one(Qel8u sample) const { return sampleQ14<R>(sample * kOneQ14, scale); }
    R two(Qel8u first, Qel8u second, Qel32f fraction) const {
        const int weight = toQ14(fraction);
        return sampleQ14<R>(first * (kOneQ14 - weight) + second * weight, scale);
    }
    void inside(Plane<const Qel8u> src, Plane<R> dst, QelSize size, Qel32f fx, Qel32f fy) const {
        if constexpr (std::is_same_v<R, Qel8u>) {
            ownCopySubpixIntersect_8u_C1R_W7(src, dst, size, weightsQ14(fx, fy));
        } else {
            ownCopySubpixIntersect_8u16u_C1R_Sfs_W7(src, dst, size, weightsQ14(fx, fy), scale);
        }
    }
};

template <class Form>
void copyInside(const Form& form, Plane<const typename Form::In> src, Plane<typename Form::Out> dst, const Window& w) {
    if (w.isEmpty()) return;
    const Plane<const typename Form::In> from = {src.row(w.y.first) + w.x.first, src.step};
    const Plane<typename Form::Out> to = {dst.row(w.y.min) + w.x.min, dst.step};
    form.inside(from, to, {w.x.count(), w.y.count()}, w.x.fraction, w.y.fraction);
}

// Rows `from` to `to` above or below the image, all equal: formed of one row of it.
template <class Form>
void fillRows(const Form& form, const typename Form::In* s, int srcWidth, Plane<typename Form::Out> dst, int dstWidth,
              const Axis& x, int from, int to) {
    if (from >= to) return;
    auto* const out = dst.row(from);
    std::fill_n(out, std::min(x.min, dstWidth), form.one(s[0]));
    const auto* const first = s + x.first;
    for (int i = 0; i < x.count(); ++i) out[x.min + i] = form.two(first[i], first[i + 1], x.fraction);
    if (x.max + 1 < dstWidth) std::fill_n(out + x.max + 1, dstWidth - x.max - 1, form.one(s[srcWidth - 1]));
    for (int y = from + 1; y < to; ++y) std::memcpy(dst.row(y), out, sizeof(*out) * size_t(dstWidth));
}

// The columns of the middle rows that lie beside the image.
template <class Form>
void fillColumns(const Form& form, Plane<const typename Form::In> src, int srcWidth, Plane<typename Form::Out> dst,
                 int dstWidth, const Window& w) {
    if (w.x.min == 0 && w.x.max == dstWidth - 1) return;
    for (int y = 0; y < w.y.count(); ++y) {
        const auto *s0 = src.row(w.y.first + y), *s1 = src.row(w.y.first + y + 1);
        auto* const out = dst.row(w.y.min + y);
        std::fill_n(out, w.x.min, form.two(s0[0], s1[0], w.y.fraction));
        std::fill_n(out + w.x.max + 1, dstWidth - w.x.max - 1,
                    form.two(s0[srcWidth - 1], s1[srcWidth - 1], w.y.fraction));
    }
}

template <class Form>
qelStatus copySubpixIntersect(Plane<const typename Form::In> src, QelSize srcRoiSize, Plane<typename Form::Out> dst,
                              QelSize dstRoiSize, Qel32f x, Qel32f y, QelPoint* pMin, QelPoint* pMax,
                              const Form& form) {
    const RowOf srcRow = rowOf<typename Form::In>(srcRoiSize.width);
    const RowOf dstRow = rowOf<typename Form::Out>(dstRoiSize.width);
    const qelStatus status = Check()
                                 .pointers(src.p, dst.p, pMin, pMax)
                                 .size(srcRoiSize)
                                 .size(dstRoiSize)
                                 .stepSizes(srcRow, src.step)
                                 .stepSizes(dstRow, dst.step)
                                 .stepAlignments(srcRow, src.step)
                                 .stepAlignments(dstRow, dst.step)
                                 .status();
    if (status != qelStatusOk) return status;

    const Window window(srcRoiSize, dstRoiSize, x, y);
    copyInside(form, src, dst, window);
    fillColumns(form, src, srcRoiSize.width, dst, dstRoiSize.width, window);
    fillRows(form, src.p, srcRoiSize.width, dst, dstRoiSize.width, window.x, 0, window.y.min);
    fillRows(form, src.row(srcRoiSize.height - 1), srcRoiSize.width, dst, dstRoiSize.width, window.x, window.y.max + 1,
             dstRoiSize.height);
    *pMin = window.min();
    *pMax = window.max();
    return qelStatusOk;
}

template <class Form>
void getRectSubpix(Plane<const typename Form::In> src, QelSize srcRoiSize, Plane<typename Form::Out> dst,
                   QelSize dstRoiSize, Qel32f x, Qel32f y, QelPoint* pMin, QelPoint* pMax, const Form& form) {
    const Window window(srcRoiSize, dstRoiSize, x, y);
    copyInside(form, src, dst, window);
    *pMin = window.min();
    *pMax = window.max();
}

constexpr FloatForm<Qel8u, Qel32f> kForm_8u32f = {ownCopySubpixIntersect_8u32f_C1R_W7};
constexpr FloatForm<Qel16u, Qel16u> kForm_16u = {ownCopySubpixIntersect_16u_C1R_W7};
constexpr FloatForm<Qel16u, Qel32f> kForm_16u32f = {ownCopySubpixIntersect_16u32f_C1R_W7};
constexpr FloatForm<Qel32f, Qel32f> kForm_32f = {ownCopySubpixIntersect_32f_C1R_W7};

}  // namespace

void ownGetRectSubpix_8u16u_C1R_Sfs(const Qel8u* pSrc, int srcStep, QelSize srcRoiSize, Qel16u* pDst, int dstStep,
                                    QelSize dstRoiSize, Qel32f x, Qel32f y, QelPoint* pMin, QelPoint* pMax,
                                    int scaleFactor) {
    getRectSubpix({pSrc, srcStep}, srcRoiSize, {pDst, dstStep}, dstRoiSize, x, y, pMin, pMax,
                  FormQ14<Qel16u>{scaleQ14(scaleFactor)});
}
void ownGetRectSubpix_16u32f_C1R(const Qel16u* pSrc, int srcStep, QelSize srcRoiSize, Qel32f* pDst, int dstStep,
                                 QelSize dstRoiSize, Qel32f x, Qel32f y, QelPoint* pMin, QelPoint* pMax) {
    getRectSubpix({pSrc, srcStep}, srcRoiSize, {pDst, dstStep}, dstRoiSize, x, y, pMin, pMax, kForm_16u32f);
}
void ownGetRectSubpix_32f_C1R(const Qel32f* pSrc, int srcStep, QelSize srcRoiSize, Qel32f* pDst, int dstStep,
                              QelSize dstRoiSize, Qel32f x, Qel32f y, QelPoint* pMin, QelPoint* pMax) {
    getRectSubpix({pSrc, srcStep}, srcRoiSize, {pDst, dstStep}, dstRoiSize, x, y, pMin, pMax, kForm_32f);
}

}  // namespace qel

#define COPY_SUBPIX_INTERSECT(name, T, R, ...)                                                                         \
    qelStatus name(const T* pSrc, int srcStep, QelSize srcRoiSize, R* pDst, int dstStep, QelSize dstRoiSize, Qel32f x, \
                   Qel32f y, QelPoint* pMin, QelPoint* pMax) {                                                         \
        return qel::copySubpixIntersect({pSrc, srcStep}, srcRoiSize, {pDst, dstStep}, dstRoiSize, x, y, pMin, pMax,    \
                                        __VA_ARGS__);                                                                  \
    }
COPY_SUBPIX_INTERSECT(qeliCopySubpixIntersect_8u_C1R, Qel8u, Qel8u, qel::FormQ14<Qel8u>{qel::scaleQ14(0)})
COPY_SUBPIX_INTERSECT(qeliCopySubpixIntersect_8u32f_C1R, Qel8u, Qel32f, qel::kForm_8u32f)
COPY_SUBPIX_INTERSECT(qeliCopySubpixIntersect_16u_C1R, Qel16u, Qel16u, qel::kForm_16u)
COPY_SUBPIX_INTERSECT(qeliCopySubpixIntersect_16u32f_C1R, Qel16u, Qel32f, qel::kForm_16u32f)
COPY_SUBPIX_INTERSECT(qeliCopySubpixIntersect_32f_C1R, Qel32f, Qel32f, qel::kForm_32f)
#undef COPY_SUBPIX_INTERSECT

qelStatus qeliCopySubpixIntersect_8u16u_C1R_Sfs(const Qel8u* pSrc, int srcStep, QelSize srcRoiSize, Qel16u* pDst,
                                                int dstStep, QelSize dstRoiSize, Qel32f x, Qel32f y, QelPoint* pMin,
                                                QelPoint* pMax, int scaleFactor) {
    return qel::copySubpixIntersect({pSrc, srcStep}, srcRoiSize, {pDst, dstStep}, dstRoiSize, x, y, pMin, pMax,
                                    qel::FormQ14<Qel16u>{qel::scaleQ14(scaleFactor)});
}
