// Foreground recovery: quality on a sample with a known answer, the picture
// kept exactly where the mask is whole, the detail term, the feathered
// write, the KD-tree variant; the recovery-only pass (which
// tiles run a job, with what request, how progress advances over skipped
// tiles) and the main entry recovering the foreground.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <vector>

#include "api/keepcut.h"
#include "engine_job.h"
#include "pipeline/fg_extract.h"
#include "pipeline/fg_recover.h"
#include "synthetic_sample.h"

namespace {

// Fourth byte of picture pixels: recovery must never write it.
constexpr unsigned char kFourthByte = 77;

// Alpha-weighted mean |F - F_true| per channel over fractional pixels inside
// box (what a composite over a new background shows), for a B,G,R,x buffer.
double alphaWeightedError(const cv::Mat& fg4, const SyntheticSample& s, const cv::Rect& box) {
    double err = 0, weight = 0;
    for (int y = box.y; y < box.br().y; ++y)
        for (int x = box.x; x < box.br().x; ++x) {
            const float a = s.alpha.at<float>(y, x);
            if (a <= 0.0f || a >= 1.0f) continue;
            for (int c = 0; c < 3; ++c)
                err +=
                    a * std::fabs(fg4.at<cv::Vec4b>(y, x)[c] - s.foreground.at<cv::Vec3f>(y, x)[c]);
            weight += 3 * a;
        }
    return weight > 0 ? err / weight : 0.0;
}

// Foreground pixels equal the picture (colour and fourth byte) wherever the
// mask is painted keep or cut or at least 250; pixels outside box as before.
void expectPictureWhereWhole(const EngineJob& b, const cv::Mat& before, const cv::Rect& box) {
    for (int y = 0; y < b.image.rows; ++y)
        for (int x = 0; x < b.image.cols; ++x) {
            const cv::Vec4b f = b.foreground.at<cv::Vec4b>(y, x);
            ASSERT_EQ(f[3], kFourthByte);
            const unsigned char m = b.mask.at<unsigned char>(y, x);
            const bool whole = m == 1 || m >= 250, in = box.contains(cv::Point(x, y));
            if (!in || whole) {
                ASSERT_EQ(f, in ? b.image.at<cv::Vec4b>(y, x) : before.at<cv::Vec4b>(y, x))
                    << x << "," << y;
            }
        }
}

// The tiled extraction over the whole picture, the KD-tree variant and the
// plain entry: the picture is kept where the mask is whole, and the colours
// beat the picture (the tiled extraction threefold), leaves and plain tiles
// estimating the same up to seams.
TEST(ForegroundRecovery, WholePictureVariantsBeatThePicture) {
    const SyntheticSample s = makeSyntheticSample(240, 180);
    EngineJob tiled(s.picture, brushMapFromAlpha(s.alpha), kFourthByte);
    EngineJob kd(s.picture, brushMapFromAlpha(s.alpha), kFourthByte);
    EngineJob plain(s.picture, brushMapFromAlpha(s.alpha), kFourthByte);
    const cv::Rect all(0, 0, 240, 180);
    recoverForegroundRegion(tiled.r, all, 1.0f, false, extractAllTiles);
    ASSERT_EQ(rkRecoverForegroundKDTree(&kd.r), 1);
    ASSERT_EQ(rkRecoverForeground(&plain.r), 1);
    for (const EngineJob* b : {&tiled, &kd, &plain}) expectPictureWhereWhole(*b, b->image, all);
    const double naive = alphaWeightedError(tiled.image, s, all);
    EXPECT_LT(alphaWeightedError(tiled.foreground, s, all) * 3, naive);
    const double kdErr = alphaWeightedError(kd.foreground, s, all);
    const double plainErr = alphaWeightedError(plain.foreground, s, all);
    EXPECT_LT(kdErr, naive);
    EXPECT_NEAR(kdErr, plainErr, 0.25 * plainErr + 1.0);
}

TEST(ForegroundRecovery, CellJobKeepsPictureExactlyAndWritesOnlyItsRegion) {
    const SyntheticSample s = makeSyntheticSample(200, 150);
    EngineJob b(s.picture, brushMapFromAlpha(s.alpha), kFourthByte);
    // A region centred on a half-transparent pixel, where the new colours
    // take full weight.
    cv::Point centre(-1, -1);
    for (int y = 40; y < 110 && centre.x < 0; ++y)
        for (int x = 50; x < 150 && centre.x < 0; ++x)
            if (std::fabs(s.alpha.at<float>(y, x) - 0.5f) < 0.05f) centre = {x, y};
    ASSERT_GE(centre.x, 0);
    const cv::Rect region =
        cv::Rect(centre.x - 50, centre.y - 40, 100, 80) & cv::Rect(0, 0, 200, 150);
    // Outside the region the foreground holds something else.
    cv::Mat outside(b.foreground.size(), CV_8UC4, cv::Scalar(9, 8, 7, kFourthByte));
    b.foreground(region).copyTo(outside(region));
    outside.copyTo(b.foreground);
    b.r.roiX = region.x, b.r.roiY = region.y;
    b.r.roiWidth = region.width, b.r.roiHeight = region.height;
    b.r.cellMode = 1;
    ASSERT_EQ(rkRecoverForegroundCell(&b.r, true), 1);
    expectPictureWhereWhole(b, outside, region);
    // Near the centre (feather weight above 0.75) the colours are new and
    // far closer to the truth than the picture.
    const cv::Rect core(centre.x - 8, centre.y - 6, 17, 13);
    EXPECT_LT(alphaWeightedError(b.foreground, s, core) * 2, alphaWeightedError(b.image, s, core));
}

// Identity extraction: the result is the (enlarged round trip of the)
// picture. Feathered into a black foreground over a uniform fractional mask,
// it fades from the rim (old colour) to the centre (new); at half scale, 0.618
// of the green byte's loss is added to every colour where the mask is 11..249
// and nothing where it is 6..10.
TEST(ForegroundRecovery, FeatherAndDetailTermWithIdentityExtraction) {
    const auto identity = [](const cv::Mat&, const cv::Mat&, cv::Mat&) {};
    EngineJob f(cv::Mat(60, 80, CV_8UC3, cv::Scalar(200, 200, 200)),
                cv::Mat(60, 80, CV_8UC1, cv::Scalar(128)), kFourthByte);
    f.foreground.setTo(cv::Scalar(0, 0, 0, kFourthByte));
    recoverForegroundRegion(f.r, cv::Rect(0, 0, 80, 60), 1.0f, true, identity);
    EXPECT_EQ(f.foreground.at<cv::Vec4b>(0, 0)[0], 0);
    EXPECT_EQ(f.foreground.at<cv::Vec4b>(59, 40)[1], 0);
    EXPECT_GE(f.foreground.at<cv::Vec4b>(30, 40)[0], 195);
    for (int x = 1; x <= 40; ++x)
        EXPECT_GE(f.foreground.at<cv::Vec4b>(30, x)[2], f.foreground.at<cv::Vec4b>(30, x - 1)[2]);

    cv::Mat picture(64, 96, CV_8UC3);
    cv::RNG(4).fill(picture, cv::RNG::UNIFORM, 40, 216);
    auto run = [&](unsigned char maskValue) {
        EngineJob b(picture, cv::Mat(64, 96, CV_8UC1, cv::Scalar(maskValue)), kFourthByte);
        recoverForegroundRegion(b.r, cv::Rect(0, 0, 96, 64), 0.5f, false, identity);
        return b.foreground.clone();
    };
    const cv::Mat plain = run(8), detailed = run(128);
    int compared = 0;
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 96; ++x) {
            const cv::Vec4b p = plain.at<cv::Vec4b>(y, x), d = detailed.at<cv::Vec4b>(y, x);
            const float detail = 0.618f * (picture.at<cv::Vec3b>(y, x)[1] - p[1]);
            for (int c = 0; c < 3; ++c) {
                const float want = p[c] + detail;
                if (want < 0.5f || want > 254.5f) continue;  // saturated
                EXPECT_NEAR(d[c], want, 0.51f) << x << "," << y << " channel " << c;
                ++compared;
            }
        }
    EXPECT_GT(compared, 64 * 96 * 2);
}

int recordProgress(int current, int, void* data) {
    static_cast<std::vector<int>*>(data)->push_back(current);
    return 1;
}

TEST(RecoverComputeOnly, VisitsTilesWithWorkAndAdvancesOverEmptyOnes) {
    // 400 x 400: tiles every 100 pixels, 130 wide, 16 in all; work (bytes
    // strictly between 5 and 250) only at (50, 50) and (350, 250).
    cv::Mat mask(400, 400, CV_8UC1, cv::Scalar(255));
    mask.at<unsigned char>(50, 50) = 128;
    mask.at<unsigned char>(250, 350) = 7;  // odd: painted but inside 6..249
    EngineJob b(cv::Mat(400, 400, CV_8UC3, cv::Scalar(10, 20, 30)), mask, kFourthByte);
    std::vector<int> progress;
    b.r.progProc = recordProgress;
    b.r.progData = &progress;
    b.r.roiX = 3;  // the request's own region is not used
    std::vector<cv::Rect> regions;
    std::vector<size_t> reportsBefore;
    auto job = [&](RKPSStructMsk2* tile) {
        EXPECT_EQ(tile->cellMode, 4);
        EXPECT_TRUE(tile->recoverForeground);
        EXPECT_NE(tile->brushInfo, b.r.brushInfo);
        EXPECT_EQ(tile->mask, b.r.mask);
        regions.emplace_back(tile->roiX, tile->roiY, tile->roiWidth, tile->roiHeight);
        reportsBefore.push_back(progress.size());
        tile->roiX = -99;  // jobs widen regions in place
        return -6;         // a failed tile does not stop
    };
    EXPECT_EQ(recoverDuringComputeOnly(&b.r, job), 1);
    // (50, 50) lies only in the first tile, (350, 250) only in (300, 200), the
    // 12th: eleven reports came before its job.
    EXPECT_EQ(regions, (std::vector<cv::Rect>{{0, 0, 130, 130}, {300, 200, 100, 130}}));
    EXPECT_EQ(reportsBefore, (std::vector<size_t>{0, 11}));
    // One report per tile, skipped or not, then the completion.
    ASSERT_EQ(progress.size(), 17u);
    for (size_t k = 0; k < 16; ++k) EXPECT_NEAR(progress[k], (k + 1) * 1000000 / 16, 2);
    EXPECT_EQ(progress.back(), 1000000);
    EXPECT_EQ(b.r.roiX, 3);
}

// The recovery-only entry and the main entry asked to recover, on a region
// job: painted bytes and the picture kept where painted, the band computed,
// the colours better than the picture; the main entry's alpha is the same
// with or without recovery, and without it the foreground is left alone.
TEST(RecoverComputeOnly, EntriesComputeAndRecoverTheBand) {
    const SyntheticSample s = makeSyntheticSample(160, 120);
    const cv::Mat mask = brushMapFromTrimap(s.trimap);
    const cv::Rect all(0, 0, 160, 120);
    EngineJob only(s.picture, mask, kFourthByte);
    only.r.mergeMode = 2;
    ASSERT_EQ(rkRecoverDuringComputeOnly(&only.r), 1);
    const cv::Mat painted = (mask & 1) != 0;
    EXPECT_EQ(cv::countNonZero((only.mask != mask) & painted), 0);
    EXPECT_EQ(cv::countNonZero(only.mask & 1 & ~painted), 0);
    EXPECT_EQ(cv::norm(only.foreground, only.image, cv::NORM_INF, painted), 0.0);
    EXPECT_LT(alphaWeightedError(only.foreground, s, all), alphaWeightedError(only.image, s, all));

    EngineJob with(s.picture, mask), without(s.picture, mask, kFourthByte);
    with.r.cellMode = without.r.cellMode = 1;
    with.r.recoverForeground = true;
    ASSERT_EQ(rkKeepCutToAlpha(&with.r, 0, false), 1);
    ASSERT_EQ(rkKeepCutToAlpha(&without.r, 0, false), 1);
    EXPECT_EQ(cv::norm(with.mask, without.mask, cv::NORM_INF), 0.0);
    EXPECT_EQ(cv::norm(without.foreground, without.image, cv::NORM_INF), 0.0);
    EXPECT_GT(cv::norm(with.foreground, with.image, cv::NORM_INF), 0.0);
}

}  // namespace
