#include "digests/digest.h"
#include "qelcv/version.h"

DIGESTS(
    [](digest::Call& c, auto function) {
        const QelVersionRecord& version = *function();
        *c.results<int>(1) = version.majorVersion * 1000 + version.minorVersion;
        return version.buildNumber;
    },
    qelcvGetLibVersion);
