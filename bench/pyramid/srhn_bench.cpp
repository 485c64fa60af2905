#include <vector>

#include "kit/bench.h"
#include "qelcv.h"

namespace {

constexpr int kTable = 64;

// One sample for every fourth pixel of high resolution, each with taps of its own; in the order of rows, as a caller
// would list them.
template <int side>
struct Setup {
    Setup(bench::Case& c)
        : size(c.size()),
          step(size.width * 4),
          len(((size.width - side) / 2 + 1) * ((size.height - side) / 2 + 1)),
          image(c.update<Qel32f>({.size = {size.width * size.height, 1}}).data),
          coeffs(c.input<Qel32f>({.size = {kTable * side * side, 1}}).data),
          offsets(c.input<Qel32s>({.size = {len, 1}}).data),
          entries(c.input<Qel16u>({.size = {len, 1}}).data) {
        int i = 0;
        for (int y = 0; y + side <= size.height; y += 2)
            for (int x = 0; x + side <= size.width; x += 2) offsets[i++] = y * size.width + x;
        for (int k = 0; k < len; ++k) entries[k] = Qel16u(entries[k] % kTable);
        for (int k = 0; k < kTable * side * side; ++k) coeffs[k] = 1.0F / float(k % 7 + 4);
        QelSRHNState* made = nullptr;
        (side == 2 ? qeliSRHNInitAlloc_PSF2x2 : qeliSRHNInitAlloc_PSF3x3)(&made, coeffs, kTable);
        state = c.keep(made, side == 2 ? qeliSRHNFree_PSF2x2 : qeliSRHNFree_PSF3x3);
        c.elements(len);
    }
    const unsigned int* unsignedOffsets() const { return reinterpret_cast<const unsigned int*>(offsets); }

    QelSize size;
    int step, len;
    Qel32f *image, *coeffs;
    Qel32s* offsets;
    Qel16u* entries;
    QelSRHNState* state;
};

template <class T, int side>
void plainResidual(const float* image, int stride, const T* lr, const int* offsets, const Qel16u* entries,
                   const float* coeffs, float* out, int len) {
    for (int i = 0; i < len; ++i) {
        const float* p = image + offsets[i];
        const float* c = coeffs + entries[i] * side * side;
        float sum = p[0] * c[0] - float(lr[i]);
        for (int k = 1; k < side * side; ++k) sum += p[k / side * stride + k % side] * c[k];
        out[i] = sum;
    }
}

template <class T, int side, auto function>
void residual(bench::Case& c) {
    const Setup<side> s(c);
    const T* const lr = c.input<T>({.size = {s.len, 1}}).data;
    Qel32f* const out = c.output<Qel32f>({.size = {s.len, 1}}).data;
    c.ours([=] { return function(s.image, s.step, lr, s.unsignedOffsets(), s.entries, out, s.len, s.state); });
    c.plain([=] { plainResidual<T, side>(s.image, s.size.width, lr, s.offsets, s.entries, s.coeffs, out, s.len); });
}

template <int side>
void plainGradient(float* image, int stride, const int* offsets, const Qel16u* entries, const float* residuals,
                   const Qel8u* weightIdx, const float* weights, const float* coeffs, int len) {
    for (int i = 0; i < len; ++i) {
        float* g = image + offsets[i];
        const float* c = coeffs + entries[i] * side * side;
        const float w = weights[weightIdx[i]] * residuals[i];
        for (int k = 0; k < side * side; ++k) g[k / side * stride + k % side] += c[k] * w;
    }
}

template <int side, auto function>
void gradient(bench::Case& c) {
    const Setup<side> s(c);
    Qel32f* const residuals = c.input<Qel32f>({.size = {s.len, 1}}).data;
    const Qel8u* const weightIdx = c.input<Qel8u>({.size = {s.len, 1}}).data;
    Qel32f* const weights = c.input<Qel32f>({.size = {256, 1}}).data;
    for (int i = 0; i < 256; ++i) weights[i] = float(i) / 65536;
    c.ours([=] {
        return function(s.image, s.step, s.unsignedOffsets(), s.entries, residuals, weightIdx, s.len, weights, s.state);
    });
    c.plain([=] {
        plainGradient<side>(s.image, s.size.width, s.offsets, s.entries, residuals, weightIdx, weights, s.coeffs,
                            s.len);
    });
}

// Made and released again.
template <auto initAlloc, auto release>
void state(bench::Case& c) {
    const Qel32f* const coeffs = c.input<Qel32f>({.size = {kTable * 9, 1}}).data;
    c.ours([=] {
        QelSRHNState* made = nullptr;
        const qelStatus status = initAlloc(&made, coeffs, kTable);
        return status == qelStatusOk ? release(made) : status;
    });
}

}  // namespace

BENCH_ROWS({"qeliSRHNCalcResidual_PSF2x2_8u32f_C1R", residual<Qel8u, 2, qeliSRHNCalcResidual_PSF2x2_8u32f_C1R>},
           {"qeliSRHNCalcResidual_PSF2x2_16u32f_C1R", residual<Qel16u, 2, qeliSRHNCalcResidual_PSF2x2_16u32f_C1R>},
           {"qeliSRHNCalcResidual_PSF3x3_8u32f_C1R", residual<Qel8u, 3, qeliSRHNCalcResidual_PSF3x3_8u32f_C1R>},
           {"qeliSRHNCalcResidual_PSF3x3_16u32f_C1R", residual<Qel16u, 3, qeliSRHNCalcResidual_PSF3x3_16u32f_C1R>},
           {"qeliSRHNUpdateGradient_PSF2x2_32f_C1R", gradient<2, qeliSRHNUpdateGradient_PSF2x2_32f_C1R>},
           {"qeliSRHNUpdateGradient_PSF3x3_32f_C1R", gradient<3, qeliSRHNUpdateGradient_PSF3x3_32f_C1R>},
           {"qeliSRHNInitAlloc_PSF2x2", state<qeliSRHNInitAlloc_PSF2x2, qeliSRHNFree_PSF2x2>, bench::Sizes::One},
           {"qeliSRHNFree_PSF2x2", state<qeliSRHNInitAlloc_PSF2x2, qeliSRHNFree_PSF2x2>, bench::Sizes::One},
           {"qeliSRHNInitAlloc_PSF3x3", state<qeliSRHNInitAlloc_PSF3x3, qeliSRHNFree_PSF3x3>, bench::Sizes::One},
           {"qeliSRHNFree_PSF3x3", state<qeliSRHNInitAlloc_PSF3x3, qeliSRHNFree_PSF3x3>, bench::Sizes::One});
