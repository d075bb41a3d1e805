// Byte-map steps of the matting object on the engine's image primitives.
#include "matting/matting_map_ops.h"

#include "core/borders.h"
#include "core/img_filter_ops.h"
#include "core/img_ops.h"

using Byte = unsigned char;

double sumOfMap(GIMG<Byte>& map, int& status) {
    double s = 0.0;
    status = Sum(map, &s);
    return s;
}

void copyMap(GIMG<Byte>& src, GIMG<Byte>& dst, int& status) {
    status = Copy(src, dst);
}

void subConstSat(GIMG<Byte>& map, int v, int& status) {
    status = Sub<Byte>(static_cast<Byte>(v), map, 0);
}

void mulConstShift(GIMG<Byte>& map, int k, int shift, int& status) {
    status = Mul<Byte>(static_cast<Byte>(k), map, shift);
}

void thresholdMask(GIMG<Byte>& src, int v, bool lessOrEqual, GIMG<Byte>& dst, int& status) {
    status = Compare(src, v, dst, lessOrEqual ? ippCmpLessEq : ippCmpGreaterEq);
}

void orMaps(GIMG<Byte>& src, GIMG<Byte>& dst, int& status) {
    status = Or(src, dst);
}

void erode3x3Replicated(GIMG<Byte>& map, int& status) {
    // A copy with a one-pixel replicated frame, eroded back into the map.
    GIMG<Byte> framed(map.width() + 2, map.height() + 2);
    framed.roiRect(1, 1, -1, -1);
    status = Copy(map, framed);
    framed.restoreRect();
    imageExtendBorder(framed, 1, 1, 1, 1);
    framed.roiRect(1, 1, -1, -1);
    status = Erode3x3(framed, map);
}

void erode3x3Into(GIMG<Byte>& src, GIMG<Byte>& dst, int& status) {
    status = Erode3x3(src, dst);
}

void dilate3x3Into(GIMG<Byte>& src, GIMG<Byte>& dst, int& status) {
    status = Dilate3x3(src, dst);
}

void gauss5x5Into(GIMG<Byte>& src, GIMG<Byte>& dst, int& status) {
    status = FilterGauss(src, dst, ippMskSize5x5);
}

void subSat(GIMG<Byte>& a, GIMG<Byte>& b, GIMG<Byte>& dst, int& status) {
    status = Sub(b, a, dst, 0);  // the primitive computes its second source minus its first
}

void addInto(GIMG<Byte>& src, GIMG<Byte>& dst, int& status) {
    status = Add(src, dst, 0);
}

void mulInto(GIMG<Byte>& src, int shift, GIMG<Byte>& dst, int& status) {
    status = Mul(src, dst, shift);
}

void addConstSat(GIMG<Byte>& map, int v, int& status) {
    status = Add<Byte>(static_cast<Byte>(v), map, 0);
}

void complementMap(GIMG<Byte>& map, int& status) {
    GIMG<Byte> full(map.width(), map.height());
    Set<Byte>(255, full);
    status = Sub(map, full, map, 0);
}
