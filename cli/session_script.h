// A masking session as a host would drive it, read from a JSON list of
// operations. The whole script is checked against the picture before any
// operation runs, so a bad script fails in one line and changes nothing.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <string>
#include <vector>

enum class SessionOpKind {
    Stroke,         // keep, cut, band or alpha: a brush stroke of one code
    Gradient,       // a stroke whose painted value ramps from start to end
    Fill,           // flood fill of the brush region at a point
    ColourRange,    // pick a colour range under a stroke
    Hair,           // hair selection under a stroke from two picked colours
    Compute,        // the main entry, on the whole picture or a region
    Show,           // a display mode (and desaturation) written to a PNG
    GrabCutRect,    // a new GrabCut selection from a rectangle, run once
    GrabCutStroke,  // a hard foreground or background stroke, then GrabCut again
    GrabCutEdge     // the selection's end: a band along its edge becomes the brush map
};

struct SessionOp {
    int index = 0;     // position in the script counted from 1, for messages
    std::string name;  // the operation's name as written
    SessionOpKind kind = SessionOpKind::Stroke;

    cv::Point from, to;  // strokes; `from` is also the fill's point
    int radius = 0;
    int brushType = 0;                          // strokes: 0 cut, 1 keep, 2 band, 3 alpha
    int value = 0, start = 0, end = 0;          // alpha stroke value; gradient ends
    int fillType = 0;                           // 0 cut, 1 keep, 2 band
    std::array<unsigned char, 3> colour{};      // R, G, B: colour range, hair, show
    std::array<unsigned char, 3> background{};  // R, G, B: hair
    int tolerance = 0;
    bool keep = true;  // colour range: keep or cut; GrabCut stroke: foreground or background

    bool hasRegion = false;  // compute
    cv::Rect region;         // compute; GrabCut rectangle
    int band = 0;            // GrabCut edge: band width, 0 for the picture's default
    bool hires = false;
    int mergeMode = 2;  // 0 subtract (minimum), 1 add (maximum), 2 as computed
    bool foreground = false;

    int mode = 1;  // show
    int hi = 255, lo = 0;
    bool desaturate = false;
    float strength = 0;
    std::string file;
};

// Parses and checks the script text; throws ToolError naming the operation's
// index for an unknown operation, a missing or mistyped field, a point or
// region outside a picture of the given size, or a GrabCut stroke or edge with
// no GrabCut selection open.
std::vector<SessionOp> parseSessionScript(const std::string& text, cv::Size picture);
