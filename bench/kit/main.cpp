// Benchmarks of the exported functions, each beside the plain loop, the peer and the machine's bandwidth.
#include <getopt.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <regex>
#include <sstream>

#include "kit/contest.h"
#include "kit/machine.h"
#include "kit/report.h"

namespace bench {
namespace {

constexpr char kUsage[] =
    "Usage: qelcv_bench [options]\n"
    "  --filter REGEX   functions whose name contains a match\n"
    "  --sizes LIST     WIDTHxHEIGHT, L1, L2 or memory (16x16,64x64,640x480,1920x1080,memory)\n"
    "  --threads LIST   numbers, or all (1,all; more than one thread from 640x480 on)\n"
    "  --places LIST    bytes from a line of the cache to the images: 0, 16, 32, 48, or mixed, where each has another\n"
    "                   and steps are no multiples of a line (0,16,32,48,mixed; only the first of the list for more "
    "than\n"
    "                   one thread and for images in memory)\n"
    "  --target NAME    use this instruction set, such as SSSE3 or AVX-512\n"
    "  --rounds N       samples of each competitor at each place (9)\n"
    "  --quick          check all results, measure hardly, at one place\n"
    "  --json FILE      write the results there, too\n"
    "  --list           print the names and stop\n";

struct Options {
    std::string filter, json, target;
    std::string sizes = "16x16,64x64,640x480,1920x1080,memory";
    std::string threads = "1,all";
    std::string places = "0,16,32,48,mixed";
    Effort effort = {.rounds = 9, .sampleSeconds = 1e-3, .totalSeconds = 4};
    bool list = false;
};

[[noreturn]] void fail(const std::string& message) {
    std::fprintf(stderr, "qelcv_bench: %s\n%s", message.c_str(), kUsage);
    std::exit(2);
}

int positive(const std::string& text) {
    char* end;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != 0 || value < 1 || value > 1 << 20) fail("not a number in range: " + text);
    return int(value);
}

Options parse(int argc, char** argv) {
    const option known[] = {{"filter", 1, nullptr, 'f'},
                            {"sizes", 1, nullptr, 's'},
                            {"threads", 1, nullptr, 't'},
                            {"target", 1, nullptr, 'i'},
                            {"places", 1, nullptr, 'p'},
                            {"rounds", 1, nullptr, 'r'},
                            {"quick", 0, nullptr, 'q'},
                            {"json", 1, nullptr, 'j'},
                            {"list", 0, nullptr, 'l'},
                            {"help", 0, nullptr, 'h'},
                            {}};
    Options o;
    for (int c; (c = getopt_long(argc, argv, "", known, nullptr)) != -1;) {
        switch (c) {
            case 'f':
                o.filter = optarg;
                break;
            case 's':
                o.sizes = optarg;
                break;
            case 't':
                o.threads = optarg;
                break;
            case 'p':
                o.places = optarg;
                break;
            case 'i':
                o.target = optarg;
                break;
            case 'r':
                o.effort.rounds = positive(optarg);
                break;
            case 'j':
                o.json = optarg;
                break;
            case 'l':
                o.list = true;
                break;
            case 'q':
                o.sizes = "16x16,640x480";
                o.places = "16";
                o.effort = {.rounds = 1, .sampleSeconds = 0, .totalSeconds = 0};
                break;
            case 'h':
                std::printf("%s", kUsage);
                std::exit(0);
            default:
                fail("bad arguments");
        }
    }
    if (optind < argc) fail(std::string("unknown argument ") + argv[optind]);
    return o;
}

std::regex compiled(const std::string& expression) {
    try {
        return std::regex(expression);
    } catch (const std::regex_error& error) {
        fail("--filter: " + std::string(error.what()));
    }
}

std::vector<std::string> split(const std::string& list) {
    std::vector<std::string> parts;
    std::istringstream in(list);
    for (std::string part; std::getline(in, part, ',');) parts.push_back(part);
    return parts;
}

std::vector<Place> placesOf(const std::string& list) {
    std::vector<Place> places;
    for (const std::string& name : split(list)) {
        const auto* place = std::ranges::find(kPlaces, name, &Place::name);
        if (place == std::end(kPlaces)) fail("unknown place " + name);
        places.push_back(*place);
    }
    if (places.empty()) fail("no places");
    return places;
}

// A region whose images take up half of a cache, or four times the last one. No row length is a power of two, which
// would make the rows of an image meet in the same lines of a cache.
QelSize regionOf(const std::string& name, double bytesPerPixel, const Machine& m) {
    const double most = sizeof(void*) == 4 ? 1 << 28 : 1 << 29;
    const double volume = name == "L1"       ? double(m.l1) / 2
                          : name == "L2"     ? double(m.l2) / 2
                          : name == "memory" ? std::clamp(4.0 * double(m.l3), double(1 << 27), most)
                                             : 0;
    if (volume == 0) {
        const size_t x = name.find('x');
        if (x == std::string::npos) fail("unknown size " + name);
        return {positive(name.substr(0, x)), positive(name.substr(x + 1))};
    }
    const double pixels = volume / std::max(bytesPerPixel, 1.0);
    const int width = std::max(int(std::sqrt(pixels) / 64 + 0.5), 1) * 64;
    return {width + (width >= 512 && (width & (width - 1)) == 0 ? 64 : 0), std::max(int(pixels / width), 1)};
}

// Where memory speed cannot show, its size only costs time.
bool isComputeBound(const std::vector<Result>& results, const std::string& name, QelSize region) {
    const double pixels = double(region.width) * region.height;
    const auto isSlow = [&](const Result& r) { return r.name != name || r.nsPerElement * pixels > 0.25e9; };
    return !results.empty() && results.back().name == name && std::ranges::all_of(results, isSlow);
}

int run(const Options& o) {
    const Machine machine = identifyMachine(o.target);
    const std::regex filter = compiled(o.filter);
    const std::vector<Place> places = placesOf(o.places);
    std::vector<Result> results;
    bool correct = true;
    if (!o.list) {
        printMachine(machine);
        printHeading(places.front());
    }
    for (const Entry& entry : allEntries()) {
        if (!std::regex_search(entry.name, filter)) continue;
        if (o.list) {
            std::printf("%s\n", entry.name.c_str());
            continue;
        }
        const double bytesPerPixel = Contest::bytesPerPixel(entry);
        for (const std::string& sizeName : split(entry.sizes == Sizes::One ? "16x16" : o.sizes)) {
            const QelSize region = regionOf(sizeName, bytesPerPixel, machine);
            if (sizeName == "memory" && isComputeBound(results, entry.name, region)) continue;
            for (const std::string& count : split(o.threads)) {
                const int threads = count == "all" ? machine.threads : positive(count);
                if (count == "all" && (threads == 1 || double(region.width) * region.height < 640 * 480)) continue;
                const bool everywhere = threads == 1 && sizeName != "memory";
                const auto at = everywhere ? places : std::vector{places.front()};
                results.push_back(Contest(entry, sizeName, region, threads, at).hold(o.effort));
                printResult(results.back());
                correct &= results.back().agrees;
            }
        }
    }
    if (!o.json.empty() && !writeJson(o.json, machine, results)) {
        std::fprintf(stderr, "qelcv_bench: cannot write %s\n", o.json.c_str());
        return 1;
    }
    if (!correct) std::fprintf(stderr, "qelcv_bench: a result differs from that of the plain loop\n");
    return correct ? 0 : 1;
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) { return bench::run(bench::parse(argc, argv)); }
