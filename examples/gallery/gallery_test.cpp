// Runs the gallery as its users do, on files of every format and on what is no picture at all.
//
// usage: gallery_test PROGRAM DIRECTORY
#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "files.h"
#include "scenes.h"
#include "section.h"

namespace {

namespace fs = std::filesystem;
using namespace gallery;

int failures = 0;

void check(bool holds, const std::string& what) {
    if (holds) return;
    std::printf("FAILED: %s\n", what.c_str());
    ++failures;
}

std::string contents(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

struct Run {
    int status;
    std::string out, err;
};

Run run(const std::string& command) {
    const int result = std::system((command + " >out.txt 2>err.txt").c_str());
    return {WIFEXITED(result) ? WEXITSTATUS(result) : -1, contents("out.txt"), contents("err.txt")};
}

std::string lastLine(std::string text) {
    while (!text.empty() && text.back() == '\n') text.pop_back();
    return text.substr(text.rfind('\n') + 1);
}

// What stands in `attribute="..."`, wherever that is in the page.
std::vector<std::string> valuesOf(const std::string& attribute, const std::string& html) {
    std::vector<std::string> values;
    const std::string start = attribute + "=\"";
    for (std::size_t at = html.find(start); at != std::string::npos; at = html.find(start, at)) {
        at += start.size();
        values.push_back(html.substr(at, html.find('"', at) - at));
    }
    return values;
}

// Every picture of the page is there, and can be read; nothing refers elsewhere.
void checkPage(const fs::path& page) {
    const std::string html = contents(page);
    check(html.find("qeliAbsDiff_8u_C1R") != std::string::npos, "the page names the functions");
    const std::vector<std::string> pictures = valuesOf(" src", html);
    check(pictures.size() >= 10, "the page shows its pictures");
    for (const std::string& name : pictures) {
        check(name.find_first_of(":/") == std::string::npos, name + " is outside of the page");
        check(readPicture(page.parent_path() / name).width() > 0, name + " is a picture");
    }
    for (const std::string& target : valuesOf(" href", html)) {
        const bool section =
            target.starts_with("#") && html.find("id=\"" + target.substr(1) + "\"") != std::string::npos;
        const bool picture = std::find(pictures.begin(), pictures.end(), target) != pictures.end();
        check(section || picture, "the page has no " + target);
    }
}

void shows(const std::string& program, const std::string& name, const std::string& picture, const std::string& size) {
    const fs::path directory = fs::current_path() / "deep" / name;
    const Run result = run(program + " " + picture + " --output " + directory.string());
    check(result.status == 0, name + ": exit status " + std::to_string(result.status) + ", " + result.err);
    check(lastLine(result.out) == directory / "index.html", name + ": the last line is the page's path");
    if (!fs::exists(directory / "index.html")) return check(false, name + ": there is no page");
    check(contents(directory / "index.html").find(size) != std::string::npos, name + ": the page tells the size");
    checkPage(directory / "index.html");
}

void refuses(const std::string& program, const std::string& arguments, const std::string& message) {
    const Run result = run(program + " " + arguments);
    check(result.status == 1, arguments + ": exit status " + std::to_string(result.status));
    check(result.err.find(message) != std::string::npos, arguments + ": says \"" + result.err + "\"");
}

// A call that fails ends the tour, with the function's name.
void checkTimings() {
    Timing timing("qeliName", {1000, 100});
    timing.repeat([] { return qelStatusDivideByZero; });
    check(timing.milliseconds() > 0, "a call takes time");
    const double perPixel = timing.milliseconds() * 1e6 / 100000;
    check(std::abs(timing.nanosecondsPerPixel() - perPixel) <= perPixel * 1e-9, "100000 pixels share it");
    try {
        timing.once([] { return qelStatusBadStep; });
        check(false, "an error is thrown");
    } catch (const std::runtime_error& error) {
        check(error.what() == std::string("qeliName returned status -14"), error.what());
    }
}

void checkAll(const std::string& program) {
    shows(program, "painted", "", "960 × 640");

    const Canvas picture = testPicture({150, 101});
    const auto showsFile = [&](const std::string& name, const Image<Qel8u>& image) {
        writePicture(name, image);
        shows(program, "from-" + name, name, "150 × 101");
    };
    showsFile("picture.png", picture.rgb());
    showsFile("picture.jpg", picture.rgb());
    showsFile("picture.ppm", picture.rgb());
    showsFile("picture.pgm", picture.gray());
    writePicture("pixel.png", testPicture({1, 1}).rgb());
    shows(program, "pixel", "pixel.png", "1 × 1");
    writePicture("a <wide> & \"odd\" name.png", testPicture({2000, 2}).rgb());
    shows(program, "odd", "'a <wide> & \"odd\" name.png'", "2000 × 2");

    refuses(program, "missing.png", "cannot read missing.png: No such file");
    std::ofstream("text.png") << "This is no picture.";
    refuses(program, "text.png", "cannot read text.png: not a PNG");
    std::ofstream("empty.jpg") << "";
    refuses(program, "empty.jpg", "cannot read empty.jpg: not a PNG");
    std::ofstream("half.png", std::ios::binary) << contents("picture.png").substr(0, 200);
    refuses(program, "half.png", "cannot read half.png: not a PNG");
    refuses(program, ".", "it is a directory");
    refuses(program, "--output text.png/below", "cannot make the directory text.png/below");
    refuses(program, "--output text.png", "cannot ");
    refuses(program, "--output", "--output needs a directory");
    refuses(program, "--colour", "unknown option --colour");
    refuses(program, "picture.png picture.jpg", "one picture at a time");

    const Run help = run(program + " --help");
    check(help.status == 0 && help.out.find("usage: gallery") == 0, "--help explains the use");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    try {
        const std::string program = fs::absolute(argv[1]);
        fs::remove_all(argv[2]);
        fs::create_directories(argv[2]);
        fs::current_path(argv[2]);
        checkTimings();
        checkAll(program);
    } catch (const std::exception& error) {
        check(false, error.what());
    }
    std::printf(failures == 0 ? "all checks passed\n" : "%d checks failed\n", failures);
    return failures == 0 ? 0 : 1;
}
