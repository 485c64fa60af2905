/**
 * @file
 * The core support library, libqelcore: memory, thread limit, processor cores, cache size.
 *
 * libqelcvt7 reaches all of these through this library only. A host application that has its own allocator or its own
 * thread policy builds a libqelcore.so.6.1 of the same functions and puts it in this one's place. Every function may be
 * called from any thread.
 */
#ifndef QELCORE_H_
#define QELCORE_H_

#include "qelcv/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @name Memory
 * qelMalloc gives `bytes` bytes aligned to 64 bytes, uninitialised, or null where `bytes` is below 1 or the memory is
 * not to be had. Only qelFree releases them. qelFree of null does nothing.
 */
/** @{ */
QEL_API void* qelMalloc(int bytes);
QEL_API void qelFree(void* p);
/** @} */

/**
 * @name Thread limit
 *
 * The most threads that one call may use. Until it is set, it is what the OpenMP runtime would use (so the environment
 * variable OMP_NUM_THREADS and a call of omp_set_num_threads by the calling thread count), but no more than the
 * processors that the process may run on within its affinity mask and a container's processor quota, read once.
 *
 * ownGetNumThreads returns the number of threads to request for a parallel region: the limit.
 * qelGetNumThreads writes the limit to *pNumThreads.
 * qelSetNumThreads sets the limit for the whole process, also above the number of processors; a value below 1 restores
 * the default.
 *
 * @retval qelStatusOk           success
 * @retval qelStatusNullPointer  qelGetNumThreads: pNumThreads is null
 */
/** @{ */
QEL_API int ownGetNumThreads(void);
QEL_API qelStatus qelGetNumThreads(int* pNumThreads);
QEL_API qelStatus qelSetNumThreads(int numThreads);
/** @} */

/**
 * Number of cores on the processor die, at least 1: those that the process may run on, of the die that has most of
 * them. Threads that share a core count once; cores outside the affinity mask and beyond a container's processor quota
 * do not count. Where the system does not tell which threads share a core, each counts as one. Read once per process.
 */
QEL_API int qelGetNumCoresOnDie(void);

/**
 * Writes the size in bytes of the largest cache of the processors that the process may run on to *pSizeByte. Read once
 * per process.
 *
 * @retval qelStatusOk           success
 * @retval qelStatusNullPointer  pSizeByte is null
 * @retval qelStatusBadArg       the system does not tell the size; nothing is written
 */
QEL_API qelStatus qelGetMaxCacheSizeB(int* pSizeByte);

#ifdef __cplusplus
}
#endif

#endif
