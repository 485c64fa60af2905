#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "kit/checks.h"
#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "qelcv/distance.h"

namespace {

// The squared distance from (x, y) to the nearest zero; below zero where there is none.
int64_t nearestZero(const kit::Image<Qel8u>& src, int x, int y) {
    int64_t nearest = -1;
    for (int v = 0; v < src.size().height; ++v) {
        for (int u = 0; u < src.size().width; ++u) {
            if (src.at(u, v) != 0) continue;
            const int64_t square = int64_t{u - x} * (u - x) + int64_t{v - y} * (v - y);
            if (nearest < 0 || square < nearest) nearest = square;
        }
    }
    return nearest;
}

Qel32f model32f(int64_t square) {
    return std::sqrt(square < 0 ? std::numeric_limits<Qel32f>::max() : static_cast<Qel32f>(square));
}

Qel16u model16u(int64_t square, int scaleFactor) {
    const long double root = std::sqrt(static_cast<long double>(square < 0 ? INT32_MAX : square));
    return static_cast<Qel16u>(std::min(std::nearbyint(std::ldexp(root, -scaleFactor)), 32767.0L));
}

// An image in which every so-manieth pixel is zero; the others are any.
void fillSparsely(kit::Trial& trial, kit::Image<Qel8u>* pImage, int every) {
    for (int y = 0; y < pImage->size().height; ++y)
        for (int x = 0; x < pImage->size().width; ++x)
            pImage->at(x, y) = static_cast<Qel8u>(trial.between(1, every) == every ? 0 : trial.between(1, 255));
}

template <class T>
struct Form;
template <>
struct Form<Qel32f> {
    static qelStatus query(QelSize size, int* pBytes) {
        return qeliTrueDistanceTransformGetBufferSize_8u32f_C1R(size, pBytes);
    }
    static qelStatus run(const kit::Image<Qel8u>& src, kit::Image<Qel32f>* pDst, int, Qel8u* pBuffer) {
        return qeliTrueDistanceTransform_8u32f_C1R(src.data(), src.step(), pDst->data(), pDst->step(), src.size(),
                                                   pBuffer);
    }
    static Qel32f model(int64_t square, int) { return model32f(square); }
};
template <>
struct Form<Qel16u> {
    static qelStatus query(QelSize size, int* pBytes) {
        return qeliTrueDistanceTransformGetBufferSize_8u16u_C1RSfs(size, pBytes);
    }
    static qelStatus run(const kit::Image<Qel8u>& src, kit::Image<Qel16u>* pDst, int scaleFactor, Qel8u* pBuffer) {
        return qeliTrueDistanceTransform_8u16u_C1RSfs(src.data(), src.step(), pDst->data(), pDst->step(), src.size(),
                                                      scaleFactor, pBuffer);
    }
    static Qel16u model(int64_t square, int scaleFactor) { return model16u(square, scaleFactor); }
};

template <class T>
void agreesWithModel(kit::Trial& trial, const kit::Image<Qel8u>& src, int scaleFactor = 0) {
    kit::core().threads = trial.threads;
    kit::Image<T> got(trial), want(got);
    for (int y = 0; y < trial.size.height; ++y)
        for (int x = 0; x < trial.size.width; ++x) want.at(x, y) = Form<T>::model(nearestZero(src, x, y), scaleFactor);
    int bytes = 0;
    ASSERT_EQ(qelStatusOk, Form<T>::query(trial.size, &bytes));
    kit::ScratchBlock scratch(bytes, static_cast<size_t>(trial.between(0, 15)));
    for (unsigned char* buffer : {scratch.odd(), scratch.flush()}) {
        ASSERT_EQ(qelStatusOk, Form<T>::run(src, &got, scaleFactor, buffer)) << trial;
        ASSERT_TRUE(sameBits(want, got)) << trial << ", scale " << scaleFactor;
        ASSERT_TRUE(scratch.intact()) << trial;
    }
}

template <class T>
void agreesWithModel() {
    for (uint32_t seed = 0; seed < 90; ++seed) {
        kit::Trial sizes(seed);
        kit::Trial trial(seed, {std::min(sizes.size.width, 64), std::min(sizes.size.height, 64)},
                         std::vector{1, 2, 3, 33}[seed % 4]);
        kit::Image<Qel8u> src(trial);
        fillSparsely(trial, &src, std::vector{2, 20, 300, 5000}[seed / 4 % 4]);
        ASSERT_NO_FATAL_FAILURE(agreesWithModel<T>(trial, src, trial.between(-8, 8)));
    }
}

class TrueDistanceTransform : public kit::EveryTarget {};
ON_EVERY_TARGET(TrueDistanceTransform);

TEST_P(TrueDistanceTransform, qeliTrueDistanceTransform_8u32f_C1R) { agreesWithModel<Qel32f>(); }
TEST_P(TrueDistanceTransform, qeliTrueDistanceTransform_8u16u_C1RSfs) { agreesWithModel<Qel16u>(); }

// Each pixel of a small image as the only zero, and none at all.
TEST_P(TrueDistanceTransform, ASingleZero) {
    constexpr QelSize kSize = {5, 4};
    for (int zero = 0; zero <= kSize.width * kSize.height; ++zero) {
        kit::Trial trial(uint32_t(zero), kSize);
        kit::Image<Qel8u> src(kSize, 1);
        if (zero < kSize.width * kSize.height) src.at(zero % kSize.width, zero / kSize.width) = 0;
        ASSERT_NO_FATAL_FAILURE(agreesWithModel<Qel32f>(trial, src));
        for (const int scaleFactor : {-31, -10, 0, 1, 17})
            ASSERT_NO_FATAL_FAILURE(agreesWithModel<Qel16u>(trial, src, scaleFactor));
    }
}

// Lines of thousands of pixels: squares that single precision rounds.
TEST_P(TrueDistanceTransform, LongLines) {
    constexpr int kLength = 6000;
    for (const QelSize size : {QelSize{kLength, 1}, QelSize{1, kLength}}) {
        for (const int zero : {0, 17, kLength / 2, kLength - 1}) {
            kit::Image<Qel8u> src(size, 255);
            (size.height == 1 ? src.at(zero, 0) : src.at(0, zero)) = 0;
            kit::Image<Qel32f> got(size, 0), want(size, 0);
            for (int i = 0; i < kLength; ++i) {
                const auto distance = static_cast<Qel32f>(std::abs(i - zero));
                (size.height == 1 ? want.at(i, 0) : want.at(0, i)) = std::sqrt(distance * distance);
            }
            int bytes = 0;
            ASSERT_EQ(qelStatusOk, Form<Qel32f>::query(size, &bytes));
            kit::ScratchBlock scratch(bytes);
            ASSERT_EQ(qelStatusOk, Form<Qel32f>::run(src, &got, 0, scratch.odd()));
            ASSERT_TRUE(sameBits(want, got)) << "zero at " << zero;
        }
    }
}

// From the thread limit on and at its seams. The zeros lie on a grid, which tells their distance.
TEST_P(TrueDistanceTransform, OnThreads) {
    constexpr int kPitch = 13;
    for (const QelSize size : {QelSize{256, 128}, QelSize{255, 129}, QelSize{300, 7}, QelSize{257, 100}}) {
        kit::Image<Qel8u> src(size, 9);
        for (int y = 0; y < size.height; y += kPitch)
            for (int x = 0; x < size.width; x += kPitch) src.at(x, y) = 0;
        const auto toGrid = [](int i, int length) {
            const int before = i % kPitch;
            return i - before + kPitch < length ? std::min(before, kPitch - before) : before;
        };
        kit::Image<Qel32f> want(size, 0);
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                want.at(x, y) = model32f(int64_t{1} * toGrid(x, size.width) * toGrid(x, size.width) +
                                         toGrid(y, size.height) * toGrid(y, size.height));
        for (const int cores : {1, 4}) {
            for (const int threads : {1, 2, 3, 33}) {
                kit::core().cores = cores;
                kit::core().threads = threads;
                int bytes = 0;
                ASSERT_EQ(qelStatusOk, Form<Qel32f>::query(size, &bytes));
                kit::ScratchBlock scratch(bytes);
                kit::Image<Qel32f> got(size, 0);
                ASSERT_EQ(qelStatusOk, Form<Qel32f>::run(src, &got, 0, scratch.flush()));
                ASSERT_TRUE(sameBits(want, got)) << threads << " threads, " << cores << " cores";
                ASSERT_TRUE(scratch.intact());
            }
        }
    }
}

TEST(TrueDistanceTransformChecks, EveryMember) {
    std::vector<Qel8u> scratch(1 << 16);
    CHECKS_OF(qeliTrueDistanceTransform_8u32f_C1R).value<5>(scratch.data()).run();
    CHECKS_OF(qeliTrueDistanceTransform_8u16u_C1RSfs).value<6>(scratch.data()).run();
    CHECKS_OF(qeliTrueDistanceTransformGetBufferSize_8u32f_C1R).run();
    CHECKS_OF(qeliTrueDistanceTransformGetBufferSize_8u16u_C1RSfs).run();
}

TEST(TrueDistanceTransformChecks, BufferSizes) {
    kit::core().reset();
    for (const int threads : {1, 4}) {
        kit::core().threads = threads;
        int bytes = 0;
        ASSERT_EQ(qelStatusOk, qeliTrueDistanceTransformGetBufferSize_8u32f_C1R({10, 5}, &bytes));
        EXPECT_EQ((24 * 12 + 56) * threads, bytes);
        ASSERT_EQ(qelStatusOk, qeliTrueDistanceTransformGetBufferSize_8u32f_C1R({5, 640}, &bytes));
        EXPECT_EQ((24 * 640 + 56) * threads, bytes);
        ASSERT_EQ(qelStatusOk, qeliTrueDistanceTransformGetBufferSize_8u16u_C1RSfs({10, 5}, &bytes));
        EXPECT_EQ((24 * 16 + 24) * threads + 16 * 5 * 4 + 32, bytes);
        ASSERT_EQ(qelStatusOk, qeliTrueDistanceTransformGetBufferSize_8u16u_C1RSfs({10, 21}, &bytes));
        EXPECT_EQ((24 * 24 + 24) * threads + 16 * 21 * 4 + 32, bytes);
        EXPECT_EQ(qelStatusOverflow, qeliTrueDistanceTransformGetBufferSize_8u16u_C1RSfs({1 << 20, 1 << 20}, &bytes));
    }
    kit::core().reset();
}

}  // namespace
