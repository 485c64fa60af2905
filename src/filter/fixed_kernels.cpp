#include "filter/fixed_kernels.h"

namespace qel {

const Row8u16s* const owntabRow_8u16s[] = {
    &ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx_W7,        &ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerScharr_W7,
    &ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDxNeg_W7,     &ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDxNeg_W7,
    &ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerDx2_W7,       &ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerDx2_W7,
    &ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerSobel_W7,     &ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerSobel_W7,
    &ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerAvr_W7,       &ownFilterRowBorderPipeline_8u16s_C1R_5x5_kerAvr_W7,
    &ownFilterRowBorderPipeline_8u16s_C1R_3x3_kerLaplacian_W7,
};

const Row32f* const owntabRow_32f[] = {
    &ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx_W7,        &ownFilterRowBorderPipeline_32f_C1R_3x3_kerScharr_W7,
    &ownFilterRowBorderPipeline_32f_C1R_3x3_kerDxNeg_W7,     &ownFilterRowBorderPipeline_32f_C1R_5x5_kerDxNeg_W7,
    &ownFilterRowBorderPipeline_32f_C1R_3x3_kerDx2_W7,       &ownFilterRowBorderPipeline_32f_C1R_5x5_kerDx2_W7,
    &ownFilterRowBorderPipeline_32f_C1R_3x3_kerSobel_W7,     &ownFilterRowBorderPipeline_32f_C1R_5x5_kerSobel_W7,
    &ownFilterRowBorderPipeline_32f_C1R_3x3_kerAvr_W7,       &ownFilterRowBorderPipeline_32f_C1R_5x5_kerAvr_W7,
    &ownFilterRowBorderPipeline_32f_C1R_3x3_kerLaplacian_W7,
};

// No average ends in 16s or 8s; its entries hold the routine of the same size behind them.
const Column16s* const owntabColumn_8u16s[] = {
    &ownFilterColumnPipeline_16s_C1R_3x3_kerScharr_W7cn,    &ownFilterColumnPipeline_16s_C1R_3x3_kerDx_W7cn,
    &ownFilterColumnPipeline_16s_C1R_3x3_kerSobel_W7cn,     &ownFilterColumnPipeline_16s_C1R_5x5_kerSobel_W7cn,
    &ownFilterColumnPipeline_16s_C1R_5x5_kerDx_W7cn,        &ownFilterColumnPipeline_16s_C1R_3x3_kerDx2_W7cn,
    &ownFilterColumnPipeline_16s_C1R_5x5_kerDx2_W7cn,       &ownFilterColumnPipeline_16s_C1R_3x3_kerLaplacian_W7cn,
    &ownFilterColumnPipeline_16s_C1R_5x5_kerLaplacian_W7cn, &ownFilterColumnPipeline_16s_C1R_3x3_kerSobelNeg_W7cn,
    &ownFilterColumnPipeline_16s_C1R_5x5_kerSobelNeg_W7cn,  &ownFilterColumnPipeline_16s_C1R_3x3_kerSobelNeg_W7cn,
    &ownFilterColumnPipeline_16s_C1R_5x5_kerSobelNeg_W7cn,
};

// The second pass of the 5x5 Laplacian never ends in 8s; its entry holds the 3x3 form.
const Column16s8s* const owntabColumn_8u8s[] = {
    &ownFilterColumnPipeline_16s8s_C1R_3x3_kerScharr_W7cn,    &ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx_W7cn,
    &ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobel_W7cn,     &ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobel_W7cn,
    &ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx_W7cn,        &ownFilterColumnPipeline_16s8s_C1R_3x3_kerDx2_W7cn,
    &ownFilterColumnPipeline_16s8s_C1R_5x5_kerDx2_W7cn,       &ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian_W7cn,
    &ownFilterColumnPipeline_16s8s_C1R_3x3_kerLaplacian_W7cn, &ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobelNeg_W7cn,
    &ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobelNeg_W7cn,  &ownFilterColumnPipeline_16s8s_C1R_3x3_kerSobelNeg_W7cn,
    &ownFilterColumnPipeline_16s8s_C1R_5x5_kerSobelNeg_W7cn,
};

const Column16s8u* const owntabColumn_8u[] = {
    &ownFilterColumnPipeline_16s8u_C1R_3x3_kerAvr_W7cn,
    &ownFilterColumnPipeline_16s8u_C1R_5x5_kerAvr_W7cn,
};

const Column32f* const owntabColumn_32f[] = {
    &ownFilterColumnPipeline_32f_C1R_3x3_kerScharr_W7cn,    &ownFilterColumnPipeline_32f_C1R_3x3_kerDx_W7cn,
    &ownFilterColumnPipeline_32f_C1R_3x3_kerSobel_W7cn,     &ownFilterColumnPipeline_32f_C1R_5x5_kerSobel_W7cn,
    &ownFilterColumnPipeline_32f_C1R_5x5_kerDx_W7cn,        &ownFilterColumnPipeline_32f_C1R_3x3_kerDx2_W7cn,
    &ownFilterColumnPipeline_32f_C1R_5x5_kerDx2_W7cn,       &ownFilterColumnPipeline_32f_C1R_3x3_kerLaplacian_W7cn,
    &ownFilterColumnPipeline_32f_C1R_5x5_kerLaplacian_W7cn, &ownFilterColumnPipeline_32f_C1R_3x3_kerAvr_W7cn,
    &ownFilterColumnPipeline_32f_C1R_5x5_kerAvr_W7cn,       &ownFilterColumnPipeline_32f_C1R_3x3_kerSobelNeg_W7cn,
    &ownFilterColumnPipeline_32f_C1R_5x5_kerSobelNeg_W7cn,
};

}  // namespace qel
