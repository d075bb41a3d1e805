// The fine pass on the request's region.
#include "pipeline/fine_pass.h"

#include <algorithm>
#include <climits>

#include "pipeline/request_maps.h"

namespace {
// The covariance regulariser of the engine's matting Laplacian.
constexpr double kEpsilon = 1e-7;
// Painted cut, whose alpha is 0.
constexpr unsigned char kPaintedCut = 1;
// Computed bytes keep bit 0 clear: an odd byte means "painted".
constexpr unsigned char kEvenBits = 0xFE;
// Band size (unpainted pixels) up to which one system over the whole band
// beats the first pass plus tiles, in time as well as SAD. On GT01 (case 4
// plus tiles against one system): at 0.4 MP, 39 k unknowns, 0.54 s against
// 0.17 s (SAD 1.158 both); at 2.5 MP, 241 k unknowns, 1.25 s against 1.14 s
// (SAD 6.26 and 6.23); at 9.9 MP, 1.0 M unknowns, 3.6 s against 5.0 s
// (SAD 25.00 and 24.73). The times cross near 350 k.
constexpr long long kWholeBandLimit = 300000;
}  // namespace

// Settings, measured with bench_fine on GT01 enlarged to 9.9 MP (case 4 alone:
// SAD 32.67 in 0.48 s; full solve 24.36 in 6 to 7 s and 1.6 GB):
//  - method: a direct solve per tile, the variables' reduced system assembled
//    exactly with everything else held; conjugate gradients on the same
//    Laplacian stayed near their start (SAD 32.0 after 60 steps, 3.2 s): the
//    system is too ill-conditioned for them. Of the solve, factorisation
//    takes about 1.6 s, analysis 0.5 to 0.8 s, assembly 0.35 s, the window
//    inverses 0.1 s;
//  - solver: the tiles' own grid dissection alone, without minimum degree
//    competing, halved the analysis (0.65-0.81 s to 0.37 s on GT01 and
//    GT14 at 10 MP, same SAD, factorisation unchanged within the noise);
//    tiles prepared (assembled, analysed, factorised) two ahead on other
//    threads while the current one is solved: tiled stage 3.15-3.4 s with
//    none ahead, 2.35-2.7 s with two, no better with three. Entry in all
//    (case 4 included): GT01 4.2 s to 2.9 s, GT14 3.1 s at SAD 25.00 and
//    34.84 unchanged. Two dense-kernel threads per factorisation: no gain
//    beyond the noise;
//  - band: alpha bytes 2..252 widened by 16 pixels: SAD 25.00 in 3.1 s (the
//    tiled stage); by 8, 25.15 in 2.8 s; by 4, 25.28 in 2.6 s; bytes 8..246
//    widened by 8, 29.45. Case 4's bytes outside the band are clipped to
//    0..1 where the free solution dips below 0, so holding them near the
//    edge pulls the band away from the full solve;
//  - tiles: 512-pixel cores with 16 pixels of context; 1024-pixel cores
//    scored 24.82 in 5.4 s, 256-pixel ones 29.3 (context too short for the
//    Laplacian's long reach), 384-pixel ones 28.65 on GT01 (35.53 against
//    34.84 on GT14) for a fifth less time, one tile over the whole band
//    24.73 in 5.0 s.
FineSettings defaultFineSettings() {
    FineSettings s;
    s.band = {2, 252, 16};
    s.tiling = {512, 16};
    s.wholeBandLimit = kWholeBandLimit;
    return s;
}

FineStats computeAlphaFine(RKPSStructMsk2* request, const FineSettings& settings) {
    const RKPSStructMsk2& r = *request;
    cv::Mat mask = regionMaskView(r);
    const cv::Mat brush = regionBrushView(r);
    const cv::Mat picture = regionPictureView(r);

    cv::Mat matte = mask.clone();
    matte.setTo(0, mask == kPaintedCut);
    cv::Mat painted;
    cv::bitwise_and(brush, cv::Scalar(1), painted);
    const cv::Mat vars = fineVariables(matte, painted, settings.band);
    const FineStats stats = refineInTiles(picture, matte, vars, painted, settings.tiling, kEpsilon);
    cv::bitwise_and(matte, cv::Scalar(kEvenBits), matte);
    matte.copyTo(mask, vars);
    return stats;
}

FineStats solveWholeBand(RKPSStructMsk2* request) {
    FineSettings whole = defaultFineSettings();
    // Every byte counts as fractional: all unpainted pixels are variables.
    whole.band = {0, UCHAR_MAX, 0};
    whole.tiling.core = std::max(request->roiWidth, request->roiHeight);
    return computeAlphaFine(request, whole);
}
