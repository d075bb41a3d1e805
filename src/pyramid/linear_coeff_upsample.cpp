// Reduced alpha -> full alpha through per-window linear colour coefficients.
#include "pyramid/linear_coeff_upsample.h"

#include <opencv2/imgproc.hpp>

#include "core/ippi_noise.h"
#include "pyramid/linear_coeff_apply.h"
#include "pyramid/linear_coeff_fit.h"

namespace {

// Jitter that breaks exact ties between identical colours (flat or posterised
// areas) without moving any value by a visible amount: 0.0004 is a tenth of one
// grey level. The fixed seed makes every call give the same result.
constexpr float kJitterStdDev = 0.0004f;
constexpr unsigned int kJitterSeed = 1;
constexpr double kByteToUnit = 1.0 / 255.0;

}  // namespace

void computeUpsampled_a1a2a3b_memorySave(cv::Mat& reducedAlpha, cv::Mat& reducedPicture,
                                         cv::Mat& /*spare1*/, cv::Mat& /*spare2*/,
                                         cv::Mat& fullPicture, cv::Mat& /*fullKnown*/,
                                         cv::Mat& fullAlpha, int /*factor*/) {
    CV_Assert(reducedAlpha.type() == CV_8UC1);
    CV_Assert(reducedPicture.type() == CV_8UC4 || reducedPicture.type() == CV_8UC3);
    CV_Assert(fullPicture.type() == CV_8UC4 || fullPicture.type() == CV_8UC3);
    CV_Assert(reducedPicture.size() == reducedAlpha.size());
    CV_Assert(reducedAlpha.cols >= 3 && reducedAlpha.rows >= 3);

    kc::coeff::CoeffMaps coeffs;
    {
        cv::Mat alpha, colour;
        reducedAlpha.convertTo(alpha, CV_32F, kByteToUnit);
        if (reducedPicture.channels() == 4) {
            reducedPicture.convertTo(colour, CV_32F, kByteToUnit);
        } else {
            cv::Mat fourBytes;  // the jitter works on four-channel pixels
            cv::cvtColor(reducedPicture, fourBytes, cv::COLOR_BGR2BGRA);
            fourBytes.convertTo(colour, CV_32F, kByteToUnit);
        }
        const IppiSize size(alpha.cols, alpha.rows);
        unsigned int seed = kJitterSeed;
        const IppStatus colourSt = ippiAddRandGauss_Direct_32f_AC4IR(
            colour.ptr<float>(), static_cast<int>(colour.step), size, 0.0f, kJitterStdDev, &seed);
        const IppStatus alphaSt = ippiAddRandGauss_Direct_32f_C1IR(
            alpha.ptr<float>(), static_cast<int>(alpha.step), size, 0.0f, kJitterStdDev, &seed);
        CV_Assert(colourSt == ippStsNoErr && alphaSt == ippStsNoErr);
        kc::coeff::fitLinearCoefficients(alpha, colour, coeffs);
    }
    kc::coeff::applyEnlargedCoefficients(coeffs, fullPicture, fullAlpha, CV_8UC1);
}
