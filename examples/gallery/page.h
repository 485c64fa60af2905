// The gallery as one HTML page that refers to nothing outside its directory.
#ifndef GALLERY_PAGE_H_
#define GALLERY_PAGE_H_

#include <string>
#include <vector>

#include "section.h"

namespace gallery {

// Where and on what the pictures were made.
struct Visit {
    std::string picture;  // the file, or that the gallery painted it
    QelSize size;
};

// Writes pictures and page below `directory`, section by section. Throws std::runtime_error where that fails.
class Page {
public:
    Page(std::string directory, const Visit& visit, const Image<Qel8u>& rgb);

    void add(const Registration& registration, const Section& section);

    // Writes the page and returns its path.
    std::string write() const;

private:
    struct Entry {
        Room room;
        std::string anchor, title, html;
    };
    // Writes a picture file and returns the tag that shows it.
    std::string save(const std::string& name, const std::string& alt, const Image<Qel8u>& image) const;
    std::string navigation() const;
    std::string header() const;

    std::string directory_;
    Visit visit_;
    std::string hero_;
    std::vector<Entry> entries_;
};

// The instruction set that the library chooses on this machine, the architecture of this program.
std::string instructionSet();
std::string architecture();

}  // namespace gallery

#endif
