// The GrabCut road as a host walks it: a selection started from a rectangle,
// refined by strokes, turned into a keep / cut / band map for the main entry.
// Shared by `keepcut cutout`, the session's GrabCut operations and the
// benchmarks.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "api/keepcut.h"

// Band width in pixels when none is given: 3% of the picture's shorter side,
// at least 8 pixels.
int defaultBandWidth(cv::Size picture);

// Why `rect` cannot start a selection in a picture of this size (outside it,
// or 10 pixels or less a side), or empty when it can.
std::string grabCutRectProblem(const cv::Rect& rect, cv::Size picture);

// One live GrabCut session over a whole picture. The session handle is given
// back on destruction, whatever happened before.
class GrabCutSelection {
  public:
    // `imageBgrx` (8UC4, B,G,R,x) is borrowed and must outlive the selection.
    // The map starts as probable foreground inside `rect`, hard background
    // outside; nothing runs until select().
    GrabCutSelection(const cv::Mat& imageBgrx, const cv::Rect& rect);
    ~GrabCutSelection();
    GrabCutSelection(const GrabCutSelection&) = delete;
    GrabCutSelection& operator=(const GrabCutSelection&) = delete;

    // Paints a hard foreground or background stroke (a line of the given
    // radius) into the map; select() takes it into account.
    void paint(cv::Point from, cv::Point to, int radius, bool foreground);

    // One rkGrabCut on the session (stepwise upsampling); returns its result.
    int select(RKProgressProc progress, void* progressData);

    // Pixels the cut selected, as 255 / 0.
    cv::Mat selected() const;

    // Ends the session: the selection becomes an engine brush map (painted
    // cut, painted keep, and a band `band` pixels wide to compute between).
    cv::Mat finishAsBrushMap(int band);

  private:
    cv::Mat map_;    // the GrabCut map: bit 0 foreground, bit 1 hard
    cv::Mat brush_;  // the entries' second map
    RKPSStructMsk2 r_{};
};

// What the whole road gives for a picture.
struct CutoutResult {
    cv::Mat alpha;    // 8-bit matte
    cv::Mat colours;  // foreground colours (cutoutColours), B,G,R
    cv::Mat map;      // the brush map handed to the main entry
};

// Rectangle -> GrabCut -> band of `band` pixels -> main entry -> foreground
// colours from the matte, on an 8-bit B,G,R picture. Throws ToolError (after printing the
// engine's message log) when an entry fails.
CutoutResult cutOut(const cv::Mat& pictureBgr, const cv::Rect& rect, int band);
