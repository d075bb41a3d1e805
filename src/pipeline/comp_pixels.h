// Counts of pixels still to compute, on known maps and on brush maps.
#pragma once

#include <opencv2/core/mat.hpp>

#include "core/img.h"

// Pixels of the region whose byte is even: unknown pixels of a known map, or
// unpainted pixels of a brush map.
int numCompPixels(GIMG<unsigned char>& map);
// Pixels of a brush map in the compute band: even bytes strictly between 5
// and 250.
int numCompPixels(unsigned char* map, int rowBytes, int width, int height);
// Pixels of an 8-bit matrix strictly between 5 and 250, painted or not.
int numCompPixelsRecoverComputeOnly(cv::Mat& map);
