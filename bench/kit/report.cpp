#include "kit/report.h"

#include <cstdio>

namespace bench {
namespace {

// A number without the digits that the measurement does not hold, or a dash.
std::string number(double value, const char* unit = "") {
    char text[32] = "-";
    if (value > 0) std::snprintf(text, sizeof text, "%.*f%s", value < 10 ? 2 : value < 100 ? 1 : 0, value, unit);
    return text;
}

std::string quoted(const std::string& text) {
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') out += '\\';
        out += c;
    }
    return out + '"';
}

void writePlaces(std::FILE* file, const std::vector<PlaceResult>& places) {
    const char* separator = "";
    for (const PlaceResult& p : places) {
        std::fprintf(file,
                     "%s{\"place\": %s, \"nsPerCall\": %.6g, \"plainO3\": %.4g, \"plainO2\": %.4g, \"peer\": %.4g}",
                     separator, quoted(p.place).c_str(), p.nsPerCall, p.plainO3, p.plainO2, p.peer);
        separator = ", ";
    }
    std::fprintf(file, "]}");
}

}  // namespace

void printMachine(const Machine& m) {
    std::printf("%s, %s of %s, %d threads, caches %ld KB, %ld KB, %ld KB\n%s%s%s\n\n", m.processor.c_str(),
                m.instructionSet.c_str(), m.architecture.c_str(), m.threads, m.l1 >> 10, m.l2 >> 10, m.l3 >> 10,
                m.compiler.c_str(), m.peer.empty() ? "" : ", ", m.peer.c_str());
}

void printHeading(const Place& first) {
    std::printf(
        "Times of ours and GB/s: at place %s, and \"worst\", times as long, at the worst place; less is better, GB/s "
        "more.\n"
        "of limit: GB/s as a part of what memcpy (copy) or a sum (read) of as many bytes reaches; more is better.\n"
        "plain-O3, plain-O2, peer: how many times as long as ours they take, at place %s and, behind the stroke, "
        "where\n"
        "they come closest; more is better, below 1 they are ahead. All are medians over turns.\n\n",
        first.name, first.name);
    std::printf("%-44s %-10s %3s %11s %8s %6s %7s  %-9s %12s %12s %12s\n", "", "", "thr", "ns/call", "ns/px", "worst",
                "GB/s", "of limit", "plain-O3", "plain-O2", "peer");
}

void printResult(const Result& r) {
    const std::string limit = r.limit.empty() ? "-" : number(100 * r.shareOfLimit, "% ") + r.limit;
    const PlaceResult worst = worstOf(r.places);
    const bool several = r.places.size() > 1;
    const auto ratios = [several](double first, double least) {
        return number(first, "x") + (several && first > 0 ? "/" + number(least, "x") : "");
    };
    std::printf("%-44s %-10s %3d %11.0f %8s %6s %7s  %-9s %12s %12s %12s%s%s\n", r.name.c_str(), r.sizeName.c_str(),
                r.threads, r.nsPerCall, number(r.nsPerElement).c_str(),
                several ? number(worst.nsPerCall / r.nsPerCall, "x").c_str() : "-",
                number(r.gigabytesPerSecond).c_str(), limit.c_str(), ratios(r.plainO3, worst.plainO3).c_str(),
                ratios(r.plainO2, worst.plainO2).c_str(), ratios(r.peer, worst.peer).c_str(),
                r.agrees ? "" : "  WRONG RESULT", r.peerAgrees ? "" : "  peer's result differs");
    std::fflush(stdout);
}

bool writeJson(const std::string& path, const Machine& m, const std::vector<Result>& results) {
    std::FILE* const file = std::fopen(path.c_str(), "w");
    if (file == nullptr) return false;
    std::fprintf(file,
                 "{\n\"machine\": {\"processor\": %s, \"instructionSet\": %s, \"architecture\": %s, \"compiler\": %s,\n"
                 "            \"peer\": %s, \"threads\": %d, \"l1\": %ld, \"l2\": %ld, \"l3\": %ld},\n\"results\": [",
                 quoted(m.processor).c_str(), quoted(m.instructionSet).c_str(), quoted(m.architecture).c_str(),
                 quoted(m.compiler).c_str(), quoted(m.peer).c_str(), m.threads, m.l1, m.l2, m.l3);
    const char* separator = "\n";
    for (const Result& r : results) {
        std::fprintf(file,
                     "%s{\"name\": %s, \"size\": %s, \"width\": %d, \"height\": %d, \"threads\": %d, \"agrees\": %s, "
                     "\"peerAgrees\": %s, \"rounds\": %d, \"nsPerCall\": %.6g, \"nsPerElement\": %.6g, "
                     "\"spread\": %.3g, \"bytesMoved\": %.0f, \"gigabytesPerSecond\": %.4g, \"limit\": %s, "
                     "\"shareOfLimit\": %.4g, \"plainO3\": %.4g, \"plainO2\": %.4g, \"peer\": %.4g, \"places\": [",
                     separator, quoted(r.name).c_str(), quoted(r.sizeName).c_str(), r.size.width, r.size.height,
                     r.threads, r.agrees ? "true" : "false", r.peerAgrees ? "true" : "false", r.rounds, r.nsPerCall,
                     r.nsPerElement, r.spread, r.bytesMoved, r.gigabytesPerSecond, quoted(r.limit).c_str(),
                     r.shareOfLimit, r.plainO3, r.plainO2, r.peer);
        writePlaces(file, r.places);
        separator = ",\n";
    }
    std::fprintf(file, "\n]\n}\n");
    return std::fclose(file) == 0;
}

}  // namespace bench
