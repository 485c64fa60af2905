// The tests run in a process of their own. Where a fault ends it, the test that ran counts as failed and another
// process goes on with the tests behind it.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "kit/fault_report.h"
#include "kit/options.h"
#include "kit/trial.h"

namespace kit {

Options& options() {
    static Options instance;
    return instance;
}

namespace {

// What the process that runs the tests tells the one that waits, in memory that both see.
struct Progress {
    static constexpr size_t kNames = size_t{1} << 20;

    bool ranToTheEnd = false;
    bool inTest = false;
    char names[kNames] = {};  // of the tests that began, with a colon ahead of each
};

class Reporter : public testing::EmptyTestEventListener {
public:
    explicit Reporter(Progress* progress) : progress_(progress) {}

    void OnTestStart(const testing::TestInfo& test) override {
        const std::string name = std::string(":") + test.test_suite_name() + "." + test.name();
        const size_t length = std::strlen(progress_->names);
        if (length + name.size() < Progress::kNames)
            std::memcpy(progress_->names + length, name.c_str(), name.size() + 1);
        progress_->inTest = true;
    }
    void OnTestEnd(const testing::TestInfo&) override { progress_->inTest = false; }

private:
    Progress* progress_;
};

int runTests(Progress* progress) {
    reportTrialOnPageFault();
    if (progress != nullptr) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        testing::UnitTest::GetInstance()->listeners().Append(new Reporter(progress));
    }
    const int result = RUN_ALL_TESTS();
    if (progress != nullptr) progress->ranToTheEnd = true;
    return result;
}

// The filter without the tests that began.
std::string filterOfOthers(const std::string& filter, const char* names) {
    return filter + (filter.find('-') == std::string::npos ? "-" : ":") + (names + 1);
}

int runInProcesses() {
    void* const shared = mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) return runTests(nullptr);
    Progress* const progress = new (shared) Progress();
    const std::string filter = testing::GTEST_FLAG(filter);
    int result = 0;
    std::string crashed;
    while (!progress->ranToTheEnd) {
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child < 0) return runTests(nullptr);
        if (child == 0) std::exit(runTests(progress));  // NOLINT(concurrency-mt-unsafe)
        int status = 0;
        waitpid(child, &status, 0);
        result |= WIFEXITED(status) ? WEXITSTATUS(status) : 1;
        if (progress->ranToTheEnd) break;
        result = 1;
        if (!progress->inTest) break;
        crashed += std::string("[ CRASHED  ] ") + (std::strrchr(progress->names, ':') + 1) + "\n";
        progress->inTest = false;
        testing::GTEST_FLAG(filter) = filterOfOthers(filter, progress->names);
    }
    std::fputs(crashed.c_str(), stdout);
    return result;
}

// --seed=N repeats one trial of the tests that run, --one-process is for debuggers, --write for tests that have a file
// of expected results.
bool parse(int argc, char** argv) {
    bool oneProcess = testing::GTEST_FLAG(list_tests);
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.starts_with("--seed=")) {
            repeatOnly(uint32_t(std::strtoul(argument.c_str() + 7, nullptr, 10)));
        } else if (argument == "--write") {
            options().write = true;
        } else if (argument == "--one-process") {
            oneProcess = true;
        } else {
            std::fprintf(stderr,
                         "%s: unknown argument %s; --seed=N, --one-process, --write and --gtest_... are known\n",
                         argv[0], argv[i]);
            std::exit(2);
        }
    }
    return oneProcess;
}

}  // namespace
}  // namespace kit

int main(int argc, char** argv) {
    // Workers that spin while they wait slow down every other test on the machine.
    setenv("OMP_WAIT_POLICY", "passive", 0);
    testing::InitGoogleTest(&argc, argv);
    const bool oneProcess = kit::parse(argc, argv);
    if (kit::options().prepare) kit::options().prepare();
    return oneProcess ? kit::runTests(nullptr) : kit::runInProcesses();
}
