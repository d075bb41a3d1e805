// The fine pass over a picture in overlapping tiles: in each, the variable
// pixels are solved with the matting Laplacian at full resolution while every
// other pixel, the tile's rim included, is held at the alpha it has.
#pragma once

#include <opencv2/core.hpp>

struct FineTiling {
    int core;     // side of the square each tile writes back
    int overlap;  // context solved around the core and then dropped
};

struct FineStats {
    long long variables = 0;  // variable pixels solved, overlaps counted once per tile
    int tiles = 0;            // tiles that held variables
    double analyse = 0.0;     // seconds of the direct solves' analysis, over all tiles
    double factorise = 0.0;   // seconds of their factorisation
};

// picture: 8UC4 (three colours and one ignored byte); matte: 8UC1 alpha,
// rewritten in place at the variables (255 in vars) with rounded values;
// painted: non-zero at the pixels the user painted (tied, not held);
// epsilon: the Laplacian's covariance regulariser. Variables on the
// picture's own border are solved like any other (a tile's rim is held only
// where it borders another tile).
FineStats refineInTiles(const cv::Mat& picture, cv::Mat& matte, const cv::Mat& vars,
                        const cv::Mat& painted, const FineTiling& tiling, double epsilon);
