// Tiled foreground extraction at reduced scale: the colour solve of CFMatt
// run over small overlapping tiles of a box of a four-byte picture.
#pragma once

#include <opencv2/core/mat.hpp>
#include <vector>

class CFMatt;

// Byte of red, green and blue in a four-byte pixel (B, G, R, x): the order in
// which the extraction takes its planes.
inline constexpr int kFgColours = 3;
inline constexpr int kFgChannelOfPlane[kFgColours] = {2, 1, 0};

// Mask bytes from kFgPictureFrom up and up to kFgPictureUpTo take the
// picture's own colour: 250..255 count as foreground everywhere in the engine,
// and there the picture differs from the true foreground by at most 2% of the
// background contrast, less than a reduced-scale estimate resolves; at 0..5
// (background) the foreground is invisible and the picture keeps it finite
// and plausible.
inline constexpr int kFgPictureFrom = 250;
inline constexpr int kFgPictureUpTo = 5;

// Red, green and blue planes split from a four-byte picture.
struct RgbPlanes {
    std::vector<cv::Mat> bgra;
    unsigned char* ptr[kFgColours];
    int step;
    explicit RgbPlanes(const cv::Mat& picture);
};

// For each tile of box (in the planes' coordinates) that holds compute-band
// mask bytes (even, 6..249), extracts the foreground colours of the tile from
// the red, green and blue planes (planeStep apart) with the mask bytes as
// alpha, and writes them into foreground (8UC4, B,G,R,x, the planes' size; its
// fourth bytes untouched) over the tile less its inner margins, clipped to
// keep. Other pixels of foreground are left as they are. Returns the number of
// tiles solved.
int extractForegroundTiles(unsigned char* const planes[3], int planeStep, const cv::Mat& mask,
                           cv::Mat& foreground, const cv::Rect& box, const cv::Rect& keep,
                           CFMatt& matt);
