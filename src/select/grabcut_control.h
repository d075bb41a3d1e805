// GrabCutControl: the state of one GrabCut selection session, kept between
// the strokes of a session (colour models, GrabCut mask, last constraint sum),
// and the functions that create and delete a session behind an untyped handle.
#pragma once

#include <memory>
#include <opencv2/core/mat.hpp>

class GrabCutControl {
  public:
    int width;  // session size: that of the pyramid level GrabCut runs at
    int height;
    double constsSum;                   // sum of the constraint map's bytes at the last call
    std::unique_ptr<cv::Mat> bgdModel;  // background colour model, kept by cv::grabCut
    std::unique_ptr<cv::Mat> fgdModel;  // foreground colour model, likewise
    std::unique_ptr<cv::Mat> mask;      // GrabCut mask, height x width, 8-bit; survives calls
    bool maskInitialized;               // the mask has had its initial rectangle

    GrabCutControl(int width, int height);
    ~GrabCutControl() = default;
    GrabCutControl(const GrabCutControl&) = delete;
    GrabCutControl& operator=(const GrabCutControl&) = delete;

    // True when the constraint map (width x height bytes, constsStep apart)
    // sums to another value than at the last call that saw a change; the new
    // sum is kept then. Only the sum is compared: a stroke that moves
    // constraint bytes without changing their sum counts as unchanged.
    bool isConstsChanged(unsigned char* consts, int constsStep);
};

// A new session of width x height, registered as live, as an untyped handle.
void* grabcutCreateBuf(int width, int height);
// Deletes a live session; a null handle, or one that is not a live session
// (already deleted, or never created here), is left alone.
void GrabCutDeleteBuf(void* session);
// True when the handle is a session created by grabcutCreateBuf and not yet
// deleted, so that an entry can refuse a stale or foreign handle instead of
// following it.
bool isLiveGrabCutSession(const void* session);
// Sessions created and not yet deleted in this process.
int liveGrabCutSessions();
