// The GrabCut selection's internal C++ road: the segmentation of one working
// level with a session's kept state, and the multi-resolution procedure that
// runs it on a pyramid level and carries the selection back to full size.
#pragma once

#include "core/img.h"

// Segments an interleaved 3-channel 8-bit image of width x height (rgbStep
// bytes a row) with the session's models and mask. alpha (in/out): below 10
// marks background and above 245 foreground for the cut (values between leave
// the session's mask as the previous call left it); consts: non-zero marks a
// hard constraint. alpha receives 255 where the cut says foreground, else 0.
// The session must be width x height (throws std::invalid_argument
// otherwise, before anything is written). Returns 0.
int CompAlphaMapGrabCut(unsigned char* rgb, int rgbStep, int width, int height,
                        unsigned char* alpha, int alphaStep, unsigned char* consts, int constsStep,
                        void* session);

// The selection of three colour planes: builds a pyramid of planes, alpha and
// constraint map, segments its working level (creating the session there when
// the handle is null) and carries the alpha back to the planes' size, level by
// level when stepwiseUpsampling is non-zero. ignoredFlag is accepted and
// ignored. Returns 1.
int rkMapAlphaProcGrabCut(GIMG<unsigned char>** rgb, GIMG<unsigned char>* alpha,
                          GIMG<unsigned char>* consts, void*& session, int stepwiseUpsampling,
                          bool ignoredFlag);
