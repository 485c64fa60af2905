// One function at one size and thread count: its competitors are compared, then timed turn by turn.
#ifndef QELCV_BENCH_KIT_CONTEST_H_
#define QELCV_BENCH_KIT_CONTEST_H_

#include <string>

#include "kit/bench.h"

namespace bench {

// The two builds of a row, and the class of its sizes.
struct Entry {
    std::string name;
    Sizes sizes;
    void (*setupO3)(Case&);
    void (*setupO2)(Case&);
};

// All rows of the program, in the order of their names.
std::vector<Entry> allEntries();

// How long to measure.
struct Effort {
    int rounds;
    double sampleSeconds;  // a sample repeats the call for at least this long, and five times as long on large images
    double totalSeconds;   // fewer rounds, but three, are made where they would take longer
};

// Medians over the rounds. A ratio is formed within each round and is 0 where there is no such competitor: how many
// times the time of ours the other one takes, or the share of the machine's bandwidth that ours reaches.
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
};

class Contest {
public:
    // What the function moves per pixel of its region.
    static double bytesPerPixel(const Entry& entry);

    Contest(const Entry& entry, std::string sizeName, QelSize size, int threads);

    // Runs ours once against the plain loop and the peer on the same input, then all of them against the clock.
    Result hold(const Effort& effort);

private:
    struct Competitor;
    using Contents = std::vector<std::vector<char>>;

    Contents contents() const;
    void restore(const Contents& contents);
    bool sameAs(const Contents& contents) const;
    Runs bandwidthLimit();

    Case case_;
    Result result_;
};

}  // namespace bench

#endif
