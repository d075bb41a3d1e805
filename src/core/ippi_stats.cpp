// Byte sums through cv::sum (exact: integer blocks added into a double);
// float sums and vector statistics as plain loops accumulating in double,
// since cv::sum adds floats in float blocks first.
#include "core/ippi_stats.h"

#include "core/ippi_common.h"

namespace {
using namespace kc::prim;

IppStatus sumBytes(const Ipp8u* s, int ss, IppiSize r, Ipp64f* sum) {
    if (!sum) return ippStsNullPtrErr;
    if (IppStatus st = checkPlanes(r, {plane(s, ss)})) return st;
    *sum = cv::sum(matOver(s, ss, r))[0];
    return ippStsNoErr;
}
}  // namespace

IppStatus ippiSum_8u_C1R(const Ipp8u* s, int ss, IppiSize r, Ipp64f* sum) {
    return sumBytes(s, ss, r, sum);
}
IppStatus ippiSum_32f_C1R(const Ipp32f* s, int ss, IppiSize r, Ipp64f* sum, IppHintAlgorithm) {
    if (!sum) return ippStsNullPtrErr;
    if (IppStatus st = checkPlanes(r, {plane(s, ss)})) return st;
    double acc = 0.0;
    for (int y = 0; y < r.height; ++y) {
        const Ipp32f* row = rowAt(s, ss, y);
        for (int x = 0; x < r.width; ++x) acc += row[x];
    }
    *sum = acc;
    return ippStsNoErr;
}
IppStatus ippsMean_64f(const Ipp64f* s, int len, Ipp64f* mean) {
    if (IppStatus st = checkVector(len, {s, mean})) return st;
    double acc = 0.0;
    for (int i = 0; i < len; ++i) acc += s[i];
    *mean = acc / len;
    return ippStsNoErr;
}
IppStatus ippsDotProd_64f(const Ipp64f* a, const Ipp64f* b, int len, Ipp64f* dp) {
    if (IppStatus st = checkVector(len, {a, b, dp})) return st;
    double acc = 0.0;
    for (int i = 0; i < len; ++i) acc += a[i] * b[i];
    *dp = acc;
    return ippStsNoErr;
}
