// Image margins: filling the spare pixels around an image before a
// neighbourhood operation reads them, by replicating the edge, copying the frame
// from another image, or writing a constant. None of these checks that the
// margins fit inside the image: that is the caller's contract.
#pragma once

#include "core/img.h"
#include "core/ipp_types.h"

// Edge replication on the region of interest: rows above `top` and below
// H-bottom-1 copy the nearest inner row, then columns left of `left` and right
// of W-right-1 copy the nearest inner column over every row, so each corner
// takes the nearest inner corner pixel. A margin of 0 leaves that side alone.
void imageExtendBorder(GIMG<unsigned char>& img, int left, int top, int right, int bottom);
void imageExtendBorder(GIMG<unsigned short>& img, int left, int top, int right, int bottom);
void imageExtendBorder(GIMG<short>& img, int left, int top, int right, int bottom);
void imageExtendBorder(GIMG<float>& img, int left, int top, int right, int bottom);
void imageExtendBorder(IMG3<float>& img, int left, int top, int right, int bottom);

// The same on raw planes; note the margin order: top, bottom, left, right.
void extendBorder(float* p, int step, IppiSize size, int top, int bottom, int left, int right);
void extendBorder(unsigned char* p, int step, IppiSize size, int top, int bottom, int left,
                  int right);
// Three interleaved 8-bit channels.
void extendBorder3C(unsigned char* p, int step, IppiSize size, int top, int bottom, int left,
                    int right);

// Copies src into the top-left of dst (full sizes) and replicates src's last
// row / column into whatever part of dst lies beyond src. Returns 1.
int imageCopyExt(const GIMG<float>& src, GIMG<float>& dst);

// Frame copies over the destination's full block size, starting at the current
// region origin: the top and bottom `by` rows (full width), then the left and
// right `bx` columns (full height).
void imageCopyBorder(GIMG<unsigned short>& src, GIMG<unsigned short>& dst, int bx, int by);
void imageCopyBorder(GIMG<unsigned char>& src, GIMG<unsigned char>& dst, int bx, int by);
void imageCopyBorder(GIMG<short>& src, GIMG<short>& dst, int bx, int by);
void imageCopyBorder(const short* src, int srcStep, short* dst, int dstStep, IppiSize size, int bx,
                     int by);
// Each of the four strips whose thickness is above 0.
void imageCopyBorder(GIMG<float>& src, GIMG<float>& dst, int top, int bottom, int left, int right);

// Sets the frame of the two-int imageCopyBorder to value.
void imageSetBorder(GIMG<unsigned char>& img, unsigned char value, int bx, int by);

// Sets to 255 the given strips of the region of interest (left and right over
// the full region height, top and bottom over the full region width).
void setConstsBorder(GIMG<unsigned char>& img, int left, int right, int top, int bottom);
