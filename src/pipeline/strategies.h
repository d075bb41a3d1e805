// The alpha strategies of the main keep/cut entry. Each computes the alpha of
// the request's region into its mask (painted bytes are put back by the
// caller) and throws bare int codes on failure: kErrNotEnoughStrokes (-5) for
// a whole-picture job without both keep and cut strokes, -1 from the KD-tree
// when one cell outgrows a solve, 102 when memory runs out.
#pragma once

#include "api/keepcut.h"
#include "core/img.h"

// Decimation factor of the reduced solves; the main entry sets it to
// kDefaultDecimation on every call and the strategies overwrite it with the
// factor they used. One per thread: it steers the request computing on it.
extern thread_local int maskv3Decimation;
inline constexpr int kDefaultDecimation = 9;

// Where a reduced job sits inside the full request.
struct PosInfo {
    int fullWidth;
    int fullHeight;
    int fullRoiX;
    int fullRoiY;
    int fullRoiWidth;
    int fullRoiHeight;
};

// Reduces the region by an integer factor, solves it there with
// rkKeepCutToAlphaOriginal and brings the alpha back to full size through the
// local linear colour model. sigma < 0 picks the factor from the area alone
// (up to 8, none below 80,000 pixels); sigma >= 0 bounds it by
// maskv3Decimation and the area and keeps it at least 2. smooth adds
// bilateral smoothing (range sigma sigma x 255) at both sizes.
void computeAlphaOriginalPyramid(RKPSStructMsk2* request, bool smooth, float sigma);

// Solves a request at its own resolution (mask pyramid, closed-form solve at
// the coarsest level, guided upsampling and tiled refinement). Whole-picture
// jobs first find the work box: -5 when it is empty or lacks keep or cut
// strokes, 1 without solving when fewer than 3 pixels are unpainted; both
// after recoverBrushInfo. Otherwise 1. pos is accepted for the callers' sake.
int rkKeepCutToAlphaOriginal(RKPSStructMsk2* request, int level, PosInfo& pos);

// The multi-resolution solve of one image: planes (three), known (0 unknown,
// 255 fixed) and alpha (targets in, result out), all of one size. The pyramid
// depth follows the memory the problem needs; level 0 carries the alpha up
// by guided upsampling alone, any other level refines it in tiles on the
// finest levels. refine adds bilateral smoothing after the coarse solve and in
// the tiles. 1 on success or when nothing is to compute; -5 when the coarse
// level has no room for unknowns.
int rkMapAlphaProc(GIMG<unsigned char>** planes, GIMG<unsigned char>* known,
                   GIMG<unsigned char>* alpha, int level, bool refine);

// The pyramid variant of rkKeepCutToAlphaOriginal: the same request and
// results, but the alpha is carried up by guided upsampling only (no tiled
// refinement). level is accepted for symmetry and not used. Internal despite
// its C linkage.
extern "C" int rkKeepCutToAlphaPyramid(RKPSStructMsk2* request, int level);

// Reduces the region to roughly half a megapixel (at least 501 columns),
// splits the reduced problem into KD-tree cells and solves cell by cell, then
// brings the alpha back through the local linear colour model. sigma selects
// the factor as in computeAlphaOriginalPyramid (here bounded by 9 and the
// area over 251,001); smooth as there.
void computeAlphaKDTreeHiRes(RKPSStructMsk2* request, bool smooth, float sigma);

// The KD-tree on the half-size level of a mask pyramid, then guided
// upsampling. Region jobs hold a rim of 2 x cellMode + 1 pixels (at half size)
// fixed. Where the map is painted keep or cut, a given foreground buffer takes
// the picture's pixel.
void computeAlphaKDTreePyramid(RKPSStructMsk2* request);
