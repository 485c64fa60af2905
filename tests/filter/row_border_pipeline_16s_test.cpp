#include "filter/row_pipeline_case.h"

namespace {

template <int channels, auto function, auto bufferSize>
struct Form : rows::FormOf<Qel16s, Qel16s, Qel16s, channels, function, bufferSize> {
    // A sum in the interior: the order of its products depends on the number of taps.
    static float interiorSum(const std::vector<Qel16s>& s, const std::vector<Qel16s>& taps, const std::vector<float>& k,
                             bool tapByTap) {
        const auto p = [&](size_t i) { return float(s[i]) * k[i]; };
        const auto both = [&](size_t i, size_t j) { return (float(s[i]) + float(s[j])) * k[i]; };
        if (k.size() == 3 && !tapByTap) return (taps[0] == taps[2] ? both(0, 2) : p(0) + p(2)) + p(1);
        if (k.size() == 5 && !tapByTap) {
            const bool symmetric = taps[0] == taps[4] && taps[1] == taps[3];
            return (symmetric ? both(0, 4) + both(1, 3) : (p(0) + p(4)) + (p(1) + p(3))) + p(2);
        }
        float sum = p(0);
        for (size_t i = 1; i < k.size(); ++i) sum += p(i);
        return sum;
    }

    static Qel16s model(const rows::Case<Form>& c, const std::vector<Qel16s>& s, rows::Place place) {
        const std::vector<Qel16s>& taps = c.kernel.taps;
        const float reciprocal = 1.0F / float(c.divisor);
        if (!place.interior) {
            float sum = float(s[0]) * float(taps[0]);
            for (size_t i = 1; i < s.size(); ++i) sum += float(s[i]) * float(taps[i]);
            return Qel16s(rows::truncated16s(sum * reciprocal));
        }
        static std::vector<float> scaled;
        scaled.clear();
        for (const Qel16s k : taps) scaled.push_back(float(k) * reciprocal);
        const bool leftOver = channels == 1 && place.index >= place.count / 8 * 8;
        const float sum = interiorSum(s, taps, scaled, leftOver);
        if (channels == 3) return Qel16s(rows::saturated16s(rows::nearest32s(sum)));
        return Qel16s(rows::nearest32s(std::fmin(std::fmax(sum, -32768.0F), 32767.0F)));
    }
};

using C1 = Form<1, qeliFilterRowBorderPipeline_16s_C1R, qeliFilterRowBorderPipelineGetBufferSize_16s_C1R>;
using C3 = Form<3, qeliFilterRowBorderPipeline_16s_C3R, qeliFilterRowBorderPipelineGetBufferSize_16s_C3R>;

class RowPipeline16s : public kit::EveryTarget {};
ON_EVERY_TARGET(RowPipeline16s);

TEST_P(RowPipeline16s, qeliFilterRowBorderPipeline_16s_C1R) { rows::meetsItsModel<C1>(); }
TEST_P(RowPipeline16s, qeliFilterRowBorderPipeline_16s_C3R) { rows::meetsItsModel<C3>(); }

TEST_P(RowPipeline16s, StopsAtNullRows) { rows::bothStopAtNullRows<C1, C3>(); }

// The largest sum there is: C1 saturates by its sign, C3 gives the lowest value.
TEST_P(RowPipeline16s, SumsBeyond32Bits) {
    const std::vector<Qel16s> source(60, -32768);
    const std::vector<Qel16s> kernel(3, -32768);
    Qel16s line[60] = {};
    Qel16s* const list[] = {line};
    Qel8u buffer[4096];
    ASSERT_EQ(qelStatusOk, qeliFilterRowBorderPipeline_16s_C1R(source.data(), 120, list, {60, 1}, kernel.data(), 3, 1,
                                                               qelBorderRepl, 0, 1, buffer));
    for (int x = 0; x < 60; ++x) EXPECT_EQ(32767, line[x]) << x;
    ASSERT_EQ(qelStatusOk, qeliFilterRowBorderPipeline_16s_C3R(source.data(), 120, list, {20, 1}, kernel.data(), 3, 1,
                                                               qelBorderRepl, nullptr, 1, buffer));
    for (int x = 0; x < 60; ++x) EXPECT_EQ(x < 3 || x >= 57 ? 32767 : -32768, line[x]) << x;
}

TEST_P(RowPipeline16s, ParallelLimit) {
    for (const int taps : {1, 2, 3, 4, 5}) {
        EXPECT_EQ(taps > 3, rows::runsInParallel<C1>(rows::kAtLimit, taps, 2, 1));
        EXPECT_FALSE(rows::runsInParallel<C1>(rows::kBelowLimit, taps, 2, 2));
    }
    rows::runsInParallelFromLimit<C3>();
}

TEST(RowPipeline16sSizes, qeliFilterRowBorderPipelineGetBufferSize_16s_C1R) { rows::tellsBufferSize<C1>(48, 80); }
TEST(RowPipeline16sSizes, qeliFilterRowBorderPipelineGetBufferSize_16s_C3R) { rows::tellsBufferSize<C3>(40, 64); }

TEST(RowPipeline16sChecks, EveryMember) {
    rows::Arguments<Qel16s> a;
    rows::reportsFaultsOfC1(ROW_CHECKS_OF(qeliFilterRowBorderPipeline_16s_C1R, a));
    rows::reportsFaultsOfC3(ROW_CHECKS_OF(qeliFilterRowBorderPipeline_16s_C3R, a));
}

}  // namespace
