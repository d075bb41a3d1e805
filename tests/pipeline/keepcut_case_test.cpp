// Strategy choice of the main entry at each area limit.
#include "pipeline/keepcut_case.h"

#include <gtest/gtest.h>

namespace {

TEST(ChooseKeepCutCase, FullResolutionPass) {
    EXPECT_EQ(chooseKeepCutCase(1, 0, 1), kCaseKDTreeHiResWhole);
    EXPECT_EQ(chooseKeepCutCase(1, 0, 100000000), kCaseKDTreeHiResWhole);
    EXPECT_EQ(chooseKeepCutCase(1, 1, 2249999), kCaseOriginalHiResRegion);
    EXPECT_EQ(chooseKeepCutCase(1, 1, 2250000), kCaseKDTreeHiResRegion);
    EXPECT_EQ(chooseKeepCutCase(1, 4, 937024), kCaseOriginalHiResRegion);
}

TEST(ChooseKeepCutCase, CoarsePassIsAnyOtherValue) {
    for (int pass : {0, 2, -1}) {
        EXPECT_EQ(chooseKeepCutCase(pass, 0, 1), kCaseKDTreePyramidWhole);
        EXPECT_EQ(chooseKeepCutCase(pass, 1, 937023), kCaseOriginalRegion);
        EXPECT_EQ(chooseKeepCutCase(pass, 1, 937024), kCaseKDTreePyramidRegion);
        EXPECT_EQ(chooseKeepCutCase(pass, -3, 2250000), kCaseKDTreePyramidRegion);
    }
}

}  // namespace
