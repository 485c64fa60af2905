#include "filter/column_pipeline_case.h"

namespace {

using columns::clamped;
using columns::Place;
using columns::RowList;
using columns::saturated;

template <class T>
using Pipeline = qelStatus(const Qel16s* const* pRowSrc, T* pDst, int dstStep, QelSize roiSize, const Qel16s* pKernel,
                           int kernelSize, int divisor, Qel8u* pBuffer);

// Samples of a row that belong to whole groups.
int samplesInGroups(int kernelSize, const Place& p) {
    const int group = kernelSize == 3 ? (p.y == 0 ? 4 : 8) : kernelSize == 5 ? 4 : 16;
    return p.width / group * group;
}

// r[i] is the sample under tap i. Samples stand in the upper half of 32 bits, taps are scaled down to match.
template <class T>
T roundedResult(const std::vector<Qel16s>& r, const std::vector<Qel16s>& taps, int divisor, const Place& p) {
    const size_t n = taps.size();
    const float reciprocal = 1.0F / float(divisor);
    std::vector<float> lane(n), k(n);
    float magnitudes = 0;
    for (size_t i = 0; i < n; ++i) {
        lane[i] = float(r[i] * 65536);
        k[i] = 1.52587890625e-5F * float(taps[i]) * reciprocal;
        magnitudes += std::fabs(float(taps[i]));
    }
    float sum;
    bool clamps = true;
    if (n == 3) {
        sum = taps[0] == taps[2] && p.y > 0 ? (lane[0] + lane[2]) * k[0] + lane[1] * k[1]
                                            : (lane[0] * k[0] + lane[1] * k[1]) + lane[2] * k[2];
        clamps = !(magnitudes < 65535.0F);
    } else if (n == 5) {
        sum = ((lane[0] * k[0] + lane[1] * k[1]) + lane[4] * k[4]) + (lane[2] * k[2] + lane[3] * k[3]);
    } else {
        sum = lane[0] * k[0];
        for (size_t i = 1; i < n; ++i) sum = sum + lane[i] * k[i];
    }
    if (clamps) sum = clamped(sum, -32768.0F, 32767.0F);
    const bool fits = sum >= -2147483648.0F && sum < 2147483648.0F;
    const int nearest = fits ? int(std::nearbyint(double(sum))) : INT_MIN;
    return saturated<T>(saturated<Qel16s>(nearest));
}

template <class T>
T truncatedResult(const std::vector<Qel16s>& r, const std::vector<Qel16s>& taps, int divisor) {
    float sum = float(r[0]) * float(taps[0]);
    for (size_t i = 1; i < taps.size(); ++i) sum = sum + float(r[i]) * float(taps[i]);
    const float quotient = sum * (1.0F / float(divisor));
    return T(clamped(quotient, float(std::numeric_limits<T>::min()), float(std::numeric_limits<T>::max())));
}

template <class T>
void agreesWithModel(kit::Trial& trial, Pipeline<T>* pipeline, columns::GetBufferSize* getSize, int channels,
                     const std::vector<Qel16s>& taps, int divisor) {
    const int kernelSize = int(taps.size());
    const int width = trial.size.width * channels;
    RowList<Qel16s> rows(trial, trial.size.height + kernelSize - 1, width);
    kit::Image<T> got(trial, channels), want(got);
    std::vector<Qel16s> r(taps.size());
    for (int y = 0; y < trial.size.height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int i = 0; i < kernelSize; ++i) r[size_t(i)] = rows.at(y + i, x);
            const Place place = {x, y, width, trial.size.height};
            want.at(x, y) = x < samplesInGroups(kernelSize, place) ? roundedResult<T>(r, taps, divisor, place)
                                                                   : truncatedResult<T>(r, taps, divisor);
        }
    }
    auto scratch = columns::scratchOf(getSize, trial.size, kernelSize);
    for (Qel8u* const pBuffer : {scratch.odd(), scratch.flush()}) {
        kit::Image<T> out(got);
        ASSERT_EQ(qelStatusOk,
                  pipeline(rows.list(), out.data(), out.step(), trial.size, taps.data(), kernelSize, divisor, pBuffer))
            << trial;
        ASSERT_TRUE(sameBits(want, out)) << trial << ", " << kernelSize << " taps, divisor " << divisor;
        ASSERT_TRUE(scratch.intact()) << trial << ", scratch";
        if (int64_t{width} * trial.size.height > 0x4000) break;  // once is enough
    }
}

template <class T>
void agreesWithModel(Pipeline<T>* pipeline, columns::GetBufferSize* getSize, int channels = 1) {
    columns::forAllTrials([=](kit::Trial& trial, uint32_t seed) {
        if (trial.threads == 33 && channels == 3 && trial.size.height == 71) return;  // as with one channel
        const auto taps = columns::someTaps(trial, columns::tapsOf(seed));
        agreesWithModel<T>(trial, pipeline, getSize, channels, taps, columns::divisorOf(seed / 3));
    });
}

class ColumnPipeline : public kit::EveryTarget {};
ON_EVERY_TARGET(ColumnPipeline);

TEST_P(ColumnPipeline, qeliFilterColumnPipeline_16s_C1R) {
    agreesWithModel<Qel16s>(qeliFilterColumnPipeline_16s_C1R, qeliFilterColumnPipelineGetBufferSize_16s_C1R);
}
TEST_P(ColumnPipeline, qeliFilterColumnPipeline_16s_C3R) {
    agreesWithModel<Qel16s>(qeliFilterColumnPipeline_16s_C3R, qeliFilterColumnPipelineGetBufferSize_16s_C3R, 3);
}
TEST_P(ColumnPipeline, qeliFilterColumnPipeline_16s8u_C1R) {
    agreesWithModel<Qel8u>(qeliFilterColumnPipeline_16s8u_C1R, qeliFilterColumnPipelineGetBufferSize_16s8u_C1R);
}
TEST_P(ColumnPipeline, qeliFilterColumnPipeline_16s8u_C3R) {
    agreesWithModel<Qel8u>(qeliFilterColumnPipeline_16s8u_C3R, qeliFilterColumnPipelineGetBufferSize_16s8u_C3R, 3);
}
TEST_P(ColumnPipeline, qeliFilterColumnPipeline_16s8s_C1R) {
    agreesWithModel<Qel8s>(qeliFilterColumnPipeline_16s8s_C1R, qeliFilterColumnPipelineGetBufferSize_16s8s_C1R);
}
TEST_P(ColumnPipeline, qeliFilterColumnPipeline_16s8s_C3R) {
    agreesWithModel<Qel8s>(qeliFilterColumnPipeline_16s8s_C3R, qeliFilterColumnPipelineGetBufferSize_16s8s_C3R, 3);
}

// Every divisor from 1 on with one tap: halves go to the even neighbour in groups and towards zero behind them.
TEST_P(ColumnPipeline, HalvesGoToEven) {
    kit::Trial trial(0, {35, 1});
    RowList<Qel16s> rows(trial, 1, 35);
    std::vector<Qel16s> row(35);
    for (int x = 0; x < 35; ++x) row[size_t(x)] = Qel16s(x - 17);
    rows.list()[0] = row.data();
    kit::Image<Qel16s> got(trial);
    auto scratch = columns::scratchOf(qeliFilterColumnPipelineGetBufferSize_16s_C1R, trial.size, 1);
    const Qel16s tap = 1;
    ASSERT_EQ(qelStatusOk, qeliFilterColumnPipeline_16s_C1R(rows.list(), got.data(), got.step(), trial.size, &tap, 1, 2,
                                                            scratch.odd()));
    for (int x = 0; x < 35; ++x) {
        const double half = (x - 17) / 2.0;
        EXPECT_EQ(x < 32 ? std::nearbyint(half) : std::trunc(half), got.at(x, 0)) << x;
    }
}

// With magnitudes of 65535 and more, sums beyond the range of an int saturate with their sign.
TEST_P(ColumnPipeline, SumsBeyondTheRangeOfInt) {
    kit::Trial trial(0, {40, 3});
    const std::vector<std::vector<Qel16s>> kernels = {
        {32767, 32767, 32767}, {-32768, -32768, -32768}, {32767, 1, 32767}, {-32768, 32767, -32768}};
    for (const auto& taps : kernels)
        for (const kit::Content content : {kit::Content::kLowest, kit::Content::kHighest, kit::Content::kEnds}) {
            trial.setContent(content);
            agreesWithModel<Qel16s>(trial, qeliFilterColumnPipeline_16s_C1R,
                                    qeliFilterColumnPipelineGetBufferSize_16s_C1R, 1, taps, 1);
        }
}

// Only the image's first row is computed as one, not that of a thread's share.
TEST_P(ColumnPipeline, FirstRowsOfThreads) {
    for (const std::vector<Qel16s>& taps : {std::vector<Qel16s>{1, 2, 1}, {1, 2, 3}}) {
        for (const int threads : {1, 2, 3}) {
            kit::Trial trial(7, {1927, 52}, threads);
            trial.setContent(kit::Content::kRandom);
            agreesWithModel<Qel16s>(trial, qeliFilterColumnPipeline_16s_C1R,
                                    qeliFilterColumnPipelineGetBufferSize_16s_C1R, 1, taps, 7);
        }
    }
}

// Three taps undivided, of magnitudes that add up to 512 and one more: the largest sums that single precision holds
// exactly, and the first that it does not.
TEST_P(ColumnPipeline, SumsAtTheEndOfExactFloats) {
    const std::vector<std::vector<Qel16s>> kernels = {{1, 2, 1},    {-1, 0, 1},      {0, 512, 0},      {-512, 0, 0},
                                                      {0, 0, -512}, {171, 170, 171}, {-171, 171, 170}, {171, 171, 171},
                                                      {0, 0, 513},  {-300, 0, 213},  {0, 0, 0}};
    for (const auto& taps : kernels) {
        for (uint32_t seed = 0; seed < 60; ++seed) {
            kit::Trial trial(seed * 5);
            agreesWithModel<Qel16s>(trial, qeliFilterColumnPipeline_16s_C1R,
                                    qeliFilterColumnPipelineGetBufferSize_16s_C1R, 1, taps, 1);
            agreesWithModel<Qel8u>(trial, qeliFilterColumnPipeline_16s8u_C1R,
                                   qeliFilterColumnPipelineGetBufferSize_16s8u_C1R, 1, taps, 1);
            agreesWithModel<Qel8s>(trial, qeliFilterColumnPipeline_16s8s_C3R,
                                   qeliFilterColumnPipelineGetBufferSize_16s8s_C3R, 3, taps, 1);
            if (testing::Test::HasFatalFailure()) return;
        }
    }
}

TEST(ColumnPipelineChecks, EveryMember) {
    columns::reportsFaultsOfDivided<1>(CHECKS_OF(qeliFilterColumnPipeline_16s_C1R));
    columns::reportsFaultsOfDivided<3>(CHECKS_OF(qeliFilterColumnPipeline_16s_C3R));
    columns::reportsFaultsOfDivided<1>(CHECKS_OF(qeliFilterColumnPipeline_16s8u_C1R));
    columns::reportsFaultsOfDivided<3>(CHECKS_OF(qeliFilterColumnPipeline_16s8u_C3R));
    columns::reportsFaultsOfDivided<1>(CHECKS_OF(qeliFilterColumnPipeline_16s8s_C1R));
    columns::reportsFaultsOfDivided<3>(CHECKS_OF(qeliFilterColumnPipeline_16s8s_C3R));
}

TEST(ColumnPipelineChecks, EveryRowPointer) {
    kit::Trial trial(0, {9, 5});
    RowList<Qel16s> rows(trial, 5 + 4, 9);
    const Qel16s taps[5] = {1, 2, 3, 4, 5};
    kit::Image<Qel16s> got({9, 5}, 77), want(got);
    kit::ScratchBlock scratch(1000);
    columns::reportsEveryNullRow(rows, [&] {
        return qeliFilterColumnPipeline_16s_C1R(rows.list(), got.data(), got.step(), {9, 5}, taps, 5, 1, scratch.odd());
    });
    rows.list()[8] = nullptr;
    EXPECT_EQ(qelStatusBadArg,
              qeliFilterColumnPipeline_16s_C1R(rows.list(), got.data(), got.step(), {9, 5}, taps, 5, 0, scratch.odd()));
    EXPECT_TRUE(sameBits(want, got));
}

TEST(ColumnPipelineChecks, BufferSizes) {
    using columns::tellsDocumentedBytes;
#define BYTES(function, channels) tellsDocumentedBytes(#function, function, channels, 4)
    BYTES(qeliFilterColumnPipelineGetBufferSize_16s_C1R, 1);
    BYTES(qeliFilterColumnPipelineGetBufferSize_16s_C3R, 3);
    BYTES(qeliFilterColumnPipelineGetBufferSize_16s8u_C1R, 1);
    BYTES(qeliFilterColumnPipelineGetBufferSize_16s8u_C3R, 3);
    BYTES(qeliFilterColumnPipelineGetBufferSize_16s8s_C1R, 1);
    BYTES(qeliFilterColumnPipelineGetBufferSize_16s8s_C3R, 3);
#undef BYTES
}

}  // namespace
