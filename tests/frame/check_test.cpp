#include "frame/check.h"

#include <gtest/gtest.h>

#include <climits>

namespace qel {
namespace {

const int something = 1;
const int* const kGood = &something;
const int* const kNull = nullptr;

TEST(Check, PassesGoodArguments) {
    EXPECT_EQ(qelStatusOk, Check().status());
    EXPECT_EQ(qelStatusOk, Check()
                               .pointers(kGood, kGood)
                               .size({1, 1})
                               .steps(rowOf<Qel16u>(3, 2), 12, 14)
                               .positiveSteps(1)
                               .length(1)
                               .channel(1)
                               .channel(3)
                               .require(true, qelStatusBadArg)
                               .status());
}

TEST(Check, NamesEachFault) {
    EXPECT_EQ(qelStatusNullPointer, Check().pointers(kGood, kNull).status());
    for (const QelSize bad : {QelSize{0, 1}, {1, 0}, {-1, 1}, {1, INT_MIN}})
        EXPECT_EQ(qelStatusBadSize, Check().size(bad).status());
    EXPECT_EQ(qelStatusBadSize, Check().length(0).status());
    EXPECT_EQ(qelStatusBadStep, Check().stepSizes(rowOf<Qel8u>(5), 5, 4).status());
    EXPECT_EQ(qelStatusStepNotElementMultiple, Check().stepAlignments(rowOf<Qel32f>(5), 20, 22).status());
    EXPECT_EQ(qelStatusBadStep, Check().positiveSteps(1, 0).status());
    EXPECT_EQ(qelStatusBadChannel, Check().channel(0).status());
    EXPECT_EQ(qelStatusBadChannel, Check().channel(4).status());
    EXPECT_EQ(qelStatusBadArg, Check().require(false, qelStatusBadArg).status());
}

TEST(Check, KeepsTheFirstFault) {
    EXPECT_EQ(qelStatusNullPointer, Check().pointers(kNull).size({0, 0}).channel(9).status());
    EXPECT_EQ(qelStatusBadSize, Check().pointers(kGood).size({0, 0}).channel(9).status());
    EXPECT_EQ(qelStatusBadStep, Check().steps(rowOf<Qel16u>(4), 9, 7).status()) << "a short step before an odd one";
}

TEST(Check, RowsDoNotWrapAround) {
    EXPECT_EQ(qelStatusBadStep, Check().stepSizes(rowOf<Qel32f>(0x40000000), INT_MAX).status());
    EXPECT_EQ(qelStatusBadStep, Check().stepSizes(rowOf<Qel64f>(INT_MAX, 4), INT_MAX).status());
}

TEST(Image, AreaWrapsAndSamplesDoNot) {
    EXPECT_EQ(12, area({3, 4}));
    EXPECT_LT(area({0x8000, 0x10000}), 0);
    EXPECT_EQ(0, area({0x10000, 0x10000}));
    EXPECT_EQ(21, samples({7, 5}, 3).width);
    EXPECT_EQ(5, samples({7, 5}, 3).height);
    EXPECT_EQ(INT_MAX, samples({0x55555556, 1}, 3).width);
}

TEST(Image, RowsFollowTheStep) {
    int image[12] = {};
    EXPECT_EQ(image + 6, row(image, 12, 2));
    EXPECT_EQ(image + 3, row(image + 6, -12, 1));
}

}  // namespace
}  // namespace qel
