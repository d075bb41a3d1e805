// The fine pass's variable pixels.
#include "pipeline/fine_band.h"

#include <opencv2/imgproc.hpp>

cv::Mat fineVariables(const cv::Mat& matte, const cv::Mat& painted, const FineBand& band) {
    cv::Mat vars;
    cv::inRange(matte, cv::Scalar(band.low), cv::Scalar(band.high), vars);
    if (band.margin > 0) {
        const int side = 2 * band.margin + 1;
        cv::dilate(vars, vars, cv::getStructuringElement(cv::MORPH_RECT, cv::Size(side, side)));
    }
    vars.setTo(0, painted);
    return vars;
}
