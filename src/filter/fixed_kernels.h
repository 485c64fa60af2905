// The one-dimensional kernels that the fixed filters are made of, and the routines that have each of them built in.
#ifndef QELCV_FILTER_FIXED_KERNELS_H_
#define QELCV_FILTER_FIXED_KERNELS_H_

#include <cstddef>

#include "frame/image.h"
#include "frame/kernel.h"
#include "qelcv/types.h"

namespace qel {

constexpr Qel16s kerDx_3[] = {-1, 0, 1};
constexpr Qel16s kerDxNeg_3[] = {1, 0, -1};
constexpr Qel16s kerDx_5[] = {-1, -2, 0, 2, 1};
constexpr Qel16s kerDxNeg_5[] = {1, 2, 0, -2, -1};
constexpr Qel16s kerD2x_3[] = {1, -2, 1};
constexpr Qel16s kerD2x_5[] = {1, 0, -2, 0, 1};
constexpr Qel16s kerSobel_3[] = {1, 2, 1};
constexpr Qel16s kerSobel_5[] = {1, 4, 6, 4, 1};
constexpr Qel16s kerScharr_3[] = {3, 10, 3};
constexpr Qel16s kerAvr_3[] = {1, 1, 1};
constexpr Qel16s kerAvr_5[] = {1, 1, 1, 1, 1};
constexpr Qel16s kerLap_3[] = {1, 0, 1};

// Samples from one row of intermediate values to the next. A row of the 3x3 Laplacian is two of these, one behind the
// other.
constexpr int intermediateStride(int width) { return (width + 7) & ~7; }

// The samples of a row that lie beside those to filter.
struct Beside {
    int before;
    int behind;
};

// Filters size.height rows of the source, each extended by the border, into the rows that pRows points to. What lies
// bytesAhead behind each sample is asked for, if that is not 0.
template <class Src, class Mid>
using FixedRowKernel = void(const Src* pSrc, int srcStep, Mid* const* pRows, QelSize size, Beside beside,
                            Src borderValue, std::ptrdiff_t bytesAhead);

// How the images are gone through, by their size.
enum class Access {
    kCached,     // they are found in a cache
    kAhead,      // they are not, and asked for ahead of their turn
    kStreaming,  // likewise, and stores bypass the cache, unless they add to what is there
};

// The bytes of the source that the row stage takes up next, to be asked for but not read: they may lie beyond its end.
struct NextRows {
    const Qel8u* first;
    int step;
};

// Filters columns: row y of the result is made of the rows pRows[y] and on, as many as the kernel has taps. Only a
// result of type 8s is divided. What comes next may be asked for meanwhile.
template <class Mid, class Dst>
using FixedColumnKernel = void(const Mid* const* pRows, Dst* pDst, int dstStep, QelSize size, int divisor,
                               Access access, const NextRows& next);

// Entries of the tables of row routines.
enum RowIndex {
    kRowDx3,
    kRowScharr3,
    kRowDxNeg3,
    kRowDxNeg5,
    kRowD2x3,
    kRowD2x5,
    kRowSobel3,
    kRowSobel5,
    kRowAvr3,
    kRowAvr5,
    kRowLaplacian3
};

// Entries of the tables of column routines: those of results of type 8u, and all others.
enum ColumnIndex8u { kColumn8uAvr3, kColumn8uAvr5 };
enum ColumnIndex {
    kColumnScharr3,
    kColumnDx3,
    kColumnSobel3,
    kColumnSobel5,
    kColumnDx5,
    kColumnD2x3,
    kColumnD2x5,
    kColumnLaplacian3,
    kColumnLaplacian5,
    kColumnAvr3,
    kColumnAvr5,
    kColumnSobelNeg3,
    kColumnSobelNeg5
};

using Row8u16s = Kernel<FixedRowKernel<Qel8u, Qel16s>>;
using Row32f = Kernel<FixedRowKernel<Qel32f, Qel32f>>;

using Column16s = Kernel<FixedColumnKernel<Qel16s, Qel16s>>;
using Column16s8s = Kernel<FixedColumnKernel<Qel16s, Qel8s>>;
using Column16s8u = Kernel<FixedColumnKernel<Qel16s, Qel8u>>;
using Column32f = Kernel<FixedColumnKernel<Qel32f, Qel32f>>;

// For each kernel its routines by border mode.
extern const Row8u16s* const owntabRow_8u16s[];
extern const Row32f* const owntabRow_32f[];

extern const Column16s owntabColumn_8u16s[];
extern const Column16s8s owntabColumn_8u8s[];
extern const Column16s8u owntabColumn_8u[];
extern const Column32f owntabColumn_32f[];

// Turns the rows of a 16-bit Laplacian into 8s: divided, clamped and truncated toward zero.
using DivideRows = Kernel<void(const Qel16s* pSrc, int srcStep, Qel8s* pDst, int dstStep, QelSize size, int divisor)>;
extern const DivideRows ownDivide_16s8s_C1R_W7;

}  // namespace qel

#endif
