// `keepcut matte`: read a picture and a trimap, run the engine, write results.
#include <chrono>
#include <cstdio>

#include "commands.h"
#include "engine_job.h"
#include "full_solve.h"
#include "image_io.h"

namespace {

void checkRegion(const MatteOptions& o, const cv::Mat& picture) {
    const auto [x, y, w, h] = o.region;
    if (w <= 0 || h <= 0 || x < 0 || y < 0 || x + w > picture.cols || y + h > picture.rows)
        throw ToolError("--region must lie inside the " + std::to_string(picture.cols) + "x" +
                        std::to_string(picture.rows) + " picture");
}

// The main entry's pass for these options. Whole pictures default to the
// high-resolution pass. Measured on the public photos at their size (about
// 0.5 MP; mean SAD and time over 27 photos, trimap1) and enlarged 5x (11 MP):
//   0.5 MP: coarse 5.74 in 0.11 s, high-resolution 5.48 in 0.25 s, full 5.32
//           in 0.30 s: each one trades time for accuracy;
//   11 MP:  the coarse pass is both slower and worse than the high-resolution
//           one (GT10: SAD 101 in 1.3-3.5 s against 74 in 0.3-0.9 s; GT04:
//           447 in 5-11 s against 289), and --full (5-10 s, 2.6 GB) is not
//           always better.
// So no other mode is both faster and more accurate at either size. Regions
// keep the coarse pass unless asked: their cases were not measured apart.
bool highResolutionPass(const MatteOptions& o) {
    return o.hires || (!o.coarse && !o.hasRegion);
}

// Runs the main entry; prints the message log and throws on failure.
void runEngine(const MatteOptions& o, EngineJob& job) {
    RKPSStructMsk2 r = job.r;
    if (o.hasRegion) {
        r.roiX = o.region[0];
        r.roiY = o.region[1];
        r.roiWidth = o.region[2];
        r.roiHeight = o.region[3];
    }
    r.cellMode = o.cellMode >= 0 ? o.cellMode : (o.hasRegion ? 1 : 0);
    // 2 leaves the computed region as it is.
    r.mergeMode = o.merge == "add" ? 1 : o.merge == "subtract" ? 0 : 2;
    const int rc = o.fine ? runFineEntry(r) : runMainEntry(r, highResolutionPass(o) ? 1 : 0);
    if (rc != 1) {
        std::fprintf(stderr, "%s\n", getErrMsg());
        throw ToolError("the engine failed with code " + std::to_string(rc));
    }
}

}  // namespace

MatteSummary matteOnePair(const MatteOptions& o) {
    const cv::Mat picture = loadPicture(o.picture);
    const cv::Mat trimap = loadTrimap(o.trimap, picture.size());
    if (o.hasRegion) checkRegion(o, picture);

    const bool wantColours = !o.cutoutOut.empty() || !o.foregroundOut.empty();
    const auto start = std::chrono::steady_clock::now();
    EngineJob job(picture, o.brushMap ? trimap : brushMapFromTrimap(trimap));
    cv::Mat alpha;
    if (o.fine && (o.full || o.hasRegion))
        throw ToolError("--fine takes a whole picture and no --full");
    if (o.full) {
        if (o.brushMap || o.hasRegion)
            throw ToolError("--full takes a trimap of the whole picture");
        alpha = solveFullResolution(picture, trimap);
    } else {
        runEngine(o, job);
        alpha = matteFromMask(job.mask);
    }
    const cv::Mat colours = wantColours ? cutoutColours(picture, alpha) : cv::Mat();
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    writeImage(o.alphaOut, alpha);
    if (!o.cutoutOut.empty()) writeImage(o.cutoutOut, makeCutout(colours, alpha));
    if (!o.foregroundOut.empty()) writeImage(o.foregroundOut, colours);
    const char* mode = o.full                  ? "full-resolution solve"
                       : o.fine                ? "fine pass"
                       : highResolutionPass(o) ? "high-resolution pass"
                                               : "coarse pass";
    return {picture.size(), seconds, mode};
}

int runMatte(const MatteOptions& o) {
    const MatteSummary done = matteOnePair(o);
    std::printf("matte %dx%d by the %s in %.2f s -> %s\n", done.size.width, done.size.height,
                done.mode, done.seconds, o.alphaOut.c_str());
    return 0;
}
