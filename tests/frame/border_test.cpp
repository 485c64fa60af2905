#include "frame/border.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "frame/faults.h"
#include "kit/every_target.h"
#include "kit/guarded_memory.h"
#include "kit/trial.h"

namespace qel {
namespace {

class Border : public kit::EveryTarget {
protected:
    // What needs no kernel in 64-bit builds is tested for its bytes all the same.
    void SetUp() override {
        kit::EveryTarget::SetUp();
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    }
};
ON_EVERY_TARGET(Border);

// Sizes, borders and steps of one call. Bytes of rows are counted in pixels of `pixel` bytes.
struct Geometry {
    int pixel;
    QelSize src, dst;
    int top, left;
    int srcStep, dstStep;

    int right() const { return dst.width - left - src.width; }
    int bottom() const { return dst.height - top - src.height; }
    size_t srcBytes() const { return size_t(srcStep) * size_t(src.height - 1) + size_t(src.width * pixel); }
    size_t dstBytes() const { return size_t(dstStep) * size_t(dst.height - 1) + size_t(dst.width * pixel); }
};

std::ostream& operator<<(std::ostream& out, const Geometry& g) {
    return out << "pixels of " << g.pixel << " bytes, source " << g.src.width << "x" << g.src.height << " step "
               << g.srcStep << ", destination " << g.dst.width << "x" << g.dst.height << " step " << g.dstStep
               << ", top " << g.top << ", left " << g.left;
}

// A row of pixels, written one by one.
class PixelWriter {
public:
    explicit PixelWriter(int pixel) : pixel_(size_t(pixel)) {}
    void copy(const unsigned char* from, unsigned char* to, int count) const {
        for (int i = 0; i < count; ++i) {
            unsigned char pixel[16];
            std::memcpy(pixel, from + size_t(i) * pixel_, pixel_);
            std::memcpy(to + size_t(i) * pixel_, pixel, pixel_);
        }
    }
    void repeat(const unsigned char* from, unsigned char* to, int count) const {
        unsigned char pixel[16];
        std::memcpy(pixel, from, pixel_);
        for (int i = 0; i < count; ++i) std::memcpy(to + size_t(i) * pixel_, pixel, pixel_);
    }

private:
    size_t pixel_;
};

void replicateModel(const Geometry& g, const unsigned char* src, unsigned char* dst) {
    const PixelWriter pixels(g.pixel);
    const auto rowAt = [&](int y) { return dst + size_t(g.dstStep) * size_t(y); };
    for (int y = 0; y < g.src.height; ++y) {
        const unsigned char* const from = src + size_t(g.srcStep) * size_t(y);
        unsigned char* const to = rowAt(g.top + y);
        pixels.repeat(from, to, g.left);
        pixels.copy(from, to + g.left * g.pixel, g.src.width);
        pixels.repeat(from + (g.src.width - 1) * g.pixel, to + (g.left + g.src.width) * g.pixel, g.right());
    }
    const int last = g.top + g.src.height - 1;
    for (int y = last + 1; y < g.dst.height; ++y) pixels.copy(rowAt(last), rowAt(y), g.dst.width);
    for (int y = 0; y < g.top; ++y) pixels.copy(rowAt(g.top), rowAt(y), g.dst.width);
}

void replicateInPlaceModel(const Geometry& g, unsigned char* dst) {
    const PixelWriter pixels(g.pixel);
    const auto rowAt = [&](int y) { return dst + size_t(g.dstStep) * size_t(y); };
    const auto sides = [&](int y) {
        unsigned char* const image = rowAt(y) + g.left * g.pixel;
        pixels.repeat(image, rowAt(y), g.left);
        pixels.repeat(image + (g.src.width - 1) * g.pixel, image + g.src.width * g.pixel, g.right());
    };
    sides(g.top);
    for (int y = 0; y < g.top; ++y) pixels.copy(rowAt(g.top), rowAt(y), g.dst.width);
    for (int y = 1; y < g.src.height; ++y) sides(g.top + y);
    const int last = g.top + g.src.height - 1;
    for (int y = last + 1; y < g.dst.height; ++y) pixels.copy(rowAt(last), rowAt(y), g.dst.width);
}

void constModel(const Geometry& g, const unsigned char* src, unsigned char* dst, const unsigned char* value) {
    const PixelWriter pixels(g.pixel);
    for (int y = 0; y < g.dst.height; ++y) {
        unsigned char* const to = dst + size_t(g.dstStep) * size_t(y);
        if (y < g.top || y >= g.top + g.src.height) {
            pixels.repeat(value, to, g.dst.width);
        } else {
            pixels.repeat(value, to, g.left);
            pixels.copy(src + size_t(g.srcStep) * size_t(y - g.top), to + g.left * g.pixel, g.src.width);
            pixels.repeat(value, to + (g.left + g.src.width) * g.pixel, g.right());
        }
    }
}

enum class Steps { kApart, kOverlapping };

Geometry anyGeometry(kit::Trial& trial, int pixel, Steps steps) {
    Geometry g = {pixel, {}, {}, 0, 0, 0, 0};
    g.src = {trial.between(1, trial.coin() ? 8 : 600), trial.between(1, 9)};
    const auto border = [&] { return trial.between(0, trial.between(0, trial.between(0, 1) * 70 + 4)); };
    g.top = trial.between(0, trial.between(0, 5));
    g.left = border();
    g.dst = {g.left + g.src.width + border(), g.top + g.src.height + trial.between(0, trial.between(0, 5))};
    g.srcStep = g.src.width * pixel + trial.between(0, 1) * trial.between(1, 20);
    g.dstStep = g.dst.width * pixel + trial.between(0, 1) * trial.between(1, 20);
    if (steps == Steps::kOverlapping) g.dstStep = trial.between(1, g.dst.width * pixel);
    return g;
}

kit::Placement anyPlacement(kit::Trial& trial) {
    return trial.coin() ? kit::Placement{kit::Placement::kEndsAtGuard, 0}
                        : kit::Placement{kit::Placement::kStartsBehindGuard, size_t(trial.between(0, 40))};
}

void fillWithNoise(kit::Trial& trial, kit::GuardedMemory& memory) {
    for (size_t i = 0; i < memory.bytes(); ++i) memory.data()[i] = trial.anySample<unsigned char>();
}

testing::AssertionResult sameBytes(const std::vector<unsigned char>& want, const kit::GuardedMemory& got) {
    for (size_t i = 0; i < want.size(); ++i)
        if (want[i] != got.data()[i])
            return testing::AssertionFailure()
                   << "byte " << i << ": want " << int(want[i]) << ", got " << int(got.data()[i]);
    return got.surroundingsIntact() ? testing::AssertionSuccess() : testing::AssertionFailure() << "wrote outside";
}

std::vector<unsigned char> copyOf(const kit::GuardedMemory& memory) {
    return {memory.data(), memory.data() + memory.bytes()};
}

// From a source of its own. `function(g, src, dst)` calls the member, `model` its model.
template <class Function, class Model>
void agrees(int pixel, const Function& function, const Model& model) {
    for (const Steps steps : {Steps::kApart, Steps::kOverlapping}) {
        for (const uint32_t seed : kit::seeds(150)) {
            kit::Trial trial(seed, {1, 1});
            const Geometry g = anyGeometry(trial, pixel, steps);
            kit::GuardedMemory src(g.srcBytes(), anyPlacement(trial)), dst(g.dstBytes(), anyPlacement(trial));
            fillWithNoise(trial, src);
            fillWithNoise(trial, dst);
            std::vector<unsigned char> want = copyOf(dst);
            model(g, src.data(), want.data());
            ASSERT_EQ(qelStatusOk, function(g, src.data(), dst.data())) << trial << ", " << g;
            ASSERT_TRUE(sameBytes(want, dst)) << trial << ", " << g;
        }
    }
}

// From a source inside of the destination's memory, wherever it lies: pixels that are written may be read again.
template <class Function, class Model>
void agreesInside(int pixel, const Function& function, const Model& model) {
    for (const uint32_t seed : kit::seeds(150)) {
        kit::Trial trial(seed, {1, 1});
        const Geometry g = anyGeometry(trial, pixel, trial.coin() ? Steps::kApart : Steps::kOverlapping);
        const size_t gap = size_t(trial.between(0, 40)) * size_t(pixel);
        const size_t room = std::max(g.srcBytes(), g.dstBytes()) + gap;
        const size_t srcAt = trial.coin() ? 0 : gap;
        kit::GuardedMemory memory(room, anyPlacement(trial));
        fillWithNoise(trial, memory);
        std::vector<unsigned char> want = copyOf(memory);
        model(g, want.data() + srcAt, want.data() + gap - srcAt);
        ASSERT_EQ(qelStatusOk, function(g, memory.data() + srcAt, memory.data() + gap - srcAt)) << trial << ", " << g;
        ASSERT_TRUE(sameBytes(want, memory)) << trial << ", " << g << ", source at " << srcAt << ", gap " << gap;
    }
}

template <class T>
using Replicate = qelStatus(const T*, int, QelSize, T*, int, QelSize, int, int);
template <class T>
using ReplicateInPlace = qelStatus(T*, int, QelSize, QelSize, int, int);
template <class T>
using Const = qelStatus(const T*, int, QelSize, T*, int, QelSize, int, int, T);

template <class T>
void replicates(Replicate<T>* function, int channels) {
    const auto call = [=](const Geometry& g, const unsigned char* src, unsigned char* dst) {
        return function(reinterpret_cast<const T*>(src), g.srcStep, g.src, reinterpret_cast<T*>(dst), g.dstStep, g.dst,
                        g.top, g.left);
    };
    ASSERT_NO_FATAL_FAILURE(agrees(int(sizeof(T)) * channels, call, replicateModel));
    ASSERT_NO_FATAL_FAILURE(agreesInside(int(sizeof(T)) * channels, call, replicateModel));
}
TEST_P(Border, qeliCopyReplicateBorder_8u_C1R) { replicates<Qel8u>(qeliCopyReplicateBorder_8u_C1R, 1); }
TEST_P(Border, qeliCopyReplicateBorder_8u_C3R) { replicates<Qel8u>(qeliCopyReplicateBorder_8u_C3R, 3); }
TEST_P(Border, qeliCopyReplicateBorder_8u_C4R) { replicates<Qel8u>(qeliCopyReplicateBorder_8u_C4R, 4); }
TEST_P(Border, qeliCopyReplicateBorder_32s_C1R) { replicates<Qel32s>(qeliCopyReplicateBorder_32s_C1R, 1); }
TEST_P(Border, qeliCopyReplicateBorder_32s_C3R) { replicates<Qel32s>(qeliCopyReplicateBorder_32s_C3R, 3); }
TEST_P(Border, qeliCopyReplicateBorder_32s_C4R) { replicates<Qel32s>(qeliCopyReplicateBorder_32s_C4R, 4); }

template <class T>
void replicatesInPlace(ReplicateInPlace<T>* function, int channels) {
    agrees(
        int(sizeof(T)) * channels,
        [=](const Geometry& g, const unsigned char*, unsigned char* dst) {
            T* const image = reinterpret_cast<T*>(dst + size_t(g.dstStep) * size_t(g.top) + size_t(g.left * g.pixel));
            return function(image, g.dstStep, g.src, g.dst, g.top, g.left);
        },
        [](const Geometry& g, const unsigned char*, unsigned char* dst) { replicateInPlaceModel(g, dst); });
}
TEST_P(Border, qeliCopyReplicateBorder_8u_C1IR) { replicatesInPlace<Qel8u>(qeliCopyReplicateBorder_8u_C1IR, 1); }
TEST_P(Border, qeliCopyReplicateBorder_8u_C3IR) { replicatesInPlace<Qel8u>(qeliCopyReplicateBorder_8u_C3IR, 3); }
TEST_P(Border, qeliCopyReplicateBorder_8u_C4IR) { replicatesInPlace<Qel8u>(qeliCopyReplicateBorder_8u_C4IR, 4); }
TEST_P(Border, qeliCopyReplicateBorder_32s_C1IR) { replicatesInPlace<Qel32s>(qeliCopyReplicateBorder_32s_C1IR, 1); }
TEST_P(Border, qeliCopyReplicateBorder_32s_C3IR) { replicatesInPlace<Qel32s>(qeliCopyReplicateBorder_32s_C3IR, 3); }
TEST_P(Border, qeliCopyReplicateBorder_32s_C4IR) { replicatesInPlace<Qel32s>(qeliCopyReplicateBorder_32s_C4IR, 4); }

template <class T>
void surroundsByValue(Const<T>* function) {
    for (const T value : {T(0), T(-1), T(0x1234)}) {
        unsigned char bytes[sizeof(T)];
        std::memcpy(bytes, &value, sizeof(T));
        const auto call = [=](const Geometry& g, const unsigned char* src, unsigned char* dst) {
            return function(reinterpret_cast<const T*>(src), g.srcStep, g.src, reinterpret_cast<T*>(dst), g.dstStep,
                            g.dst, g.top, g.left, value);
        };
        const auto model = [&](const Geometry& g, const unsigned char* src, unsigned char* dst) {
            constModel(g, src, dst, bytes);
        };
        ASSERT_NO_FATAL_FAILURE(agrees(int(sizeof(T)), call, model));
        ASSERT_NO_FATAL_FAILURE(agreesInside(int(sizeof(T)), call, model));
    }
}
TEST_P(Border, qeliCopyConstBorder_8u_C1R) { surroundsByValue<Qel8u>(qeliCopyConstBorder_8u_C1R); }
TEST_P(Border, qeliCopyConstBorder_16s_C1R) { surroundsByValue<Qel16s>(qeliCopyConstBorder_16s_C1R); }
TEST_P(Border, qeliCopyConstBorder_16u_C1R) { surroundsByValue<Qel16u>(qeliCopyConstBorder_16u_C1R); }

// Pictures to be checked by eye.
TEST(BorderValues, Pictures) {
    const Qel8u source[] = {1, 2, 3, 4};
    Qel8u got[20] = {};
    ASSERT_EQ(qelStatusOk, qeliCopyReplicateBorder_8u_C1R(source, 2, {2, 2}, got, 5, {5, 4}, 1, 2));
    EXPECT_EQ((std::vector<Qel8u>{1, 1, 1, 2, 2,  //
                                  1, 1, 1, 2, 2,  //
                                  3, 3, 3, 4, 4,  //
                                  3, 3, 3, 4, 4}),
              std::vector<Qel8u>(got, got + 20));
    ASSERT_EQ(qelStatusOk, qeliCopyConstBorder_8u_C1R(source, 2, {2, 2}, got, 5, {5, 4}, 1, 2, 9));
    EXPECT_EQ((std::vector<Qel8u>{9, 9, 9, 9, 9,  //
                                  9, 9, 1, 2, 9,  //
                                  9, 9, 3, 4, 9,  //
                                  9, 9, 9, 9, 9}),
              std::vector<Qel8u>(got, got + 20));
    const Qel8u colour[] = {1, 2, 3};
    ASSERT_EQ(qelStatusOk, qeliCopyReplicateBorder_8u_C3R(colour, 3, {1, 1}, got, 9, {3, 2}, 1, 1));
    EXPECT_EQ((std::vector<Qel8u>{1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3}),
              std::vector<Qel8u>(got, got + 18));
}

// The checks that the two families share: pointers, steps, sizes.
template <class F>
F& sizeFaults(F& faults) {
    constexpr size_t kTop = 6, kLeft = 7, kSrc = 2, kDst = 5;
    for (const QelSize bad : {QelSize{0, 3}, {-1, 3}, {4, 0}, {4, INT_MIN}, {6, 3}, {4, 5}, {INT_MAX, 3}, {4, INT_MAX}})
        faults.template fault<kSrc>(qelStatusBadSize, bad);
    for (const QelSize bad : {QelSize{0, 7}, {-1, 7}, {8, 0}, {8, -1}, {6, 7}, {8, 5}, {INT_MIN, 7}})
        faults.template fault<kDst>(qelStatusBadSize, bad);
    for (const int bad : {-1, INT_MIN, 5, INT_MAX}) faults.template fault<kTop>(qelStatusBadSize, bad);
    for (const int bad : {-1, INT_MIN, 5, INT_MAX}) faults.template fault<kLeft>(qelStatusBadSize, bad);
    return faults;
}

template <class T>
void checksReplicate(Replicate<T>* function, const char* name) {
    Faults faults(name, function, watched<T>(0), 64, {4, 3}, watched<T>(1), 128, {8, 7}, 3, 3);
    faults.template null<0>().template null<3>().template step<1>().template step<4>();
    sizeFaults(faults).run();
}
template <class T>
void checksReplicateInPlace(ReplicateInPlace<T>* function, const char* name) {
    Faults faults(name, function, watched<T>(1), 128, {4, 3}, {8, 7}, 3, 3);
    faults.template null<0>().template step<1>();
    for (const QelSize bad : {QelSize{0, 3}, {4, -1}, {6, 3}, {4, 5}, {INT_MAX, INT_MAX}})
        faults.template fault<2>(qelStatusBadSize, bad);
    for (const QelSize bad : {QelSize{0, 7}, {8, 0}, {6, 7}, {8, 5}}) faults.template fault<3>(qelStatusBadSize, bad);
    for (const int bad : {-1, INT_MIN, 5, INT_MAX}) faults.template fault<4>(qelStatusBadSize, bad);
    for (const int bad : {-1, INT_MIN, 5, INT_MAX}) faults.template fault<5>(qelStatusBadSize, bad);
    faults.run();
}
template <class T>
void checksConst(Const<T>* function, const char* name) {
    Faults faults(name, function, watched<T>(0), 64, {4, 3}, watched<T>(1), 128, {8, 7}, 3, 3, 1);
    faults.template null<0>().template null<3>().template step<1>().template step<4>();
    sizeFaults(faults).run();
}

TEST(BorderChecks, EveryMember) {
    checksReplicate<Qel8u>(qeliCopyReplicateBorder_8u_C1R, "qeliCopyReplicateBorder_8u_C1R");
    checksReplicate<Qel8u>(qeliCopyReplicateBorder_8u_C3R, "qeliCopyReplicateBorder_8u_C3R");
    checksReplicate<Qel8u>(qeliCopyReplicateBorder_8u_C4R, "qeliCopyReplicateBorder_8u_C4R");
    checksReplicate<Qel32s>(qeliCopyReplicateBorder_32s_C1R, "qeliCopyReplicateBorder_32s_C1R");
    checksReplicate<Qel32s>(qeliCopyReplicateBorder_32s_C3R, "qeliCopyReplicateBorder_32s_C3R");
    checksReplicate<Qel32s>(qeliCopyReplicateBorder_32s_C4R, "qeliCopyReplicateBorder_32s_C4R");
    checksReplicateInPlace<Qel8u>(qeliCopyReplicateBorder_8u_C1IR, "qeliCopyReplicateBorder_8u_C1IR");
    checksReplicateInPlace<Qel8u>(qeliCopyReplicateBorder_8u_C3IR, "qeliCopyReplicateBorder_8u_C3IR");
    checksReplicateInPlace<Qel8u>(qeliCopyReplicateBorder_8u_C4IR, "qeliCopyReplicateBorder_8u_C4IR");
    checksReplicateInPlace<Qel32s>(qeliCopyReplicateBorder_32s_C1IR, "qeliCopyReplicateBorder_32s_C1IR");
    checksReplicateInPlace<Qel32s>(qeliCopyReplicateBorder_32s_C3IR, "qeliCopyReplicateBorder_32s_C3IR");
    checksReplicateInPlace<Qel32s>(qeliCopyReplicateBorder_32s_C4IR, "qeliCopyReplicateBorder_32s_C4IR");
    checksConst<Qel8u>(qeliCopyConstBorder_8u_C1R, "qeliCopyConstBorder_8u_C1R");
    checksConst<Qel16s>(qeliCopyConstBorder_16s_C1R, "qeliCopyConstBorder_16s_C1R");
    checksConst<Qel16u>(qeliCopyConstBorder_16u_C1R, "qeliCopyConstBorder_16u_C1R");
}

}  // namespace
}  // namespace qel
