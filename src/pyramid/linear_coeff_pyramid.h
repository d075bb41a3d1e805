// Pyramid route for the local linear colour model: an alpha known only on some
// pixels of the full picture (the others carry the empty marker) is completed
// coarse to fine. At the coarsest level the coefficients are fitted from the known
// pixels and holes in the coefficient maps are push-pull filled; each finer level
// applies the enlarged coefficients where alpha is unknown, refits, and passes the
// new coefficients on, until the full picture is reached.
#pragma once

#include <opencv2/core.hpp>

// One level down, 2x2 blocks (the last row or column alone when the size is odd):
// halfImage = mean colour of the block; halfAlpha = mean of its non-empty alpha
// pixels (empty when there is none); halfKnown = mean colour over those same pixels,
// so that each (halfKnown, halfAlpha) pair obeys any linear model that the fine
// pairs obey. alpha: CV_32FC1; image and known: CV_32FC3, or CV_8UC3/CV_8UC4 read as
// bytes / 255 (for the full-size picture, where known is the picture itself).
// Outputs are CV_32FC1 and CV_32FC3 of ceil(W/2) x ceil(H/2).
void downSampleAIC(const cv::Mat& alpha, const cv::Mat& image, const cv::Mat& known,
                   cv::Mat& halfAlpha, cv::Mat& halfImage, cv::Mat& halfKnown);

// alpha: CV_32FC1 of the picture's size, values in [0, 1] where known and the empty
// marker elsewhere. picture: CV_8UC4 or CV_8UC3. fullAlpha: CV_8UC1 view of the
// picture's size (allocated when empty): known pixels keep their alpha (x 255,
// rounded), the others take the model. levels >= 1 halvings; the coarsest level must
// be at least 3 x 3. Each level's maps are released as soon as the next finer level
// no longer needs them. A picture whose coarsest level has no window of enough
// known pixels gets alpha 0 wherever alpha was unknown.
void upsampleRecover_a1a2a3bPyramidMemorySave(cv::Mat& alpha, cv::Mat& picture, cv::Mat& fullAlpha,
                                              int levels);
