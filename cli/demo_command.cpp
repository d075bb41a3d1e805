// `keepcut demo`: matte a generated picture whose true alpha is known and say
// how close the engine came.
#include <chrono>
#include <cstdio>
#include <filesystem>

#include "commands.h"
#include "engine_job.h"
#include "full_solve.h"
#include "image_io.h"
#include "matte_metrics.h"
#include "synthetic_sample.h"

namespace {

// The plain new background the cut-out is shown on: a saturated blue, far from
// both the subject's warm colours and the old background's mix.
const cv::Scalar kNewBackground(200, 110, 30);

double secondsSince(std::chrono::steady_clock::time_point t) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t).count();
}

// Mean absolute difference in grey levels over the pixels of `where`.
double meanAbsDiff(const cv::Mat& a, const cv::Mat& b, const cv::Mat& where) {
    cv::Mat d;
    cv::absdiff(a, b, d);
    const cv::Scalar sum = cv::sum(d.setTo(0, ~where));
    const int n = cv::countNonZero(where);
    return n ? (sum[0] + sum[1] + sum[2]) / (3.0 * n) : 0.0;
}

}  // namespace

int runDemo(const DemoOptions& o) {
    std::filesystem::create_directories(o.outDir);
    const auto path = [&](const char* name) {
        return (std::filesystem::path(o.outDir) / name).string();
    };

    const SyntheticSample s = makeSyntheticSample(o.width, o.height);
    writeImage(path("picture.png"), s.picture);
    writeImage(path("trimap.png"), s.trimap);
    writeImage(path("true_alpha.png"), alphaToBytes(s.alpha));
    const cv::Mat band = unknownBand(s.trimap);

    auto t = std::chrono::steady_clock::now();
    EngineJob job(s.picture, brushMapFromTrimap(s.trimap));
    RKPSStructMsk2 r = job.r;
    r.recoverForeground = true;
    const int rc = rkKeepCutToAlpha(&r, 1, false);  // the high-resolution pass
    if (rc != 1) {
        std::fprintf(stderr, "%s\n", getErrMsg());
        throw ToolError("the engine failed with code " + std::to_string(rc));
    }
    const double engineSeconds = secondsSince(t);
    const cv::Mat alpha = matteFromMask(job.mask);
    writeImage(path("alpha.png"), alpha);
    const cv::Mat foreground = job.foregroundBgr();
    writeImage(path("foreground.png"), foreground);
    writeImage(path("cutout.png"), makeCutout(foreground, alpha));
    // The same matte over a new background, with recovered colours and with the
    // picture's own (mixed) colours: the second shows the old background's halo.
    const cv::Mat recovered = compositeOver(foreground, alpha, kNewBackground);
    const cv::Mat naive = compositeOver(s.picture, alpha, kNewBackground);
    writeImage(path("composite_recovered.png"), recovered);
    writeImage(path("composite_naive.png"), naive);
    cv::Mat trueForeground;
    s.foreground.convertTo(trueForeground, CV_8UC3);
    const cv::Mat truth = compositeOver(trueForeground, alphaToBytes(s.alpha), kNewBackground);
    const cv::Mat soft = (s.alpha > 0.0f) & (s.alpha < 1.0f);

    t = std::chrono::steady_clock::now();
    const cv::Mat full = solveFullResolution(s.picture, s.trimap);
    const double fullSeconds = secondsSince(t);
    writeImage(path("alpha_full.png"), full);

    const MatteError e = scoreMatte(alpha, s.alpha, band);
    const MatteError f = scoreMatte(full, s.alpha, band);
    std::printf("keepcut demo: %dx%d sample, %d unknown pixels, results in %s/\n", o.width,
                o.height, e.pixels, o.outDir.c_str());
    std::printf("  engine (main entry)   SAD %7.3f  MSE %.5f  %6.2f s  -> alpha.png, cutout.png\n",
                e.sad, e.mse, engineSeconds);
    std::printf("  full-resolution solve SAD %7.3f  MSE %.5f  %6.2f s  -> alpha_full.png\n", f.sad,
                f.mse, fullSeconds);
    std::printf("  on a new background, error against the true composite over soft edges:\n");
    std::printf("    recovered colours %6.2f grey levels  -> composite_recovered.png\n",
                meanAbsDiff(recovered, truth, soft));
    std::printf("    picture colours   %6.2f grey levels  -> composite_naive.png\n",
                meanAbsDiff(naive, truth, soft));
    return 0;
}
