#include "files.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <stdexcept>

#define STB_IMAGE_IMPLEMENTATION
#define STBI_ONLY_JPEG
#define STBI_ONLY_PNG
#define STBI_ONLY_PNM
#include <stb/stb_image.h>
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>

namespace gallery {
namespace {

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Close>;

struct FreePixels {
    void operator()(stbi_uc* pixels) const { stbi_image_free(pixels); }
};

std::runtime_error failure(const char* verb, const std::string& path, const char* reason) {
    return std::runtime_error(std::string("cannot ") + verb + " " + path + ": " + reason);
}

// The encoders take rows without gaps between them.
std::vector<stbi_uc> packed(const Image<Qel8u>& image) {
    const std::size_t rowBytes = static_cast<std::size_t>(image.width()) * static_cast<std::size_t>(image.channels());
    std::vector<stbi_uc> bytes(rowBytes * static_cast<std::size_t>(image.height()));
    for (int y = 0; y < image.height(); ++y) {
        std::memcpy(bytes.data() + rowBytes * static_cast<std::size_t>(y), image.row(y), rowBytes);
    }
    return bytes;
}

void append(void* text, void* data, int size) {
    static_cast<std::string*>(text)->append(static_cast<char*>(data), static_cast<std::size_t>(size));
}

std::string encoded(const std::string& ending, const Image<Qel8u>& image) {
    const std::vector<stbi_uc> bytes = packed(image);
    std::string text;
    if (ending == ".png") {
        // Speed over size: a gallery of a few hundred pictures is written at once.
        stbi_write_png_compression_level = 4;
        stbi_write_png_to_func(append, &text, image.width(), image.height(), image.channels(), bytes.data(), 0);
    } else if (ending == ".jpg") {
        stbi_write_jpg_to_func(append, &text, image.width(), image.height(), image.channels(), bytes.data(), 95);
    } else if (ending == (image.channels() == 1 ? ".pgm" : ".ppm")) {
        text = (image.channels() == 1 ? "P5\n" : "P6\n") + std::to_string(image.width()) + " " +
               std::to_string(image.height()) + "\n255\n";
        text.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    return text;
}

}  // namespace

Image<Qel8u> readPicture(const std::string& path) {
    if (std::filesystem::is_directory(path)) throw failure("read", path, "it is a directory");
    const File file(std::fopen(path.c_str(), "rb"));
    if (file == nullptr) throw failure("read", path, std::strerror(errno));

    int width = 0, height = 0, channelsInFile = 0;
    const std::unique_ptr<stbi_uc, FreePixels> pixels(
        stbi_load_from_file(file.get(), &width, &height, &channelsInFile, 3));
    if (pixels == nullptr) {
        const std::string reason = std::string("not a PNG, JPEG, PGM or PPM picture (") + stbi_failure_reason() + ")";
        throw failure("read", path, reason.c_str());
    }
    Image<Qel8u> image(QelSize{width, height}, 3);
    const std::size_t rowBytes = static_cast<std::size_t>(width) * 3;
    for (int y = 0; y < height; ++y) {
        std::memcpy(image.row(y), pixels.get() + rowBytes * static_cast<std::size_t>(y), rowBytes);
    }
    return image;
}

void writePicture(const std::string& path, const Image<Qel8u>& image) {
    const std::string text = encoded(std::filesystem::path(path).extension(), image);
    if (text.empty()) throw failure("write", path, "no encoder for these samples under this ending");
    File file(std::fopen(path.c_str(), "wb"));
    if (file == nullptr) throw failure("write", path, std::strerror(errno));
    const bool written = std::fwrite(text.data(), 1, text.size(), file.get()) == text.size();
    if (std::fclose(file.release()) != 0 || !written) throw failure("write", path, std::strerror(errno));
}

}  // namespace gallery
