// Deterministic synthetic matting sample: an elliptical subject with a soft rim
// and hundreds of thin curved strands, over a textured background.
#include "synthetic_sample.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <vector>

namespace {

// Strands and rim are drawn this many times larger and then area-averaged, so
// thin hairs turn into fractional alpha the way a camera sensor integrates them.
constexpr int kSuperSample = 4;
// Hairs per 1000 pixels of subject outline: dense enough to look like fur.
constexpr double kStrandsPer1000Px = 180.0;
// Blur of the subject's rim, as a fraction of the short side: a soft edge.
constexpr double kRimSoftness = 0.004;
// Half-width of the unknown band around every fractional pixel, as a fraction
// of the short side (about 8 pixels at 800x600).
constexpr double kBandFraction = 0.0135;

cv::Mat makeBackground(int w, int h, cv::RNG& rng) {
    // Smooth colour gradient plus two oriented stripe textures and a mottled
    // low-frequency noise: busy enough that a matte cannot cheat on colour.
    cv::Mat bg(h, w, CV_32FC3);
    cv::Mat noise(std::max(2, h / 24), std::max(2, w / 24), CV_32FC3);
    rng.fill(noise, cv::RNG::UNIFORM, cv::Scalar::all(-30), cv::Scalar::all(30));
    cv::resize(noise, noise, cv::Size(w, h), 0, 0, cv::INTER_CUBIC);
    for (int y = 0; y < h; ++y) {
        auto* row = bg.ptr<cv::Vec3f>(y);
        const auto* nrow = noise.ptr<cv::Vec3f>(y);
        for (int x = 0; x < w; ++x) {
            const float u = static_cast<float>(x) / w, v = static_cast<float>(y) / h;
            const float stripes = 25.0f * std::sin(0.09f * x + 0.05f * y);
            const float checks = 15.0f * std::sin(0.021f * x) * std::cos(0.027f * y);
            row[x] =
                cv::Vec3f(60 + 120 * u + stripes, 150 - 60 * v + checks, 90 + 80 * v - stripes) +
                nrow[x];
        }
    }
    cv::min(cv::max(bg, 0.0), 255.0, bg);
    return bg;
}

cv::Mat makeForeground(int w, int h) {
    // A warm, slowly varying fur colour, distinct from the background.
    cv::Mat fg(h, w, CV_32FC3);
    for (int y = 0; y < h; ++y) {
        auto* row = fg.ptr<cv::Vec3f>(y);
        for (int x = 0; x < w; ++x) {
            const float u = static_cast<float>(x) / w, v = static_cast<float>(y) / h;
            row[x] = cv::Vec3f(40 + 30 * v, 90 + 50 * u, 200 + 40 * std::sin(3.0f * u + 2.0f * v));
        }
    }
    cv::min(cv::max(fg, 0.0), 255.0, fg);
    return fg;
}

cv::Mat makeAlpha(int w, int h, cv::RNG& rng) {
    const int sw = w * kSuperSample, sh = h * kSuperSample;
    cv::Mat big(sh, sw, CV_8UC1, cv::Scalar(0));
    const cv::Point2d centre(sw * 0.5, sh * 0.55);
    const cv::Size axes(static_cast<int>(sw * 0.27), static_cast<int>(sh * 0.33));
    cv::ellipse(big, cv::Point(centre), axes, 0, 0, 360, cv::Scalar(255), cv::FILLED, cv::LINE_AA);
    // Only the body's rim is softened; strands keep their crisp sub-pixel width.
    const double shortSide = std::min(sw, sh);
    cv::GaussianBlur(big, big, cv::Size(), kRimSoftness * shortSide);

    // Strands leave the outline outwards and curl a little as they go.
    const double perimeter = CV_PI * (axes.width + axes.height) / kSuperSample;
    const int strands = static_cast<int>(perimeter * kStrandsPer1000Px / 1000.0);
    for (int i = 0; i < strands; ++i) {
        const double t = rng.uniform(0.0, 2 * CV_PI);
        cv::Point2d p(centre.x + axes.width * 0.97 * std::cos(t),
                      centre.y + axes.height * 0.97 * std::sin(t));
        double dir = t + rng.uniform(-0.5, 0.5);
        const double curl = rng.uniform(-0.03, 0.03);
        const double len = shortSide * rng.uniform(0.02, 0.09);
        const int segments = 24;
        std::vector<cv::Point> pts{cv::Point(p)};
        for (int s = 0; s < segments; ++s) {
            dir += curl;
            p += cv::Point2d(std::cos(dir), std::sin(dir)) * (len / segments);
            pts.emplace_back(p);
        }
        const int thickness = rng.uniform(2, 5);  // a half to one pixel wide
        cv::polylines(big, pts, false, cv::Scalar(255), thickness, cv::LINE_AA);
    }
    cv::Mat alpha;
    big.convertTo(alpha, CV_32F, 1.0 / 255.0);
    cv::resize(alpha, alpha, cv::Size(w, h), 0, 0, cv::INTER_AREA);
    // Exact 0 and 1 where the coverage is within rounding of them, so the
    // trimap's known regions are truly known.
    cv::threshold(alpha, alpha, 0.5 / 255.0, 0, cv::THRESH_TOZERO);
    alpha.setTo(1.0f, alpha > 254.5 / 255.0);
    return alpha;
}

cv::Mat makeTrimap(const cv::Mat& alpha) {
    const int band = std::max(
        2, static_cast<int>(std::lround(kBandFraction * std::min(alpha.cols, alpha.rows))));
    const cv::Mat kernel =
        cv::getStructuringElement(cv::MORPH_ELLIPSE, cv::Size(2 * band + 1, 2 * band + 1));
    cv::Mat fg = alpha >= 1.0f, bg = alpha <= 0.0f;
    cv::erode(fg, fg, kernel);
    cv::erode(bg, bg, kernel);
    cv::Mat trimap(alpha.size(), CV_8UC1, cv::Scalar(128));
    trimap.setTo(255, fg);
    trimap.setTo(0, bg);
    return trimap;
}

}  // namespace

SyntheticSample makeSyntheticSample(int width, int height, unsigned seed) {
    if (width < 16 || height < 16) throw std::invalid_argument("synthetic sample too small");
    cv::RNG rng(seed);
    SyntheticSample s;
    s.background = makeBackground(width, height, rng);
    s.foreground = makeForeground(width, height);
    s.alpha = makeAlpha(width, height, rng);
    cv::Mat a3;
    cv::merge(std::vector<cv::Mat>{s.alpha, s.alpha, s.alpha}, a3);
    cv::Mat composite = s.foreground.mul(a3) + s.background.mul(cv::Scalar::all(1.0) - a3);
    composite.convertTo(s.picture, CV_8UC3);  // rounds to nearest and saturates
    s.trimap = makeTrimap(s.alpha);
    return s;
}

cv::Mat alphaToBytes(const cv::Mat& alpha) {
    cv::Mat out;
    alpha.convertTo(out, CV_8U, 255.0);
    return out;
}
