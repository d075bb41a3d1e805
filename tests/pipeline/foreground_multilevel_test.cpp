// Multi-level foreground estimation on pictures composed from known smooth
// foreground, background and alpha: the foreground comes back where alpha is
// not negligible, the layers compose back to the picture, and a constant
// picture is its own foreground.
#include <gtest/gtest.h>

#include <cmath>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

#include "pipeline/fg_multilevel.h"

namespace {

enum class Matte { SoftDisk, Strands };

struct Case {
    int width, height, channels;
    Matte matte;
    friend void PrintTo(const Case& c, std::ostream* os) {
        *os << c.width << "x" << c.height << "x" << c.channels
            << (c.matte == Matte::SoftDisk ? " disk" : " strands");
    }
};

// Alpha in 0..1: a disk with an edge ramp a sixth of the picture wide, or
// vertical hair-like strands over the right half.
float alphaAt(Matte m, int x, int y, int w, int h) {
    if (m == Matte::SoftDisk) {
        const float r = std::hypot(x - w * 0.5f, y - h * 0.5f);
        return std::clamp((0.3f * w - r) / (w / 6.0f) + 0.5f, 0.0f, 1.0f);
    }
    return x < w / 2 ? 0.0f : 0.5f + 0.5f * std::sin(x * 0.7f);
}

struct Composed {
    cv::Mat picture;  // 8UC3 or 8UC4
    cv::Mat alpha;    // 8UC1
    cv::Mat fg, bg;   // 32FC3, 0..255
};

// Foreground and background are distinct smooth gradients, so that what
// shows through alpha determines both.
Composed compose(const Case& c) {
    Composed s;
    s.alpha.create(c.height, c.width, CV_8UC1);
    s.fg.create(c.height, c.width, CV_32FC3);
    s.bg.create(c.height, c.width, CV_32FC3);
    cv::Mat bgr(c.height, c.width, CV_8UC3);
    for (int y = 0; y < c.height; ++y)
        for (int x = 0; x < c.width; ++x) {
            const float u = static_cast<float>(x) / c.width, v = static_cast<float>(y) / c.height;
            const unsigned char a8 = cv::saturate_cast<unsigned char>(
                255.0f * alphaAt(c.matte, x, y, c.width, c.height));
            const cv::Vec3f f(220 - 60 * u, 40 + 80 * v, 160.0f);
            const cv::Vec3f b(20 + 50 * v, 200.0f, 60 + 120 * u);
            s.alpha.at<unsigned char>(y, x) = a8;
            s.fg.at<cv::Vec3f>(y, x) = f;
            s.bg.at<cv::Vec3f>(y, x) = b;
            const float a = a8 / 255.0f;
            bgr.at<cv::Vec3b>(y, x) = cv::Vec3b(a * f + (1 - a) * b);
        }
    if (c.channels == 4)
        cv::cvtColor(bgr, s.picture, cv::COLOR_BGR2BGRA);
    else
        s.picture = bgr;
    return s;
}

class MultiLevel : public testing::TestWithParam<Case> {};

TEST_P(MultiLevel, RecoversForegroundAndComposesBack) {
    const Composed s = compose(GetParam());
    const ForegroundLayers l = estimateForegroundMultiLevel(s.picture, s.alpha);
    ASSERT_EQ(l.foreground.size(), s.picture.size());
    cv::Mat bgr;
    if (s.picture.channels() == 4)
        cv::cvtColor(s.picture, bgr, cv::COLOR_BGRA2BGR);
    else
        bgr = s.picture;
    double fgErr = 0, fgMax = 0, compErr = 0;
    int counted = 0;
    for (int y = 0; y < bgr.rows; ++y)
        for (int x = 0; x < bgr.cols; ++x) {
            const float a = s.alpha.at<unsigned char>(y, x) / 255.0f;
            const cv::Vec3f f = l.foreground.at<cv::Vec3f>(y, x) * 255.0f;
            const cv::Vec3f b = l.background.at<cv::Vec3f>(y, x) * 255.0f;
            const cv::Vec3f back = a * f + (1 - a) * b - cv::Vec3f(bgr.at<cv::Vec3b>(y, x));
            compErr += cv::norm(back, cv::NORM_L1) / 3;
            if (a <= 0.1f) continue;
            const double d = cv::norm(f - s.fg.at<cv::Vec3f>(y, x), cv::NORM_L1) / 3;
            fgErr += d;
            fgMax = std::max(fgMax, d);
            ++counted;
        }
    ASSERT_GT(counted, 0);
    // Naive F = picture is off by tens of levels on these mattes; the estimate
    // must be within a few levels on average and never grossly wrong, and the
    // layers must explain the picture to within its rounding.
    EXPECT_LT(fgErr / counted, 3.0);
    EXPECT_LT(fgMax, 20.0);
    EXPECT_LT(compErr / bgr.total(), 0.5);
}

INSTANTIATE_TEST_SUITE_P(Pictures, MultiLevel,
                         testing::Values(Case{96, 64, 3, Matte::SoftDisk},
                                         Case{97, 131, 4, Matte::SoftDisk},
                                         Case{120, 40, 3, Matte::Strands},
                                         Case{33, 17, 4, Matte::Strands}));

TEST(MultiLevelConstant, ConstantPictureIsItsOwnForeground) {
    for (const cv::Size size : {cv::Size(1, 1), cv::Size(2, 7), cv::Size(64, 48)}) {
        const cv::Mat picture(size, CV_8UC3, cv::Scalar(17, 140, 233));
        cv::Mat alpha(size, CV_8UC1);
        cv::randu(alpha, 0, 256);
        const cv::Mat fg = foregroundBytesMultiLevel(picture, alpha);
        EXPECT_EQ(cv::norm(fg, picture, cv::NORM_INF), 0) << size;
    }
}

}  // namespace
