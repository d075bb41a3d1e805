// Which alpha strategy a keep/cut request runs: by the resolution pass, the
// job kind (whole picture or region) and the region's area.
#pragma once

// The strategies' case numbers; they appear in the log texts, so they keep
// their historical values (there is no case 3 or 6).
enum KeepCutCase : int {
    kCaseOriginalHiResRegion = 1,  // original pyramid, full-resolution pass, moderate region
    kCaseKDTreeHiResRegion = 2,    // KD-tree at reduced size, full-resolution pass, large region
    kCaseKDTreeHiResWhole = 4,     // KD-tree at reduced size, whole picture
    kCaseOriginalRegion = 5,       // original pyramid, coarse pass, moderate region
    kCaseKDTreePyramidRegion = 7,  // KD-tree on a half-size level, coarse pass, large region
    kCaseKDTreePyramidWhole = 8,   // KD-tree on a half-size level, whole picture
};

// Region areas from which a region job leaves the original-pyramid strategy:
// 1500 x 1500 on the full-resolution pass, 968 x 968 on the coarse one.
inline constexpr long long kHiResRegionAreaLimit = 1500LL * 1500LL;
inline constexpr long long kCoarseRegionAreaLimit = 968LL * 968LL;

// hiResPass 1 asks for the full-resolution pass (any other value is the coarse
// one); cellMode 0 is a whole-picture job; area is the (widened) region's.
KeepCutCase chooseKeepCutCase(int hiResPass, int cellMode, long long area);
