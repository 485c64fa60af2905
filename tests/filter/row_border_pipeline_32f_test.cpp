#include "filter/row_pipeline_case.h"

namespace {

template <int channels, auto function, auto bufferSize>
struct Form : rows::FormOf<Qel32f, Qel32f, Qel32f, channels, function, bufferSize> {
    static Qel32f model(const rows::Case<Form>& c, const std::vector<Qel32f>& s, rows::Place place) {
        const std::vector<Qel32f>& k = c.kernel.taps;
        const size_t taps = k.size();
        const auto p = [&](size_t i) { return s[i] * k[i]; };
        const auto tapByTap = [&] {
            Qel32f sum = p(0);
            for (size_t i = 1; i < taps; ++i) sum += p(i);
            return sum;
        };
        const auto folded = [&] { return ((s[0] + s[4]) * k[0] + (s[1] + s[3]) * k[1]) + p(2); };
        const bool symmetric = taps == 5 && k[0] == k[4] && k[1] == k[3];

        const bool wholeImage = channels == 1 && ((taps == 3 && c.kernel.anchor == 1 && place.width > 18) ||
                                                  (taps == 5 && c.kernel.anchor == 2 && place.width > 16));
        if (wholeImage) return symmetric ? folded() : tapByTap();
        if (!place.interior) return tapByTap();
        if (taps == 3) return (p(0) + p(2)) + p(1);
        if (taps == 5) return symmetric ? folded() : ((p(0) + p(4)) + (p(1) + p(3))) + p(2);

        Qel32f sum = p(0);
        for (size_t i = 1; i < taps; ++i) {
            if (i % 3 == 1 && i + 1 < taps) {
                sum += p(i) + p(i + 1);
                ++i;
            } else {
                sum += p(i);
            }
        }
        return sum;
    }
};

using C1 = Form<1, qeliFilterRowBorderPipeline_32f_C1R, qeliFilterRowBorderPipelineGetBufferSize_32f_C1R>;
using C3 = Form<3, qeliFilterRowBorderPipeline_32f_C3R, qeliFilterRowBorderPipelineGetBufferSize_32f_C3R>;

class RowPipeline32f : public kit::EveryTarget {};
ON_EVERY_TARGET(RowPipeline32f);

TEST_P(RowPipeline32f, qeliFilterRowBorderPipeline_32f_C1R) { rows::meetsItsModel<C1>(); }
TEST_P(RowPipeline32f, qeliFilterRowBorderPipeline_32f_C3R) { rows::meetsItsModel<C3>(); }

TEST_P(RowPipeline32f, StopsAtNullRows) { rows::bothStopAtNullRows<C1, C3>(); }

// The least widths that whole images are filtered from, and one less; all border modes; cached and streamed.
TEST_P(RowPipeline32f, WholeImages) {
    uint32_t seed = 0;
    for (const int taps : {3, 5}) {
        for (const int width : {16, 17, 18, 19, 20, 37, 67, 300}) {
            for (int mode = 0; mode <= 4; ++mode) {
                for (const bool symmetric : {false, true}) {
                    for (const int cacheSize : {0, 8 * width * 3, 8 * width * 3 + 1}) {
                        kit::Trial trial(seed++, {width, 3});
                        kit::core().cacheSize = cacheSize;
                        rows::Kernel<Qel32f> kernel{{0.25F, -1.5F, 2.75F, 0.3F, -0.7F}, taps / 2};
                        kernel.taps.resize(size_t(taps));
                        if (symmetric) kernel.taps[size_t(taps) - 1] = kernel.taps[0];
                        if (symmetric && taps == 5) kernel.taps[3] = kernel.taps[1];
                        rows::Case<C1> c(trial, kernel, false);
                        c.mode = mode;
                        ASSERT_EQ(qelStatusOk, c.call()) << trial;
                        ASSERT_NO_FATAL_FAILURE(c.checkRows(trial, 3));
                    }
                }
            }
        }
    }
}

TEST_P(RowPipeline32f, ParallelLimit) {
    for (const int cores : {1, 2}) {
        for (const int taps : {2, 3, 4, 5}) {
            const bool worthIt = cores > 1 || (taps != 3 && taps != 5);
            EXPECT_EQ(worthIt, rows::runsInParallel<C1>(rows::kAtLimit, taps, 2, cores));
            EXPECT_FALSE(rows::runsInParallel<C1>(rows::kBelowLimit, taps, 2, cores));
            EXPECT_TRUE(rows::runsInParallel<C3>(rows::kAtLimit, taps, 2, cores));
            EXPECT_FALSE(rows::runsInParallel<C3>(rows::kBelowLimit, taps, 2, cores));
        }
    }
}

TEST(RowPipeline32fSizes, qeliFilterRowBorderPipelineGetBufferSize_32f_C1R) { rows::tellsBufferSize<C1>(64, 64); }
TEST(RowPipeline32fSizes, qeliFilterRowBorderPipelineGetBufferSize_32f_C3R) { rows::tellsBufferSize<C3>(192, 32); }

TEST(RowPipeline32fChecks, EveryMember) {
    rows::Arguments<Qel32f> a;
    ROW_CHECKS_OF(qeliFilterRowBorderPipeline_32f_C1R, a)
        .fault<7>("mode 5", qelStatusBadArg, 5)
        .fault<7>("mode -1", qelStatusBadArg, -1)
        .run();
    ROW_CHECKS_OF(qeliFilterRowBorderPipeline_32f_C3R, a)
        .channels<0>(3)
        .value<7>(qelBorderConst)
        .optional<8>()
        .fault<7>("mode 5", qelStatusBadArg, 5)
        .fault<7>("mode -1", qelStatusBadArg, -1)
        .fault<8>("pBorderValue null", qelStatusNullPointer, nullptr)
        .run();
}

}  // namespace
