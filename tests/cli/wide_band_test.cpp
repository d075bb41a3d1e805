// The tool's default for whole pictures against the coarse pass's one-sided
// cells: thick keep-painted strands hang from the subject through a wide band
// towards the cut-painted background. The coarse pass's tree ends above the
// strands' tips in cells holding keep strokes and no cut one, so the
// background between the strands comes out white there; the default must find
// it, and say which pass ran.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <string>

#include "commands.h"

namespace {

namespace fs = std::filesystem;

// The tree runs on the half-size level, 96 x 80: it cuts that into cells of
// 44 and 53 columns, then splits each across the band, above the strands' tips.
constexpr int kWidth = 192, kHeight = 160;
constexpr int kSubjectRows = 20;  // keep-painted subject along the top
constexpr int kBandBottom = 140;  // cut-painted background below
// Strands end 20 rows above the cut, so every gap opens onto the background.
// Tips this low keep the next cell down one-sided too; with 90-row strands
// that cell cannot split without parting the tips from the cut, so it is
// solved first, whole, and marks the gap pixels next to the one-sided cell as
// background: 177 instead of 254.
constexpr int kStrandLength = 100;
constexpr int kStrand = 24, kGap = 24;  // 12 on the tree's level: its smallest cell side
// Grey noise on the colours: with flat ones the default leaves 42 in the gaps,
// close to the limit; with 6 to 30 at most 8. The coarse pass gives 254 at all.
constexpr float kNoise = 12;
const cv::Scalar kBackground(200, 170, 60), kSubject(40, 90, 200);  // B, G, R, far apart
constexpr double kWhite = 200, kFound = 50;  // gap means read as white / as found

struct Scene {
    cv::Mat picture, trimap;
};

Scene makeScene() {
    cv::Mat truth(kHeight, kWidth, CV_8UC1, cv::Scalar(0));
    truth.rowRange(0, kSubjectRows).setTo(255);
    for (int x = kGap; x + kStrand <= kWidth; x += kStrand + kGap)
        truth(cv::Rect(x, kSubjectRows, kStrand, kStrandLength)).setTo(255);
    Scene s{cv::Mat(kHeight, kWidth, CV_32FC3, kBackground),
            cv::Mat(kHeight, kWidth, CV_8UC1, cv::Scalar(128))};
    s.picture.setTo(kSubject, truth);
    cv::Mat noise(kHeight, kWidth, CV_32FC1);
    cv::RNG(11).fill(noise, cv::RNG::NORMAL, 0, kNoise);  // fixed seed: the scene repeats
    cv::Mat planes[] = {noise, noise, noise};
    cv::merge(planes, 3, noise);
    s.picture += noise;
    s.picture.convertTo(s.picture, CV_8UC3);
    s.trimap.setTo(255, truth);
    s.trimap.rowRange(kBandBottom, kHeight).setTo(0);
    return s;
}

// The mean matte over the upper half of the whitest gap (all truly 0).
double whitestGap(const cv::Mat& matte) {
    double whitest = 0;
    for (int x = 0; x + kGap <= kWidth; x += kStrand + kGap)
        whitest = std::max(whitest,
                           cv::mean(matte(cv::Rect(x, kSubjectRows, kGap, kStrandLength / 2)))[0]);
    return whitest;
}

struct PassCase {
    const char* name;
    bool coarse;  // `keepcut matte --coarse`, else no pass option
    const char* mode;
    bool white;  // whether the gaps come out white
};

class WideBand : public ::testing::TestWithParam<PassCase> {};

TEST_P(WideBand, GapsBetweenStrands) {
    const PassCase c = GetParam();
    const fs::path dir = fs::temp_directory_path() / (std::string("keepcut_wide_band_") + c.name);
    fs::remove_all(dir);
    fs::create_directories(dir);
    const Scene s = makeScene();
    MatteOptions o;
    o.picture = (dir / "picture.png").string();
    o.trimap = (dir / "trimap.png").string();
    o.alphaOut = (dir / "alpha.png").string();
    o.coarse = c.coarse;
    ASSERT_TRUE(cv::imwrite(o.picture, s.picture) && cv::imwrite(o.trimap, s.trimap));
    EXPECT_STREQ(matteOnePair(o).mode, c.mode);
    const double gap = whitestGap(cv::imread(o.alphaOut, cv::IMREAD_GRAYSCALE));
    if (c.white)
        EXPECT_GE(gap, kWhite);
    else
        EXPECT_LE(gap, kFound);
    fs::remove_all(dir);
}

INSTANTIATE_TEST_SUITE_P(Passes, WideBand,
                         ::testing::Values(PassCase{"coarse", true, "coarse pass", true},
                                           PassCase{"default", false, "fine pass", false}),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
