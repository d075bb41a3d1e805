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
    r.recoverForeground = !o.cutoutOut.empty() || !o.foregroundOut.empty();
    const int rc = o.fine ? runFineEntry(r) : runMainEntry(r, o.hires ? 1 : 0);
    if (rc != 1) {
        std::fprintf(stderr, "%s\n", getErrMsg());
        throw ToolError("the engine failed with code " + std::to_string(rc));
    }
}

// Recovers foreground colours for a matte that the full solve produced, as a
// whole-picture job over a map that holds the matte and the painted trimap.
void recoverAfterFullSolve(const cv::Mat& trimap, const cv::Mat& alpha, EngineJob& job) {
    const cv::Mat painted = brushMapFromTrimap(trimap);
    job.mask = alpha & cv::Scalar(0xFE);  // computed alpha is even
    painted.copyTo(job.mask, (trimap == 0) | (trimap == 255));
    RKPSStructMsk2 r = job.r;
    clearErrMsg();
    const int rc = rkRecoverForegroundCell(&r, false);
    if (rc != 1) {
        std::fprintf(stderr, "%s\n", getErrMsg());
        throw ToolError("foreground recovery failed with code " + std::to_string(rc));
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
        if (wantColours) recoverAfterFullSolve(trimap, alpha, job);
    } else {
        runEngine(o, job);
        alpha = matteFromMask(job.mask);
    }
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    writeImage(o.alphaOut, alpha);
    if (!o.cutoutOut.empty()) writeImage(o.cutoutOut, makeCutout(job.foregroundBgr(), alpha));
    if (!o.foregroundOut.empty()) writeImage(o.foregroundOut, job.foregroundBgr());
    return {picture.size(), seconds};
}

int runMatte(const MatteOptions& o) {
    const MatteSummary done = matteOnePair(o);
    std::printf("matte %dx%d in %.2f s -> %s\n", done.size.width, done.size.height, done.seconds,
                o.alphaOut.c_str());
    return 0;
}
