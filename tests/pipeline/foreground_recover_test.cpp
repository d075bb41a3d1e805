// Foreground recovery of a region: quality on a sample with a known answer,
// the picture kept exactly where the mask is whole, the detail term, the
// feathered write, the KD-tree variant, and argument refusal.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>

#include "foreground_test_support.h"
#include "matting/cfmatt.h"
#include "pipeline/fg_extract.h"
#include "pipeline/fg_recover.h"

namespace {

// Picture pixels (colour and fourth byte) equal the foreground wherever the
// mask is painted keep or cut or at least 250; pixels outside box untouched.
void expectPictureWhereWhole(const EngineJob& b, const cv::Mat& before, const cv::Rect& box) {
    for (int y = 0; y < b.image.rows; ++y)
        for (int x = 0; x < b.image.cols; ++x) {
            const cv::Vec4b f = b.foreground.at<cv::Vec4b>(y, x);
            ASSERT_EQ(f[3], kFourthByte);
            if (!box.contains(cv::Point(x, y))) {
                ASSERT_EQ(f, before.at<cv::Vec4b>(y, x)) << x << "," << y;
                continue;
            }
            const unsigned char m = b.mask.at<unsigned char>(y, x);
            if (m == 1 || m >= 250) {
                ASSERT_EQ(f, b.image.at<cv::Vec4b>(y, x)) << x << "," << y;
            }
        }
}

TEST(ForegroundRecovery, TiledExtractionBeatsThePictureThreefold) {
    const SyntheticSample s = makeSyntheticSample(260, 190);
    EngineJob b(s.picture, brushMapFromAlpha(s.alpha), kFourthByte);
    const cv::Rect all(0, 0, 260, 190);
    recoverForegroundRegion(b.r, all, 1.0f, false, extractAllTiles);
    const double err = alphaWeightedError(b.foreground, s, all);
    const double naive = alphaWeightedError(b.image, s, all);
    EXPECT_LT(err * 3, naive) << "recovered " << err << " naive " << naive;
    expectPictureWhereWhole(b, b.image, all);
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
    const cv::Mat before = b.foreground.clone();
    b.r.roiX = region.x;
    b.r.roiY = region.y;
    b.r.roiWidth = region.width;
    b.r.roiHeight = region.height;
    b.r.cellMode = 1;
    ASSERT_EQ(rkRecoverForegroundCell(&b.r, true), 1);
    expectPictureWhereWhole(b, before, region);
    // Near the centre (feather weight above 0.75) the colours are new and
    // far closer to the truth than the picture.
    const cv::Rect core(centre.x - 8, centre.y - 6, 17, 13);
    EXPECT_LT(alphaWeightedError(b.foreground, s, core) * 2, alphaWeightedError(b.image, s, core));
}

TEST(ForegroundRecovery, FeatherFadesFromCentreToRim) {
    // Uniform fractional mask, identity extraction: new colours are the
    // picture (s = 1), the old foreground is black.
    cv::Mat picture(60, 80, CV_8UC3, cv::Scalar(200, 200, 200));
    EngineJob b(picture, cv::Mat(60, 80, CV_8UC1, cv::Scalar(128)), kFourthByte);
    b.foreground.setTo(cv::Scalar(0, 0, 0, kFourthByte));
    recoverForegroundRegion(b.r, cv::Rect(0, 0, 80, 60), 1.0f, true,
                            [](const cv::Mat&, const cv::Mat&, cv::Mat&) {});
    EXPECT_EQ(b.foreground.at<cv::Vec4b>(0, 0)[0], 0);    // the rim keeps the old colour
    EXPECT_EQ(b.foreground.at<cv::Vec4b>(59, 40)[1], 0);  // bottom row
    const cv::Vec4b c = b.foreground.at<cv::Vec4b>(30, 40);
    EXPECT_GE(c[0], 195);  // the centre takes the new one
    // Weights grow monotonically towards the centre along the middle row.
    for (int x = 1; x <= 40; ++x)
        EXPECT_GE(b.foreground.at<cv::Vec4b>(30, x)[2], b.foreground.at<cv::Vec4b>(30, x - 1)[2]);
}

TEST(ForegroundRecovery, DetailOfTheGreenByteIsAddedToAllColours) {
    // Identity extraction at half scale: the result is the enlarged round trip
    // of the picture, plus 0.618 of the green byte's loss where the mask is
    // 11..249 and nothing where it is 6..10.
    cv::Mat picture(64, 96, CV_8UC3);
    cv::RNG rng(4);
    rng.fill(picture, cv::RNG::UNIFORM, 40, 216);
    auto run = [&](unsigned char maskValue) {
        EngineJob b(picture, cv::Mat(64, 96, CV_8UC1, cv::Scalar(maskValue)), kFourthByte);
        recoverForegroundRegion(b.r, cv::Rect(0, 0, 96, 64), 0.5f, false,
                                [](const cv::Mat&, const cv::Mat&, cv::Mat&) {});
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

TEST(ForegroundRecovery, KDTreeVariantWritesWholePictureAndKeepsPaintedPixels) {
    const SyntheticSample s = makeSyntheticSample(240, 180);
    EngineJob kd(s.picture, brushMapFromAlpha(s.alpha), kFourthByte);
    EngineJob plain(s.picture, brushMapFromAlpha(s.alpha), kFourthByte);
    ASSERT_EQ(rkRecoverForegroundKDTree(&kd.r), 1);
    ASSERT_EQ(rkRecoverForeground(&plain.r), 1);
    const cv::Rect all(0, 0, 240, 180);
    expectPictureWhereWhole(kd, kd.image, all);
    expectPictureWhereWhole(plain, plain.image, all);
    // Leaves and plain tiles estimate the same colours, up to seams.
    const double kdErr = alphaWeightedError(kd.foreground, s, all);
    const double plainErr = alphaWeightedError(plain.foreground, s, all);
    EXPECT_LT(kdErr, alphaWeightedError(kd.image, s, all));
    EXPECT_NEAR(kdErr, plainErr, 0.25 * plainErr + 1.0);
}

TEST(ForegroundRecovery, EntryRefusesBadArguments) {
    cv::Mat picture(20, 30, CV_8UC3, cv::Scalar(1, 2, 3));
    EngineJob b(picture, cv::Mat(20, 30, CV_8UC1, cv::Scalar(100)), kFourthByte);
    EXPECT_EQ(rkRecoverForegroundCell(nullptr, true), -2);
    RKPSStructMsk2 r = b.r;
    r.foreground = nullptr;
    EXPECT_EQ(rkRecoverForegroundCell(&r, true), -2);
    r = b.r;
    r.imageRowBytes = 30 * 4 - 1;
    EXPECT_EQ(rkRecoverForegroundCell(&r, true), -2);
    r = b.r;
    r.roiX = 5;  // region of 30 from column 5 runs past the picture
    EXPECT_EQ(rkRecoverForegroundCell(&r, true), -2);
    r = b.r;
    r.roiHeight = 0;
    EXPECT_EQ(rkRecoverForegroundCell(&r, true), -2);
    r = b.r;
    r.brushInfoRowBytes = -30;  // a given brushInfo is read, so its rows must fit
    EXPECT_EQ(rkRecoverForegroundCell(&r, true), -2);
    r.brushInfo = nullptr;  // an absent one is not read at all
    EXPECT_EQ(rkRecoverForegroundCell(&r, true), 1);
    r = b.r;
    r.height = -1;
    EXPECT_EQ(rkRecoverDuringComputeOnly(&r), -2);
    EXPECT_EQ(rkRecoverDuringComputeOnly(nullptr), -2);
}

}  // namespace
