#include "kit/contest.h"

#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <map>
#include <random>

#include "kit/bandwidth.h"
#include "peers/opencv.h"
#include "qelcore.h"

namespace bench {
namespace {

std::map<std::string, Entry>& registry() {
    static std::map<std::string, Entry> entries;
    return entries;
}

// One thread is timed by the processor time it got, so that others' turns on the processor do not count.
double now(int threads) {
    timespec t;
    clock_gettime(threads == 1 ? CLOCK_THREAD_CPUTIME_ID : CLOCK_MONOTONIC, &t);
    return double(t.tv_sec) + double(t.tv_nsec) * 1e-9;
}

double quantile(std::vector<double> values, double q) {
    const auto at = values.begin() + std::ptrdiff_t(q * double(values.size() - 1) + 0.5);
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

}  // namespace

Rows::Rows(Case::Build build, std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
        Entry& entry = registry()[row.name];
        entry.name = row.name;
        entry.sizes = row.sizes;
        (build == Case::Build::O3 ? entry.setupO3 : entry.setupO2) = row.setup;
    }
}

std::vector<Entry> allEntries() {
    std::vector<Entry> entries;
    for (const auto& [name, entry] : registry()) entries.push_back(entry);
    return entries;
}

Image<Qel8u> Case::mask(Shape shape) {
    const Image<Qel8u> image = input<Qel8u>(shape);
    if (build_ == Build::O3) {
        Block& block = blocks_.back();
        for (size_t i = 0; i < block.bytes; ++i) block.memory.get()[i] = block.memory.get()[i] & 1 ? -1 : 0;
    }
    return image;
}

char* Case::scratch(size_t bytes) {
    return keep(static_cast<char*>(std::aligned_alloc(64, (bytes + 63) & ~size_t{63})), std::free);
}

// Images start at different offsets within a page: processors compare addresses by these bits first, and would hold
// back a load for a store that only looks the same.
Case::Block& Case::allocate(size_t bytes, size_t border) {
    const size_t offset = blocks_.size() * 2496 % 4096;
    const size_t total = (bytes + offset + 4095) & ~size_t{4095};
    char* const memory = static_cast<char*>(std::aligned_alloc(4096, total));
    if (memory == nullptr) std::abort();
    return blocks_.emplace_back(
        Block{.memory = {memory, &std::free}, .bytes = total, .first = memory + offset + border, .close = nullptr});
}

struct Contest::Competitor {
    Runs runs;
    int threads;
    double* ratio;  // in the result
    bool letsOthersSleep;
    int callsPerSample = 1;
    std::vector<double> secondsPerCall = {};

    double measure(int calls) const {
        const double start = now(threads);
        runs(calls);
        return now(threads) - start;
    }

    // Finds how many calls make a sample long enough, and returns its seconds. Warms up on the way. The shorter of two
    // times counts, lest an interruption pass for work.
    double calibrate(double sampleSeconds) {
        const auto shorter = [this](int calls) { return std::min(measure(calls), measure(calls)); };
        double seconds = measure(1);
        if (seconds < sampleSeconds) seconds = shorter(1);
        while (seconds < sampleSeconds) {
            const double growth = std::clamp(1.2 * sampleSeconds / std::max(seconds, 1e-9), 2.0, 100.0);
            callsPerSample = int(std::min(callsPerSample * growth, 1e9));
            seconds = shorter(callsPerSample);
        }
        return seconds;
    }

    void sample() {
        if (letsOthersSleep) usleep(15000);
        if (callsPerSample > 1 || letsOthersSleep) runs(1);
        secondsPerCall.push_back(measure(callsPerSample) / callsPerSample);
    }
};

double Contest::bytesPerPixel(const Entry& entry) {
    Case probe({64, 64});
    entry.setupO3(probe);
    return probe.moved_ / (64 * 64);
}

Contest::Contest(const Entry& entry, std::string sizeName, QelSize size, int threads)
    : case_(size), result_{.name = entry.name, .sizeName = std::move(sizeName), .size = size, .threads = threads} {
    // Ahead of the setup: scratch is as large as the thread limit asks for.
    qelSetNumThreads(threads);
    setPeerThreads(threads);
    entry.setupO3(case_);
    result_.bytesMoved = case_.moved_;
    case_.build_ = Case::Build::O2;
    case_.replayed_ = 0;
    entry.setupO2(case_);
}

Contest::Contents Contest::contents() const {
    Contents copy;
    for (const Case::Block& block : case_.blocks_)
        copy.emplace_back(block.memory.get(), block.memory.get() + block.bytes);
    return copy;
}

void Contest::restore(const Contents& contents) {
    for (size_t i = 0; i < contents.size(); ++i) std::ranges::copy(contents[i], case_.blocks_[i].memory.get());
}

bool Contest::sameAs(const Contents& contents) const {
    return std::ranges::equal(case_.blocks_, contents,
                              [this](const Case::Block& block, const std::vector<char>& other) {
                                  return std::memcmp(block.memory.get(), other.data(), block.bytes) == 0 ||
                                         (case_.tolerance_ > 0 && block.close != nullptr &&
                                          block.close(block.memory.get(), other.data(), block.bytes, case_.tolerance_));
                              });
}

// Moves as many bytes as the function does, if these are enough to tell. The memory is the same for all contests, so
// the largest sets its size.
Runs Contest::bandwidthLimit() {
    static std::vector<char> from, to;
    const int threads = result_.threads;
    const size_t bytes = size_t(result_.bytesMoved);
    if (bytes < 4096) return nullptr;  // a matter of call overhead
    from.resize(std::max(from.size(), bytes), 1);
    if (case_.writes_) {
        result_.limit = "copy";
        to.resize(std::max(to.size(), bytes / 2), 1);
        return case_.looped([=] { copyMemory(to.data(), from.data(), bytes / 2, threads); }, &case_.failed_);
    }
    result_.limit = "read";
    return case_.looped([=] { readMemory(from.data(), bytes, threads); }, &case_.failed_);
}

Result Contest::hold(const Effort& effort) {
    const Contents original = contents();
    case_.ours_(1);
    const Contents ours = contents();
    const auto agrees = [&](const Runs& other) {
        if (!other) return true;
        restore(original);
        other(1);
        return sameAs(ours);
    };
    result_.peerAgrees = agrees(case_.peer_);
    result_.agrees = agrees(case_.plainO3_) && agrees(case_.plainO2_) && !case_.failed_;
    restore(original);

    std::vector<Competitor> competitors;
    const auto enter = [&](const Runs& runs, double* ratio) {
        // Threads of the OpenMP runtime look for work for some milliseconds. The peer's own need the processors.
        const bool letsOthersSleep = ratio == &result_.peer && result_.threads > 1 && effort.sampleSeconds > 0;
        if (runs) competitors.push_back({runs, result_.threads, ratio, letsOthersSleep});
    };
    enter(case_.ours_, nullptr);
    enter(case_.plainO3_, &result_.plainO3);
    enter(case_.plainO2_, &result_.plainO2);
    enter(case_.peer_, &result_.peer);
    enter(bandwidthLimit(), &result_.shareOfLimit);

    // Each competitor finds its images where the one before left them. If they fill a large cache, several calls pass
    // until they are where its own calls leave them.
    constexpr double kLargeImages = 1 << 20;
    const double sampleSeconds = effort.sampleSeconds * (result_.bytesMoved > kLargeImages ? 5 : 1);
    double roundSeconds = 0;
    for (Competitor& c : competitors) roundSeconds += c.calibrate(sampleSeconds);
    const int most = std::max(int(effort.totalSeconds / roundSeconds), 3);
    result_.rounds = std::min(effort.rounds, most);
    // Each round has an order of its own, lest a rhythm of the system, or the images that another one left in the
    // cache, always meet the same one.
    std::vector<Competitor*> order;
    order.reserve(competitors.size());
    for (Competitor& c : competitors) order.push_back(&c);
    std::minstd_rand random;
    for (int round = 0; round < result_.rounds; ++round) {
        std::ranges::shuffle(order, random);
        for (Competitor* c : order) c->sample();
    }

    const std::vector<double>& oursSeconds = competitors[0].secondsPerCall;
    for (const Competitor& c : competitors) {
        if (c.ratio == nullptr) continue;
        std::vector<double> ratios;
        for (size_t i = 0; i < oursSeconds.size(); ++i) ratios.push_back(c.secondsPerCall[i] / oursSeconds[i]);
        *c.ratio = quantile(ratios, 0.5);
    }
    const double seconds = quantile(oursSeconds, 0.5);
    const double elements = case_.elements_ > 0 ? case_.elements_ : double(result_.size.width) * result_.size.height;
    result_.nsPerCall = seconds * 1e9;
    result_.nsPerElement = seconds * 1e9 / elements;
    result_.gigabytesPerSecond = result_.bytesMoved / seconds * 1e-9;
    result_.spread = (quantile(oursSeconds, 0.75) - quantile(oursSeconds, 0.25)) / seconds;
    return result_;
}

}  // namespace bench
