// What the command line of a test program asked for.
#ifndef QELCV_TESTS_KIT_OPTIONS_H_
#define QELCV_TESTS_KIT_OPTIONS_H_

#include <functional>

namespace kit {

struct Options {
    bool write = false;                       // --write: write the file of expected results anew
    std::function<void()> prepare = nullptr;  // called before the tests run: registers more of them
};

Options& options();

}  // namespace kit

#endif
