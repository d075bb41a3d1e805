// Logic and comparisons through OpenCV, whose bitwise ops and compare (255/0
// masks, false on NaN) are exactly these primitives.
#include "core/ippi_logic_compare.h"

#include "core/ippi_common.h"

namespace {
using namespace kc::prim;

bool toCvCmp(IppCmpOp op, int* cvOp) {
    switch (op) {
        case ippCmpLess:
            *cvOp = cv::CMP_LT;
            return true;
        case ippCmpLessEq:
            *cvOp = cv::CMP_LE;
            return true;
        case ippCmpEq:
            *cvOp = cv::CMP_EQ;
            return true;
        case ippCmpGreaterEq:
            *cvOp = cv::CMP_GE;
            return true;
        case ippCmpGreater:
            *cvOp = cv::CMP_GT;
            return true;
    }
    return false;
}
}  // namespace

IppStatus ippiAndC_8u_C1IR(Ipp8u v, Ipp8u* d, int ds, IppiSize r) {
    if (IppStatus st = checkPlanes(r, {plane(d, ds)})) return st;
    cv::Mat dst = matOver(d, ds, r);
    cv::bitwise_and(dst, cv::Scalar::all(v), dst);
    return ippStsNoErr;
}

IppStatus ippiOr_8u_C1IR(const Ipp8u* s, int ss, Ipp8u* d, int ds, IppiSize r) {
    if (IppStatus st = checkPlanes(r, {plane(s, ss), plane(d, ds)})) return st;
    cv::Mat dst = matOver(d, ds, r);
    cv::bitwise_or(matOver(s, ss, r), dst, dst);
    return ippStsNoErr;
}

IppStatus ippiCompare_32f_C1R(const Ipp32f* a, int as, const Ipp32f* b, int bs, Ipp8u* d, int ds,
                              IppiSize r, IppCmpOp op) {
    if (IppStatus st = checkPlanes(r, {plane(a, as), plane(b, bs), plane(d, ds)})) return st;
    int cvOp = 0;
    if (!toCvCmp(op, &cvOp)) return ippStsBadArgErr;
    cv::Mat dst = matOver(d, ds, r);
    cv::compare(matOver(a, as, r), matOver(b, bs, r), dst, cvOp);
    return ippStsNoErr;
}

IppStatus ippiCompareC_8u_C1R(const Ipp8u* s, int ss, Ipp8u v, Ipp8u* d, int ds, IppiSize r,
                              IppCmpOp op) {
    if (IppStatus st = checkPlanes(r, {plane(s, ss), plane(d, ds)})) return st;
    int cvOp = 0;
    if (!toCvCmp(op, &cvOp)) return ippStsBadArgErr;
    cv::Mat dst = matOver(d, ds, r);
    cv::compare(matOver(s, ss, r), cv::Scalar::all(v), dst, cvOp);
    return ippStsNoErr;
}
