#include "filter/row_pipeline_case.h"

namespace {

template <int channels, auto function, auto bufferSize>
struct Form : rows::FormOf<Qel8u, Qel16s, Qel16s, channels, function, bufferSize> {
    static Qel16s model(const rows::Case<Form>& c, const std::vector<Qel8u>& s, rows::Place place) {
        int64_t exact = 0;
        for (size_t i = 0; i < s.size(); ++i) exact += s[i] * c.kernel.taps[i];
        const int32_t sum = int32_t(exact);
        if (c.divisor == 1) return Qel16s(rows::saturated16s(sum));

        const float reciprocal = 1.0F / float(c.divisor);
        const float quotient = float(sum) * reciprocal;
        const bool anyNumberOfTaps = c.kernel.size() != 3 && c.kernel.size() != 5;
        const bool inGroup = place.interior && (!anyNumberOfTaps || place.index < place.count / 8 * 8);
        return Qel16s(inGroup ? rows::saturated16s(rows::nearest32s(quotient)) : rows::truncated16s(quotient));
    }
};

using C1 = Form<1, qeliFilterRowBorderPipeline_8u16s_C1R, qeliFilterRowBorderPipelineGetBufferSize_8u16s_C1R>;
using C3 = Form<3, qeliFilterRowBorderPipeline_8u16s_C3R, qeliFilterRowBorderPipelineGetBufferSize_8u16s_C3R>;

class RowPipeline8u16s : public kit::EveryTarget {};
ON_EVERY_TARGET(RowPipeline8u16s);

TEST_P(RowPipeline8u16s, qeliFilterRowBorderPipeline_8u16s_C1R) { rows::meetsItsModel<C1>(); }
TEST_P(RowPipeline8u16s, qeliFilterRowBorderPipeline_8u16s_C3R) { rows::meetsItsModel<C3>(); }

TEST_P(RowPipeline8u16s, StopsAtNullRows) { rows::bothStopAtNullRows<C1, C3>(); }

// A third of a step of one: the middle rounds up, the edges truncate, and so does what is left of the groups of a
// kernel of 7 taps.
TEST_P(RowPipeline8u16s, EdgesTruncate) {
    const std::vector<Qel8u> source(20, 5);
    Qel16s line[20] = {};
    Qel16s* const list[] = {line};
    Qel8u buffer[4096];
    const auto run = [&](std::vector<Qel16s> kernel) {
        ASSERT_EQ(qelStatusOk, qeliFilterRowBorderPipeline_8u16s_C1R(source.data(), 20, list, {20, 1}, kernel.data(),
                                                                     int(kernel.size()), int(kernel.size()) / 2,
                                                                     qelBorderRepl, 0, 3, buffer));
    };
    run({0, 1, 0});
    for (int x = 0; x < 20; ++x) EXPECT_EQ(x == 0 || x == 19 ? 1 : 2, line[x]) << x;
    run({0, 0, 0, 1, 0, 0, 0});  // an interior of 14: a group of 8 and 6 more
    for (int x = 0; x < 20; ++x) EXPECT_EQ(x < 3 || x >= 11 ? 1 : 2, line[x]) << x;
}

TEST_P(RowPipeline8u16s, ParallelLimit) {
    rows::runsInParallelFromLimit<C1>();
    rows::runsInParallelFromLimit<C3>();
}

TEST(RowPipeline8u16sSizes, qeliFilterRowBorderPipelineGetBufferSize_8u16s_C1R) { rows::tellsBufferSize<C1>(36, 112); }
TEST(RowPipeline8u16sSizes, qeliFilterRowBorderPipelineGetBufferSize_8u16s_C3R) { rows::tellsBufferSize<C3>(60, 112); }

TEST(RowPipeline8u16sChecks, EveryMember) {
    rows::Arguments<Qel16s> a;
    rows::reportsFaultsOfC1(ROW_CHECKS_OF(qeliFilterRowBorderPipeline_8u16s_C1R, a));
    rows::reportsFaultsOfC3(ROW_CHECKS_OF(qeliFilterRowBorderPipeline_8u16s_C3R, a));
}

}  // namespace
