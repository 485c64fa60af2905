// Results as a table for people and as JSON for tools.
#ifndef QELCV_BENCH_KIT_REPORT_H_
#define QELCV_BENCH_KIT_REPORT_H_

#include <string>
#include <vector>

#include "kit/contest.h"
#include "kit/machine.h"

namespace bench {

void printMachine(const Machine& machine);
void printHeading(const Place& first);
void printResult(const Result& result);

// False where the file cannot be written.
bool writeJson(const std::string& path, const Machine& machine, const std::vector<Result>& results);

}  // namespace bench

#endif
