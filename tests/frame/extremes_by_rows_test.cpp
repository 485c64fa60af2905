// What the min and max filters offer to other families.
#include <algorithm>
#include <vector>

#include "kit/every_target.h"
#include "kit/image.h"
#include "kit/trial.h"
#include "morph/filter_min_max.h"
#include "morph/filter_min_max_tables.h"

namespace {

class ExtremesByRows : public kit::EveryTarget {};
ON_EVERY_TARGET(ExtremesByRows);

// Rows that are not there yet are not read: they become so a few at a time.
void handInHand(kit::Trial& trial, int channels, const qel::ExtremeWindow& window) {
    const QelSize size = trial.size;
    kit::Image<Qel8u> src(trial, channels), got(trial, channels), want(got), there(size, 0, channels);
    std::vector<Qel8u> scratch(
        static_cast<size_t>(qel::extremesBytes(int64_t{size.width} * channels, window.size.height)));
    qel::filterExtremes<Qel8u>(qel::Extreme::kMax, {src.data(), src.step()}, {want.data(), want.step()}, size, channels,
                               window, scratch.data());
    qel::ExtremesByRows<Qel8u> rows(qel::Extreme::kMax, {there.data(), there.step()}, {got.data(), got.step()}, size,
                                    channels, window, scratch.data());
    int filled = 0;
    for (int end = 0; end < size.height;) {
        end = std::min(end + trial.between(1, 20), size.height);
        for (; filled < rows.sourceRowsFor(end); ++filled)
            std::copy_n(&src.at(0, filled), size.width * channels, &there.at(0, filled));
        rows.makeUpTo(end);
    }
    ASSERT_TRUE(sameBits(want, got)) << trial;
}

TEST_P(ExtremesByRows, ReadNoFurtherThanTheySay) {
    for (uint32_t seed = 0; seed < 150; ++seed) {
        kit::Trial trial(seed, {int(seed % 100) + 1, int(seed * 7 % 90) + 1});
        const int sides[] = {3, 5, trial.between(1, 70), trial.between(1, 20)};
        const QelSize mask = {sides[trial.between(0, 3)], seed % 3 == 0 ? 3 : sides[trial.between(0, 3)]};
        const QelPoint anchor = {trial.between(0, mask.width - 1), trial.between(0, mask.height - 1)};
        const int channels[] = {1, 3, 4};
        ASSERT_NO_FATAL_FAILURE(handInHand(trial, channels[seed % 3], {mask, anchor}));
    }
}

// Every routine of a table at the widths that reach it.
template <class T, bool max>
void tableAgrees(qel::MinMaxRowTable<T>& table, int channels) {
    for (int index = 0; index < 16; ++index) {
        for (const int w : {std::max(index, 1), index + 1, 40 + index}) {
            for (const int width : {1, 5, 33, 150}) {
                kit::Trial trial(uint32_t(index), {width, 1});
                kit::Image<T> src(trial, channels), got(trial, channels), want(got);
                const int anchor = trial.between(0, w - 1);
                for (int x = 0; x < width * channels; ++x) {
                    src.at(x, 0) = T(trial.between(0, 255));
                }
                for (int x = 0; x < width * channels; ++x) {
                    const auto at = [&](int i) {
                        return src.at(std::clamp(x / channels - anchor + i, 0, width - 1) * channels + x % channels, 0);
                    };
                    want.at(x, 0) = at(0);
                    for (int i = 1; i < w; ++i)
                        want.at(x, 0) = max ? std::max(want.at(x, 0), at(i)) : std::min(want.at(x, 0), at(i));
                }
                qel::MinMaxRowKernel<T>* const row = *table[index];
                row(src.data(), got.data(), width, w, anchor);
                ASSERT_TRUE(sameBits(want, got)) << trial << ", entry " << index << ", window " << w;
            }
        }
    }
}

TEST_P(ExtremesByRows, TablesOfRowRoutines) {
    tableAgrees<Qel8u, true>(qel::owntablFilterMaxRow_8u_C1, 1);
    tableAgrees<Qel8u, true>(qel::owntablFilterMaxRow_8u_C3, 3);
    tableAgrees<Qel8u, true>(qel::owntablFilterMaxRow_8u_C4, 4);
    tableAgrees<Qel8u, true>(qel::owntablFilterMaxRow_8u_C4_Small, 4);
    tableAgrees<Qel32f, true>(qel::owntablFilterMaxRow_32f_C1, 1);
    tableAgrees<Qel32f, true>(qel::owntablFilterMaxRow_32f_C1_Small, 1);
    tableAgrees<Qel32f, true>(qel::owntablFilterMaxRow_32f_C3, 3);
    tableAgrees<Qel32f, true>(qel::owntablFilterMaxRow_32f_C4, 4);
    tableAgrees<Qel8u, false>(qel::owntablFilterMinRow_8u_C1, 1);
    tableAgrees<Qel8u, false>(qel::owntablFilterMinRow_8u_C3, 3);
    tableAgrees<Qel8u, false>(qel::owntablFilterMinRow_8u_C4, 4);
    tableAgrees<Qel8u, false>(qel::owntablFilterMinRow_8u_C4_Small, 4);
    tableAgrees<Qel32f, false>(qel::owntablFilterMinRow_32f_C1, 1);
    tableAgrees<Qel32f, false>(qel::owntablFilterMinRow_32f_C1_Small, 1);
    tableAgrees<Qel32f, false>(qel::owntablFilterMinRow_32f_C3, 3);
    tableAgrees<Qel32f, false>(qel::owntablFilterMinRow_32f_C4, 4);
}

TEST(ExtremesByRowsTables, ColumnsByHeight) {
    for (const int index : {0, 2, 4, 6, 7})
        EXPECT_EQ(&qel::ownFilterMaxColumnVH_8u_C1R, qel::owntablFilterMaxColumn_8u_C1[index]);
    EXPECT_EQ(&qel::ownFilterMaxColumn01_8u_C1R, qel::owntablFilterMaxColumn_8u_C1[1]);
    EXPECT_EQ(&qel::ownFilterMinColumn03_32f_C1R, qel::owntablFilterMinColumn_32f_C1[3]);
    EXPECT_EQ(&qel::ownFilterMinColumn05_8u_C1R, qel::owntablFilterMinColumn_8u_C1[5]);
}

}  // namespace
