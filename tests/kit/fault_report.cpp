#include "kit/fault_report.h"

#include <gtest/gtest.h>
#include <ucontext.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <string>

#include "kit/guarded_memory.h"
#include "kit/trial.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/asan_interface.h>
#endif

namespace kit {
namespace {

const Trial* currentTrial = nullptr;

std::string hex(const void* address) {
    char text[32];
    std::snprintf(text, sizeof text, "%p", address);
    return text;
}

// Building strings is what a signal handler should not do; the program is about to end, and the trial is worth the
// risk.
void print(std::string text) {
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    text += " in ";
    text += test == nullptr ? "no test" : std::string(test->test_suite_name()) + "." + test->name();
    text += ", " + (currentTrial == nullptr ? std::string("outside of a trial") : currentTrial->text()) + "\n";
    if (write(STDERR_FILENO, text.data(), text.size()) < 0) _exit(1);
}

std::string access(const siginfo_t& info, const ucontext_t& context) {
    constexpr int kWrite = 2;  // of the processor's error code
    const bool writes = context.uc_mcontext.gregs[REG_ERR] & kWrite;
    const std::string where = GuardedMemory::whereIs(info.si_addr);
    return std::string(writes ? ", a write to " : ", a read of ") + hex(info.si_addr) + ", " +
           (where.empty() ? "far from all test memory" : where) + ",";
}

void reportAndDie(int signal, siginfo_t* info, void* context) {
    std::signal(signal, SIG_DFL);
    const bool touches = signal == SIGSEGV || signal == SIGBUS;
    print("\nSignal " + std::to_string(signal) +
          (touches ? access(*info, *static_cast<const ucontext_t*>(context)) : std::string()));
    std::raise(signal);
}

#ifdef __SANITIZE_ADDRESS__
void reportTrial() {
    const void* const address = __asan_get_report_address();
    const std::string where = address == nullptr ? "" : GuardedMemory::whereIs(address);
    print("\nThe sanitizer's error" + (where.empty() ? "" : ", " + where + ","));
}
#endif

}  // namespace

void setCurrentTrial(const Trial* trial) { currentTrial = trial; }

void reportTrialOnPageFault() {
    struct sigaction action = {};
    action.sa_sigaction = reportAndDie;
    action.sa_flags = SA_SIGINFO;
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) sigaction(signal, &action, nullptr);
#ifdef __SANITIZE_ADDRESS__
    __asan_set_death_callback(reportTrial);
#endif
}

}  // namespace kit
