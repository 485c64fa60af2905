#include "filter/row_pipeline_case.h"

namespace {

template <int channels, auto function, auto bufferSize>
struct Form : rows::FormOf<Qel16s, Qel16s, Qel16s, channels, function, bufferSize> {
    static Qel16s model(const rows::Case<Form>& c, const std::vector<Qel16s>& s, rows::Place place) {
        const std::vector<Qel16s>& k = c.kernel.taps;
        uint32_t sum = 0;  // modulo 2 to the power 32
        for (size_t i = 0; i < s.size(); ++i) sum += uint32_t(s[i] * k[i]);
        const int32_t wrapped = Qel16s(sum);
        const bool shifts = channels == 1 && k.size() == 5 && c.kernel.anchor == 2 && c.mode == qelBorderRepl &&
                            k[0] == k[4] && k[1] == k[3] && place.width - 2 > 8 && c.divisor == 16;
        if (shifts) return Qel16s(place.index < place.count ? wrapped >> 4 : int32_t(sum) >> 4);

        const Qel16s reciprocal = Qel16s(16384.0F / float(c.divisor));
        if (!place.interior) return Qel16s((sum * uint32_t(int32_t{reciprocal})) >> 14);
        return Qel16s(c.divisor == 1 ? wrapped : rows::saturated16s((wrapped * reciprocal) >> 14));
    }
};

using C1 = Form<1, qeliFilterRowBorderPipeline_Low_16s_C1R, qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C1R>;
using C3 = Form<3, qeliFilterRowBorderPipeline_Low_16s_C3R, qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C3R>;

class RowPipelineLow16s : public kit::EveryTarget {};
ON_EVERY_TARGET(RowPipelineLow16s);

TEST_P(RowPipelineLow16s, qeliFilterRowBorderPipeline_Low_16s_C1R) { rows::meetsItsModel<C1>(); }
TEST_P(RowPipelineLow16s, qeliFilterRowBorderPipeline_Low_16s_C3R) { rows::meetsItsModel<C3>(); }

TEST_P(RowPipelineLow16s, StopsAtNullRows) { rows::bothStopAtNullRows<C1, C3>(); }

// The special form in all its conditions, each of them missed by a little, with sums that wrap.
TEST_P(RowPipelineLow16s, SymmetricKernelsOverSixteen) {
    uint32_t seed = 0;
    for (const int width : {5, 9, 10, 11, 12, 26, 27, 75, 200}) {
        for (const Qel16s last : {Qel16s(-300), Qel16s(7)}) {
            for (int mode = 0; mode <= 4; ++mode) {
                for (const int divisor : {16, 15}) {
                    kit::Trial trial(seed++, {width, 3});
                    rows::Case<C1> c(trial, {{-300, 4000, 31000, 4000, last}, 2}, false);
                    c.mode = mode;
                    c.divisor = divisor;
                    ASSERT_EQ(qelStatusOk, c.call()) << trial;
                    ASSERT_NO_FATAL_FAILURE(c.checkRows(trial, 3));
                }
            }
        }
    }
}

// Beyond 0x80000 pixels its stores bypass the cache.
TEST_P(RowPipelineLow16s, LargeImages) {
    for (const QelSize size : {QelSize{1 << 18, 2}, {(1 << 18) + 1, 2}, {1031, 513}}) {
        kit::Trial trial(1, size);
        rows::Case<C1> c(trial, {{1, 4, 6, 4, 1}, 2}, false);
        c.mode = qelBorderRepl;
        c.divisor = 16;
        ASSERT_EQ(qelStatusOk, c.call()) << trial;
        ASSERT_NO_FATAL_FAILURE(c.checkRows(trial, size.height));
    }
}

TEST_P(RowPipelineLow16s, ParallelLimit) {
    rows::runsInParallelFromLimit<C1>();
    rows::runsInParallelFromLimit<C3>();
}

TEST(RowPipelineLow16sSizes, qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C1R) {
    rows::tellsBufferSize<C1>(24, 64);
}
TEST(RowPipelineLow16sSizes, qeliFilterRowBorderPipelineGetBufferSize_Low_16s_C3R) {
    rows::tellsBufferSize<C3>(208, 64);
}

TEST(RowPipelineLow16sChecks, EveryMember) {
    rows::Arguments<Qel16s> a;
    rows::reportsFaultsOfC1(ROW_CHECKS_OF(qeliFilterRowBorderPipeline_Low_16s_C1R, a));
    rows::reportsFaultsOfC3(ROW_CHECKS_OF(qeliFilterRowBorderPipeline_Low_16s_C3R, a));
}

}  // namespace
