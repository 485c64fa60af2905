#include <algorithm>
#include <array>

#include "kit/checks.h"
#include "pyramid/gauss5x5_case.h"

namespace {

using namespace gauss5x5;

constexpr int kWeights[5] = {1, 4, 6, 4, 1};

// Bytes: all 25 products over the image with zeros between its samples, reflected.
template <class T>
T modelSample(const kit::Image<T>& src, int x, int y, int c) {
    const QelSize size = src.size();
    const int channels = src.channels();
    // Weights of the source's samples from `first` on, by where each of the five falls. A single one is read
    // throughout.
    const auto weightsFrom = [](int first, int at, int count) {
        std::array<int, 4> weights = {};
        if (count == 1) weights[size_t(-first)] = 8;
        for (int i = -2; i <= 2 && count > 1; ++i) {
            const int from = reflect(at + i, 2 * count);
            if (from % 2 == 0) weights[size_t(from / 2 - first)] += kWeights[i + 2];
        }
        return weights;
    };
    const int left = std::max(0, x / 2 - 1), top = std::max(0, y / 2 - 1);
    const auto wx = weightsFrom(left, x, size.width), wy = weightsFrom(top, y, size.height);
    int sum = 32;
    for (int j = top; j < std::min(size.height, top + 4); ++j)
        for (int i = left; i < std::min(size.width, left + 4); ++i)
            sum += wx[size_t(i - left)] * wy[size_t(j - top)] * src.at(i * channels + c, j);
    return T(std::floor(sum / 64.0));
}

// 32f: the documented order, over the row or column of samples s(-1), s(0), s(1) around i.
Qel32f rowModel(const kit::Image<Qel32f>& src, int x, int y, int c) {
    const int width = src.size().width, i = x / 2;
    const auto s = [&](int at) { return src.at(at * src.channels() + c, y); };
    if (width == 1) return s(0) * 8;
    if (x % 2 != 0) return (s(i) + s(i == width - 1 ? i : i + 1)) * 4;
    if (i == 0) return s(0) * 6 + s(1) * 2;
    if (i == width - 1) return s(i) + s(i) * 6 + s(i - 1);
    return s(i) * 6 + s(i - 1) + s(i + 1);
}
Qel32f columnModel(int y, int height, const auto& r) {
    const int j = y / 2;
    const int below = j == height - 1 ? j : j + 1;
    if (y % 2 != 0) return (r(j) + r(below)) * 4;
    return r(j) * 6 + r(j == 0 ? 1 : j - 1) + r(below);
}
template <>
Qel32f modelSample(const kit::Image<Qel32f>& src, int x, int y, int c) {
    const QelSize size = src.size();
    if (size.height == 1) return rowModel(src, x, 0, c) * 8 * (1.0F / 64);
    if (size.width == 1) return columnModel(y, size.height, [&](int j) { return src.at(c, j); }) * 8 * (1.0F / 64);
    return columnModel(y, size.height, [&](int j) { return rowModel(src, x, j, c); }) * (1.0F / 64);
}

template <class T>
void agreesWithModel(Step<T>* function, int channels) {
    forAllSizes([=](kit::Trial& trial) {
        const QelSize twice = {2 * trial.size.width, 2 * trial.size.height};
        agrees<T>(function, qeliPyrUpGetBufSize_Gauss5x5, trial, twice, channels, [=](const auto& src, auto& want) {
            for (int y = 0; y < twice.height; ++y)
                for (int x = 0; x < twice.width * channels; ++x)
                    want.at(x, y) = modelSample<T>(src, x / channels, y, x % channels);
        });
    });
}

class PyrUp : public kit::EveryTarget {};
ON_EVERY_TARGET(PyrUp);

TEST_P(PyrUp, qeliPyrUp_Gauss5x5_8u_C1R) { agreesWithModel<Qel8u>(qeliPyrUp_Gauss5x5_8u_C1R, 1); }
TEST_P(PyrUp, qeliPyrUp_Gauss5x5_8u_C3R) { agreesWithModel<Qel8u>(qeliPyrUp_Gauss5x5_8u_C3R, 3); }
TEST_P(PyrUp, qeliPyrUp_Gauss5x5_8s_C1R) { agreesWithModel<Qel8s>(qeliPyrUp_Gauss5x5_8s_C1R, 1); }
TEST_P(PyrUp, qeliPyrUp_Gauss5x5_8s_C3R) { agreesWithModel<Qel8s>(qeliPyrUp_Gauss5x5_8s_C3R, 3); }
TEST_P(PyrUp, qeliPyrUp_Gauss5x5_32f_C1R) { agreesWithModel<Qel32f>(qeliPyrUp_Gauss5x5_32f_C1R, 1); }
TEST_P(PyrUp, qeliPyrUp_Gauss5x5_32f_C3R) { agreesWithModel<Qel32f>(qeliPyrUp_Gauss5x5_32f_C3R, 3); }

// The ends of a row differ: the first pixels come of 6 s[0] + 2 s[1], the last one is s[w-1] itself.
TEST_P(PyrUp, EndsOfRows) {
    kit::Image<Qel8u> src({5, 2}, 0), got({10, 4}, 0);
    for (int y = 0; y < 2; ++y) src.at(0, y) = 80, src.at(1, y) = 160, src.at(3, y) = 40, src.at(4, y) = 200;
    Qel8u scratch[1000];
    ASSERT_EQ(qelStatusOk, qeliPyrUp_Gauss5x5_8u_C1R(src.data(), src.step(), got.data(), got.step(), {5, 2}, scratch));
    EXPECT_EQ((6 * 80 + 2 * 160) / 8, got.at(0, 0));
    EXPECT_EQ((80 + 160) / 2, got.at(1, 0));
    EXPECT_EQ((40 + 7 * 200) / 8, got.at(8, 0));
    EXPECT_EQ(200, got.at(9, 0));
}

// Where no room is needed for rows, the scratch may be anything but null.
TEST(PyrUpScratch, UntouchedForSmallImages) {
    kit::GuardedMemory room(1);
    Qel8u* const inaccessible = room.data() + 1;
    for (const QelSize size : {QelSize{1, 1}, {50, 1}, {1, 50}, {1, 2}}) {
        kit::Image<Qel8s> src(size, -7), got({2 * size.width, 2 * size.height}, 0), want(got.size(), -7);
        ASSERT_EQ(qelStatusOk,
                  qeliPyrUp_Gauss5x5_8s_C1R(src.data(), src.step(), got.data(), got.step(), size, inaccessible));
        EXPECT_TRUE(sameBits(want, got));
    }
    Qel32f pixel = 0.1F, result[4] = {};
    EXPECT_EQ(qelStatusOk, qeliPyrUp_Gauss5x5_32f_C1R(&pixel, 4, result, 8, {1, 1}, inaccessible));
    for (const Qel32f sample : result) EXPECT_TRUE(kit::sameBits(pixel, sample));
    EXPECT_EQ(qelStatusNullPointer, qeliPyrUp_Gauss5x5_32f_C1R(&pixel, 4, result, 8, {1, 1}, nullptr));
}

TEST(PyrUpScratch, Bytes) {
    const struct {
        int width, channels, bytes;
    } cases[] = {{1, 1, 80}, {2, 1, 80}, {3, 1, 128}, {1, 3, 128}, {640, 1, 15392}, {641, 3, 46208}};
    for (const auto& c : cases)
        for (const int dataType : {1, 3, 13}) {
            int bytes = 0;
            EXPECT_EQ(qelStatusOk, qeliPyrUpGetBufSize_Gauss5x5(c.width, dataType, c.channels, &bytes));
            EXPECT_EQ(c.bytes, bytes) << c.width << " of " << c.channels;
        }
    int bytes = 0;
    EXPECT_EQ(qelStatusOk, qeliPyrUpGetBufSize_Gauss5x5(0x20000001, 13, 1, &bytes));
    EXPECT_EQ(16 * 3 + 32, bytes) << "wraps around";
}

TEST(PyrUpChecks, EveryMember) {
    const auto sweep = [](auto function, int channels, auto sample) {
        using T = decltype(sample);
        kit::Image<T> src({7, 5}, 1, channels), dst({14, 10}, 2, channels), before(dst);
        Qel8u scratch[2000];
        const int srcRow = 7 * channels * int(sizeof(T)), dstRow = 2 * srcRow;
        struct {
            const T* pSrc;
            int srcStep;
            T* pDst;
            int dstStep;
            QelSize size;
            Qel8u* pBuffer;
            qelStatus status;
        } const faults[] = {
            {nullptr, 0, dst.data(), 0, {0, 0}, scratch, qelStatusNullPointer},
            {src.data(), 0, nullptr, 0, {0, 0}, scratch, qelStatusNullPointer},
            {src.data(), 0, dst.data(), 0, {0, 0}, nullptr, qelStatusNullPointer},
            {src.data(), 0, dst.data(), 0, {0, 5}, scratch, qelStatusBadSize},
            {src.data(), 0, dst.data(), 0, {7, -1}, scratch, qelStatusBadSize},
            {src.data(), srcRow - 1, dst.data(), dstRow + 1, {7, 5}, scratch, qelStatusBadStep},
            {src.data(), srcRow + 1, dst.data(), dstRow - 1, {7, 5}, scratch, qelStatusBadStep},
            {src.data(), srcRow, dst.data(), -dstRow, {7, 5}, scratch, qelStatusBadStep},
        };
        for (const auto& f : faults) {
            EXPECT_EQ(f.status, function(f.pSrc, f.srcStep, f.pDst, f.dstStep, f.size, f.pBuffer));
            EXPECT_TRUE(sameBits(before, dst));
        }
        if (sizeof(T) == 4) {
            EXPECT_EQ(qelStatusStepNotElementMultiple,
                      function(src.data(), srcRow + 2, dst.data(), dstRow, {7, 5}, scratch));
            EXPECT_EQ(qelStatusStepNotElementMultiple,
                      function(src.data(), srcRow, dst.data(), dstRow + 1, {7, 5}, scratch));
        }
        EXPECT_TRUE(sameBits(before, dst));
        EXPECT_EQ(qelStatusOk, function(src.data(), srcRow, dst.data(), dstRow, {7, 5}, scratch));
    };
    sweep(qeliPyrUp_Gauss5x5_8u_C1R, 1, Qel8u());
    sweep(qeliPyrUp_Gauss5x5_8u_C3R, 3, Qel8u());
    sweep(qeliPyrUp_Gauss5x5_8s_C1R, 1, Qel8s());
    sweep(qeliPyrUp_Gauss5x5_8s_C3R, 3, Qel8s());
    sweep(qeliPyrUp_Gauss5x5_32f_C1R, 1, Qel32f());
    sweep(qeliPyrUp_Gauss5x5_32f_C3R, 3, Qel32f());
    CHECKS_OF(qeliPyrUpGetBufSize_Gauss5x5)
        .fault<0>("width 0", qelStatusBadSize, 0)
        .fault<0>("width -1", qelStatusBadSize, -1)
        .fault<2>("2 channels", qelStatusBadChannelCount, 2)
        .fault<1>("data type 0", qelStatusBadDataType, 0)
        .fault<1>("data type 14", qelStatusBadDataType, 14)
        .run();
}

}  // namespace
