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

// Images start at different lines of a page: processors compare addresses by these bits first, and would hold back a
// load for a store that only looks the same.
Case::Block& Case::allocate(size_t bytes, size_t border, Place place) {
    const size_t line = blocks_.size() * 2496 % 4096;
    const size_t off = size_t(place.offset + (place.mixed ? 16 * int(blocks_.size()) : 0)) % kLine;
    const size_t first = (line + border + kLine - 1) / kLine * kLine + off;
    const size_t total = (first - border + bytes + 4095) & ~size_t{4095};
    char* const memory = static_cast<char*>(std::aligned_alloc(4096, total));
    if (memory == nullptr) std::abort();
    return blocks_.emplace_back(
        Block{.memory = {memory, &std::free}, .bytes = total, .first = memory + first, .close = nullptr});
}

PlaceResult worstOf(const std::vector<PlaceResult>& places) {
    PlaceResult worst = places.front();
    for (const PlaceResult& p : places) {
        if (p.nsPerCall > worst.nsPerCall) worst.place = p.place, worst.nsPerCall = p.nsPerCall;
        worst.plainO3 = std::min(worst.plainO3, p.plainO3);
        worst.plainO2 = std::min(worst.plainO2, p.plainO2);
        worst.peer = std::min(worst.peer, p.peer);
    }
    return worst;
}

struct Contest::Competitor {
    Runs runs;
    int threads;
    Ratio ratio;  // where the ratio goes; nullptr for ours
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

// What competes at one place. The ratio of one that is not there stays 0.
struct Contest::Field {
    std::vector<Competitor> competitors;  // ours first
    PlaceResult result;
    double shareOfLimit = 0;

    std::vector<double>& oursSeconds() { return competitors[0].secondsPerCall; }
};

double Contest::bytesPerPixel(const Entry& entry) {
    Case probe({64, 64});
    entry.setupO3(probe);
    return probe.moved_ / (64 * 64);
}

Contest::Contest(const Entry& entry, std::string sizeName, QelSize size, int threads, const std::vector<Place>& places)
    : result_{.name = entry.name, .sizeName = std::move(sizeName), .size = size, .threads = threads} {
    // Ahead of the setup: scratch is as large as the thread limit asks for.
    qelSetNumThreads(threads);
    setPeerThreads(threads);
    for (const Place& place : places) {
        Case& at = *cases_.emplace_back(std::make_unique<Case>(size, place));
        entry.setupO3(at);
        result_.bytesMoved = at.moved_;
        at.build_ = Case::Build::O2;
        at.replayed_ = 0;
        if (entry.setupO2 != nullptr) entry.setupO2(at);
    }
}

Contest::Contents Contest::contents(const Case& at) {
    Contents copy;
    for (const Case::Block& block : at.blocks_) copy.emplace_back(block.memory.get(), block.memory.get() + block.bytes);
    return copy;
}

void Contest::restore(Case& at, const Contents& contents) {
    for (size_t i = 0; i < contents.size(); ++i) std::ranges::copy(contents[i], at.blocks_[i].memory.get());
}

bool Contest::same(const Case& at, const Contents& contents) {
    return std::ranges::equal(at.blocks_, contents, [&at](const Case::Block& block, const std::vector<char>& other) {
        return std::memcmp(block.memory.get(), other.data(), block.bytes) == 0 ||
               (at.tolerance_ > 0 && block.close != nullptr &&
                block.close(block.memory.get(), other.data(), block.bytes, at.tolerance_));
    });
}

void Contest::compare(Case& at) {
    const Contents original = contents(at);
    at.ours_(1);
    const Contents ours = contents(at);
    const auto agrees = [&](const Runs& other) {
        if (!other) return true;
        restore(at, original);
        other(1);
        return same(at, ours);
    };
    result_.peerAgrees &= agrees(at.peer_);
    result_.agrees &= agrees(at.plainO3_) & agrees(at.plainO2_) & !at.failed_;
    restore(at, original);
}

// Moves as many bytes as the function does, if these are enough to tell. The memory is the same for all contests, so
// the largest sets its size.
Runs Contest::bandwidthLimit(Case& at) {
    static std::vector<char> from, to;
    const int threads = result_.threads;
    const size_t bytes = size_t(result_.bytesMoved);
    if (bytes < 4096) return nullptr;  // a matter of call overhead
    from.resize(std::max(from.size(), bytes), 1);
    if (at.writes_) {
        result_.limit = "copy";
        to.resize(std::max(to.size(), bytes / 2), 1);
        return Case::looped([=] { copyMemory(to.data(), from.data(), bytes / 2, threads); }, &at.failed_);
    }
    result_.limit = "read";
    return Case::looped([=] { readMemory(from.data(), bytes, threads); }, &at.failed_);
}

Contest::Field Contest::enter(Case& at, const Effort& effort) {
    Field field{.competitors = {}, .result = {.place = at.place_.name}};
    const auto enter = [&](const Runs& runs, Ratio ratio) {
        // Threads of the OpenMP runtime look for work for some milliseconds. The peer's own need the processors.
        const bool letsOthersSleep = &runs == &at.peer_ && result_.threads > 1 && effort.sampleSeconds > 0;
        if (runs) field.competitors.push_back({runs, result_.threads, ratio, letsOthersSleep});
    };
    enter(at.ours_, nullptr);
    enter(at.plainO3_, [](Field& f) { return &f.result.plainO3; });
    enter(at.plainO2_, [](Field& f) { return &f.result.plainO2; });
    enter(at.peer_, [](Field& f) { return &f.result.peer; });
    if (&at == cases_.front().get()) enter(bandwidthLimit(at), [](Field& f) { return &f.shareOfLimit; });
    return field;
}

// Finds the number of calls at the first place, which the other places take over, and then the number of rounds.
void Contest::calibrate(std::vector<Field>& fields, const Effort& effort) {
    // Each competitor finds its images where the one before left them. If they fill a large cache, several calls pass
    // until they are where its own calls leave them.
    constexpr double kLargeImages = 1 << 20;
    const double sampleSeconds = effort.sampleSeconds * (result_.bytesMoved > kLargeImages ? 5 : 1);
    double roundSeconds = 0;
    for (size_t i = 0; i < fields[0].competitors.size(); ++i) {
        Competitor& first = fields[0].competitors[i];
        roundSeconds += first.calibrate(sampleSeconds) * double(fields.size());
        for (Field& field : fields) {
            if (i < field.competitors.size()) field.competitors[i].callsPerSample = first.callsPerSample;
        }
    }
    const int most = std::max(int(effort.totalSeconds / roundSeconds), 3);
    result_.rounds = std::min(effort.rounds, most);
}

// A round goes from place to place, so that a change of the processor's speed meets all of them alike. At each place
// the competitors have another order each time, lest a rhythm of the system, or the images that another one left in the
// cache, always meet the same one.
void Contest::sampleInTurns(std::vector<Field>& fields) const {
    std::minstd_rand random;
    for (int round = 0; round < result_.rounds; ++round) {
        for (Field& field : fields) {
            std::vector<Competitor*> order;
            order.reserve(field.competitors.size());
            for (Competitor& c : field.competitors) order.push_back(&c);
            std::ranges::shuffle(order, random);
            for (Competitor* c : order) c->sample();
        }
    }
}

Result Contest::hold(const Effort& effort) {
    result_.agrees = result_.peerAgrees = true;
    std::vector<Field> fields;
    for (const std::unique_ptr<Case>& at : cases_) {
        compare(*at);
        fields.push_back(enter(*at, effort));
    }
    calibrate(fields, effort);
    sampleInTurns(fields);

    for (Field& field : fields) {
        const std::vector<double>& ours = field.oursSeconds();
        field.result.nsPerCall = quantile(ours, 0.5) * 1e9;
        for (const Competitor& c : field.competitors) {
            if (c.ratio == nullptr) continue;
            std::vector<double> ratios;
            for (size_t i = 0; i < ours.size(); ++i) ratios.push_back(c.secondsPerCall[i] / ours[i]);
            *c.ratio(field) = quantile(ratios, 0.5);
        }
        result_.places.push_back(field.result);
    }
    Field& first = fields.front();
    const double seconds = quantile(first.oursSeconds(), 0.5);
    const double called = cases_.front()->elements_;
    const double elements = called > 0 ? called : double(result_.size.width) * result_.size.height;
    result_.nsPerCall = seconds * 1e9;
    result_.nsPerElement = seconds * 1e9 / elements;
    result_.gigabytesPerSecond = result_.bytesMoved / seconds * 1e-9;
    result_.spread = (quantile(first.oursSeconds(), 0.75) - quantile(first.oursSeconds(), 0.25)) / seconds;
    result_.shareOfLimit = first.shareOfLimit;
    result_.plainO3 = first.result.plainO3;
    result_.plainO2 = first.result.plainO2;
    result_.peer = first.result.peer;
    return result_;
}

}  // namespace bench
