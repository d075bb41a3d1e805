// Push-pull filling of empty pixels of a float map: empty pixels (values at or
// below -9.9e19) take values interpolated from ever coarser averages of the
// non-empty ones.
#pragma once

#include <opencv2/core.hpp>

// Number of empty pixels of a CV_32FC1 map.
int countEmptyPixels_32f(cv::Mat& map);

// Fills every empty pixel of a CV_32FC1 map in place; filled pixels are left as they
// are, and a map without empty pixels is returned unchanged. A map with no filled
// pixel at all carries no information and is left as it is.
void pyramidFill_32f(cv::Mat& map);

// One level down: coarse = ceil(W/2) x ceil(H/2), each pixel the weighted mean of the
// non-empty fine pixels around its 2x2 block (tent weights 1, 3, 3, 1 per axis);
// empty where none of them is filled.
void pyramidFillD_32f(cv::Mat& fine, cv::Mat& coarse);

// One level up: every empty pixel of `fine` takes the bilinear interpolation of the
// (completely filled) coarse level produced from it by pyramidFillD_32f.
void pyramidFillU_32f(cv::Mat& coarse, cv::Mat& fine);
