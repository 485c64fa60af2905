/* A program of another project: takes the difference of two images in memory of the core library. */
#include <qelcore.h>
#include <qelcv.h>
#include <stdio.h>

int main(void) {
    enum { kWidth = 5, kHeight = 3, kPixels = kWidth * kHeight };
    const QelSize size = {kWidth, kHeight};
    Qel8u* const pSrc1 = qelMalloc(kPixels);
    Qel8u* const pSrc2 = qelMalloc(kPixels);
    Qel8u* const pDst = qelMalloc(kPixels);
    if (pSrc1 == NULL || pSrc2 == NULL || pDst == NULL) return 1;
    for (int i = 0; i < kPixels; ++i) {
        pSrc1[i] = (Qel8u)(17 * i);
        pSrc2[i] = (Qel8u)(250 - 11 * i);
    }

    const qelStatus status = qeliAbsDiff_8u_C1R(pSrc1, kWidth, pSrc2, kWidth, pDst, kWidth, size);
    int wrong = 0;
    for (int i = 0; i < kPixels; ++i) {
        const int difference = pSrc1[i] - pSrc2[i];
        wrong += pDst[i] != (difference < 0 ? -difference : difference);
    }
    qelFree(pSrc1);
    qelFree(pSrc2);
    qelFree(pDst);

    printf("%s, %zu bits: status %d, %d wrong\n", qelcvGetLibVersion()->libraryName, 8 * sizeof(void*), (int)status,
           wrong);
    return status != qelStatusOk || wrong != 0;
}
