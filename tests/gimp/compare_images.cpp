// Checks on what the headless GIMP run exported:
//   gimp_compare matte EXPORT.png ALPHA.png FOREGROUND.png
//     the exported RGBA layer's alpha equals the tool's matte and its colours
//     the tool's recovered foreground, in every pixel;
//   gimp_compare trimap TRIMAP.png MAP.png
//     the exported trimap holds cut (0), keep (255) and one band value, where
//     the brush map of `keepcut cutout` holds painted cut (1), painted keep
//     (255) and its band.
#include <cstdio>
#include <cstring>
#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <set>

namespace {

cv::Mat load(const char* path, int flags) {
    cv::Mat m = cv::imread(path, flags);
    if (m.empty()) std::fprintf(stderr, "cannot read %s\n", path);
    return m;
}

// Pixels where two images of one size and type differ; -1 when they cannot
// be compared.
long differing(const cv::Mat& a, const cv::Mat& b, const char* what) {
    if (a.size() != b.size() || a.type() != b.type()) {
        std::fprintf(stderr, "%s: %dx%d type %d against %dx%d type %d\n", what, a.cols, a.rows,
                     a.type(), b.cols, b.rows, b.type());
        return -1;
    }
    cv::Mat diff;
    cv::absdiff(a, b, diff);
    // One row per pixel, its largest channel difference.
    cv::reduce(diff.reshape(1, static_cast<int>(a.total())), diff, 1, cv::REDUCE_MAX);
    double largest = 0;
    cv::minMaxLoc(diff, nullptr, &largest);
    const long count = cv::countNonZero(diff);
    std::printf("%s: %ld of %d pixels differ (by up to %.0f)\n", what, count, a.rows * a.cols,
                largest);
    return count;
}

int matte(const char* exported, const char* alphaPath, const char* foregroundPath) {
    const cv::Mat rgba = load(exported, cv::IMREAD_UNCHANGED);
    const cv::Mat alpha = load(alphaPath, cv::IMREAD_GRAYSCALE);
    const cv::Mat foreground = load(foregroundPath, cv::IMREAD_COLOR);
    if (rgba.empty() || alpha.empty() || foreground.empty()) return 1;
    if (rgba.channels() != 4) {
        std::fprintf(stderr, "%s has %d channels, not 4\n", exported, rgba.channels());
        return 1;
    }
    cv::Mat planes[4];
    cv::split(rgba, planes);
    cv::Mat bgr;
    cv::merge(planes, 3, bgr);
    const long alphaOff = differing(planes[3], alpha, "matte");
    const long colourOff = differing(bgr, foreground, "foreground");
    return alphaOff == 0 && colourOff == 0 ? 0 : 1;
}

int trimap(const char* path, const char* mapPath) {
    const cv::Mat t = load(path, cv::IMREAD_GRAYSCALE);
    const cv::Mat map = load(mapPath, cv::IMREAD_GRAYSCALE);
    if (t.empty() || map.empty()) return 1;
    // Cut, keep and band as one code each, so the two codings compare.
    const auto classes = [](const cv::Mat& m, int cut) {
        cv::Mat c(m.size(), CV_8U, cv::Scalar(128));
        c.setTo(0, m == cut);
        c.setTo(255, m == 255);
        return c;
    };
    std::set<int> values(t.begin<unsigned char>(), t.end<unsigned char>());
    std::printf("trimap: %d cut, %d keep, %zu distinct values\n", cv::countNonZero(t == 0),
                cv::countNonZero(t == 255), values.size());
    const bool threeCodes = values.size() == 3 && values.count(0) && values.count(255);
    return threeCodes && differing(classes(t, 0), classes(map, 1), "trimap against the tool's") == 0
               ? 0
               : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 5 && std::strcmp(argv[1], "matte") == 0) return matte(argv[2], argv[3], argv[4]);
    if (argc == 4 && std::strcmp(argv[1], "trimap") == 0) return trimap(argv[2], argv[3]);
    std::fprintf(stderr, "usage: gimp_compare matte EXPORT ALPHA FOREGROUND | trimap TRIMAP MAP\n");
    return 2;
}
