// What a family adds to the gallery: one file that registers one section.
//
//     void absoluteDifference(Section& section) {
//         Image<Qel8u> difference(section.gray().size());
//         const Timing timing = section.time("qeliAbsDiff_8u_C1R", difference.size(), [&] {
//             return qeliAbsDiff_8u_C1R(...);
//         });
//         section.add({.image = difference, .title = "...", .text = "...", .timings = {timing}});
//     }
//     const Registration registration(Room::Stats, "Absolute difference", "What it is for.", absoluteDifference);
#ifndef GALLERY_SECTION_H_
#define GALLERY_SECTION_H_

#include <qelcv.h>

#include <string>
#include <vector>

#include "image.h"

namespace gallery {

// The rooms of the library, in the order of the page.
enum class Room { Stats, Filter, Morphology, Pyramid, Feature, Segment, Distance, Detect };

// The time that calls of one function took.
class Timing {
public:
    Timing(std::string function, QelSize size) : function_(std::move(function)), size_(size) {}

    // Times one call. Throws std::runtime_error, with the function's name, where it returns an error.
    template <class Call>
    void once(const Call& call) {
        const double start = now();
        const qelStatus status = call();
        milliseconds_.push_back(now() - start);
        if (status < qelStatusOk) fail(status);
    }

    // Times a call again and again for a moment, for a call that does the same each time.
    template <class Call>
    void repeat(const Call& call) {
        once(call);
        milliseconds_.clear();  // the first one met cold memory and threads that slept
        const double end = now() + kRepeatMilliseconds;
        do {
            once(call);
        } while (milliseconds_.size() < 8 || (milliseconds_.size() < 100 && now() < end));
    }

    const std::string& function() const { return function_; }
    double milliseconds() const;  // the shortest: what else the machine does only adds to it
    double nanosecondsPerPixel() const;

private:
    static constexpr double kRepeatMilliseconds = 15;
    static double now();
    [[noreturn]] void fail(qelStatus status) const;

    std::string function_;
    QelSize size_;
    std::vector<double> milliseconds_;
};

// A number beside a picture.
struct Fact {
    std::string name;
    std::string value;
};

// A picture with what is to be known about it.
struct Figure {
    Image<Qel8u> image;
    std::string title;
    std::string text = {};
    std::vector<Timing> timings = {};
    std::vector<Fact> facts = {};
    bool wide = false;  // takes a row of the page for itself
};

class Section {
public:
    Section(std::string title, const Image<Qel8u>& rgb, const Image<Qel8u>& gray)
        : title_(std::move(title)), rgb_(rgb), gray_(gray) {}

    const std::string& title() const { return title_; }
    // The visitor's picture, with three channels and with one.
    const Image<Qel8u>& rgb() const { return rgb_; }
    const Image<Qel8u>& gray() const { return gray_; }

    // Times a call that does the same each time.
    template <class Call>
    Timing time(const char* function, QelSize size, const Call& call) {
        Timing timing(function, size);
        timing.repeat(call);
        return timing;
    }

    void add(Figure figure) { figures_.push_back(std::move(figure)); }
    const std::vector<Figure>& figures() const { return figures_; }

private:
    std::string title_;
    const Image<Qel8u>& rgb_;
    const Image<Qel8u>& gray_;
    std::vector<Figure> figures_;
};

// One object of it per section, with static lifetime.
struct Registration {
    Registration(Room room, const char* title, const char* text, void (*fill)(Section& section));

    Room room;
    const char* title;
    const char* text;
    void (*fill)(Section& section);
};

// All of them, by room and then by title.
std::vector<const Registration*> registrations();

// A number with that many digits behind the point.
std::string digits(double value, int decimals);

}  // namespace gallery

#endif
