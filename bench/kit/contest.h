// One function at one size and thread count: its competitors are compared, then timed turn by turn.
#ifndef QELCV_BENCH_KIT_CONTEST_H_
#define QELCV_BENCH_KIT_CONTEST_H_

#include <memory>
#include <string>
#include <vector>

#include "kit/bench.h"

namespace bench {

// The two builds of a row, and the class of its sizes.
struct Entry {
    std::string name;
    Sizes sizes;
    void (*setupO3)(Case&);
    void (*setupO2)(Case&);  // nullptr in a program without this build
};

// All rows of the program, in the order of their names.
std::vector<Entry> allEntries();

// How long to measure.
struct Effort {
    int rounds;
    double sampleSeconds;  // a sample repeats the call for at least this long, and five times as long on large images
    double totalSeconds;   // fewer rounds, but three, are made where they would take longer
};

// The places of the images, all of them unless told otherwise.
constexpr Place kPlaces[] = {
    {"0", 0, false}, {"16", 16, false}, {"32", 32, false}, {"48", 48, false}, {"mixed", 16, true}};

// Medians over the rounds. A ratio is formed within each round and is 0 where there is no such competitor: how many
// times the time of ours the other one takes, or the share of the machine's bandwidth that ours reaches.
struct PlaceResult {
    const char* place;
    double nsPerCall = 0;
    double plainO3 = 0, plainO2 = 0, peer = 0;
};

// What holds at the first place, and the times and ratios of all.
struct Result {
    std::string name;
    std::string sizeName;
    QelSize size;
    int threads;
    bool agrees = false;  // with the plain loop, or there is none
    bool peerAgrees = false;
    int rounds = 0;
    double nsPerCall = 0;
    double nsPerElement = 0;
    double spread = 0;  // between the quartiles, relative to the median
    double bytesMoved = 0;
    double gigabytesPerSecond = 0;
    std::string limit = {};  // "copy", "read" or empty
    double shareOfLimit = 0;
    double plainO3 = 0, plainO2 = 0, peer = 0;
    std::vector<PlaceResult> places = {};
};

// The longest time of ours at any place, and the least that another takes of it.
PlaceResult worstOf(const std::vector<PlaceResult>& places);

class Contest {
public:
    // What the function moves per pixel of its region.
    static double bytesPerPixel(const Entry& entry);

    Contest(const Entry& entry, std::string sizeName, QelSize size, int threads, const std::vector<Place>& places);

    // Runs ours once against the plain loop and the peer on the same input, then all of them against the clock.
    Result hold(const Effort& effort);

private:
    struct Competitor;
    struct Field;
    using Ratio = double* (*)(Field&);
    using Contents = std::vector<std::vector<char>>;

    static Contents contents(const Case& at);
    static void restore(Case& at, const Contents& contents);
    static bool same(const Case& at, const Contents& contents);
    void compare(Case& at);
    Runs bandwidthLimit(Case& at);
    Field enter(Case& at, const Effort& effort);
    void calibrate(std::vector<Field>& fields, const Effort& effort);
    void sampleInTurns(std::vector<Field>& fields) const;

    std::vector<std::unique_ptr<Case>> cases_;  // one for each place
    Result result_;
};

}  // namespace bench

#endif
