// `keepcut batch` over a folder with good and bad pairs, and `keepcut band`
// on a disc: a bad pair is named and passed over while the good ones come out
// as `keepcut matte` makes them; the band has the codes and width it says.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>

#include "commands.h"
#include "synthetic_sample.h"
#include "trimap_band.h"

namespace {

namespace fs = std::filesystem;

fs::path freshDir(const fs::path& name) {
    const fs::path dir = fs::temp_directory_path() / ("keepcut_" + name.string());
    fs::remove_all(dir);
    fs::create_directories(dir);
    return dir;
}

bool sameImage(const fs::path& a, const fs::path& b) {
    const cv::Mat x = cv::imread(a.string(), cv::IMREAD_UNCHANGED);
    const cv::Mat y = cv::imread(b.string(), cv::IMREAD_UNCHANGED);
    return !x.empty() && x.size() == y.size() && x.type() == y.type() &&
           cv::norm(x, y, cv::NORM_INF) == 0;
}

TEST(Batch, BadPairsAreNamedAndGoodOnesMatchMatte) {
    const fs::path dir = freshDir("batch");
    const fs::path pics = dir / "pictures", tris = dir / "trimaps", out = dir / "out";
    fs::create_directories(pics);
    fs::create_directories(tris);
    // Good pairs: the same name, and a trimap that differs only in extension.
    const struct {
        const char *picture, *trimap;
        int width;
    } good[] = {{"one.png", "one.png", 96}, {"two.bmp", "two.png", 120}};
    for (const auto& g : good) {
        const SyntheticSample s = makeSyntheticSample(g.width, g.width * 3 / 4);
        ASSERT_TRUE(cv::imwrite((pics / g.picture).string(), s.picture));
        ASSERT_TRUE(cv::imwrite((tris / g.trimap).string(), s.trimap));
    }
    const SyntheticSample small = makeSyntheticSample(64, 48);
    cv::imwrite((pics / "three.png").string(), small.picture);  // no trimap
    cv::imwrite((pics / "four.png").string(), small.picture);
    cv::imwrite((tris / "four.png").string(), cv::Mat(20, 20, CV_8UC1, cv::Scalar(128)));
    std::ofstream(pics / "five.png") << "not an image";
    cv::imwrite((tris / "five.png").string(), small.trimap);
    const char* failures[] = {
        "keepcut: failed five.png: picture is not a readable image",
        "keepcut: failed four.png: trimap is 20x20 but the picture is 64x48",
        "keepcut: failed three.png: no trimap named three.*",
        "2 of 5 pairs done",
    };

    BatchOptions o{pics.string(), tris.string(), out.string(), true, false};
    ::testing::internal::CaptureStderr();
    const int rc = runBatch(o);
    const std::string err = ::testing::internal::GetCapturedStderr();
    EXPECT_EQ(rc, 1);
    for (const char* f : failures) EXPECT_NE(err.find(f), std::string::npos) << f << "\n" << err;
    EXPECT_FALSE(fs::exists(out / "three.png") || fs::exists(out / "four.png"));

    for (const auto& g : good) {
        const std::string stem = fs::path(g.picture).stem().string();
        MatteOptions m;
        m.picture = (pics / g.picture).string();
        m.trimap = (tris / g.trimap).string();
        m.alphaOut = (dir / (stem + ".png")).string();
        m.cutoutOut = (dir / (stem + "-cutout.png")).string();
        ASSERT_EQ(runMatte(m), 0);
        EXPECT_TRUE(sameImage(out / (stem + ".png"), m.alphaOut)) << stem;
        EXPECT_TRUE(sameImage(out / (stem + "-cutout.png"), m.cutoutOut)) << stem;
    }
    fs::remove_all(dir);
}

struct BandCase {
    int width;
    int channels;  // a grey or a colour mask
};

class Band : public ::testing::TestWithParam<BandCase> {};

// A disc of radius R: the band runs from R - ceil(N/2) to R + floor(N/2)
// (give or take the digital disc's own pixel of edge), and its area over the
// circumference is the band width, within a pixel.
TEST_P(Band, DiscGetsABandOfTheGivenWidth) {
    const BandCase c = GetParam();
    const fs::path dir = freshDir(fs::path("band").concat(std::to_string(c.width)));
    constexpr int kSide = 160, kRadius = 50;
    const cv::Point2d centre(80, 80);
    cv::Mat mask(kSide, kSide, CV_8UC(c.channels), cv::Scalar::all(0));
    cv::circle(mask, cv::Point(80, 80), kRadius, cv::Scalar::all(255), cv::FILLED);
    BandOptions o{(dir / "mask.png").string(), (dir / "trimap.png").string(), c.width};
    ASSERT_TRUE(cv::imwrite(o.mask, mask));
    ASSERT_EQ(runBand(o), 0);
    const cv::Mat trimap = cv::imread(o.trimapOut, cv::IMREAD_UNCHANGED);
    ASSERT_EQ(trimap.type(), CV_8UC1);

    const double inner = kRadius - (c.width - c.width / 2), outer = kRadius + c.width / 2;
    constexpr double kEdgeSlack = 1.5;  // the digital disc's edge is a pixel either way
    int band = 0;
    for (int y = 0; y < kSide; ++y)
        for (int x = 0; x < kSide; ++x) {
            const unsigned char v = trimap.at<unsigned char>(y, x);
            ASSERT_TRUE(v == kTrimapCut || v == kTrimapBand || v == kTrimapKeep) << int(v);
            const double r = std::hypot(x - centre.x, y - centre.y);
            band += v == kTrimapBand;
            const unsigned char expected = r < inner - kEdgeSlack   ? kTrimapKeep
                                           : r > outer + kEdgeSlack ? kTrimapCut
                                           : r > inner + kEdgeSlack && r < outer - kEdgeSlack
                                               ? kTrimapBand
                                               : v;  // on the digital edge: either
            ASSERT_EQ(v, expected) << x << "," << y;
        }
    const double meanWidth = band / (2 * M_PI * kRadius);
    EXPECT_NEAR(meanWidth, c.width, 1.0);

    // Across a straight edge the width is exact: ceil(N/2) inside, floor(N/2) out.
    cv::Mat halves(4, 64, CV_8UC1, cv::Scalar(0));
    halves.colRange(0, 32).setTo(255);
    const cv::Mat row = trimapFromMask(halves, c.width).row(2);
    EXPECT_EQ(cv::countNonZero(row.colRange(0, 32) == kTrimapBand), c.width - c.width / 2);
    EXPECT_EQ(cv::countNonZero(row.colRange(32, 64) == kTrimapBand), c.width / 2);
    EXPECT_EQ(cv::countNonZero(row == kTrimapKeep) + cv::countNonZero(row == kTrimapBand),
              32 + c.width / 2);
    fs::remove_all(dir);
}

INSTANTIATE_TEST_SUITE_P(Widths, Band,
                         ::testing::Values(BandCase{1, 1}, BandCase{2, 3}, BandCase{7, 1},
                                           BandCase{16, 3}),
                         [](const auto& info) { return std::to_string(info.param.width) + "px"; });

}  // namespace
