// Stand-in for the seeded Gaussian noise primitives until the shared primitive set
// has them: adds repeatable Gaussian noise to float planes.
#pragma once

#include <opencv2/core.hpp>

namespace kc::coeff {

// Adds noise of the given mean and deviation to the first `channels` channels of
// every pixel of a CV_32F map (the others are left alone). The generator starts
// from *seed and leaves its next state there, so a caller that starts from the same
// seed always gets the same noise.
void addSeededGaussNoise_32f(cv::Mat& map, int channels, float mean, float stdDev,
                             unsigned int* seed);

}  // namespace kc::coeff
