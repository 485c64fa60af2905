// Says which trial was running when a page fault or the address sanitizer ends a test program.
#ifndef QELCV_TESTS_KIT_FAULT_REPORT_H_
#define QELCV_TESTS_KIT_FAULT_REPORT_H_

namespace kit {

class Trial;

void setCurrentTrial(const Trial* trial);
void reportTrialOnPageFault();

}  // namespace kit

#endif
