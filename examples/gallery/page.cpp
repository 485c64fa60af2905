#include "page.h"

#include <qelcore.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "files.h"
#include "pixels.h"

namespace gallery {
namespace {

// No picture of the page has a longer side; larger ones are reduced for showing only.
constexpr int kShownLength = 1440;

constexpr const char* kRoomNames[] = {"Arithmetic and statistics", "Filters",         "Morphology",
                                      "Pyramids and motion",       "Features",        "Segmentation",
                                      "Distance and inpainting",   "Object detection"};

constexpr const char* kStyle = R"css(
:root {
  color-scheme: light dark;
  --page: #faf8f5; --card: #fff; --ink: #1d1b26; --soft: #6a6675; --line: #e6e1da; --accent: #b4472f; --chip: #f3eee7;
  --shade: 0 1px 2px rgb(40 30 20 / .06), 0 6px 20px rgb(40 30 20 / .06);
  --mono: ui-monospace, "SF Mono", "Cascadia Mono", "DejaVu Sans Mono", monospace;
}
@media (prefers-color-scheme: dark) {
  :root {
    --page: #14131a; --card: #1d1c26; --ink: #ece9f1; --soft: #a09bb0; --line: #2e2c3b; --accent: #f09a6f;
    --chip: #272533; --shade: 0 1px 2px rgb(0 0 0 / .4);
  }
}
* { box-sizing: border-box; }
html { scroll-behavior: smooth; scroll-padding-top: 4.5rem; }
body { margin: 0; background: var(--page); color: var(--ink); font: 16px/1.55 system-ui, "DejaVu Sans", sans-serif; }
main, .top, nav > div { max-width: 84rem; margin: 0 auto; padding: 0 1.5rem; }
.top { display: grid; grid-template-columns: minmax(0, 1fr); gap: 2.5rem; padding-block: 3rem 2.5rem; align-items: center; }
@media (min-width: 60rem) { .top { grid-template-columns: minmax(0, 1fr) minmax(0, 1.15fr); } }
h1 { font-size: clamp(2.2rem, 5vw, 3.4rem); line-height: 1.08; letter-spacing: -.03em; margin: 0 0 .8rem; }
h2 { font-size: 1.9rem; letter-spacing: -.02em; margin: 0 0 .3rem; line-height: 1.2; }
h3 { font-size: 1.02rem; margin: 0; }
p { margin: 0; }
a { color: inherit; }
code { font: .84em/1.5 var(--mono); overflow-wrap: anywhere; }
.eyebrow { color: var(--accent); font-size: .8rem; font-weight: 650; letter-spacing: .08em; text-transform: uppercase; }
.lead { color: var(--soft); font-size: 1.08rem; max-width: 46rem; }
.machine { display: grid; grid-template-columns: repeat(auto-fit, minmax(9.5rem, 1fr)); gap: .9rem 1.5rem; margin: 1.8rem 0 0; }
.machine dt { color: var(--soft); font-size: .8rem; }
.machine dd { margin: 0; font-weight: 600; overflow-wrap: anywhere; }
.top img { display: block; width: 100%; height: auto; border-radius: 14px; box-shadow: var(--shade); }
nav { position: sticky; top: 0; z-index: 1; background: color-mix(in srgb, var(--page) 88%, transparent);
  backdrop-filter: blur(10px); border-block: 1px solid var(--line); }
nav > div { display: flex; gap: .4rem; overflow-x: auto; padding-block: .6rem; }
nav a { flex: none; padding: .3rem .8rem; border-radius: 99px; text-decoration: none; font-size: .9rem; }
nav a:hover, nav a:focus-visible { background: var(--chip); color: var(--accent); }
section { padding: 3rem 0 1rem; }
.figures { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(100%, 25rem), 1fr)); grid-auto-flow: dense;
  gap: 1.5rem; margin-top: 1.6rem; }
figure { margin: 0; background: var(--card); border: 1px solid var(--line); border-radius: 14px; overflow: hidden;
  box-shadow: var(--shade); display: flex; flex-direction: column; }
figure.wide { grid-column: 1 / -1; }
figure img { display: block; width: 100%; height: auto; background: var(--chip); }
figcaption { padding: 1rem 1.15rem 1.15rem; display: flex; flex-direction: column; gap: .6rem; flex: 1; }
figure.wide :is(p, table) { max-width: 46rem; }
figcaption p { color: var(--soft); font-size: .93rem; }
.facts { display: flex; flex-wrap: wrap; gap: .4rem; margin: 0; padding: 0; list-style: none; font-size: .84rem; }
.facts li { background: var(--chip); border-radius: 7px; padding: .15rem .55rem; }
.facts b { font-variant-numeric: tabular-nums; }
.timings { width: 100%; border-collapse: collapse; margin-top: auto; font-variant-numeric: tabular-nums; font-size: .86rem; }
.timings td { border-top: 1px solid var(--line); padding: .4rem 0; vertical-align: baseline; }
.timings td + td { text-align: right; white-space: nowrap; padding-left: .8rem; color: var(--soft); }
footer { color: var(--soft); font-size: .88rem; padding: 2.5rem 0 3.5rem; }
@media print { nav { display: none; } figure { break-inside: avoid; } }
)css";

// Text as HTML shows it.
std::string escaped(const std::string& text) {
    std::string html;
    for (const char c : text) {
        switch (c) {
            case '&':
                html += "&amp;";
                break;
            case '<':
                html += "&lt;";
                break;
            case '>':
                html += "&gt;";
                break;
            case '"':
                html += "&quot;";
                break;
            default:
                html += c;
        }
    }
    return html;
}

// A title as part of a file name: lower-case words joined by hyphens.
std::string slug(const std::string& title) {
    std::string name;
    for (const char c : title) {
        if (std::isalnum(static_cast<unsigned char>(c))) {
            name += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        } else if (!name.empty() && name.back() != '-') {
            name += '-';
        }
    }
    return name;
}

// Three significant digits.
std::string significant(double value) {
    return digits(value, value <= 0 ? 0 : std::clamp(2 - static_cast<int>(std::floor(std::log10(value))), 0, 4));
}

std::string factsOf(const Figure& figure) {
    std::string html;
    for (const Fact& fact : figure.facts) {
        html += "<li>" + escaped(fact.name) + " <b>" + escaped(fact.value) + "</b></li>";
    }
    return html.empty() ? html : "<ul class=\"facts\">" + html + "</ul>\n";
}

std::string timingsOf(const Figure& figure) {
    std::string html;
    for (const Timing& timing : figure.timings) {
        html += "<tr><td><code>" + escaped(timing.function()) + "</code></td><td>" +
                significant(timing.milliseconds()) + " ms</td><td>" + significant(timing.nanosecondsPerPixel()) +
                " ns/pixel</td></tr>";
    }
    return html.empty() ? html : "<table class=\"timings\">" + html + "</table>\n";
}

std::string entryOf(const char* name, const std::string& value) {
    return std::string("<div><dt>") + name + "</dt><dd>" + escaped(value) + "</dd></div>\n";
}

}  // namespace

std::string instructionSet() {
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl")) {
        return "AVX-512";
    }
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") && __builtin_cpu_supports("bmi2"))
        return "AVX2";
    return __builtin_cpu_supports("sse4.2") ? "SSE4" : "SSSE3";
}

std::string architecture() { return sizeof(void*) == 4 ? "i386 (32-bit)" : "x86-64"; }

Page::Page(std::string directory, const Visit& visit, const Image<Qel8u>& rgb)
    : directory_(std::move(directory)), visit_(visit) {
    std::error_code error;
    std::filesystem::create_directories(directory_, error);
    if (error) throw std::runtime_error("cannot make the directory " + directory_ + ": " + error.message());
    hero_ = save("picture.png", "the picture", rgb);
}

std::string Page::save(const std::string& name, const std::string& alt, const Image<Qel8u>& image) const {
    const int longest = std::max(image.width(), image.height());
    const Image<Qel8u> shown = reduced(image, (longest + kShownLength - 1) / kShownLength);
    writePicture(directory_ + "/" + name, shown);
    return "<img src=\"" + name + "\" width=\"" + std::to_string(shown.width()) + "\" height=\"" +
           std::to_string(shown.height()) + "\" alt=\"" + escaped(alt) + "\">";
}

void Page::add(const Registration& registration, const Section& section) {
    Entry entry = {registration.room, slug(registration.title), registration.title, ""};
    entry.html = "<section id=\"" + entry.anchor + "\">\n<p class=\"eyebrow\">" +
                 kRoomNames[static_cast<int>(entry.room)] + "</p>\n<h2>" + escaped(entry.title) +
                 "</h2>\n<p class=\"lead\">" + escaped(registration.text) + "</p>\n<div class=\"figures\">\n";
    int number = 0;
    for (const Figure& figure : section.figures()) {
        const std::string file = entry.anchor + "-" + std::to_string(++number) + ".png";
        entry.html += std::string("<figure") + (figure.wide ? " class=\"wide\"" : "") + ">\n<a href=\"" + file + "\">" +
                      save(file, figure.title, figure.image) + "</a>\n<figcaption>\n<h3>" + escaped(figure.title) +
                      "</h3>\n<p>" + escaped(figure.text) + "</p>\n" + factsOf(figure) + timingsOf(figure) +
                      "</figcaption>\n</figure>\n";
    }
    entry.html += "</div>\n</section>\n";
    entries_.push_back(std::move(entry));
}

std::string Page::header() const {
    int threads = 1;
    qelGetNumThreads(&threads);
    const QelVersionRecord& version = *qelcvGetLibVersion();
    return "<header class=\"top\">\n<div>\n<p class=\"eyebrow\">Gallery</p>\n<h1>What libqelcvt7 sees</h1>\n"
           "<p class=\"lead\">Every family of the library at work on one picture. Each caption names the functions "
           "that were called and the shortest time of a call on this machine.</p>\n<dl class=\"machine\">\n" +
           entryOf("Picture", visit_.picture) +
           entryOf("Size", std::to_string(visit_.size.width) + " × " + std::to_string(visit_.size.height)) +
           entryOf("Library", version.versionText) + entryOf("Architecture", architecture()) +
           entryOf("Instruction set", instructionSet()) + entryOf("Thread limit", std::to_string(threads)) +
           "</dl>\n</div>\n<a href=\"picture.png\">" + hero_ + "</a>\n</header>\n";
}

std::string Page::navigation() const {
    std::string html = "<nav aria-label=\"Sections\"><div>\n";
    for (const Entry& entry : entries_) {
        html += "<a href=\"#" + entry.anchor + "\">" + escaped(entry.title) + "</a>\n";
    }
    return html + "</div></nav>\n";
}

std::string Page::write() const {
    const std::string path = directory_ + "/index.html";
    std::ofstream file(path, std::ios::binary);
    file << "<!doctype html>\n<html lang=\"en\">\n<meta charset=\"utf-8\">\n"
            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
            "<title>Gallery of libqelcvt7</title>\n<style>"
         << kStyle << "</style>\n<body>\n"
         << header() << navigation() << "<main>\n";
    for (const Entry& entry : entries_) file << entry.html;
    file << "<footer>A time is the shortest of repeated calls, each on a whole picture and with as many threads as the "
            "limit "
            "allows where the function uses threads.</footer>\n</main>\n</body>\n</html>\n";
    file.close();
    if (!file) throw std::runtime_error("cannot write " + path);
    return std::filesystem::absolute(path).lexically_normal();
}

}  // namespace gallery
