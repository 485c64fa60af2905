#include "kit/checks.h"
#include "pyramid/gauss5x5_case.h"

namespace {

using namespace gauss5x5;

constexpr int kWeights[5] = {1, 4, 6, 4, 1};

// Bytes: all 25 products of the reflected image, exactly.
template <class T>
T modelSample(const kit::Image<T>& src, int x, int y, int c) {
    const QelSize size = src.size();
    const int channels = src.channels();
    int sum = 128;
    for (int j = -2; j <= 2; ++j)
        for (int i = -2; i <= 2; ++i) {
            const auto sample =
                int{src.at(reflect(2 * x + i, size.width) * channels + c, reflect(2 * y + j, size.height))};
            sum += kWeights[i + 2] * kWeights[j + 2] * sample;
        }
    return T(std::floor(sum / 256.0));
}

// 32f: the documented order.
Qel32f rowModel(const kit::Image<Qel32f>& src, int x, int y, int c) {
    const int width = src.size().width;
    const auto s = [&](int at) { return src.at(at * src.channels() + c, y); };
    if (width < 3) return (s(0) + s(width - 1)) * 8;
    const int at = 2 * x;
    if (x == 0) return s(0) * 6 + s(1) * 8 + s(2) * 2;
    if (at == width - 1) return s(at) * 6 + s(at - 1) * 8 + s(at - 2) * 2;
    if (at == width - 2) return (s(at - 1) + s(at + 1)) * 4 + s(at - 2) + s(at) * 7;
    return s(at) * 6 + (s(at - 1) + s(at + 1)) * 4 + s(at - 2) + s(at + 2);
}
Qel32f columnModel(const auto& r) { return r(0) * 6 + (r(-1) + r(1)) * 4 + r(-2) + r(2); }

template <>
Qel32f modelSample(const kit::Image<Qel32f>& src, int x, int y, int c) {
    const QelSize size = src.size();
    if (size.height < 3) return (rowModel(src, x, 0, c) + rowModel(src, x, size.height - 1, c)) * 8 * (1.0F / 256);
    if (size.width < 3) {
        const auto column = [&](int sample) {
            return columnModel([&](int j) { return src.at(sample, reflect(2 * y + j, size.height)); });
        };
        return (column(c) + column((size.width - 1) * src.channels() + c)) * 8 * (1.0F / 256);
    }
    return columnModel([&](int j) { return rowModel(src, x, reflect(2 * y + j, size.height), c); }) * (1.0F / 256);
}

template <class T>
void agreesWithModel(Step<T>* function, int channels) {
    forAllSizes([=](kit::Trial& trial) {
        const QelSize half = {(trial.size.width + 1) / 2, (trial.size.height + 1) / 2};
        agrees<T>(function, qeliPyrDownGetBufSize_Gauss5x5, trial, half, channels, [=](const auto& src, auto& want) {
            for (int y = 0; y < half.height; ++y)
                for (int x = 0; x < half.width * channels; ++x)
                    want.at(x, y) = modelSample<T>(src, x / channels, y, x % channels);
        });
    });
}

class PyrDown : public kit::EveryTarget {};
ON_EVERY_TARGET(PyrDown);

TEST_P(PyrDown, qeliPyrDown_Gauss5x5_8u_C1R) { agreesWithModel<Qel8u>(qeliPyrDown_Gauss5x5_8u_C1R, 1); }
TEST_P(PyrDown, qeliPyrDown_Gauss5x5_8u_C3R) { agreesWithModel<Qel8u>(qeliPyrDown_Gauss5x5_8u_C3R, 3); }
TEST_P(PyrDown, qeliPyrDown_Gauss5x5_8s_C1R) { agreesWithModel<Qel8s>(qeliPyrDown_Gauss5x5_8s_C1R, 1); }
TEST_P(PyrDown, qeliPyrDown_Gauss5x5_8s_C3R) { agreesWithModel<Qel8s>(qeliPyrDown_Gauss5x5_8s_C3R, 3); }
TEST_P(PyrDown, qeliPyrDown_Gauss5x5_32f_C1R) { agreesWithModel<Qel32f>(qeliPyrDown_Gauss5x5_32f_C1R, 1); }
TEST_P(PyrDown, qeliPyrDown_Gauss5x5_32f_C3R) { agreesWithModel<Qel32f>(qeliPyrDown_Gauss5x5_32f_C3R, 3); }

// A constant stays what it is, at every size.
template <class T>
void keepsConstants(Step<T>* function, std::initializer_list<T> values, int channels) {
    for (const T value : values)
        for (int width = 1; width < 70; width += 3)
            for (int height = 1; height < 8; ++height) {
                kit::Image<T> src({width, height}, value, channels);
                kit::Image<T> got({(width + 1) / 2, (height + 1) / 2}, T(1), channels),
                    want(got.size(), value, channels);
                std::vector<Qel8u> scratch(100000);
                ASSERT_EQ(qelStatusOk,
                          function(src.data(), src.step(), got.data(), got.step(), src.size(), scratch.data()));
                ASSERT_TRUE(sameBits(want, got)) << width << "x" << height << " of " << +value;
            }
}
TEST_P(PyrDown, ConstantsStay) {
    keepsConstants<Qel8u>(qeliPyrDown_Gauss5x5_8u_C1R, {0, 1, 254, 255}, 1);
    keepsConstants<Qel8u>(qeliPyrDown_Gauss5x5_8u_C3R, {0, 1, 254, 255}, 3);
    keepsConstants<Qel8s>(qeliPyrDown_Gauss5x5_8s_C1R, {-128, -1, 0, 127}, 1);
    keepsConstants<Qel8s>(qeliPyrDown_Gauss5x5_8s_C3R, {-128, -1, 0, 127}, 3);
    keepsConstants<Qel32f>(qeliPyrDown_Gauss5x5_32f_C1R, {0, 1, -100, 65536}, 1);
    keepsConstants<Qel32f>(qeliPyrDown_Gauss5x5_32f_C3R, {0, 1, -100, 65536}, 3);
}

// Where no room is needed for rows, the scratch may be anything but null.
TEST(PyrDownScratch, UntouchedForSmallImages) {
    kit::GuardedMemory room(1);
    Qel8u* const inaccessible = room.data() + 1;
    for (const QelSize size : {QelSize{1, 1}, {2, 2}, {50, 1}, {50, 2}, {1, 50}, {2, 50}}) {
        kit::Image<Qel8u> src(size, 7), got({(size.width + 1) / 2, (size.height + 1) / 2}, 0), want(got.size(), 7);
        ASSERT_EQ(qelStatusOk,
                  qeliPyrDown_Gauss5x5_8u_C1R(src.data(), src.step(), got.data(), got.step(), size, inaccessible));
        EXPECT_TRUE(sameBits(want, got));
    }
    Qel32f pixel = 0.1F, result = 0;
    EXPECT_EQ(qelStatusOk, qeliPyrDown_Gauss5x5_32f_C1R(&pixel, 4, &result, 4, {1, 1}, inaccessible));
    EXPECT_TRUE(kit::sameBits(pixel, result));
    EXPECT_EQ(qelStatusNullPointer, qeliPyrDown_Gauss5x5_32f_C1R(&pixel, 4, &result, 4, {1, 1}, nullptr));
}

TEST(PyrDownScratch, Bytes) {
    const struct {
        int width, channels, bytes;
    } cases[] = {{1, 1, 128}, {4, 1, 128}, {5, 1, 224}, {1, 3, 128}, {2, 3, 224}, {640, 1, 15392}, {641, 3, 46208}};
    for (const auto& c : cases)
        for (const int dataType : {1, 3, 13}) {
            int bytes = 0;
            EXPECT_EQ(qelStatusOk, qeliPyrDownGetBufSize_Gauss5x5(c.width, dataType, c.channels, &bytes));
            EXPECT_EQ(c.bytes, bytes) << c.width << " of " << c.channels;
        }
    int bytes = 0;
    EXPECT_EQ(qelStatusOk, qeliPyrDownGetBufSize_Gauss5x5(0x40000001, 1, 1, &bytes));
    EXPECT_EQ(16 * 6 + 32, bytes) << "wraps around";
}

TEST(PyrDownChecks, EveryMember) {
    // The common checks test the destination against the source's row: a short one is tried below.
    const auto sweep = [](auto function, int channels, auto sample) {
        using T = decltype(sample);
        kit::Image<T> src({7, 5}, 1, channels), dst({4, 3}, 2, channels), before(dst);
        Qel8u scratch[2000];
        const int srcRow = 7 * channels * int(sizeof(T)), dstRow = 4 * channels * int(sizeof(T));
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
    sweep(qeliPyrDown_Gauss5x5_8u_C1R, 1, Qel8u());
    sweep(qeliPyrDown_Gauss5x5_8u_C3R, 3, Qel8u());
    sweep(qeliPyrDown_Gauss5x5_8s_C1R, 1, Qel8s());
    sweep(qeliPyrDown_Gauss5x5_8s_C3R, 3, Qel8s());
    sweep(qeliPyrDown_Gauss5x5_32f_C1R, 1, Qel32f());
    sweep(qeliPyrDown_Gauss5x5_32f_C3R, 3, Qel32f());
    CHECKS_OF(qeliPyrDownGetBufSize_Gauss5x5)
        .fault<0>("width 0", qelStatusBadSize, 0)
        .fault<0>("width -1", qelStatusBadSize, -1)
        .fault<2>("2 channels", qelStatusBadChannelCount, 2)
        .fault<2>("4 channels", qelStatusBadChannelCount, 4)
        .fault<1>("data type 0", qelStatusBadDataType, 0)
        .fault<1>("data type 5", qelStatusBadDataType, 5)
        .run();
}

}  // namespace
