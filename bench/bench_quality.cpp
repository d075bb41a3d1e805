// Matte quality and time per picture on the alphamatting training set with its
// two trimaps: the main entry's whole-picture cases (4: high-resolution pass,
// 8: pyramid pass) beside one full-resolution solve as the reference and the
// fine pass (rkKeepCutToAlphaFine). Prints a table per picture, the means
// against the targets, and writes a CSV.
//
// Then the wide-band case: photos with a wide unknown band between thick
// strands, enlarged 1x, 3x and 5x (cubic picture, linear truth, nearest
// trimap), where the pyramid pass leaves background white in tree leaves that
// hold keep strokes but no cut stroke within reach (a property of its stated
// partition). Prints SAD over the band, SAD per megapixel, time, and the
// "white gaps": 256 x 256 tiles whose matte is nearly white on average where
// the truth is nearly black. A sound pass keeps SAD per megapixel flat as the
// picture grows, and finds no white gaps.
//
//   bench_quality [CSV path] [--wide-only]   (default CSV: bench_quality.csv)
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "engine_job.h"
#include "full_solve.h"
#include "image_io.h"
#include "matte_metrics.h"
#include "support/enlarged_photo.h"

namespace {

namespace fs = std::filesystem;

// Targets on the 2-core reference machine: case 4's mean SAD per trimap set,
// its mean time per call, and the full solve's mean SAD (what an established
// closed-form implementation scores on the same data) with a 2% tolerance.
constexpr double kCase4SadTarget[2] = {5.8, 8.1};
constexpr double kCase4SecondsTarget = 0.5;
constexpr double kReferenceSad[2] = {5.31, 7.60};
constexpr double kReferenceTolerance = 0.02;

// The wide-band photos, where the fault was reported (GT10) and where it
// shows most (GT04), with both trimap sets (the second draws the wider band).
const char* const kWidePhotos[] = {"GT10", "GT04"};
const char* const kTrimapSets[] = {"trimap1", "trimap2"};
// Enlargements: 5x turns a training photo (about 800 x 600) into 11-12
// megapixels; 1x and 3x show how the error grows on the way.
constexpr int kWideScales[] = {1, 3, 5};
// A white gap: a tile whose matte averages at least kGapMatteMin while the
// truth averages at most kGapTruthMax, i.e. background turned foreground.
constexpr int kGapTile = 256;
constexpr double kGapMatteMin = 200.0;
constexpr double kGapTruthMax = 50.0;
constexpr double kPixelsPerMegapixel = 1.0e6;

struct Score {
    MatteError err;
    double seconds = 0.0;
    int code = 1;
    int gaps = 0;
};

double secondsSince(std::chrono::steady_clock::time_point t) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t).count();
}

int countWhiteGaps(const cv::Mat& matte, const cv::Mat& truth) {
    int gaps = 0;
    for (int y = 0; y < matte.rows; y += kGapTile)
        for (int x = 0; x < matte.cols; x += kGapTile) {
            const cv::Rect tile(x, y, std::min(kGapTile, matte.cols - x),
                                std::min(kGapTile, matte.rows - y));
            if (cv::mean(matte(tile))[0] >= kGapMatteMin &&
                cv::mean(truth(tile))[0] <= kGapTruthMax)
                ++gaps;
        }
    return gaps;
}

// hiRes 1 or 0 for the main entry's cases 4 and 8; kFinePass for the fine pass.
constexpr int kFinePass = 2;

Score runEntry(const cv::Mat& picture, const cv::Mat& trimap, const cv::Mat& truth, int hiRes) {
    EngineJob job(picture, brushMapFromTrimap(trimap));
    RKPSStructMsk2 r = job.r;
    const auto t = std::chrono::steady_clock::now();
    Score s;
    s.code =
        hiRes == kFinePass ? rkKeepCutToAlphaFine(&r, false) : rkKeepCutToAlpha(&r, hiRes, false);
    s.seconds = secondsSince(t);
    const cv::Mat matte = matteFromMask(job.mask);
    s.err = scoreMatte(matte, truth, unknownBand(trimap));
    s.gaps = countWhiteGaps(matte, truth);
    return s;
}

Score runFull(const cv::Mat& picture, const cv::Mat& trimap, const cv::Mat& truth) {
    const auto t = std::chrono::steady_clock::now();
    Score s;
    cv::Mat alpha;
    try {
        alpha = solveFullResolution(picture, trimap);
    } catch (const ToolError&) {
        s.code = 0;
        alpha = trimap.clone();
    }
    s.seconds = secondsSince(t);
    s.err = scoreMatte(alpha, truth, unknownBand(trimap));
    return s;
}

void wideBandTable(const fs::path& root) {
    std::printf(
        "\nwide band: %-5s %-7s %5s %6s | %8s %7s %6s %4s | %8s %7s %6s %4s | %8s %7s %6s %4s\n",
        "photo", "trimap", "scale", "MP", "c8 SAD", "c8 /MP", "c8 s", "gaps", "c4 SAD", "c4 /MP",
        "c4 s", "gaps", "fine SAD", "fine/MP", "fine s", "gaps");
    for (const char* name : kWidePhotos)
        for (const char* trimapSet : kTrimapSets) {
            const fs::path in = root / "input" / (std::string(name) + ".png");
            const fs::path tri = root / trimapSet / in.filename();
            const fs::path gt = root / "gt" / in.filename();
            if (!fs::exists(in) || !fs::exists(tri) || !fs::exists(gt)) continue;
            const cv::Mat picture0 = loadPicture(in.string());
            const cv::Mat trimap0 = loadTrimap(tri.string(), picture0.size());
            const cv::Mat truth0 = loadTrimap(gt.string(), picture0.size());
            for (int scale : kWideScales) {
                const Photo big =
                    enlargePhoto({picture0, trimap0, truth0},
                                 cv::Size(picture0.cols * scale, picture0.rows * scale));
                const cv::Mat &picture = big.picture, &trimap = big.trimap, &truth = big.truth;
                const double mp = picture.total() / kPixelsPerMegapixel;
                const Score runs[] = {runEntry(picture, trimap, truth, 0),
                                      runEntry(picture, trimap, truth, 1),
                                      runEntry(picture, trimap, truth, kFinePass)};
                std::printf("           %-5s %-7s %4dx %6.2f", name, trimapSet, scale, mp);
                for (const Score& r : runs)
                    std::printf(" | %8.2f %7.2f %6.2f %4d%s", r.err.sad, r.err.sad / mp, r.seconds,
                                r.gaps, r.code == 1 ? "" : "!");
                std::printf("\n");
                std::fflush(stdout);
            }
        }
}

}  // namespace

int main(int argc, char** argv) {
    const fs::path root = fs::path(KC_SHARED_DATA_DIR) / "alphamatting";
    if (!fs::exists(root / "input")) {
        std::printf("bench_quality: %s not found, nothing to measure\n", root.c_str());
        return 0;
    }
    const bool wideOnly = argc > 1 && std::strcmp(argv[argc - 1], "--wide-only") == 0;
    if (wideOnly) {
        wideBandTable(root);
        return 0;
    }
    const std::string csvPath = argc > 1 ? argv[1] : "bench_quality.csv";
    std::ofstream csv(csvPath);
    csv << "image,trimap,case4_sad,case4_mse,case4_s,case8_sad,case8_mse,case8_s,full_sad,full_mse,"
           "full_s,fine_sad,fine_mse,fine_s\n";

    std::vector<fs::path> images;
    for (const auto& e : fs::directory_iterator(root / "input")) images.push_back(e.path());
    std::sort(images.begin(), images.end());

    for (int set = 0; set < 2; ++set) {
        const std::string trimapDir = set == 0 ? "trimap1" : "trimap2";
        std::printf("\n%-6s %-8s | %8s %8s %6s | %8s %8s %6s | %8s %8s %6s | %8s %8s %6s\n",
                    "image", trimapDir.c_str(), "c4 SAD", "c4 MSE", "c4 s", "c8 SAD", "c8 MSE",
                    "c8 s", "full SAD", "full MSE", "full s", "fine SAD", "fine MSE", "fine s");
        constexpr int kModes = 4;
        Score sum[kModes];
        int n = 0;
        for (const fs::path& in : images) {
            const fs::path tri = root / trimapDir / in.filename();
            const fs::path gt = root / "gt" / in.filename();
            if (!fs::exists(tri) || !fs::exists(gt)) continue;
            const cv::Mat picture = loadPicture(in.string());
            const cv::Mat trimap = loadTrimap(tri.string(), picture.size());
            const cv::Mat truth = loadTrimap(gt.string(), picture.size());  // grey 0..255
            const Score s[kModes] = {
                runEntry(picture, trimap, truth, 1), runEntry(picture, trimap, truth, 0),
                runFull(picture, trimap, truth), runEntry(picture, trimap, truth, kFinePass)};
            std::printf("%-6s %-8s |", in.stem().c_str(), "");
            csv << in.stem().string() << ',' << trimapDir;
            for (int k = 0; k < kModes; ++k) {
                std::printf(" %8.3f %8.5f %6.2f%s", s[k].err.sad, s[k].err.mse, s[k].seconds,
                            s[k].code == 1 ? " |" : "!|");
                csv << ',' << s[k].err.sad << ',' << s[k].err.mse << ',' << s[k].seconds;
                sum[k].err.sad += s[k].err.sad;
                sum[k].err.mse += s[k].err.mse;
                sum[k].seconds += s[k].seconds;
            }
            std::printf("\n");
            std::fflush(stdout);  // one line per picture, visible as it goes
            csv << '\n';
            ++n;
        }
        if (n == 0) continue;
        std::printf("%-6s %-8s |", "mean", "");
        for (int k = 0; k < kModes; ++k)
            std::printf(" %8.3f %8.5f %6.2f |", sum[k].err.sad / n, sum[k].err.mse / n,
                        sum[k].seconds / n);
        std::printf("\n");
        const double c4 = sum[0].err.sad / n, c4s = sum[0].seconds / n, full = sum[2].err.sad / n;
        std::printf(
            "targets: case 4 mean SAD %.3f (<= %.1f: %s), mean time %.2f s (< %.1f: %s); "
            "full mean SAD %.3f vs %.2f (within %.0f%%: %s)\n",
            c4, kCase4SadTarget[set], c4 <= kCase4SadTarget[set] ? "met" : "MISSED", c4s,
            kCase4SecondsTarget, c4s < kCase4SecondsTarget ? "met" : "MISSED", full,
            kReferenceSad[set], kReferenceTolerance * 100,
            std::abs(full / kReferenceSad[set] - 1) <= kReferenceTolerance ? "met" : "MISSED");
    }
    std::printf("\nper-picture figures written to %s\n", csvPath.c_str());
    wideBandTable(root);
    return 0;
}
