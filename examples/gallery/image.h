// An image that owns its samples: rows of interleaved channels, a step in bytes from one row to the next.
#ifndef GALLERY_IMAGE_H_
#define GALLERY_IMAGE_H_

#include <qelcv.h>

#include <cstddef>
#include <vector>

namespace gallery {

template <class T>
class Image {
public:
    Image() = default;

    // All samples zero.
    explicit Image(QelSize size, int channels = 1)
        : size_(size), channels_(channels), rowSamples_(rowSamples(size.width, channels)) {
        samples_.resize(rowSamples_ * static_cast<std::size_t>(size.height));
    }

    T* data() { return samples_.data(); }
    const T* data() const { return samples_.data(); }
    int step() const { return static_cast<int>(rowSamples_ * sizeof(T)); }
    QelSize size() const { return size_; }
    int width() const { return size_.width; }
    int height() const { return size_.height; }
    int channels() const { return channels_; }

    T* row(int y) { return data() + rowSamples_ * static_cast<std::size_t>(y); }
    const T* row(int y) const { return data() + rowSamples_ * static_cast<std::size_t>(y); }
    T& at(int x, int y, int channel = 0) { return row(y)[x * channels_ + channel]; }
    const T& at(int x, int y, int channel = 0) const { return row(y)[x * channels_ + channel]; }

private:
    // A step of whole cache lines.
    static std::size_t rowSamples(int width, int channels) {
        constexpr std::size_t kLine = 64 / sizeof(T);
        return (static_cast<std::size_t>(width) * static_cast<std::size_t>(channels) + kLine - 1) / kLine * kLine;
    }

    QelSize size_ = {0, 0};
    int channels_ = 1;
    std::size_t rowSamples_ = 0;
    std::vector<T> samples_;
};

}  // namespace gallery

#endif
