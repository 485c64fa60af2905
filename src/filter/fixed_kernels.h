// The one-dimensional kernels that the fixed filters are made of, and the routines that have each of them built in.
//
// A name says the types, the mask, the kernel and the machine: ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerSobel_W7
// makes 16s sums of 8u rows by kerSobel_3; ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx_W7cn goes down 16s rows by
// kerDx_3 and ends in 8s. _W7 was compiled for vectors, once per instruction set, and _W7cn takes its rows from a list
// of pointers.
#ifndef QELCV_FILTER_FIXED_KERNELS_H_
#define QELCV_FILTER_FIXED_KERNELS_H_

#include "filter/border_mode.h"
#include "frame/image.h"
#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

// The coefficients of a kernel, from its first tap on. Its formula follows from them.
template <int n>
struct FixedTaps {
    static constexpr int kCount = n;
    Qel16s k[n];

    constexpr int sum() const {
        int sum = 0;
        for (const Qel16s c : k) sum += c;
        return sum;
    }
};
inline constexpr FixedTaps<3> kerDx_3 = {{-1, 0, 1}};
inline constexpr FixedTaps<3> kerDxNeg_3 = {{1, 0, -1}};
inline constexpr FixedTaps<5> kerDx_5 = {{-1, -2, 0, 2, 1}};
inline constexpr FixedTaps<5> kerDxNeg_5 = {{1, 2, 0, -2, -1}};
inline constexpr FixedTaps<3> kerD2x_3 = {{1, -2, 1}};
inline constexpr FixedTaps<5> kerD2x_5 = {{1, 0, -2, 0, 1}};
inline constexpr FixedTaps<3> kerSobel_3 = {{1, 2, 1}};
inline constexpr FixedTaps<5> kerSobel_5 = {{1, 4, 6, 4, 1}};
inline constexpr FixedTaps<3> kerScharr_3 = {{3, 10, 3}};
inline constexpr FixedTaps<3> kerAvr_3 = {{1, 1, 1}};
inline constexpr FixedTaps<5> kerAvr_5 = {{1, 1, 1, 1, 1}};
inline constexpr FixedTaps<3> kerLap_3 = {{1, 0, 1}};
inline constexpr FixedTaps<3> kerLapCentre_3 = {{0, 8, 0}};

// Samples from one row of intermediate values to the next. A row of a Laplacian is two of these, one behind the other:
// of the neighbours' sum and of eight times the sample for 3x3, of kerD2x_5's and of kerSobel_5's argument for 5x5.
constexpr int intermediateStride(int width) { return (width + 7) & ~7; }

// Filters size.height rows of the source, each extended by the border, into the rows that pRows points to.
template <class Src, class Mid>
using FixedRowKernel = void(Plane<const Src> source, Mid* const* pRows, QelSize size, const Border<Src>& border);

// A routine along rows and what else is to be known of it.
template <class Src, class Mid>
struct FixedRows {
    Kernel<FixedRowKernel<Src, Mid>> kernel;
    int taps;
    int halves;   // 2 if its rows are two wide
    int sums[2];  // of the coefficients that make each half
};
using Rows8u16s = FixedRows<Qel8u, Qel16s>;
using Rows32f = FixedRows<Qel32f, Qel32f>;

// Filters columns: row y of the result is made of the rows pRows[y] and on, as many as the kernel has taps. Only a
// result of type 8s is divided. Stores may bypass the cache.
template <class Mid, class Dst>
using FixedColumnKernel = void(const Mid* const* pRows, Plane<Dst> dst, QelSize size, int divisor, bool bypassesCache);
template <class Mid, class Dst>
using FixedColumns = Kernel<FixedColumnKernel<Mid, Dst>>;
using Columns16s = FixedColumns<Qel16s, Qel16s>;
using Columns16s8s = FixedColumns<Qel16s, Qel8s>;
using Columns16s8u = FixedColumns<Qel16s, Qel8u>;
using Columns32f = FixedColumns<Qel32f, Qel32f>;

extern const Rows8u16s ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx_W7;
extern const Rows8u16s ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerScharr_W7;
extern const Rows8u16s ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg_W7;
extern const Rows8u16s ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg_W7;
extern const Rows8u16s ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx2_W7;
extern const Rows8u16s ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDx2_W7;
extern const Rows8u16s ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerSobel_W7;
extern const Rows8u16s ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerSobel_W7;
extern const Rows8u16s ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerAvr_W7;
extern const Rows8u16s ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerAvr_W7;
extern const Rows8u16s ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerLaplacian_W7;
extern const Rows8u16s ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerLaplacian_W7;

extern const Rows32f ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx_W7;
extern const Rows32f ownFilterRowBorderPipeline_32f_C1R_3x3_kerScharr_W7;
extern const Rows32f ownFilterRowBorderPipeline_32f_C1R_3x3_kerDxNeg_W7;
extern const Rows32f ownFilterRowBorderPipeline_32f_C1R_5x5_kerDxNeg_W7;
extern const Rows32f ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx2_W7;
extern const Rows32f ownFilterRowBorderPipeline_32f_C1R_5x5_kerDx2_W7;
extern const Rows32f ownFilterRowBorderPipeline_32f_C1R_3x3_kerSobel_W7;
extern const Rows32f ownFilterRowBorderPipeline_32f_C1R_5x5_kerSobel_W7;
extern const Rows32f ownFilterRowBorderPipeline_32f_C1R_3x3_kerAvr_W7;
extern const Rows32f ownFilterRowBorderPipeline_32f_C1R_5x5_kerAvr_W7;
extern const Rows32f ownFilterRowBorderPipeline_32f_C1R_3x3_kerLaplacian_W7;
extern const Rows32f ownFilterRowBorderPipeline_32f_C1R_5x5_kerLaplacian_W7;

extern const Columns16s ownFilterColumnPipeline_16s_C1R_3x3_kerScharr_W7cn;
extern const Columns16s ownFilterColumnPipeline_16s_C1R_3x3_kerDx_W7cn;
extern const Columns16s ownFilterColumnPipeline_16s_C1R_5x5_kerDx_W7cn;
extern const Columns16s ownFilterColumnPipeline_16s_C1R_3x3_kerDx2_W7cn;
extern const Columns16s ownFilterColumnPipeline_16s_C1R_5x5_kerDx2_W7cn;
extern const Columns16s ownFilterColumnPipeline_16s_C1R_3x3_kerSobel_W7cn;
extern const Columns16s ownFilterColumnPipeline_16s_C1R_5x5_kerSobel_W7cn;
extern const Columns16s ownFilterColumnPipeline_16s_C1R_3x3_kerSobelNeg_W7cn;
extern const Columns16s ownFilterColumnPipeline_16s_C1R_5x5_kerSobelNeg_W7cn;
extern const Columns16s ownFilterColumnPipeline_16s_C1R_3x3_kerLaplacian_W7cn;
extern const Columns16s ownFilterColumnPipeline_16s_C1R_5x5_kerLaplacian_W7cn;

extern const Columns16s8s ownFilterColumnPipeline_16s8s_C1R_3x3_kerScharr_W7cn;
extern const Columns16s8s ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx_W7cn;
extern const Columns16s8s ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx_W7cn;
extern const Columns16s8s ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx2_W7cn;
extern const Columns16s8s ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx2_W7cn;
extern const Columns16s8s ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobel_W7cn;
extern const Columns16s8s ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobel_W7cn;
extern const Columns16s8s ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobelNeg_W7cn;
extern const Columns16s8s ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobelNeg_W7cn;
extern const Columns16s8s ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian_W7cn;
// This one truncates throughout.
extern const Columns16s8s ownFilterColumnPipeline_16s8s_C1R_5x5_kerLaplacian_W7cn;

extern const Columns16s8u ownFilterColumnPipeline_16s8u_C1R_3x3_kerAvr_W7cn;
extern const Columns16s8u ownFilterColumnPipeline_16s8u_C1R_5x5_kerAvr_W7cn;

extern const Columns32f ownFilterColumnPipeline_32f_C1R_3x3_kerScharr_W7cn;
extern const Columns32f ownFilterColumnPipeline_32f_C1R_3x3_kerDx_W7cn;
extern const Columns32f ownFilterColumnPipeline_32f_C1R_5x5_kerDx_W7cn;
extern const Columns32f ownFilterColumnPipeline_32f_C1R_3x3_kerDx2_W7cn;
extern const Columns32f ownFilterColumnPipeline_32f_C1R_5x5_kerDx2_W7cn;
extern const Columns32f ownFilterColumnPipeline_32f_C1R_3x3_kerSobel_W7cn;
extern const Columns32f ownFilterColumnPipeline_32f_C1R_5x5_kerSobel_W7cn;
extern const Columns32f ownFilterColumnPipeline_32f_C1R_3x3_kerSobelNeg_W7cn;
extern const Columns32f ownFilterColumnPipeline_32f_C1R_5x5_kerSobelNeg_W7cn;
extern const Columns32f ownFilterColumnPipeline_32f_C1R_3x3_kerLaplacian_W7cn;
extern const Columns32f ownFilterColumnPipeline_32f_C1R_5x5_kerLaplacian_W7cn;
extern const Columns32f ownFilterColumnPipeline_32f_C1R_3x3_kerAvr_W7cn;
extern const Columns32f ownFilterColumnPipeline_32f_C1R_5x5_kerAvr_W7cn;

}  // namespace qel

#endif
