/**
 * @file
 * Which build of the library this is.
 */
#ifndef QELCV_VERSION_H_
#define QELCV_VERSION_H_

#include "qelcv/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/** The build of the library that is loaded. */
typedef struct QelVersionRecord {
    int majorVersion;        /**< major version */
    int minorVersion;        /**< minor version */
    int buildMajor;          /**< major build number */
    int buildNumber;         /**< build number */
    char targetTag[4];       /**< tag of the processor-specific build: "t7" and two zero bytes */
    const char* libraryName; /**< the library's file name */
    const char* versionText; /**< printable version */
    const char* buildDate;   /**< printable date */
} QelVersionRecord;

/**
 * Returns the library's one version record. It never fails; the record is constant and never freed.
 */
QEL_API const QelVersionRecord* qelcvGetLibVersion(void);

#ifdef __cplusplus
}
#endif

#endif
