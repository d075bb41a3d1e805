// The host's straight brush stroke of one map code.
#include <opencv2/imgproc.hpp>

#include "api/keepcut_display.h"
#include "runtime/entry_guard.h"
#include "tools/brush_stroke_args.h"

namespace {

// Brush types the host names, and the map code each paints.
enum BrushType { kCutBrush = 0, kKeepBrush = 1, kBandBrush = 2, kAlphaBrush = 3 };
constexpr unsigned char kCut = 1, kKeep = 255, kBand = 126;
// Unknown brush types erase to 0 (computed, fully transparent).
constexpr unsigned char kUnknownBrushCode = 0;

unsigned char brushCode(unsigned char brushType, unsigned char value) {
    switch (brushType) {
        case kCutBrush:
            return kCut;
        case kKeepBrush:
            return kKeep;
        case kBandBrush:
            return kBand;
        case kAlphaBrush:
            return static_cast<unsigned char>(value | 1);  // painted custom alpha
        default:
            return kUnknownBrushCode;
    }
}

}  // namespace

extern "C" KC_EXPORT int rkDrawLine8u(unsigned char* map, int step, int width, int height, int x0,
                                      int y0, int x1, int y1, int radius, unsigned char brushType,
                                      unsigned char value) {
    constexpr const char* kEntry = "rkDrawLine8u";
    return rkGuardEntry(kEntry, [&] {
        if (!rkCheckBuffer(kEntry, "map", map, width, height, step, 1) ||
            !rkCheckStrokeRadius(kEntry, radius))
            return kInvalidArgument;
        if (width == 0 || height == 0) return 1;
        cv::Mat view(height, width, CV_8UC1, map, static_cast<size_t>(step));
        cv::line(view, cv::Point(x0, y0), cv::Point(x1, y1),
                 cv::Scalar(brushCode(brushType, value)), strokeThickness(radius), cv::LINE_8, 0);
        return 1;
    });
}
