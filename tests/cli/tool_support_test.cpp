// The tool's reading, conversion and scoring: clear errors for bad inputs and
// exact conversions for every picture format it accepts.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <string>
#include <vector>

#include "engine_job.h"
#include "image_io.h"
#include "matte_metrics.h"

namespace {

namespace fs = std::filesystem;

class ToolFiles : public ::testing::Test {
  protected:
    fs::path dir;
    void SetUp() override {
        dir = fs::temp_directory_path() /
              ("keepcut_tool_" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) +
               ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directories(dir);
    }
    void TearDown() override { fs::remove_all(dir); }
    std::string path(const char* name) const { return (dir / name).string(); }
};

std::string errorOf(const std::function<void()>& f) {
    try {
        f();
    } catch (const ToolError& e) {
        return e.what();
    }
    return "";
}

TEST_F(ToolFiles, BadInputsGiveOneLineReasons) {
    EXPECT_NE(errorOf([&] { loadPicture(path("missing.png")); }).find("picture not found"),
              std::string::npos);
    std::ofstream(path("text.png")) << "not an image";
    EXPECT_NE(errorOf([&] { loadPicture(path("text.png")); }).find("not a readable image"),
              std::string::npos);
    cv::imwrite(path("small.png"), cv::Mat(4, 5, CV_8UC1, cv::Scalar(0)));
    const std::string e = errorOf([&] { loadTrimap(path("small.png"), cv::Size(6, 4)); });
    EXPECT_NE(e.find("5x4"), std::string::npos) << e;
    EXPECT_NE(e.find("6x4"), std::string::npos) << e;
    EXPECT_NE(errorOf([&] {
                  writeImage(path("no/such/dir/a.png"), cv::Mat(2, 2, CV_8UC1));
              }).find("cannot write"),
              std::string::npos);
}

TEST_F(ToolFiles, EveryPictureFormatBecomesEightBitColour) {
    cv::Mat grey16(3, 4, CV_16UC1);
    for (int i = 0; i < 12; ++i) grey16.at<unsigned short>(i / 4, i % 4) = i * 257 * 20;
    cv::imwrite(path("g16.png"), grey16);
    const cv::Mat g = loadPicture(path("g16.png"));
    ASSERT_EQ(g.type(), CV_8UC3);
    EXPECT_EQ(g.at<cv::Vec3b>(2, 3), cv::Vec3b(220, 220, 220));

    cv::Mat bgra(2, 2, CV_8UC4, cv::Scalar(10, 20, 30, 7));
    cv::imwrite(path("bgra.png"), bgra);
    EXPECT_EQ(loadPicture(path("bgra.png")).at<cv::Vec3b>(1, 1), cv::Vec3b(10, 20, 30));

    cv::Mat colourTrimap(2, 2, CV_8UC3, cv::Scalar(128, 128, 128));
    cv::imwrite(path("tri.png"), colourTrimap);
    const cv::Mat t = loadTrimap(path("tri.png"), cv::Size(2, 2));
    EXPECT_EQ(t.type(), CV_8UC1);
    EXPECT_EQ(t.at<unsigned char>(0, 0), 128);
}

// Every 16-bit level lands within one 8-bit level of v / 257, in every
// channel, with both ends exact.
TEST_F(ToolFiles, SixteenBitLevelsStayWithinOneLevel) {
    cv::Mat all(256, 256, CV_16UC3);
    for (int v = 0; v < 65536; ++v)
        all.at<cv::Vec3w>(v / 256, v % 256) = cv::Vec3w(v, 65535 - v, v);
    cv::imwrite(path("all16.png"), all);
    const cv::Mat g = loadPicture(path("all16.png"));
    ASSERT_EQ(g.type(), CV_8UC3);
    for (int v = 0; v < 65536; ++v) {
        const cv::Vec3b got = g.at<cv::Vec3b>(v / 256, v % 256);
        ASSERT_NEAR(got[0], std::lround(v / 257.0), 1) << v;
        ASSERT_NEAR(got[1], std::lround((65535 - v) / 257.0), 1) << v;
    }
    EXPECT_EQ(g.at<cv::Vec3b>(0, 0), cv::Vec3b(0, 255, 0));
    EXPECT_EQ(g.at<cv::Vec3b>(255, 255), cv::Vec3b(255, 0, 255));
}

// A JPEG as a camera writes it: an APP1 Exif segment holding one orientation
// tag, right after the start marker.
void writeJpegWithOrientation(const std::string& path, const cv::Mat& image, int orientation) {
    std::vector<unsigned char> jpeg;
    ASSERT_TRUE(cv::imencode(".jpg", image, jpeg, {cv::IMWRITE_JPEG_QUALITY, 100}));
    const unsigned char app1[] = {
        0xFF, 0xE1, 0, 34, 'E', 'x', 'i', 'f', 0, 0,  // marker, length, Exif header
        'M',  'M',  0, 42, 0,   0,   0,   8,          // big-endian TIFF, IFD at 8
        0,    1,                                      // one entry:
        0x01, 0x12, 0, 3,  0,   0,   0,   1,   0, static_cast<unsigned char>(orientation),
        0,    0,    0, 0,  0,   0};  // orientation, one SHORT; no next IFD
    jpeg.insert(jpeg.begin() + 2, std::begin(app1), std::end(app1));
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(jpeg.data()),
               static_cast<std::streamsize>(jpeg.size()));
}

// Pictures and trimaps come in upright, whatever orientation the camera
// recorded, so a trimap painted over the picture as shown lines up with it.
TEST_F(ToolFiles, ExifOrientationIsApplied) {
    // 8x8 blocks of flat grey, aligned to the JPEG's own blocks, stay within
    // a level or two at quality 100 while every block differs from the next.
    cv::Mat stored(16, 24, CV_8UC1);
    for (int i = 0; i < 6; ++i) stored(cv::Rect(i % 3 * 8, i / 3 * 8, 8, 8)).setTo(i * 50);
    const struct {
        int orientation;
        int rotation;  // cv::RotateFlags, or -1 for none
    } cases[] = {{1, -1},
                 {3, cv::ROTATE_180},
                 {6, cv::ROTATE_90_CLOCKWISE},
                 {8, cv::ROTATE_90_COUNTERCLOCKWISE}};
    for (const auto& c : cases) {
        const std::string file = path(cv::format("o%d.jpg", c.orientation).c_str());
        writeJpegWithOrientation(file, stored, c.orientation);
        cv::Mat upright = stored;
        if (c.rotation >= 0) cv::rotate(stored, upright, c.rotation);
        const cv::Mat trimap = loadTrimap(file, upright.size());
        EXPECT_LE(cv::norm(trimap, upright, cv::NORM_INF), 3) << c.orientation;
        cv::Mat pictureGrey;
        cv::extractChannel(loadPicture(file), pictureGrey, 1);
        EXPECT_LE(cv::norm(pictureGrey, upright, cv::NORM_INF), 3) << c.orientation;
    }
}

TEST(ToolConversions, TrimapToBrushMapAndBack) {
    cv::Mat trimap = (cv::Mat_<unsigned char>(1, 4) << 0, 255, 128, 7);
    const cv::Mat map = brushMapFromTrimap(trimap);
    EXPECT_EQ(map.at<unsigned char>(0, 0), RK_MASK_CUT);
    EXPECT_EQ(map.at<unsigned char>(0, 1), RK_MASK_KEEP);
    EXPECT_EQ(map.at<unsigned char>(0, 2) & RK_MASK_PAINTED_BIT, 0);  // unpainted
    EXPECT_EQ(map.at<unsigned char>(0, 3) & RK_MASK_PAINTED_BIT, 0);
    const cv::Mat matte = matteFromMask(map);
    EXPECT_EQ(matte.at<unsigned char>(0, 0), 0);  // painted cut reads as 0
    EXPECT_EQ(matte.at<unsigned char>(0, 1), 255);

    const cv::Mat cut = makeCutout(cv::Mat(1, 1, CV_8UC3, cv::Scalar(1, 2, 3)),
                                   cv::Mat(1, 1, CV_8UC1, cv::Scalar(9)));
    EXPECT_EQ(cut.at<cv::Vec4b>(0, 0), cv::Vec4b(1, 2, 3, 9));  // straight, not premultiplied
}

TEST(ToolConversions, RequestCoversThePicture) {
    EngineJob job(cv::Mat(5, 7, CV_8UC3, cv::Scalar(1, 2, 3)),
                  cv::Mat(5, 7, CV_8UC1, cv::Scalar(1)));
    const RKPSStructMsk2 r = job.r;
    EXPECT_EQ(r.width, 7);
    EXPECT_EQ(r.roiWidth, 7);
    EXPECT_EQ(r.roiHeight, 5);
    EXPECT_EQ(r.cellMode, 0);
    EXPECT_GE(r.imageRowBytes, 28);
    EXPECT_EQ(r.image[2], 3);  // B,G,R,A: red is the third byte
    EXPECT_NE(r.mask, r.brushInfo);
}

TEST(MatteScore, SadAndMseOverTheBandOnly) {
    const cv::Mat alpha = (cv::Mat_<unsigned char>(1, 3) << 255, 0, 51);
    const cv::Mat truth = (cv::Mat_<float>(1, 3) << 0.0f, 0.0f, 0.0f);
    const cv::Mat where = (cv::Mat_<unsigned char>(1, 3) << 255, 0, 255);
    const MatteError e = scoreMatte(alpha, truth, where);
    EXPECT_EQ(e.pixels, 2);
    EXPECT_NEAR(e.sad, 1.2 / 1000.0, 1e-12);
    EXPECT_NEAR(e.mse, (1.0 + 0.04) / 2, 1e-12);
    const cv::Mat band = unknownBand((cv::Mat_<unsigned char>(1, 3) << 0, 128, 255));
    EXPECT_EQ(cv::countNonZero(band), 1);
}

}  // namespace
