#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "kit/fault_report.h"
#include "kit/trial.h"

namespace kit {
namespace {

const Trial* currentTrial = nullptr;

// Builds strings, which a signal handler should not; the program is about to end, and the trial is worth the risk.
void reportAndDie(int signal) {
    std::signal(signal, SIG_DFL);
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string text = "\nSignal " + std::to_string(signal) + " in ";
    text += test == nullptr ? "no test" : std::string(test->test_suite_name()) + "." + test->name();
    text += ", " + (currentTrial == nullptr ? std::string("outside of a trial") : currentTrial->text()) + "\n";
    if (write(STDERR_FILENO, text.data(), text.size()) < 0) _exit(1);
    std::raise(signal);
}

}  // namespace

void setCurrentTrial(const Trial* trial) { currentTrial = trial; }

void reportTrialOnPageFault() {
    for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) std::signal(signal, reportAndDie);
}

}  // namespace kit

int main(int argc, char** argv) {
    // Workers that spin while they wait slow down every other test on the machine.
    setenv("OMP_WAIT_POLICY", "passive", 0);
    testing::InitGoogleTest(&argc, argv);
    kit::reportTrialOnPageFault();
    return RUN_ALL_TESTS();
}
