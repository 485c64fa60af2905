#include "digests/digest.h"
#include "qelcv/stats.h"

using digest::bySignature;

DIGESTS(bySignature, qeliAdd_8u32f_C1IR, qeliAdd_8s32f_C1IR, qeliAdd_16u32f_C1IR, qeliAdd_8u32f_C1IMR,
        qeliAdd_8s32f_C1IMR, qeliAdd_16u32f_C1IMR, qeliAdd_32f_C1IMR, qeliAddSquare_8u32f_C1IR,
        qeliAddSquare_8s32f_C1IR, qeliAddSquare_16u32f_C1IR, qeliAddSquare_32f_C1IR, qeliAddSquare_8u32f_C1IMR,
        qeliAddSquare_8s32f_C1IMR, qeliAddSquare_16u32f_C1IMR, qeliAddSquare_32f_C1IMR, qeliAddProduct_8u32f_C1IR,
        qeliAddProduct_8s32f_C1IR, qeliAddProduct_16u32f_C1IR, qeliAddProduct_32f_C1IR, qeliAddProduct_8u32f_C1IMR,
        qeliAddProduct_8s32f_C1IMR, qeliAddProduct_16u32f_C1IMR, qeliAddProduct_32f_C1IMR, qeliAddWeighted_8u32f_C1IR,
        qeliAddWeighted_8s32f_C1IR, qeliAddWeighted_16u32f_C1IR, qeliAddWeighted_32f_C1IR, qeliAddWeighted_8u32f_C1IMR,
        qeliAddWeighted_8s32f_C1IMR, qeliAddWeighted_16u32f_C1IMR, qeliAddWeighted_32f_C1IMR, qeliAddWeighted_32f_C1R);
