#include "qelcv/version.h"

const QelVersionRecord* qelcvGetLibVersion() {
    static constexpr QelVersionRecord kVersion = {
        6, 1, 137, 831, {'t', '7', 0, 0}, "libqelcvt7.so.6.1", "6.1 build 137.56", "Mar 17 2010"};
    return &kVersion;
}
