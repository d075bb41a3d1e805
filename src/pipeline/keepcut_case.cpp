// Strategy selection of the main keep/cut entry.
#include "pipeline/keepcut_case.h"

KeepCutCase chooseKeepCutCase(int hiResPass, int cellMode, long long area) {
    const bool wholePicture = cellMode == 0;
    if (hiResPass == 1) {
        if (wholePicture) return kCaseKDTreeHiResWhole;
        return area < kHiResRegionAreaLimit ? kCaseOriginalHiResRegion : kCaseKDTreeHiResRegion;
    }
    if (wholePicture) return kCaseKDTreePyramidWhole;
    return area < kCoarseRegionAreaLimit ? kCaseOriginalRegion : kCaseKDTreePyramidRegion;
}
