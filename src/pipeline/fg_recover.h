// Foreground colour recovery of a keep/cut request: colours are extracted on a
// reduced copy of a region, enlarged again, given back the picture's fine
// detail, and written into the request's foreground buffer.
#pragma once

#include <functional>
#include <opencv2/core/mat.hpp>

#include "api/keepcut.h"

// Reduction scale of the region: whole-picture jobs always 0.18; region jobs
// by the picture's area: full scale up to 200,000 pixels, 0.33 below 4 M, 0.2
// from there on.
float fgRecoverScale(int width, int height, bool cellJob);

// Fills reducedForeground (8UC4, prefilled with reducedPicture) from
// reducedPicture (8UC4) and reducedMask (8UC1, alpha bytes).
using ReducedExtraction = std::function<void(
    const cv::Mat& reducedPicture, const cv::Mat& reducedMask, cv::Mat& reducedForeground)>;

// The tiled extraction over all of a reduced picture (B,G,R,x) with its
// reduced mask, writing the foreground into fg.
void extractAllTiles(const cv::Mat& pic, const cv::Mat& mask, cv::Mat& fg);

// The whole recovery of region at scale s. Where the mask is whole (see
// kFgPictureFrom) or brushInfo, when given, is painted keep or cut, the new
// colour is the picture's own. With feather set, the new colours
// are blended into the old ones with the 13 x 13 blending window enlarged over
// the region; otherwise they replace them. Only the three colour bytes of the
// foreground are written.
void recoverForegroundRegion(const RKPSStructMsk2& request, const cv::Rect& region, float s,
                             bool feather, const ReducedExtraction& extract);

// The main entry's recovery of the request's region: tiled extraction at
// fgRecoverScale, feathered into the old foreground. Throws what the solve
// throws. Returns 1.
int recoverForegroundCell(RKPSStructMsk2* request, bool cellJob);
// The whole picture at the whole-picture scale, replacing the foreground.
int rkRecoverForeground(RKPSStructMsk2* request);
// The whole picture at the whole-picture scale, extracted over the leaves of a
// KD-tree of the reduced mask in its two-pass order, replacing the foreground.
int rkRecoverForegroundKDTree(RKPSStructMsk2* request);

// Recovery-only pass over a picture (rkRecoverDuringComputeOnly) with the
// per-tile compute job given: each tile with compute-band pixels is handed to
// job as a copy of the request with that tile as region. Returns 1.
int recoverDuringComputeOnly(RKPSStructMsk2* request,
                             const std::function<int(RKPSStructMsk2*)>& job);
