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

// How the matte is computed.
enum class Pass { Coarse, HighResolution, Fine, Full };

const char* passName(Pass p) {
    switch (p) {
        case Pass::Coarse:
            return "coarse pass";
        case Pass::HighResolution:
            return "high-resolution pass";
        case Pass::Fine:
            return "fine pass";
        default:
            return "full-resolution solve";
    }
}

// Up to this many pixels to compute, the default is the fine pass, which then
// solves the whole band at full resolution in one system (its own limit for
// that route); above it, the high-resolution pass.
constexpr int kSmallBand = 300000;

// The pass for these options and brush map. Whole pictures without a pass
// asked for take the fine pass on small bands and the high-resolution pass
// on large ones. Measured (mean SAD, mean time) on the public photos:
//   about 0.5 MP, 27 photos, both trimap sets: coarse 6.87 in 0.11 s,
//     high-resolution 6.78 in 0.26 s, fine 6.50 in 0.33 s, full 6.47 in
//     0.34 s;
//   enlarged to 10-13 MP (GT01, GT07, GT14, GT21, trimap1; bench_fine):
//     high-resolution 80.5 in 0.42 s, coarse 99.3 in 1.4 s, fine 85.3 in
//     2.8-7.3 s, full slower still and refusing GT21's band. Per photo the
//     coarse pass is more accurate on GT01 only (28.0 against 32.7), and
//     there 2.6 times slower; on wide bands (bench_quality's wide-band table,
//     GT10 at 5x: 101 in 1.1 s against 74 in 0.3 s) it is both slower and
//     worse.
// So no other pass is both faster and more accurate at either size. Regions
// keep the coarse pass unless asked: their cases were not measured apart.
Pass choosePass(const MatteOptions& o, const cv::Mat& map) {
    if (o.full) return Pass::Full;
    if (o.fine) return Pass::Fine;
    if (o.hires) return Pass::HighResolution;
    if (o.coarse || o.hasRegion) return Pass::Coarse;
    cv::Mat painted;
    cv::bitwise_and(map, cv::Scalar(1), painted);
    const int band = static_cast<int>(map.total()) - cv::countNonZero(painted);
    return band <= kSmallBand ? Pass::Fine : Pass::HighResolution;
}

// Runs the main entry; prints the message log and throws on failure.
void runEngine(const MatteOptions& o, Pass pass, EngineJob& job) {
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
    const int rc = pass == Pass::Fine ? runFineEntry(r)
                                      : runMainEntry(r, pass == Pass::HighResolution ? 1 : 0);
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
    const Pass pass = choosePass(o, job.mask);
    if (pass == Pass::Full) {
        if (o.brushMap || o.hasRegion)
            throw ToolError("--full takes a trimap of the whole picture");
        alpha = solveFullResolution(picture, trimap);
    } else {
        runEngine(o, pass, job);
        alpha = matteFromMask(job.mask);
    }
    const cv::Mat colours = wantColours ? cutoutColours(picture, alpha) : cv::Mat();
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    writeImage(o.alphaOut, alpha);
    if (!o.cutoutOut.empty()) writeImage(o.cutoutOut, makeCutout(colours, alpha));
    if (!o.foregroundOut.empty()) writeImage(o.foregroundOut, colours);
    return {picture.size(), seconds, passName(pass)};
}

int runMatte(const MatteOptions& o) {
    const MatteSummary done = matteOnePair(o);
    std::printf("matte %dx%d by the %s in %.2f s -> %s\n", done.size.width, done.size.height,
                done.mode, done.seconds, o.alphaOut.c_str());
    return 0;
}
