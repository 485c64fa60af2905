#include "frame/image.h"
#include "morph/filter_min_max_kernels.h"

#define HWY_TARGET_INCLUDE "morph/filter_min_max_row_kernels.cpp"
#include "morph/filter_min_max-inl.h"

HWY_BEFORE_NAMESPACE();
namespace qel {
namespace HWY_NAMESPACE {
namespace {

// A run of k pixels has the extremes of k pixels in a row. It starts at `pixel`, which may lie outside of the line: the
// line's end pixels stand for those beyond. Runs of few pixels are made of the line, wider ones of two to four narrower
// runs that overlap or meet.

template <class T>
struct Line {
    const T* p;
    int width;  // pixels
    int channels;

    ptrdiff_t at(ptrdiff_t pixel) const { return pixel * channels; }
};

// Where the samples stand that are combined into one.
struct Offsets {
    ptrdiff_t at[6];
};

template <class Choose, size_t N, class D, class T = hn::TFromD<D>>
HWY_INLINE hn::Vec<D> extremeOf(D d, const T* p, const Offsets& o) {
    const Choose choose;
    const auto first = hn::LoadU(d, p);
    if constexpr (N == 1) return first;
    if constexpr (N == 2) return choose(first, hn::LoadU(d, p + o.at[0]));
    if constexpr (N >= 3) {
        auto v = choose(choose(first, hn::LoadU(d, p + o.at[0])), hn::LoadU(d, p + o.at[1]));
        if constexpr (N == 4) v = choose(v, hn::LoadU(d, p + o.at[2]));
        if constexpr (N >= 5) v = choose(v, choose(hn::LoadU(d, p + o.at[2]), hn::LoadU(d, p + o.at[3])));
        if constexpr (N == 6) v = choose(v, hn::LoadU(d, p + o.at[4]));
        if constexpr (N == 7) v = choose(v, choose(hn::LoadU(d, p + o.at[4]), hn::LoadU(d, p + o.at[5])));
        return v;
    }
}

template <class Choose, size_t N, class T>
void combineN(const T* p, T* out, size_t count, const Offsets& offsets) {
    const Offsets o = offsets;
    forCovering<T>(count,
                   [=](auto d, size_t x) HWY_ATTR { hn::StoreU(extremeOf<Choose, N>(d, p + x, o), d, out + x); });
}

// out[x] is the extreme of p[x] and n - 1 samples beside it.
template <class Choose, class T>
void combine(int n, const T* p, T* out, size_t count, const Offsets& offsets) {
    using Combine = void(const T*, T*, size_t, const Offsets&);
    constexpr Combine* kCombine[] = {combineN<Choose, 1, T>, combineN<Choose, 2, T>, combineN<Choose, 3, T>,
                                     combineN<Choose, 4, T>, combineN<Choose, 5, T>, combineN<Choose, 6, T>,
                                     combineN<Choose, 7, T>};
    if (count != 0) kCombine[n - 1](p, out, count, offsets);
}

// Runs of 4 k from runs of k, over themselves. Whole vectors are read and written, beyond the count too.
template <class Choose, class T>
void fourfold(T* p, size_t count, ptrdiff_t k) {
    const hn::ScalableTag<T> d;
    const Offsets o = {{k, 2 * k, 3 * k}};
    for (size_t x = 0; x < count; x += hn::Lanes(d)) hn::StoreU(extremeOf<Choose, 4>(d, p + x, o), d, p + x);
}

// `count` times the pixel at p. Doubles what is there.
template <class T>
void repeatPixel(const T* p, T* out, ptrdiff_t count, int channels) {
    if (count <= 0) return;
    const size_t samples = size_t(count) * size_t(channels);
    const hn::CappedTag<T, 1> d1;
    for (int c = 0; c < channels; ++c) hn::StoreU(hn::LoadU(d1, p + c), d1, out + c);
    for (size_t done = size_t(channels); done < samples; done *= 2) {
        forVectors(hn::ScalableTag<T>(), HWY_MIN(done, samples - done),
                   [=](auto d, size_t x) HWY_ATTR { hn::StoreU(hn::LoadU(d, out + x), d, out + done + x); });
    }
}

// The run of k that starts at `pixel` and meets the line.
template <class Choose, class T>
void runAtEnd(const Line<T>& line, int k, ptrdiff_t pixel, T* out) {
    const ptrdiff_t first = HWY_MAX(pixel, ptrdiff_t{0});
    const ptrdiff_t last = HWY_MIN(pixel + k, ptrdiff_t{line.width}) - 1;
    const hn::CappedTag<T, 1> d1;
    for (int c = 0; c < line.channels; ++c) {
        auto extreme = hn::LoadU(d1, line.p + line.at(first) + c);
        for (ptrdiff_t i = first + 1; i <= last; ++i)
            extreme = Choose()(extreme, hn::LoadU(d1, line.p + line.at(i) + c));
        hn::StoreU(extreme, d1, out + c);
    }
}

// The runs of k that start at the pixels from `begin` up to `end`.
template <class Choose, class T>
void runs(const Line<T>& line, int k, ptrdiff_t begin, ptrdiff_t end, T* out) {
    const auto within = [](ptrdiff_t x, ptrdiff_t low, ptrdiff_t high) { return x < low ? low : HWY_MIN(x, high); };
    const ptrdiff_t firstMeeting = within(2 - k, begin, end);
    const ptrdiff_t inside = within(0, begin, end);
    const ptrdiff_t outside = within(line.width - k + 1, inside, end);
    const ptrdiff_t afterMeeting = within(line.width - 1, outside, end);
    const auto place = [=](ptrdiff_t pixel) { return out + line.at(pixel - begin); };

    repeatPixel(line.p, out, firstMeeting - begin, line.channels);
    for (ptrdiff_t i = firstMeeting; i < inside; ++i) runAtEnd<Choose>(line, k, i, place(i));
    Offsets o;
    for (int i = 0; i < 6; ++i) o.at[i] = line.at(i + 1);
    combine<Choose>(k, line.p + line.at(inside), place(inside), size_t(line.at(outside - inside)), o);
    for (ptrdiff_t i = outside; i < afterMeeting; ++i) runAtEnd<Choose>(line, k, i, place(i));
    repeatPixel(line.p + line.at(line.width - 1), place(afterMeeting), end - afterMeeting, line.channels);
}

constexpr int kWidestOfLine = 7;
constexpr int kWidest = 64;  // of what is made of runs of runs, without another pass over the result

// Results of more than kWidestOfLine and at most kWidest pixels, as many as the runs of them fit the cache beside the
// lines.
template <class Choose, class T>
void wideWindows(const Line<T>& line, T* pDstLine, int w, int anchor) {
    constexpr int kTurn = 4096 / sizeof(T) / (4 * 3) * 3;  // pixels of four channels
    constexpr int kBeyond = 64 + 3 * 16;                   // what fourfold reads behind them, at most
    T runsOfRuns[(kTurn + kWidest) * 4 + kBeyond];
    const int turn = kTurn * 4 / line.channels;
    for (int x = 0; x < line.width; x += turn) {
        const int count = HWY_MIN(turn, line.width - x);
        int k = w == 9 ? 3 : 4;
        runs<Choose>(line, k, x - anchor, ptrdiff_t{x} - anchor + count + w - k, runsOfRuns);
        if (w > 16) {
            k = 16;
            fourfold<Choose>(runsOfRuns, size_t(line.at(count + w - k)), line.at(4));
        }
        const int n = (w + k - 1) / k;
        Offsets o;
        for (int i = 0; i < n - 1; ++i) o.at[i] = line.at(i + 2 < n ? (i + 1) * k : w - k);
        combine<Choose>(n, runsOfRuns, pDstLine + line.at(x), size_t(line.at(count)), o);
    }
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

template <class Choose, class T>
void filterLine(const Line<T>& line, T* pDstLine, int w, int anchor) {
    if (w <= kWidestOfLine) {
        runs<Choose>(line, w, -ptrdiff_t{anchor}, ptrdiff_t{line.width} - anchor, pDstLine);
    } else if (w <= kWidest) {
        wideWindows<Choose>(line, pDstLine, w, anchor);
    } else {
        const int left = HWY_MIN(anchor, kWidest - 1);
        const int right = kWidest - 1 - left;
        // Where the window has less than that on its right, it has enough on its left.
        const int wantedRight = w - 1 - anchor;
        const int surplus = HWY_MAX(right - wantedRight, 0);
        wideWindows<Choose>(line, pDstLine, kWidest, left + surplus);
        widen<Choose>(pDstLine, line, left + surplus, right - surplus, anchor, wantedRight);
    }
}

template <class Choose, class T, int kChannels>
void filterRow(const T* pSrcLine, T* pDstLine, int width, int windowWidth, int anchor) {
    filterLine<Choose>(Line<T>{pSrcLine, width, kChannels}, pDstLine, windowWidth, anchor);
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
