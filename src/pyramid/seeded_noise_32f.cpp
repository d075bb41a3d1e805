// Repeatable Gaussian noise for float planes (see the header).
#include "pyramid/seeded_noise_32f.h"

#include <random>

namespace kc::coeff {

void addSeededGaussNoise_32f(cv::Mat& map, int channels, float mean, float stdDev,
                             unsigned int* seed) {
    CV_Assert(map.depth() == CV_32F && channels <= map.channels());
    std::mt19937 gen(*seed);
    std::normal_distribution<float> noise(mean, stdDev);
    const int cn = map.channels();
    for (int y = 0; y < map.rows; ++y) {
        float* row = map.ptr<float>(y);
        for (int x = 0; x < map.cols; ++x)
            for (int c = 0; c < channels; ++c) row[x * cn + c] += noise(gen);
    }
    *seed = static_cast<unsigned int>(gen());
}

}  // namespace kc::coeff
