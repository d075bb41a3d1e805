// Reduced alpha -> full alpha through per-window linear colour coefficients.
#include "pyramid/linear_coeff_upsample.h"

#include "pyramid/linear_coeff_apply.h"
#include "pyramid/linear_coeff_fit.h"
#include "pyramid/seeded_noise_32f.h"

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
        reducedPicture.convertTo(colour, CV_32F, kByteToUnit);
        unsigned int seed = kJitterSeed;
        kc::coeff::addSeededGaussNoise_32f(colour, 3, 0.0f, kJitterStdDev, &seed);
        kc::coeff::addSeededGaussNoise_32f(alpha, 1, 0.0f, kJitterStdDev, &seed);
        kc::coeff::fitLinearCoefficients(alpha, colour, coeffs);
    }
    kc::coeff::applyEnlargedCoefficients(coeffs, fullPicture, fullAlpha, CV_8UC1);
}
