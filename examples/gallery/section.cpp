#include "section.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <stdexcept>

namespace gallery {
namespace {

std::vector<const Registration*>& registered() {
    static std::vector<const Registration*> all;
    return all;
}

}  // namespace

double Timing::milliseconds() const {
    return milliseconds_.empty() ? 0 : *std::min_element(milliseconds_.begin(), milliseconds_.end());
}

double Timing::nanosecondsPerPixel() const {
    return milliseconds() * 1e6 / (static_cast<double>(size_.width) * size_.height);
}

double Timing::now() {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void Timing::fail(qelStatus status) const {
    throw std::runtime_error(function_ + " returned status " + std::to_string(static_cast<int>(status)));
}

Registration::Registration(Room room, const char* title, const char* text, void (*fill)(Section&))
    : room(room), title(title), text(text), fill(fill) {
    registered().push_back(this);
}

std::vector<const Registration*> registrations() {
    std::vector<const Registration*> sorted = registered();
    std::sort(sorted.begin(), sorted.end(), [](const Registration* a, const Registration* b) {
        return a->room != b->room ? a->room < b->room : std::strcmp(a->title, b->title) < 0;
    });
    return sorted;
}

std::string digits(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

}  // namespace gallery
