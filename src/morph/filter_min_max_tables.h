// The tables of row and column routines by the size of the window, and all routines under their names.
#ifndef QELCV_MORPH_FILTER_MIN_MAX_TABLES_H_
#define QELCV_MORPH_FILTER_MIN_MAX_TABLES_H_

#include "morph/filter_min_max_kernels.h"

namespace qel {

// A row routine takes any window and finds the fastest way for its width, so that these names are several for one.
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow01_8u_C1R = ownFilterMaxRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow02_8u_C1R = ownFilterMaxRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow03_8u_C1R = ownFilterMaxRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow04_8u_C1R = ownFilterMaxRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow05_8u_C1R = ownFilterMaxRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow06_8u_C1R = ownFilterMaxRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow07_8u_C1R = ownFilterMaxRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow09_8u_C1R = ownFilterMaxRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow11_8u_C1R = ownFilterMaxRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow13_8u_C1R = ownFilterMaxRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow15_8u_C1R = ownFilterMaxRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRowVH_8u_C1R = ownFilterMaxRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow01_8u_C3R = ownFilterMaxRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow02_8u_C3R = ownFilterMaxRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow03_8u_C3R = ownFilterMaxRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow04_8u_C3R = ownFilterMaxRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow05_8u_C3R = ownFilterMaxRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow06_8u_C3R = ownFilterMaxRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow07_8u_C3R = ownFilterMaxRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow09_8u_C3R = ownFilterMaxRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow11_8u_C3R = ownFilterMaxRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow13_8u_C3R = ownFilterMaxRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow15_8u_C3R = ownFilterMaxRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRowVH_8u_C3R = ownFilterMaxRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow01_8u_C4R = ownFilterMaxRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow02_8u_C4R = ownFilterMaxRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow03_8u_C4R = ownFilterMaxRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow04_8u_C4R = ownFilterMaxRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow05_8u_C4R = ownFilterMaxRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow06_8u_C4R = ownFilterMaxRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow07_8u_C4R = ownFilterMaxRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow09_8u_C4R = ownFilterMaxRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow11_8u_C4R = ownFilterMaxRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow13_8u_C4R = ownFilterMaxRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRow15_8u_C4R = ownFilterMaxRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMaxRowVH_8u_C4R = ownFilterMaxRow_8u_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow01_32f_C1R = ownFilterMaxRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow02_32f_C1R = ownFilterMaxRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow03_32f_C1R = ownFilterMaxRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow04_32f_C1R = ownFilterMaxRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow05_32f_C1R = ownFilterMaxRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow06_32f_C1R = ownFilterMaxRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow07_32f_C1R = ownFilterMaxRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow09_32f_C1R = ownFilterMaxRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow11_32f_C1R = ownFilterMaxRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow13_32f_C1R = ownFilterMaxRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow15_32f_C1R = ownFilterMaxRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRowVH_32f_C1R = ownFilterMaxRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow01_32f_C3R = ownFilterMaxRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow02_32f_C3R = ownFilterMaxRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow03_32f_C3R = ownFilterMaxRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow04_32f_C3R = ownFilterMaxRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow05_32f_C3R = ownFilterMaxRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow06_32f_C3R = ownFilterMaxRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow07_32f_C3R = ownFilterMaxRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow09_32f_C3R = ownFilterMaxRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow11_32f_C3R = ownFilterMaxRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow13_32f_C3R = ownFilterMaxRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow15_32f_C3R = ownFilterMaxRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRowVH_32f_C3R = ownFilterMaxRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow01_32f_C4R = ownFilterMaxRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow02_32f_C4R = ownFilterMaxRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow03_32f_C4R = ownFilterMaxRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow04_32f_C4R = ownFilterMaxRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow05_32f_C4R = ownFilterMaxRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow06_32f_C4R = ownFilterMaxRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow07_32f_C4R = ownFilterMaxRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow09_32f_C4R = ownFilterMaxRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow11_32f_C4R = ownFilterMaxRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow13_32f_C4R = ownFilterMaxRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRow15_32f_C4R = ownFilterMaxRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMaxRowVH_32f_C4R = ownFilterMaxRow_32f_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow01_8u_C1R = ownFilterMinRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow02_8u_C1R = ownFilterMinRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow03_8u_C1R = ownFilterMinRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow04_8u_C1R = ownFilterMinRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow05_8u_C1R = ownFilterMinRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow06_8u_C1R = ownFilterMinRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow07_8u_C1R = ownFilterMinRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow09_8u_C1R = ownFilterMinRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow11_8u_C1R = ownFilterMinRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow13_8u_C1R = ownFilterMinRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow15_8u_C1R = ownFilterMinRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRowVH_8u_C1R = ownFilterMinRow_8u_C1R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow01_8u_C3R = ownFilterMinRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow02_8u_C3R = ownFilterMinRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow03_8u_C3R = ownFilterMinRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow04_8u_C3R = ownFilterMinRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow05_8u_C3R = ownFilterMinRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow06_8u_C3R = ownFilterMinRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow07_8u_C3R = ownFilterMinRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow09_8u_C3R = ownFilterMinRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow11_8u_C3R = ownFilterMinRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow13_8u_C3R = ownFilterMinRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow15_8u_C3R = ownFilterMinRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRowVH_8u_C3R = ownFilterMinRow_8u_C3R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow01_8u_C4R = ownFilterMinRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow02_8u_C4R = ownFilterMinRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow03_8u_C4R = ownFilterMinRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow04_8u_C4R = ownFilterMinRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow05_8u_C4R = ownFilterMinRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow06_8u_C4R = ownFilterMinRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow07_8u_C4R = ownFilterMinRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow09_8u_C4R = ownFilterMinRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow11_8u_C4R = ownFilterMinRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow13_8u_C4R = ownFilterMinRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRow15_8u_C4R = ownFilterMinRow_8u_C4R;
inline constexpr const MinMaxRow<Qel8u>& ownFilterMinRowVH_8u_C4R = ownFilterMinRow_8u_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow01_32f_C1R = ownFilterMinRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow02_32f_C1R = ownFilterMinRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow03_32f_C1R = ownFilterMinRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow04_32f_C1R = ownFilterMinRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow05_32f_C1R = ownFilterMinRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow06_32f_C1R = ownFilterMinRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow07_32f_C1R = ownFilterMinRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow09_32f_C1R = ownFilterMinRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow11_32f_C1R = ownFilterMinRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow13_32f_C1R = ownFilterMinRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow15_32f_C1R = ownFilterMinRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRowVH_32f_C1R = ownFilterMinRow_32f_C1R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow01_32f_C3R = ownFilterMinRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow02_32f_C3R = ownFilterMinRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow03_32f_C3R = ownFilterMinRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow04_32f_C3R = ownFilterMinRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow05_32f_C3R = ownFilterMinRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow06_32f_C3R = ownFilterMinRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow07_32f_C3R = ownFilterMinRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow09_32f_C3R = ownFilterMinRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow11_32f_C3R = ownFilterMinRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow13_32f_C3R = ownFilterMinRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow15_32f_C3R = ownFilterMinRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRowVH_32f_C3R = ownFilterMinRow_32f_C3R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow01_32f_C4R = ownFilterMinRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow02_32f_C4R = ownFilterMinRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow03_32f_C4R = ownFilterMinRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow04_32f_C4R = ownFilterMinRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow05_32f_C4R = ownFilterMinRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow06_32f_C4R = ownFilterMinRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow07_32f_C4R = ownFilterMinRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow09_32f_C4R = ownFilterMinRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow11_32f_C4R = ownFilterMinRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow13_32f_C4R = ownFilterMinRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRow15_32f_C4R = ownFilterMinRow_32f_C4R;
inline constexpr const MinMaxRow<Qel32f>& ownFilterMinRowVH_32f_C4R = ownFilterMinRow_32f_C4R;

template <class T>
using MinMaxRowTable = const MinMaxRow<T>* const[16];
template <class T>
using MinMaxColumnTable = const MinMaxColumn<T>* const[8];

// Row routines by window width; 0 for those of 16 and more and for windows of more than half the line.
extern MinMaxRowTable<Qel8u> owntablFilterMaxRow_8u_C1;
extern MinMaxRowTable<Qel8u> owntablFilterMaxRow_8u_C3;
extern MinMaxRowTable<Qel8u> owntablFilterMaxRow_8u_C4;
extern MinMaxRowTable<Qel8u> owntablFilterMaxRow_8u_C4_Small;
extern MinMaxRowTable<Qel32f> owntablFilterMaxRow_32f_C1;
extern MinMaxRowTable<Qel32f> owntablFilterMaxRow_32f_C3;
extern MinMaxRowTable<Qel32f> owntablFilterMaxRow_32f_C4;
extern MinMaxRowTable<Qel32f> owntablFilterMaxRow_32f_C1_Small;
extern MinMaxRowTable<Qel8u> owntablFilterMinRow_8u_C1;
extern MinMaxRowTable<Qel8u> owntablFilterMinRow_8u_C3;
extern MinMaxRowTable<Qel8u> owntablFilterMinRow_8u_C4;
extern MinMaxRowTable<Qel8u> owntablFilterMinRow_8u_C4_Small;
extern MinMaxRowTable<Qel32f> owntablFilterMinRow_32f_C1;
extern MinMaxRowTable<Qel32f> owntablFilterMinRow_32f_C3;
extern MinMaxRowTable<Qel32f> owntablFilterMinRow_32f_C4;
extern MinMaxRowTable<Qel32f> owntablFilterMinRow_32f_C1_Small;

// Column routines by window height; 0 for those of 8 and more and for windows of more than half the image.
extern MinMaxColumnTable<Qel8u> owntablFilterMaxColumn_8u_C1;
extern MinMaxColumnTable<Qel32f> owntablFilterMaxColumn_32f_C1;
extern MinMaxColumnTable<Qel8u> owntablFilterMinColumn_8u_C1;
extern MinMaxColumnTable<Qel32f> owntablFilterMinColumn_32f_C1;

}  // namespace qel

#endif
