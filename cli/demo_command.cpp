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

double secondsSince(std::chrono::steady_clock::time_point t) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t).count();
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
    RKPSStructMsk2 r = job.request();
    const int rc = rkKeepCutToAlpha(&r, 0, false);
    if (rc != 1) {
        std::fprintf(stderr, "%s\n", getErrMsg());
        throw ToolError("the engine failed with code " + std::to_string(rc));
    }
    const double engineSeconds = secondsSince(t);
    const cv::Mat alpha = matteFromMask(job.mask);
    writeImage(path("alpha.png"), alpha);
    writeImage(path("cutout.png"), makeCutout(s.picture, alpha));

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
    return 0;
}
