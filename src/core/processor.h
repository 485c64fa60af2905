// What the system tells about its processors.
#ifndef QELCV_CORE_PROCESSOR_H_
#define QELCV_CORE_PROCESSOR_H_

namespace qel {

// Processors that the process may run on within its quota, at least 1. Read once.
int usableProcessors();

}  // namespace qel

#endif
