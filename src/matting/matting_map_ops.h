// Byte-map steps of the matting object, each one image primitive (or a short
// sequence of them) on the maps' regions of interest. Every call leaves the
// primitive's status in `status`, which the object keeps but never tests.
#pragma once

#include "core/img.h"

double sumOfMap(GIMG<unsigned char>& map, int& status);
void copyMap(GIMG<unsigned char>& src, GIMG<unsigned char>& dst, int& status);
// map = max(map - v, 0).
void subConstSat(GIMG<unsigned char>& map, int v, int& status);
// map = round(map * k / 2^shift), at most 255.
void mulConstShift(GIMG<unsigned char>& map, int k, int shift, int& status);
// dst = 255 where src <= v (lessOrEqual) or src >= v (otherwise), 0 elsewhere.
void thresholdMask(GIMG<unsigned char>& src, int v, bool lessOrEqual, GIMG<unsigned char>& dst,
                   int& status);
// dst |= src.
void orMaps(GIMG<unsigned char>& src, GIMG<unsigned char>& dst, int& status);
// 3x3 minimum in place, the map's edge pixels replicated outwards.
void erode3x3Replicated(GIMG<unsigned char>& map, int& status);
// 3x3 minimum / maximum and 5x5 Gaussian of src's region into dst's region,
// reading the pixels around the region (the caller leaves room for them).
void erode3x3Into(GIMG<unsigned char>& src, GIMG<unsigned char>& dst, int& status);
void dilate3x3Into(GIMG<unsigned char>& src, GIMG<unsigned char>& dst, int& status);
void gauss5x5Into(GIMG<unsigned char>& src, GIMG<unsigned char>& dst, int& status);
// dst = max(a - b, 0).
void subSat(GIMG<unsigned char>& a, GIMG<unsigned char>& b, GIMG<unsigned char>& dst, int& status);
// dst = min(dst + src, 255).
void addInto(GIMG<unsigned char>& src, GIMG<unsigned char>& dst, int& status);
// dst = round(dst * src / 2^shift), at most 255.
void mulInto(GIMG<unsigned char>& src, int shift, GIMG<unsigned char>& dst, int& status);
// map = min(map + v, 255).
void addConstSat(GIMG<unsigned char>& map, int v, int& status);
// map = 255 - map.
void complementMap(GIMG<unsigned char>& map, int& status);
