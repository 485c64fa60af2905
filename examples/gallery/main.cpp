// Runs every family of the library on a picture and shows the results on a page.
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>

#include "files.h"
#include "page.h"
#include "pixels.h"
#include "scenes.h"

namespace {

using namespace gallery;

constexpr const char* kUsage =
    "usage: gallery [PICTURE] [--output DIRECTORY]\n"
    "\n"
    "Runs every family of the library on a picture and writes PNG pictures and a page\n"
    "that shows them. PICTURE is a PNG, JPEG, PGM or PPM file; without one the gallery\n"
    "paints a picture of its own. DIRECTORY is made where it is missing; without one\n"
    "it is out/gallery.\n";

struct Options {
    std::string picture;
    std::string directory = "out/gallery";
    bool help = false;
};

Options parse(int argc, char** argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--help" || argument == "-h") {
            options.help = true;
        } else if (argument == "--output") {
            if (++i == argc || argv[i][0] == '\0') throw std::runtime_error("--output needs a directory");
            options.directory = argv[i];
        } else if (argument.rfind("--", 0) == 0) {
            throw std::runtime_error("unknown option " + argument + "; --help tells what there is");
        } else if (!options.picture.empty()) {
            throw std::runtime_error("one picture at a time: " + options.picture + " or " + argument);
        } else {
            options.picture = argument;
        }
    }
    return options;
}

void show(const Options& options) {
    const bool painted = options.picture.empty();
    const Image<Qel8u> rgb = painted ? testPicture({960, 640}).rgb() : readPicture(options.picture);
    const Image<Qel8u> gray = grayOf(rgb);
    std::printf("Picture: %s, %d x %d\n", painted ? "painted by the gallery" : options.picture.c_str(), rgb.width(),
                rgb.height());

    Page page(options.directory, {painted ? "painted by the gallery" : options.picture, rgb.size()}, rgb);
    const std::vector<const Registration*> all = registrations();
    for (std::size_t i = 0; i < all.size(); ++i) {
        std::printf("[%zu/%zu] %s\n", i + 1, all.size(), all[i]->title);
        std::fflush(stdout);
        Section section(all[i]->title, rgb, gray);
        all[i]->fill(section);
        for (const Figure& figure : section.figures()) {
            for (const Timing& timing : figure.timings) {
                std::printf("        %-40s %9.3f ms %9.3f ns/pixel\n", timing.function().c_str(), timing.milliseconds(),
                            timing.nanosecondsPerPixel());
            }
        }
        page.add(*all[i], section);
    }
    std::printf("Open this page in a browser:\n%s\n", page.write().c_str());
}

}  // namespace

int main(int argc, char** argv) {
    try {
        const Options options = parse(argc, argv);
        if (options.help) {
            std::fputs(kUsage, stdout);
        } else {
            show(options);
        }
        return 0;
    } catch (const std::bad_alloc&) {
        std::fputs("gallery: not enough memory for a picture of this size\n", stderr);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "gallery: %s\n", error.what());
    }
    return 1;
}
