// SAD and MSE of a matte against its ground truth.
#include "matte_metrics.h"

MatteError scoreMatte(const cv::Mat& alpha8, const cv::Mat& truth, const cv::Mat& where) {
    CV_Assert(alpha8.type() == CV_8UC1 && alpha8.size() == truth.size() &&
              where.size() == truth.size() && where.type() == CV_8UC1);
    cv::Mat t;
    if (truth.depth() == CV_8U)
        truth.convertTo(t, CV_64F, 1.0 / 255.0);
    else
        truth.convertTo(t, CV_64F);
    MatteError e;
    double sum = 0.0, sq = 0.0;
    for (int y = 0; y < t.rows; ++y) {
        const auto* a = alpha8.ptr<unsigned char>(y);
        const auto* tr = t.ptr<double>(y);
        const auto* w = where.ptr<unsigned char>(y);
        for (int x = 0; x < t.cols; ++x) {
            if (!w[x]) continue;
            const double d = a[x] / 255.0 - tr[x];
            sum += d < 0 ? -d : d;
            sq += d * d;
            ++e.pixels;
        }
    }
    e.sad = sum / 1000.0;
    e.mse = e.pixels ? sq / e.pixels : 0.0;
    return e;
}

cv::Mat unknownBand(const cv::Mat& trimap) {
    return (trimap != 0) & (trimap != 255);
}
