// Fuzz target for the brush stroke entries rkDrawLine8u and
// rkDrawGradientLine8u on guarded maps: strokes inside, across and far
// outside the map, radii up to the widest allowed, and now and then broken
// sizes, short rows, null maps and radii out of range. A plain stroke must
// equal OpenCV's line on a copy of the map; a gradient stroke may change only
// pixels under its line (or, axis-parallel, its start disc), caps only by
// losing bit 0 and zeroing aux, the ramp only to painted values between the
// two end values. Refusals log a line and touch nothing; guards and row
// padding never change.
#include <algorithm>
#include <climits>
#include <cstdint>
#include <initializer_list>
#include <opencv2/imgproc.hpp>
#include <string>

#include "api/keepcut.h"
#include "fuzz_checks.h"
#include "fuzz_input.h"
#include "guarded_buffer.h"

namespace {

using namespace kc_fuzz;

const DocumentedResults kDrawLineResults{"rkDrawLine8u", {1, -2, -6}};

constexpr int kMaxSide = 32;
constexpr int kMaxStepPadding = 5;
constexpr int kBrokenOdds = 24;
// The widest radius the entries accept.
constexpr int kMaxRadius = 16383;
// Farthest coordinate a thick stroke reaches in this target.
constexpr int kFarThick = 1000000;

struct MapBuffer : HostBuffer {
    MapBuffer(FuzzInput& in, int width, int height)
        : HostBuffer(width, height, 1,
                     decodePaddedLayout(in, width, 1, kMaxStepPadding, 2, kBrokenOdds)) {
        Noise noise(in.dword());
        buf.fill([&](int, int, int) { return static_cast<unsigned char>(noise.next() >> 11); });
        buf.snapshot();
    }
    bool refused() const { return !usable(); }
    // The map as it was before the call, as a matrix.
    cv::Mat before(int width, int height) const {
        cv::Mat m(height, width, CV_8UC1);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) m.at<unsigned char>(y, x) = buf.old(x, y);
        return m;
    }
};

// Mostly near the map, sometimes far outside or at the int range's ends.
int drawCoordinate(FuzzInput& in) {
    if (!in.rarely(10)) return in.range(-kMaxSide, 2 * kMaxSide);
    const int far[] = {-100000, 100000, -1000000, 1000000, INT_MIN, INT_MAX};
    return far[in.range(0, 5)];
}

int drawRadius(FuzzInput& in) {
    if (in.rarely(kBrokenOdds)) return in.flag() ? in.range(-3, -1) : kMaxRadius + in.range(1, 3);
    if (in.rarely(12)) return in.flag() ? kMaxRadius : in.range(0, 300);
    return in.range(0, 6);
}

// OpenCV fills a thick stroke along its whole length, clipped or not: a
// stroke reaching the int range's ends takes seconds. Such strokes are drawn
// thin, which OpenCV clips first.
int limitRadius(int radius, std::initializer_list<int> coordinates) {
    for (int c : coordinates)
        if (c < -kFarThick || c > kFarThick) return std::min(radius, 0);
    return radius;
}

void fuzzDrawLine(FuzzInput& in, int width, int height) {
    MapBuffer map(in, width, height);
    const int x0 = drawCoordinate(in), y0 = drawCoordinate(in);
    const int x1 = drawCoordinate(in), y1 = drawCoordinate(in);
    const int radius = limitRadius(drawRadius(in), {x0, y0, x1, y1});
    const unsigned char brushType = in.rarely(4) ? in.byte() : in.range(0, 3);
    const unsigned char value = in.byte();
    const bool mustRefuse = map.refused() || radius < 0 || radius > kMaxRadius;
    clearErrMsg();
    const int result = rkDrawLine8u(map.ptr(), map.buf.rowBytes(), width, height, x0, y0, x1, y1,
                                    radius, brushType, value);
    requireResult(kDrawLineResults, result, mustRefuse);
    if (result != 1) {
        requireNone(map.buf.unexpectedChange("map"));
        return;
    }
    requireNone(map.buf.unexpectedChange("map", anyPixel));
    const unsigned char codes[4] = {1, 255, 126, static_cast<unsigned char>(value | 1)};
    const unsigned char code = brushType < 4 ? codes[brushType] : 0;
    if (width == 0 || height == 0) return;
    cv::Mat want = map.before(width, height);
    cv::line(want, {x0, y0}, {x1, y1}, cv::Scalar(code), 2 * radius + 1, cv::LINE_8);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            require(map.buf.cur(x, y) == want.at<unsigned char>(y, x),
                    "rkDrawLine8u differs from the thick line" + at(x, y));
}

void fuzzGradientLine(FuzzInput& in, int width, int height) {
    MapBuffer map(in, width, height);
    MapBuffer aux(in, width, height);
    const int x0 = drawCoordinate(in), y0 = drawCoordinate(in);
    // Axis-parallel strokes now and then, which paint only the start disc.
    const int x1 = in.rarely(6) ? x0 : drawCoordinate(in);
    const int y1 = in.rarely(6) ? y0 : drawCoordinate(in);
    const int radius = limitRadius(drawRadius(in), {x0, y0, x1, y1});
    const unsigned char startValue = in.byte(), endValue = in.byte();
    const bool mustRefuse = map.refused() || aux.refused() || radius < 0 || radius > kMaxRadius;
    clearErrMsg();
    rkDrawGradientLine8u(map.ptr(), map.buf.rowBytes(), width, height, aux.ptr(),
                         aux.buf.rowBytes(), x0, y0, x1, y1, radius, startValue, endValue);
    if (mustRefuse) {
        requireLogged("rkDrawGradientLine8u");
        requireNone(map.buf.unexpectedChange("map"));
        requireNone(aux.buf.unexpectedChange("aux"));
        return;
    }
    require(getErrMsg()[0] == '\0', "rkDrawGradientLine8u logged on sound arguments");
    requireNone(map.buf.unexpectedChange("map", anyPixel));
    requireNone(aux.buf.unexpectedChange("aux", anyPixel));
    if (width == 0 || height == 0) return;

    cv::Mat under = cv::Mat::zeros(height, width, CV_8UC1);
    const bool disc = x1 == x0 || y1 == y0;
    if (disc)
        cv::circle(under, {x0, y0}, radius, cv::Scalar(255), cv::FILLED, cv::LINE_8);
    else
        cv::line(under, {x0, y0}, {x1, y1}, cv::Scalar(255), 2 * radius + 1, cv::LINE_8);
    const int lowest = std::min(startValue, endValue), highest = std::max(startValue, endValue);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int was = map.buf.old(x, y), now = map.buf.cur(x, y);
            const int auxWas = aux.buf.old(x, y), auxNow = aux.buf.cur(x, y);
            if (!under.at<unsigned char>(y, x)) {
                require(now == was && auxNow == auxWas,
                        "rkDrawGradientLine8u changed a pixel off the stroke" + at(x, y));
                continue;
            }
            if (disc) {
                require(now == startValue && auxNow == auxWas,
                        "the axis-parallel disc is not the start value" + at(x, y));
                continue;
            }
            const bool cap = now == (was & ~1) && auxNow == 0;
            // Truncating a blend of equal ends may land one below them.
            const bool ramp =
                (now & 1) && now >= lowest - 1 && now <= (highest | 1) && auxNow == auxWas;
            require(cap || ramp, "a gradient pixel is neither cap nor ramp" + at(x, y));
            if (x == x0 && y == y0) require(now == (startValue | 1), "the start lost its value");
            if (x == x1 && y == y1) require(now == (endValue | 1), "the end lost its value");
        }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput in(data, size);
    const bool gradient = in.flag();
    const Size s = decodeSize(in, kMaxSide, kBrokenOdds);
    (gradient ? fuzzGradientLine : fuzzDrawLine)(in, s.w, s.h);
    return 0;
}
