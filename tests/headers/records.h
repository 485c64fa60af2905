/* The binary interface of the public records: callers compiled years ago rely on each line. C11 and C++. */
#include <qelcore.h>
#include <qelcv.h>
#include <stddef.h>

#ifdef __cplusplus
#define _Static_assert static_assert
#endif

#define HAS_SIZE(type, bytes) _Static_assert(sizeof(type) == (bytes), "size of " #type)
#define HAS_OFFSET(type, field, bytes) \
    _Static_assert(offsetof(type, field) == (bytes), "offset of " #field " in " #type)

HAS_SIZE(Qel8u, 1);
HAS_SIZE(Qel8s, 1);
HAS_SIZE(Qel16u, 2);
HAS_SIZE(Qel16s, 2);
HAS_SIZE(Qel32s, 4);
HAS_SIZE(Qel32f, 4);
HAS_SIZE(Qel64f, 8);
HAS_SIZE(QEL_INT_PTR, sizeof(void*));
HAS_SIZE(qelStatus, 4);
_Static_assert((Qel8u)-1 > 0 && (Qel16u)-1 > 0, "unsigned samples");
_Static_assert((Qel8s)-1 < 0 && (Qel16s)-1 < 0 && (Qel32s)-1 < 0, "signed samples");

HAS_SIZE(QelSize, 8);
HAS_OFFSET(QelSize, width, 0);
HAS_OFFSET(QelSize, height, 4);

HAS_SIZE(QelPoint, 8);
HAS_OFFSET(QelPoint, x, 0);
HAS_OFFSET(QelPoint, y, 4);

HAS_SIZE(QelRect, 16);
HAS_OFFSET(QelRect, x, 0);
HAS_OFFSET(QelRect, y, 4);
HAS_OFFSET(QelRect, width, 8);
HAS_OFFSET(QelRect, height, 12);

HAS_SIZE(QelPointPolar, 8);
HAS_OFFSET(QelPointPolar, rho, 0);
HAS_OFFSET(QelPointPolar, theta, 4);

/* Five words of 4 bytes, then three pointers: aligned to 8 bytes where pointers are as wide. */
#define FIRST_POINTER ((20 + sizeof(void*) - 1) / sizeof(void*) * sizeof(void*))
HAS_SIZE(QelVersionRecord, FIRST_POINTER + 3 * sizeof(void*));
HAS_OFFSET(QelVersionRecord, majorVersion, 0);
HAS_OFFSET(QelVersionRecord, minorVersion, 4);
HAS_OFFSET(QelVersionRecord, buildMajor, 8);
HAS_OFFSET(QelVersionRecord, buildNumber, 12);
HAS_OFFSET(QelVersionRecord, targetTag, 16);
HAS_OFFSET(QelVersionRecord, libraryName, FIRST_POINTER);
HAS_OFFSET(QelVersionRecord, versionText, FIRST_POINTER + sizeof(void*));
HAS_OFFSET(QelVersionRecord, buildDate, FIRST_POINTER + 2 * sizeof(void*));

HAS_SIZE(QelSRHNState, sizeof(void*));
HAS_OFFSET(QelSRHNState, pCoeffs, 0);

_Static_assert(qelStatusOk == 0 && qelStatusOverflow == -2 && qelStatusBadArg == -5, "values of qelStatus");
_Static_assert(qelStatusBadSize == -6 && qelStatusBadRange == -7 && qelStatusNullPointer == -8, "values of qelStatus");
_Static_assert(qelStatusNoMemory == -9 && qelStatusOutOfRange == -11, "values of qelStatus");
_Static_assert(qelStatusBadDataType == -12 && qelStatusBadStep == -14, "values of qelStatus");
_Static_assert(qelStatusBadMaskSize == -33 && qelStatusBadAnchor == -34, "values of qelStatus");
_Static_assert(qelStatusBadChannel == -52 && qelStatusBadChannelCount == -53, "values of qelStatus");
_Static_assert(qelStatusBadMetric == -56 && qelStatusStepNotElementMultiple == -108, "values of qelStatus");
_Static_assert(qelStatusBadCompareOp == -9999, "values of qelStatus");
_Static_assert(qelStatusSqrtNegative == 3 && qelStatusDivideByZero == 6, "values of qelStatus");
_Static_assert(qelStatusSizeOverflow == 12 && qelStatusKernelNotSymmetric == 38, "values of qelStatus");
