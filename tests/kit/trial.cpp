#include "kit/trial.h"

#include <optional>
#include <ostream>
#include <sstream>

#include "kit/core_double.h"
#include "kit/fault_report.h"

namespace kit {
namespace {

constexpr Content kContents[] = {Content::kRandom, Content::kRandom,  Content::kEnds,
                                 Content::kLowest, Content::kHighest, Content::kSpecial};
constexpr int kThreads[] = {1, 2, 3, 33};

std::optional<uint32_t> repeated;

}  // namespace

Seeds seeds(uint32_t count) {
    if (!repeated) return {0, count};
    return *repeated < count ? Seeds(*repeated, *repeated + 1) : Seeds(count, count);
}

void repeatOnly(uint32_t seed) { repeated = seed; }

Trial::Trial(uint32_t seed, QelSize roi, int numThreads)
    : size(roi), threads(numThreads), seed_(seed), random_(seed), content_(kContents[seed % std::size(kContents)]) {
    core().threads = threads;
    setCurrentTrial(this);
}

Trial::Trial(uint32_t seed) : Trial(seed, {1, 1}, kThreads[seed / 7 % std::size(kThreads)]) {
    if (seed < kEveryWidth) {
        size = {static_cast<int>(seed) + 1, between(1, 4)};
    } else {
        size = {between(1, between(1, 300)), between(1, between(1, 40))};
    }
}

Trial::~Trial() { setCurrentTrial(nullptr); }

int Trial::between(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random_); }

Qel32f Trial::specialFloat() {
    using Limits = std::numeric_limits<Qel32f>;
    switch (between(0, 11)) {
        case 0:
            return Limits::quiet_NaN();
        case 1:
            return -Limits::quiet_NaN();
        case 2:
            return Limits::infinity();
        case 3:
            return -Limits::infinity();
        case 4:
            return 0.0F;
        case 5:
            return -0.0F;
        case 6:
            return Limits::denorm_min();
        case 7:
            return Limits::max();
        case 8:
            return Limits::lowest();
        default:
            return sampleOf<Qel32f>(Content::kRandom);
    }
}

std::string Trial::text() const {
    std::ostringstream out;
    out << *this;
    return out.str();
}

std::ostream& operator<<(std::ostream& out, const Trial& trial) {
    constexpr const char* kNames[] = {"random", "lowest", "highest", "ends", "special"};
    const CoreDouble& c = core();
    out << "seed " << trial.seed_ << ": " << trial.size.width << "x" << trial.size.height << ", " << trial.threads
        << (trial.threads == 1 ? " thread" : " threads") << ", contents " << kNames[size_t(trial.content_)];
    if (c.threads != trial.threads) out << ", thread limit " << c.threads;
    out << ", cache " << c.cacheSize << ", cores " << c.cores;
    if (c.allocationsLeft >= 0) out << ", " << c.allocationsLeft << " allocations left";
    return out << trial.notes_;
}

}  // namespace kit
