// What the user's guide shows, at work: each function returns whether it found what the guide says.
#include <qelcore.h>
#include <qelcv.h>
#include <stdbool.h>
#include <stdio.h>
#include <string.h>

enum { kWidth = 640, kHeight = 480 };
static Qel8u background[kHeight][kWidth];
static Qel8u frame[kHeight][kWidth];
static Qel8u change[kHeight][kWidth];

static bool wholeImage(void) {
    const QelSize whole = {kWidth, kHeight};
    const qelStatus status = qeliAbsDiff_8u_C1R(frame[0], kWidth, background[0], kWidth, change[0], kWidth, whole);
    return status == qelStatusOk && change[200][100] == 90 && change[0][0] == 0;
}

static bool region(void) {
    memset(change, 1, sizeof change);
    // 200 by 100 pixels, the first in column 40 and row 150. The steps are those of the whole images.
    const QelSize roiSize = {200, 100};
    const qelStatus status =
        qeliAbsDiff_8u_C1R(&frame[150][40], kWidth, &background[150][40], kWidth, &change[150][40], kWidth, roiSize);
    return status == qelStatusOk && change[200][100] == 90 && change[150][39] == 1 && change[250][40] == 1;
}

static bool inPlace(void) {
    Qel16u row[] = {100, 200, 300, 400};
    const QelSize size = {4, 1};
    const qelStatus status = qeliAbsDiffC_16u_C1R(row, sizeof row, row, sizeof row, size, 250);
    return status == qelStatusOk && row[0] == 150 && row[1] == 50 && row[2] == 50 && row[3] == 150;
}

static bool firstFailure(void) {
    // Both a pointer and the size are wrong: pointers are tested first, and nothing is written.
    const QelSize empty = {0, 0};
    const qelStatus status = qeliAbsDiff_8u_C1R(NULL, kWidth, frame[0], kWidth, change[0], kWidth, empty);
    return status == qelStatusNullPointer;
}

static bool threadLimit(void) {
    qelSetNumThreads(1);  // every call on its caller's thread
    const bool one = ownGetNumThreads() == 1;
    qelSetNumThreads(0);  // back to the default
    return one && ownGetNumThreads() >= 1;
}

static bool libraryMemory(void) {
    Qel32f* samples = qelMalloc(kWidth * kHeight * (int)sizeof(Qel32f));
    const bool aligned = samples != NULL && (QEL_INT_PTR)samples % 64 == 0;
    qelFree(samples);
    return aligned;
}

static bool version(void) {
    const QelVersionRecord* record = qelcvGetLibVersion();
    printf("%s, version %s\n", record->libraryName, record->versionText);
    return record->majorVersion == 6;
}

int main(void) {
    memset(background, 10, sizeof background);
    memset(frame, 10, sizeof frame);
    memset(frame[200], 100, kWidth);
    const bool works =
        wholeImage() && region() && inPlace() && firstFailure() && threadLimit() && libraryMemory() && version();
    return works ? 0 : 1;
}
