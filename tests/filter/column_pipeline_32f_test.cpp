#include "filter/column_pipeline_case.h"

namespace {

using columns::RowList;

using Pipeline = qelStatus(const Qel32f* const* pRowSrc, Qel32f* pDst, int dstStep, QelSize roiSize,
                           const Qel32f* pKernel, int kernelSize, Qel8u* pBuffer);

Qel32f model(const std::vector<Qel32f>& r, const std::vector<Qel32f>& k) {
    if (k.size() == 3 && k[0] == k[2]) return (r[0] + r[2]) * k[0] + r[1] * k[1];
    if (k.size() == 5 && k[0] == k[4] && k[1] == k[3])
        return ((r[0] + r[4]) * k[0] + (r[1] + r[3]) * k[1]) + r[2] * k[2];
    Qel32f sum = r[0] * k[0];
    for (size_t i = 1; i < k.size(); ++i) sum = sum + r[i] * k[i];
    return sum;
}

// Which NaN comes out of several is not promised, only that it is one.
void forgetWhichNaN(kit::Image<Qel32f>& image) {
    for (int y = 0; y < image.size().height; ++y)
        for (int x = 0; x < image.size().width * image.channels(); ++x)
            if (std::isnan(image.at(x, y))) image.at(x, y) = std::numeric_limits<Qel32f>::quiet_NaN();
}

std::vector<Qel32f> someTaps(kit::Trial& trial, int count) {
    std::vector<Qel32f> taps(size_t(count), 0.0F);
    const bool special = trial.between(0, 3) == 0;
    for (Qel32f& tap : taps) tap = special ? trial.sample<Qel32f>() : trial.anySample<Qel32f>();
    if (trial.coin()) columns::makeSymmetric(taps);
    if (trial.between(0, 7) == 0 && count > 1) taps.front() = 0.0F, taps.back() = -0.0F;
    return taps;
}

void agreesWithModel(kit::Trial& trial, Pipeline* pipeline, int channels, const std::vector<Qel32f>& taps) {
    const int kernelSize = int(taps.size());
    const int width = trial.size.width * channels;
    RowList<Qel32f> rows(trial, trial.size.height + kernelSize - 1, width);
    kit::Image<Qel32f> got(trial, channels), want(got);
    std::vector<Qel32f> r(taps.size());
    for (int y = 0; y < trial.size.height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int i = 0; i < kernelSize; ++i) r[size_t(i)] = rows.at(y + i, x);
            want.at(x, y) = model(r, taps);
        }
    }
    kit::ScratchBlock scratch(32);
    ASSERT_EQ(qelStatusOk, pipeline(rows.list(), got.data(), got.step(), trial.size, taps.data(), kernelSize,
                                    trial.coin() ? scratch.odd() : scratch.flush()))
        << trial;
    forgetWhichNaN(want);
    forgetWhichNaN(got);
    ASSERT_TRUE(sameBits(want, got)) << trial << ", " << kernelSize << " taps";
    ASSERT_TRUE(scratch.intact()) << trial << ", scratch";
}

void agreesWithModel(Pipeline* pipeline, int channels = 1) {
    for (uint32_t seed = 0; seed < 300; ++seed) {
        kit::Trial trial(seed);
        agreesWithModel(trial, pipeline, channels, someTaps(trial, columns::tapsOf(seed)));
        if (testing::Test::HasFatalFailure()) return;
    }
    // From 0x20000 samples on, and one less; rows that lie alike and rows that do not.
    uint32_t seed = 0;
    for (const int count : {3, 3, 5, 5, 7, 1}) {
        for (const QelSize size : {QelSize{1024, 128}, {1031, 129}, {0x20000 - 1, 1}}) {
            kit::Trial trial(seed++, size);
            agreesWithModel(trial, pipeline, channels, someTaps(trial, count));
            if (testing::Test::HasFatalFailure()) return;
        }
    }
}

class ColumnPipeline32f : public kit::EveryTarget {};
ON_EVERY_TARGET(ColumnPipeline32f);

TEST_P(ColumnPipeline32f, qeliFilterColumnPipeline_32f_C1R) { agreesWithModel(qeliFilterColumnPipeline_32f_C1R); }
TEST_P(ColumnPipeline32f, qeliFilterColumnPipeline_32f_C3R) { agreesWithModel(qeliFilterColumnPipeline_32f_C3R, 3); }

template <int kChannels, class Checks>
void checks(Checks checks) {
    std::vector<Qel32f> row(64, 1);
    const std::vector<const Qel32f*> list(16, row.data());
    checks.template value<0>(list.data())
        .template channels<1>(kChannels)
        .template channels<2>(kChannels)
        .template notAnImage<4>()
        .template value<5>(3)
        .template faultAheadOfSteps<5>("no taps", qelStatusBadSize, 0)
        .template optional<6>()
        .template fault<6>("no buffer", qelStatusNullPointer, nullptr)
        .run();
}

TEST(ColumnPipeline32fChecks, EveryMember) {
    checks<1>(CHECKS_OF(qeliFilterColumnPipeline_32f_C1R));
    checks<3>(CHECKS_OF(qeliFilterColumnPipeline_32f_C3R));
}

TEST(ColumnPipeline32fChecks, EveryRowPointer) {
    kit::Trial trial(0, {9, 5});
    RowList<Qel32f> rows(trial, 5 + 2, 9);
    const Qel32f taps[3] = {1, 2, 3};
    kit::Image<Qel32f> got({9, 5}, 77), want(got);
    kit::ScratchBlock scratch(32);
    columns::reportsEveryNullRow(rows, [&] {
        return qeliFilterColumnPipeline_32f_C1R(rows.list(), got.data(), got.step(), {9, 5}, taps, 3, scratch.odd());
    });
    EXPECT_TRUE(sameBits(want, got));
}

TEST(ColumnPipeline32fChecks, BufferSizes) {
    columns::checkBufferSize("qeliFilterColumnPipelineGetBufferSize_32f_C1R",
                             qeliFilterColumnPipelineGetBufferSize_32f_C1R);
    columns::checkBufferSize("qeliFilterColumnPipelineGetBufferSize_32f_C3R",
                             qeliFilterColumnPipelineGetBufferSize_32f_C3R);
    kit::core().threads = 33;
    for (columns::GetBufferSize* const function :
         {qeliFilterColumnPipelineGetBufferSize_32f_C1R, qeliFilterColumnPipelineGetBufferSize_32f_C3R}) {
        for (const QelSize size : {QelSize{1, 1}, {1920, 1080}, {0x7FFFFFFF, 0x7FFFFFFF}}) {
            int bytes = -1;
            EXPECT_EQ(qelStatusOk, function(size, 0x7FFFFFFF, &bytes));
            EXPECT_EQ(32, bytes);
        }
    }
}

}  // namespace
