// Reading pictures and trimaps for the tool, and writing mattes and cut-outs,
// with errors a person can act on.
#pragma once

#include <opencv2/core.hpp>
#include <stdexcept>
#include <string>

// A failure the tool reports in one line and exits non-zero for.
class ToolError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Every reader turns the image upright by its EXIF orientation.

// Any picture OpenCV reads (8- or 16-bit, grey or colour, with or without
// alpha) as 8-bit B,G,R.
cv::Mat loadPicture(const std::string& path);

// A trimap of the picture's size as 8-bit grey: 0 cut, 255 keep, else unknown.
cv::Mat loadTrimap(const std::string& path, cv::Size pictureSize);

// A rough mask of any size as 8-bit grey (colour masks by their grey level).
cv::Mat loadMask(const std::string& path);

// Writes an 8-bit image; throws ToolError when the file cannot be written.
void writeImage(const std::string& path, const cv::Mat& image);

// Straight (not premultiplied) B,G,R,A cut-out from colours and an 8-bit matte.
cv::Mat makeCutout(const cv::Mat& colours, const cv::Mat& alpha);

// colours composited with an 8-bit matte over a plain B,G,R background.
cv::Mat compositeOver(const cv::Mat& colours, const cv::Mat& alpha, const cv::Scalar& background);
