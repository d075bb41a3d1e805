// A training photo enlarged the way the large-picture measurements make their
// pictures: cubic picture, linear true alpha, nearest trimap (so the band
// keeps its two codes).
#pragma once

#include <opencv2/core.hpp>

struct Photo {
    cv::Mat picture, trimap, truth;
};

Photo enlargePhoto(const Photo& photo, cv::Size size);
