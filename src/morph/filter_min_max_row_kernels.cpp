#include "frame/image.h"
#include "morph/filter_min_max_kernels.h"

#define HWY_TARGET_INCLUDE "morph/filter_min_max_row_kernels.cpp"
#include "morph/filter_min_max_slide-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

template <class T>
struct Line {
    const T* p;
    int width;  // pixels
    int channels;

    ptrdiff_t at(ptrdiff_t pixel) const { return pixel * channels; }
};

// `count` times the pixel at p. Doubles what is there.
template <class T>
void repeatPixel(const T* p, T* out, ptrdiff_t count, int channels) {
    if (count <= 0) return;
    const hn::CappedTag<T, 1> d1;
    const size_t samples = size_t(count) * size_t(channels);
    for (int c = 0; c < channels; ++c) hn::StoreU(hn::LoadU(d1, p + c), d1, out + c);
    for (size_t done = size_t(channels); done < samples; done *= 2) {
        forVectors(hn::ScalableTag<T>(), HWY_MIN(done, samples - done),
                   [=](auto d, size_t x) HWY_ATTR { hn::StoreU(hn::LoadU(d, out + x), d, out + done + x); });
    }
}

// The pixels from `begin` up to `end` of the line, whose end pixels stand for those beyond.
template <class T>
void copyExtended(const Line<T>& line, ptrdiff_t begin, ptrdiff_t end, T* out) {
    const auto within = [](ptrdiff_t x, ptrdiff_t low, ptrdiff_t high) { return x < low ? low : HWY_MIN(x, high); };
    const ptrdiff_t inside = within(0, begin, end);
    const ptrdiff_t outside = within(line.width, inside, end);
    const auto place = [=](ptrdiff_t pixel) { return out + line.at(pixel - begin); };
    repeatPixel(line.p, out, inside - begin, line.channels);
    forVectors(hn::ScalableTag<T>(), size_t(line.at(outside - inside)),
               [p = line.p + line.at(inside), to = place(inside)](auto d, size_t x)
                   HWY_ATTR { hn::StoreU(hn::LoadU(d, p + x), d, to + x); });
    repeatPixel(line.p + line.at(line.width - 1), place(outside), end - outside, line.channels);
}

// Wider windows are made of these, by passes over the result.
constexpr int kWidest = 31;

// Each sample becomes the extreme of itself and those `reach` and 2 * reach behind it. Whole vectors are read and
// written, beyond the count too.
template <class Choose, size_t kSamples, class T>
void combineInPlace(T* p, size_t count, ptrdiff_t reach) {
    const hn::ScalableTag<T> d;
    for (size_t x = 0; x < count; x += hn::Lanes(d)) {
        auto v = Choose()(hn::LoadU(d, p + x), hn::LoadU(d, p + x + reach));
        if constexpr (kSamples == 3) v = Choose()(v, hn::LoadU(d, p + x + 2 * reach));
        hn::StoreU(v, d, p + x);
    }
}

// The same as sliding, in the same order, through memory: for pixels too large or lines too short for the vectors.
template <class Choose, class T>
void windowsInMemory(const Line<T>& line, T* pDstLine, int w, int anchor) {
    constexpr int kTurn = 4096 / sizeof(T) / (4 * 3) * 3;  // pixels of four channels
    constexpr int kBeyond = 64 + 2 * 16;                   // what is read behind them
    T runs[(kTurn + kWidest) * 4 + kBeyond];
    const int turn = kTurn * 4 / line.channels;
    for (int x = 0; x < line.width; x += turn) {
        const int count = HWY_MIN(turn, line.width - x);
        const size_t all = size_t(line.at(count + w - 1));
        copyExtended(line, ptrdiff_t{x} - anchor, ptrdiff_t{x} - anchor + count + w - 1, runs);
        int k = 1;
        if (w == 3 || w == 5) {
            combineInPlace<Choose, 3>(runs, all, line.at(1));
            k = 3;
        }
        for (; 2 * k <= w; k *= 2) combineInPlace<Choose, 2>(runs, all, line.at(k));
        forCovering<T>(size_t(line.at(count)),
                       [=, to = pDstLine + line.at(x), reach = line.at(w - k)](auto d, size_t i) HWY_ATTR {
                           hn::StoreU(Choose()(hn::LoadU(d, runs + i), hn::LoadU(d, runs + i + reach)), d, to + i);
                       });
    }
}

template <class T>
using SlideAlong = void(const uint8_t* p, uint8_t* out, size_t bytes, size_t w, size_t behind);

// How windows of w pixels slide, if that can be in registers.
template <class Choose, class T, int kPixel>
SlideAlong<T>* slideOf(int w) {
    using V = hn::Vec<hn::ScalableTag<T>>;
    const auto fits = [w](int doublings) { return (w - (1 << doublings)) * kPixel < kVector; };
    if constexpr (2 * kPixel <= kVector) {
        if (w == 3) return slideAlong<Slide3<Choose, kPixel, V>, T, kPixel>;
        if (w == 5) return slideAlong<Slide5<Choose, kPixel, V>, T, kPixel>;
        if (w >= 4 && w < 8 && fits(2)) return slideAlong<SlideDoubled<Choose, kPixel, 2, V>, T, kPixel>;
    }
    if constexpr (4 * kPixel <= kVector) {
        if (w >= 8 && w < 16 && fits(3)) return slideAlong<SlideDoubled<Choose, kPixel, 3, V>, T, kPixel>;
    }
    if constexpr (8 * kPixel <= kVector) {
        if (w >= 16 && fits(4)) return slideAlong<SlideDoubled<Choose, kPixel, 4, V>, T, kPixel>;
    }
    return nullptr;
}

// Windows of at most kWidest pixels.
template <class Choose, class T, int kChannels>
void narrowWindows(const Line<T>& line, T* pDstLine, int w, int anchor) {
    constexpr int kPixel = kChannels * int(sizeof(T));
    const size_t bytes = size_t(line.width) * kPixel;
    const size_t behind = size_t(w - 1 - anchor) * kPixel;
    SlideAlong<T>* const slide = slideOf<Choose, T, kPixel>(w);
    if (slide == nullptr || bytes < kVector) return windowsInMemory<Choose>(line, pDstLine, w, anchor);
    slide(reinterpret_cast<const uint8_t*>(line.p), reinterpret_cast<uint8_t*>(pDstLine), bytes, size_t(w), behind);
}

// Each pixel becomes the extreme of itself and the pixel `reach` further on, the last one where that is none.
template <class Choose, class T>
void widenRight(T* p, const Line<T>& line, ptrdiff_t reach) {
    const size_t samples = size_t(line.at(line.width));
    const size_t inside = size_t(line.at(HWY_MAX(line.width - reach, ptrdiff_t{0})));
    const ptrdiff_t ahead = line.at(reach);
    forVectors(hn::ScalableTag<T>(), inside, [=](auto d, size_t x) HWY_ATTR {
        hn::StoreU(Choose()(hn::LoadU(d, p + x), hn::LoadU(d, p + x + ahead)), d, p + x);
    });
    T last[HWY_MAX_BYTES / sizeof(T) + 8];
    const size_t period = size_t(line.channels);
    repeatPixel(p + samples - period, last, ptrdiff_t(HWY_MAX_BYTES / sizeof(T) / period + 2), line.channels);
    forVectors(hn::ScalableTag<T>(), samples - inside, [&](auto d, size_t x) HWY_ATTR {
        T* const at = p + inside + x;
        hn::StoreU(Choose()(hn::LoadU(d, at), hn::LoadU(d, last + x % period)), d, at);
    });
}

// The same with the pixel `reach` before, from the end on.
template <class Choose, class T>
void widenLeft(T* p, const Line<T>& line, ptrdiff_t reach) {
    const hn::ScalableTag<T> d;
    const hn::CappedTag<T, 1> d1;
    const size_t n = hn::Lanes(d);
    const size_t outside = size_t(line.at(HWY_MIN(ptrdiff_t{line.width}, reach)));
    size_t end = size_t(line.at(line.width));
    for (; end - outside >= n; end -= n) {
        T* const at = p + end - n;
        hn::StoreU(Choose()(hn::LoadU(d, at), hn::LoadU(d, at - line.at(reach))), d, at);
    }
    for (; end > outside; --end) {
        T* const at = p + end - 1;
        hn::StoreU(Choose()(hn::LoadU(d1, at), hn::LoadU(d1, at - line.at(reach))), d1, at);
    }
    T first[HWY_MAX_BYTES / sizeof(T) + 8];
    const size_t period = size_t(line.channels);
    repeatPixel(p, first, ptrdiff_t(HWY_MAX_BYTES / sizeof(T) / period + 2), line.channels);
    forVectors(d, outside, [&](auto dx, size_t x) HWY_ATTR {
        hn::StoreU(Choose()(hn::LoadU(dx, p + x), hn::LoadU(dx, first + x % period)), dx, p + x);
    });
}

// Widens windows that reach from `left` before to `right` behind a pixel, each time by at most their width, so that
// what is added meets what there is.
template <class Choose, class T>
void widen(T* p, const Line<T>& line, ptrdiff_t left, ptrdiff_t right, ptrdiff_t wantedLeft, ptrdiff_t wantedRight) {
    while (right < wantedRight) {
        const ptrdiff_t more = HWY_MIN(left + right + 1, wantedRight - right);
        widenRight<Choose>(p, line, HWY_MIN(more, ptrdiff_t{line.width}));
        right += more;
    }
    while (left < wantedLeft) {
        const ptrdiff_t more = HWY_MIN(left + right + 1, wantedLeft - left);
        widenLeft<Choose>(p, line, HWY_MIN(more, ptrdiff_t{line.width}));
        left += more;
    }
}

template <class Choose, class T, int kChannels>
void filterRow(const T* pSrcLine, T* pDstLine, int width, int windowWidth, int anchor) {
    const Line<T> line = {pSrcLine, width, kChannels};
    if (windowWidth <= kWidest) return narrowWindows<Choose, T, kChannels>(line, pDstLine, windowWidth, anchor);
    // Where the window has less than that on one side, it has enough on the other.
    const int right = HWY_MIN(kWidest - 1 - HWY_MIN(anchor, kWidest - 1), windowWidth - 1 - anchor);
    const int left = kWidest - 1 - right;
    narrowWindows<Choose, T, kChannels>(line, pDstLine, kWidest, left);
    widen<Choose>(pDstLine, line, left, right, anchor, windowWidth - 1 - anchor);
}

}  // namespace

constexpr auto& ownFilterMaxRow_8u_C1R = filterRow<Larger, Qel8u, 1>;
constexpr auto& ownFilterMaxRow_8u_C3R = filterRow<Larger, Qel8u, 3>;
constexpr auto& ownFilterMaxRow_8u_C4R = filterRow<Larger, Qel8u, 4>;
constexpr auto& ownFilterMaxRow_32f_C1R = filterRow<Larger, Qel32f, 1>;
constexpr auto& ownFilterMaxRow_32f_C3R = filterRow<Larger, Qel32f, 3>;
constexpr auto& ownFilterMaxRow_32f_C4R = filterRow<Larger, Qel32f, 4>;
constexpr auto& ownFilterMinRow_8u_C1R = filterRow<Smaller, Qel8u, 1>;
constexpr auto& ownFilterMinRow_8u_C3R = filterRow<Smaller, Qel8u, 3>;
constexpr auto& ownFilterMinRow_8u_C4R = filterRow<Smaller, Qel8u, 4>;
constexpr auto& ownFilterMinRow_32f_C1R = filterRow<Smaller, Qel32f, 1>;
constexpr auto& ownFilterMinRow_32f_C3R = filterRow<Smaller, Qel32f, 3>;
constexpr auto& ownFilterMinRow_32f_C4R = filterRow<Smaller, Qel32f, 4>;

}  // namespace HWY_NAMESPACE
}  // namespace qel
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace qel {
QEL_KERNEL(ownFilterMaxRow_8u_C1R);
QEL_KERNEL(ownFilterMaxRow_8u_C3R);
QEL_KERNEL(ownFilterMaxRow_8u_C4R);
QEL_KERNEL(ownFilterMaxRow_32f_C1R);
QEL_KERNEL(ownFilterMaxRow_32f_C3R);
QEL_KERNEL(ownFilterMaxRow_32f_C4R);
QEL_KERNEL(ownFilterMinRow_8u_C1R);
QEL_KERNEL(ownFilterMinRow_8u_C3R);
QEL_KERNEL(ownFilterMinRow_8u_C4R);
QEL_KERNEL(ownFilterMinRow_32f_C1R);
QEL_KERNEL(ownFilterMinRow_32f_C3R);
QEL_KERNEL(ownFilterMinRow_32f_C4R);
}  // namespace qel
#endif
