#include "morph/filter_min_max_tables.h"

namespace qel {

MinMaxRowTable<Qel8u> owntablFilterMaxRow_8u_C1 = {
    &ownFilterMaxRowVH_8u_C1R, &ownFilterMaxRow01_8u_C1R, &ownFilterMaxRow02_8u_C1R, &ownFilterMaxRow03_8u_C1R,
    &ownFilterMaxRow04_8u_C1R, &ownFilterMaxRow05_8u_C1R, &ownFilterMaxRow06_8u_C1R, &ownFilterMaxRow07_8u_C1R,
    &ownFilterMaxRowVH_8u_C1R, &ownFilterMaxRow09_8u_C1R, &ownFilterMaxRowVH_8u_C1R, &ownFilterMaxRow11_8u_C1R,
    &ownFilterMaxRowVH_8u_C1R, &ownFilterMaxRow13_8u_C1R, &ownFilterMaxRowVH_8u_C1R, &ownFilterMaxRow15_8u_C1R};
MinMaxRowTable<Qel8u> owntablFilterMaxRow_8u_C3 = {
    &ownFilterMaxRowVH_8u_C3R, &ownFilterMaxRow01_8u_C3R, &ownFilterMaxRow02_8u_C3R, &ownFilterMaxRow03_8u_C3R,
    &ownFilterMaxRow04_8u_C3R, &ownFilterMaxRow05_8u_C3R, &ownFilterMaxRow06_8u_C3R, &ownFilterMaxRow07_8u_C3R,
    &ownFilterMaxRowVH_8u_C3R, &ownFilterMaxRow09_8u_C3R, &ownFilterMaxRowVH_8u_C3R, &ownFilterMaxRow11_8u_C3R,
    &ownFilterMaxRowVH_8u_C3R, &ownFilterMaxRow13_8u_C3R, &ownFilterMaxRowVH_8u_C3R, &ownFilterMaxRow15_8u_C3R};
MinMaxRowTable<Qel8u> owntablFilterMaxRow_8u_C4 = {
    &ownFilterMaxRowVH_8u_C4R, &ownFilterMaxRow01_8u_C4R, &ownFilterMaxRow02_8u_C4R, &ownFilterMaxRow03_8u_C4R,
    &ownFilterMaxRow04_8u_C4R, &ownFilterMaxRow05_8u_C4R, &ownFilterMaxRow06_8u_C4R, &ownFilterMaxRow07_8u_C4R,
    &ownFilterMaxRowVH_8u_C4R, &ownFilterMaxRow09_8u_C4R, &ownFilterMaxRowVH_8u_C4R, &ownFilterMaxRow11_8u_C4R,
    &ownFilterMaxRowVH_8u_C4R, &ownFilterMaxRow13_8u_C4R, &ownFilterMaxRowVH_8u_C4R, &ownFilterMaxRow15_8u_C4R};
MinMaxRowTable<Qel8u> owntablFilterMaxRow_8u_C4_Small = {
    &ownFilterMaxRowVH_8u_C4R, &ownFilterMaxRow01_8u_C4R, &ownFilterMaxRow02_8u_C4R, &ownFilterMaxRow03_8u_C4R,
    &ownFilterMaxRow04_8u_C4R, &ownFilterMaxRow05_8u_C4R, &ownFilterMaxRow06_8u_C4R, &ownFilterMaxRow07_8u_C4R,
    &ownFilterMaxRow07_8u_C4R, &ownFilterMaxRow09_8u_C4R, &ownFilterMaxRow09_8u_C4R, &ownFilterMaxRow11_8u_C4R,
    &ownFilterMaxRow11_8u_C4R, &ownFilterMaxRow13_8u_C4R, &ownFilterMaxRow13_8u_C4R, &ownFilterMaxRow15_8u_C4R};
MinMaxRowTable<Qel32f> owntablFilterMaxRow_32f_C1 = {
    &ownFilterMaxRowVH_32f_C1R, &ownFilterMaxRow01_32f_C1R, &ownFilterMaxRow02_32f_C1R, &ownFilterMaxRow03_32f_C1R,
    &ownFilterMaxRow04_32f_C1R, &ownFilterMaxRow05_32f_C1R, &ownFilterMaxRow06_32f_C1R, &ownFilterMaxRow07_32f_C1R,
    &ownFilterMaxRowVH_32f_C1R, &ownFilterMaxRow09_32f_C1R, &ownFilterMaxRowVH_32f_C1R, &ownFilterMaxRow11_32f_C1R,
    &ownFilterMaxRowVH_32f_C1R, &ownFilterMaxRow13_32f_C1R, &ownFilterMaxRowVH_32f_C1R, &ownFilterMaxRow15_32f_C1R};
MinMaxRowTable<Qel32f> owntablFilterMaxRow_32f_C3 = {
    &ownFilterMaxRowVH_32f_C3R, &ownFilterMaxRow01_32f_C3R, &ownFilterMaxRow02_32f_C3R, &ownFilterMaxRow03_32f_C3R,
    &ownFilterMaxRow04_32f_C3R, &ownFilterMaxRow05_32f_C3R, &ownFilterMaxRow06_32f_C3R, &ownFilterMaxRow07_32f_C3R,
    &ownFilterMaxRowVH_32f_C3R, &ownFilterMaxRow09_32f_C3R, &ownFilterMaxRowVH_32f_C3R, &ownFilterMaxRow11_32f_C3R,
    &ownFilterMaxRowVH_32f_C3R, &ownFilterMaxRow13_32f_C3R, &ownFilterMaxRowVH_32f_C3R, &ownFilterMaxRow15_32f_C3R};
MinMaxRowTable<Qel32f> owntablFilterMaxRow_32f_C4 = {
    &ownFilterMaxRowVH_32f_C4R, &ownFilterMaxRow01_32f_C4R, &ownFilterMaxRow02_32f_C4R, &ownFilterMaxRow03_32f_C4R,
    &ownFilterMaxRow04_32f_C4R, &ownFilterMaxRow05_32f_C4R, &ownFilterMaxRow06_32f_C4R, &ownFilterMaxRow07_32f_C4R,
    &ownFilterMaxRowVH_32f_C4R, &ownFilterMaxRow09_32f_C4R, &ownFilterMaxRowVH_32f_C4R, &ownFilterMaxRow11_32f_C4R,
    &ownFilterMaxRowVH_32f_C4R, &ownFilterMaxRow13_32f_C4R, &ownFilterMaxRowVH_32f_C4R, &ownFilterMaxRow15_32f_C4R};
MinMaxRowTable<Qel32f> owntablFilterMaxRow_32f_C1_Small = {
    &ownFilterMaxRowVH_32f_C1R, &ownFilterMaxRow01_32f_C1R, &ownFilterMaxRow02_32f_C1R, &ownFilterMaxRow03_32f_C1R,
    &ownFilterMaxRow04_32f_C1R, &ownFilterMaxRow05_32f_C1R, &ownFilterMaxRow06_32f_C1R, &ownFilterMaxRow07_32f_C1R,
    &ownFilterMaxRow07_32f_C1R, &ownFilterMaxRow09_32f_C1R, &ownFilterMaxRow09_32f_C1R, &ownFilterMaxRow11_32f_C1R,
    &ownFilterMaxRow11_32f_C1R, &ownFilterMaxRow13_32f_C1R, &ownFilterMaxRow13_32f_C1R, &ownFilterMaxRow15_32f_C1R};
MinMaxRowTable<Qel8u> owntablFilterMinRow_8u_C1 = {
    &ownFilterMinRowVH_8u_C1R, &ownFilterMinRow01_8u_C1R, &ownFilterMinRow02_8u_C1R, &ownFilterMinRow03_8u_C1R,
    &ownFilterMinRow04_8u_C1R, &ownFilterMinRow05_8u_C1R, &ownFilterMinRow06_8u_C1R, &ownFilterMinRow07_8u_C1R,
    &ownFilterMinRowVH_8u_C1R, &ownFilterMinRow09_8u_C1R, &ownFilterMinRowVH_8u_C1R, &ownFilterMinRow11_8u_C1R,
    &ownFilterMinRowVH_8u_C1R, &ownFilterMinRow13_8u_C1R, &ownFilterMinRowVH_8u_C1R, &ownFilterMinRow15_8u_C1R};
MinMaxRowTable<Qel8u> owntablFilterMinRow_8u_C3 = {
    &ownFilterMinRowVH_8u_C3R, &ownFilterMinRow01_8u_C3R, &ownFilterMinRow02_8u_C3R, &ownFilterMinRow03_8u_C3R,
    &ownFilterMinRow04_8u_C3R, &ownFilterMinRow05_8u_C3R, &ownFilterMinRow06_8u_C3R, &ownFilterMinRow07_8u_C3R,
    &ownFilterMinRowVH_8u_C3R, &ownFilterMinRow09_8u_C3R, &ownFilterMinRowVH_8u_C3R, &ownFilterMinRow11_8u_C3R,
    &ownFilterMinRowVH_8u_C3R, &ownFilterMinRow13_8u_C3R, &ownFilterMinRowVH_8u_C3R, &ownFilterMinRow15_8u_C3R};
MinMaxRowTable<Qel8u> owntablFilterMinRow_8u_C4 = {
    &ownFilterMinRowVH_8u_C4R, &ownFilterMinRow01_8u_C4R, &ownFilterMinRow02_8u_C4R, &ownFilterMinRow03_8u_C4R,
    &ownFilterMinRow04_8u_C4R, &ownFilterMinRow05_8u_C4R, &ownFilterMinRow06_8u_C4R, &ownFilterMinRow07_8u_C4R,
    &ownFilterMinRowVH_8u_C4R, &ownFilterMinRow09_8u_C4R, &ownFilterMinRowVH_8u_C4R, &ownFilterMinRow11_8u_C4R,
    &ownFilterMinRowVH_8u_C4R, &ownFilterMinRow13_8u_C4R, &ownFilterMinRowVH_8u_C4R, &ownFilterMinRow15_8u_C4R};
MinMaxRowTable<Qel8u> owntablFilterMinRow_8u_C4_Small = {
    &ownFilterMinRowVH_8u_C4R, &ownFilterMinRow01_8u_C4R, &ownFilterMinRow02_8u_C4R, &ownFilterMinRow03_8u_C4R,
    &ownFilterMinRow04_8u_C4R, &ownFilterMinRow05_8u_C4R, &ownFilterMinRow06_8u_C4R, &ownFilterMinRow07_8u_C4R,
    &ownFilterMinRow07_8u_C4R, &ownFilterMinRow09_8u_C4R, &ownFilterMinRow09_8u_C4R, &ownFilterMinRow11_8u_C4R,
    &ownFilterMinRow11_8u_C4R, &ownFilterMinRow13_8u_C4R, &ownFilterMinRow13_8u_C4R, &ownFilterMinRow15_8u_C4R};
MinMaxRowTable<Qel32f> owntablFilterMinRow_32f_C1 = {
    &ownFilterMinRowVH_32f_C1R, &ownFilterMinRow01_32f_C1R, &ownFilterMinRow02_32f_C1R, &ownFilterMinRow03_32f_C1R,
    &ownFilterMinRow04_32f_C1R, &ownFilterMinRow05_32f_C1R, &ownFilterMinRow06_32f_C1R, &ownFilterMinRow07_32f_C1R,
    &ownFilterMinRowVH_32f_C1R, &ownFilterMinRow09_32f_C1R, &ownFilterMinRowVH_32f_C1R, &ownFilterMinRow11_32f_C1R,
    &ownFilterMinRowVH_32f_C1R, &ownFilterMinRow13_32f_C1R, &ownFilterMinRowVH_32f_C1R, &ownFilterMinRow15_32f_C1R};
MinMaxRowTable<Qel32f> owntablFilterMinRow_32f_C3 = {
    &ownFilterMinRowVH_32f_C3R, &ownFilterMinRow01_32f_C3R, &ownFilterMinRow02_32f_C3R, &ownFilterMinRow03_32f_C3R,
    &ownFilterMinRow04_32f_C3R, &ownFilterMinRow05_32f_C3R, &ownFilterMinRow06_32f_C3R, &ownFilterMinRow07_32f_C3R,
    &ownFilterMinRowVH_32f_C3R, &ownFilterMinRow09_32f_C3R, &ownFilterMinRowVH_32f_C3R, &ownFilterMinRow11_32f_C3R,
    &ownFilterMinRowVH_32f_C3R, &ownFilterMinRow13_32f_C3R, &ownFilterMinRowVH_32f_C3R, &ownFilterMinRow15_32f_C3R};
MinMaxRowTable<Qel32f> owntablFilterMinRow_32f_C4 = {
    &ownFilterMinRowVH_32f_C4R, &ownFilterMinRow01_32f_C4R, &ownFilterMinRow02_32f_C4R, &ownFilterMinRow03_32f_C4R,
    &ownFilterMinRow04_32f_C4R, &ownFilterMinRow05_32f_C4R, &ownFilterMinRow06_32f_C4R, &ownFilterMinRow07_32f_C4R,
    &ownFilterMinRowVH_32f_C4R, &ownFilterMinRow09_32f_C4R, &ownFilterMinRowVH_32f_C4R, &ownFilterMinRow11_32f_C4R,
    &ownFilterMinRowVH_32f_C4R, &ownFilterMinRow13_32f_C4R, &ownFilterMinRowVH_32f_C4R, &ownFilterMinRow15_32f_C4R};
MinMaxRowTable<Qel32f> owntablFilterMinRow_32f_C1_Small = {
    &ownFilterMinRowVH_32f_C1R, &ownFilterMinRow01_32f_C1R, &ownFilterMinRow02_32f_C1R, &ownFilterMinRow03_32f_C1R,
    &ownFilterMinRow04_32f_C1R, &ownFilterMinRow05_32f_C1R, &ownFilterMinRow06_32f_C1R, &ownFilterMinRow07_32f_C1R,
    &ownFilterMinRow07_32f_C1R, &ownFilterMinRow09_32f_C1R, &ownFilterMinRow09_32f_C1R, &ownFilterMinRow11_32f_C1R,
    &ownFilterMinRow11_32f_C1R, &ownFilterMinRow13_32f_C1R, &ownFilterMinRow13_32f_C1R, &ownFilterMinRow15_32f_C1R};

MinMaxColumnTable<Qel8u> owntablFilterMaxColumn_8u_C1 = {&ownFilterMaxColumnVH_8u_C1R, &ownFilterMaxColumn01_8u_C1R,
                                                         &ownFilterMaxColumnVH_8u_C1R, &ownFilterMaxColumn03_8u_C1R,
                                                         &ownFilterMaxColumnVH_8u_C1R, &ownFilterMaxColumn05_8u_C1R,
                                                         &ownFilterMaxColumnVH_8u_C1R, &ownFilterMaxColumnVH_8u_C1R};
MinMaxColumnTable<Qel32f> owntablFilterMaxColumn_32f_C1 = {
    &ownFilterMaxColumnVH_32f_C1R, &ownFilterMaxColumn01_32f_C1R, &ownFilterMaxColumnVH_32f_C1R,
    &ownFilterMaxColumn03_32f_C1R, &ownFilterMaxColumnVH_32f_C1R, &ownFilterMaxColumn05_32f_C1R,
    &ownFilterMaxColumnVH_32f_C1R, &ownFilterMaxColumnVH_32f_C1R};
MinMaxColumnTable<Qel8u> owntablFilterMinColumn_8u_C1 = {&ownFilterMinColumnVH_8u_C1R, &ownFilterMinColumn01_8u_C1R,
                                                         &ownFilterMinColumnVH_8u_C1R, &ownFilterMinColumn03_8u_C1R,
                                                         &ownFilterMinColumnVH_8u_C1R, &ownFilterMinColumn05_8u_C1R,
                                                         &ownFilterMinColumnVH_8u_C1R, &ownFilterMinColumnVH_8u_C1R};
MinMaxColumnTable<Qel32f> owntablFilterMinColumn_32f_C1 = {
    &ownFilterMinColumnVH_32f_C1R, &ownFilterMinColumn01_32f_C1R, &ownFilterMinColumnVH_32f_C1R,
    &ownFilterMinColumn03_32f_C1R, &ownFilterMinColumnVH_32f_C1R, &ownFilterMinColumn05_32f_C1R,
    &ownFilterMinColumnVH_32f_C1R, &ownFilterMinColumnVH_32f_C1R};

}  // namespace qel
