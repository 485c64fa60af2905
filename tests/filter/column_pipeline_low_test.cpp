#include "filter/column_pipeline_case.h"

namespace {

using columns::RowList;
using columns::saturated;

using Pipeline = qelStatus(const Qel16s* const* pRowSrc, Qel16s* pDst, int dstStep, QelSize roiSize,
                           const Qel16s* pKernel, int kernelSize, int divisor, Qel8u* pBuffer);

// Symmetric, 5 taps, over 16: shifted, whatever the place in the row.
bool isShifted(const std::vector<Qel16s>& taps, int divisor, int height) {
    return taps.size() == 5 && taps[0] == taps[4] && taps[1] == taps[3] && divisor == 16 && height >= 3;
}

Qel16s model(const std::vector<Qel16s>& r, const std::vector<Qel16s>& taps, int divisor, int x, int width, int height) {
    int64_t sum = 0;
    for (size_t i = 0; i < taps.size(); ++i) sum += r[i] * taps[i];
    const Qel16s wrapped = Qel16s(uint16_t(sum));
    if (isShifted(taps, divisor, height)) return Qel16s(wrapped >> 4);
    const Qel16s reciprocal = Qel16s(std::trunc(16384.0F / float(divisor)));
    if (x < width / 8 * 8) return divisor == 1 ? wrapped : saturated<Qel16s>(int(wrapped) * reciprocal >> 14);
    return Qel16s(uint16_t((uint32_t(sum) * uint32_t(int32_t{reciprocal})) >> 14));
}

void agreesWithModel(kit::Trial& trial, Pipeline* pipeline, columns::GetBufferSize* getSize, int channels,
                     const std::vector<Qel16s>& taps, int divisor) {
    const int kernelSize = int(taps.size());
    const int width = trial.size.width * channels;
    RowList<Qel16s> rows(trial, trial.size.height + kernelSize - 1, width);
    kit::Image<Qel16s> got(trial, channels), want(got);
    std::vector<Qel16s> r(taps.size());
    for (int y = 0; y < trial.size.height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int i = 0; i < kernelSize; ++i) r[size_t(i)] = rows.at(y + i, x);
            want.at(x, y) = model(r, taps, divisor, x, width, trial.size.height);
        }
    }
    auto scratch = columns::scratchOf(getSize, trial.size, kernelSize);
    ASSERT_EQ(qelStatusOk, pipeline(rows.list(), got.data(), got.step(), trial.size, taps.data(), kernelSize, divisor,
                                    trial.coin() ? scratch.odd() : scratch.flush()))
        << trial;
    ASSERT_TRUE(sameBits(want, got)) << trial << ", " << kernelSize << " taps, divisor " << divisor;
    ASSERT_TRUE(scratch.intact()) << trial << ", scratch";
}

void agreesWithModel(Pipeline* pipeline, columns::GetBufferSize* getSize, int channels = 1) {
    columns::forAllTrials([=](kit::Trial& trial, uint32_t seed) {
        auto taps = columns::someTaps(trial, columns::tapsOf(seed));
        int divisor = columns::divisorOf(seed / 3);
        if (taps.size() == 5 && seed % 2 == 0) {
            columns::makeSymmetric(taps);
            divisor = 16;
        }
        agreesWithModel(trial, pipeline, getSize, channels, taps, divisor);
    });
    // From 0x40001 samples on; rows that lie alike and rows that do not.
    for (const std::vector<Qel16s>& taps :
         {std::vector<Qel16s>{1, 2, 1}, {1, 2, 3}, {1, 4, 6, 4, 1}, {1, 4, 6, 4, 2}, {3, 9, 11, 1}}) {
        for (const QelSize size : {QelSize{512, 513}, {1031, 255}, {0x40000, 1}}) {
            kit::Trial trial(uint32_t(taps.size()) + uint32_t(size.width), size);
            agreesWithModel(trial, pipeline, getSize, channels, taps, size.width % 2 == 0 ? 16 : 1);
            if (testing::Test::HasFatalFailure()) return;
        }
    }
}

class ColumnPipelineLow : public kit::EveryTarget {};
ON_EVERY_TARGET(ColumnPipelineLow);

TEST_P(ColumnPipelineLow, qeliFilterColumnPipeline_Low_16s_C1R) {
    agreesWithModel(qeliFilterColumnPipeline_Low_16s_C1R, qeliFilterColumnPipelineGetBufferSize_Low_16s_C1R);
}
TEST_P(ColumnPipelineLow, qeliFilterColumnPipeline_Low_16s_C3R) {
    agreesWithModel(qeliFilterColumnPipeline_Low_16s_C3R, qeliFilterColumnPipelineGetBufferSize_Low_16s_C3R, 3);
}

// Every 16-bit sum with every kind of divisor, the only product that saturates among them.
TEST_P(ColumnPipelineLow, EverySum) {
    for (const int divisor : {1, -1, 2, -2, 3, 16, -7, 1024, 16384, 16385, 20000, INT_MIN, INT_MAX}) {
        kit::Trial trial(0, {65536 + 7, 1});
        RowList<Qel16s> rows(trial, 1, trial.size.width);
        std::vector<Qel16s> row(size_t(trial.size.width));
        for (size_t x = 0; x < row.size(); ++x) row[x] = Qel16s(x);
        rows.list()[0] = row.data();
        kit::Image<Qel16s> got(trial), want(got);
        for (int x = 0; x < trial.size.width; ++x)
            want.at(x, 0) = model({row[size_t(x)]}, {1}, divisor, x, trial.size.width, 1);
        const Qel16s tap = 1;
        auto scratch = columns::scratchOf(qeliFilterColumnPipelineGetBufferSize_Low_16s_C1R, trial.size, 1);
        ASSERT_EQ(qelStatusOk, qeliFilterColumnPipeline_Low_16s_C1R(rows.list(), got.data(), got.step(), trial.size,
                                                                    &tap, 1, divisor, scratch.odd()));
        ASSERT_TRUE(sameBits(want, got)) << divisor;
    }
}

TEST(ColumnPipelineLowChecks, EveryMember) {
    columns::reportsFaultsOfDivided<1>(CHECKS_OF(qeliFilterColumnPipeline_Low_16s_C1R));
    columns::reportsFaultsOfDivided<3>(CHECKS_OF(qeliFilterColumnPipeline_Low_16s_C3R));
}

TEST(ColumnPipelineLowChecks, EveryRowPointer) {
    kit::Trial trial(0, {9, 5});
    RowList<Qel16s> rows(trial, 5 + 2, 9 * 3);
    const Qel16s taps[3] = {1, 2, 3};
    kit::Image<Qel16s> got({9, 5}, 77, 3), want(got);
    kit::ScratchBlock scratch(1000);
    columns::reportsEveryNullRow(rows, [&] {
        return qeliFilterColumnPipeline_Low_16s_C3R(rows.list(), got.data(), got.step(), {9, 5}, taps, 3, 1,
                                                    scratch.odd());
    });
    EXPECT_TRUE(sameBits(want, got));
}

TEST(ColumnPipelineLowChecks, BufferSizes) {
    columns::tellsDocumentedBytes("qeliFilterColumnPipelineGetBufferSize_Low_16s_C1R",
                                  qeliFilterColumnPipelineGetBufferSize_Low_16s_C1R, 1, 8);
    columns::tellsDocumentedBytes("qeliFilterColumnPipelineGetBufferSize_Low_16s_C3R",
                                  qeliFilterColumnPipelineGetBufferSize_Low_16s_C3R, 3, 8);
}

}  // namespace
