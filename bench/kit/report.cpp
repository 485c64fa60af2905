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

}  // namespace

void printMachine(const Machine& m) {
    std::printf("%s, %s of %s, %d threads, caches %ld KB, %ld KB, %ld KB\n%s%s%s\n\n", m.processor.c_str(),
                m.instructionSet.c_str(), m.architecture.c_str(), m.threads, m.l1 >> 10, m.l2 >> 10, m.l3 >> 10,
                m.compiler.c_str(), m.peer.empty() ? "" : ", ", m.peer.c_str());
}

void printHeading() {
    std::printf("%-44s %-10s %3s %11s %8s %7s  %-9s %8s %8s %8s\n", "", "", "thr", "ns/call", "ns/px", "GB/s",
                "of limit", "plain-O3", "plain-O2", "peer");
}

void printResult(const Result& r) {
    const std::string limit = r.limit.empty() ? "-" : number(100 * r.shareOfLimit, "% ") + r.limit;
    std::printf("%-44s %-10s %3d %11.0f %8s %7s  %-9s %8s %8s %8s%s%s\n", r.name.c_str(), r.sizeName.c_str(), r.threads,
                r.nsPerCall, number(r.nsPerElement).c_str(), number(r.gigabytesPerSecond).c_str(), limit.c_str(),
                number(r.plainO3, "x").c_str(), number(r.plainO2, "x").c_str(), number(r.peer, "x").c_str(),
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
                     "\"shareOfLimit\": %.4g, \"plainO3\": %.4g, \"plainO2\": %.4g, \"peer\": %.4g}",
                     separator, quoted(r.name).c_str(), quoted(r.sizeName).c_str(), r.size.width, r.size.height,
                     r.threads, r.agrees ? "true" : "false", r.peerAgrees ? "true" : "false", r.rounds, r.nsPerCall,
                     r.nsPerElement, r.spread, r.bytesMoved, r.gigabytesPerSecond, quoted(r.limit).c_str(),
                     r.shareOfLimit, r.plainO3, r.plainO2, r.peer);
        separator = ",\n";
    }
    std::fprintf(file, "\n]\n}\n");
    return std::fclose(file) == 0;
}

}  // namespace bench
