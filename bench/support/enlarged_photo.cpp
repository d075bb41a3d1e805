// Enlargement of a photo with its trimap and true alpha.
#include "support/enlarged_photo.h"

#include <opencv2/imgproc.hpp>

Photo enlargePhoto(const Photo& photo, cv::Size size) {
    Photo big;
    cv::resize(photo.picture, big.picture, size, 0, 0, cv::INTER_CUBIC);
    cv::resize(photo.trimap, big.trimap, size, 0, 0, cv::INTER_NEAREST);
    cv::resize(photo.truth, big.truth, size, 0, 0, cv::INTER_LINEAR);
    return big;
}
