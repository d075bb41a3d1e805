// The tool's subcommands.
#pragma once

#include <array>
#include <opencv2/core.hpp>
#include <string>

struct MatteOptions {
    std::string picture;
    std::string trimap;
    std::string alphaOut;
    std::string cutoutOut;
    std::string foregroundOut;  // recovered foreground colours
    bool hires = false;   // the main entry's high-resolution pass (the default for whole pictures)
    bool coarse = false;  // the main entry's coarse pass (the default for regions)
    bool full = false;    // one full-resolution solve instead of the main entry
    bool brushMap = false;  // TRIMAP is already an engine brush map
    bool fine = false;      // the fine pass: high-resolution pass plus full-resolution detail
    bool hasRegion = false;
    std::array<int, 4> region{};  // x, y, w, h
    int cellMode = -1;            // -1: 0 for whole pictures, 1 for regions
    std::string merge;            // "add", "subtract" or empty (keep as computed)
};

// What one matted pair was.
struct MatteSummary {
    cv::Size size;
    double seconds = 0;
    const char* mode = "";  // which computation ran
};

struct BatchOptions {
    std::string pictureDir;
    std::string trimapDir;
    std::string outDir;
    bool cutout = false;  // also write <stem>-cutout.png
    bool hires = false;
    bool coarse = false;
};

struct BandOptions {
    std::string mask;
    std::string trimapOut;
    int width = 0;  // band width across the edge, in pixels
};

struct CutoutOptions {
    std::string picture;
    std::string rect;  // "X,Y,W,H" around the subject
    std::string cutoutOut;
    std::string matteOut;
    std::string mapOut;  // the brush map handed to the main entry
    int band = 0;        // band width in pixels; 0: scaled to the picture
};

struct DemoOptions {
    std::string outDir = "demo-out";
    int width = 800;
    int height = 600;
};

struct SessionOptions {
    std::string picture;
    std::string script;  // JSON list of operations
    std::string outDir;
    std::string map;  // starting brush map; empty: all band
};

// The matte road of `keepcut matte` for one picture and trimap, writing what
// `o` asks for; throws ToolError on any failure. Shared by matte and batch.
MatteSummary matteOnePair(const MatteOptions& o);

int runMatte(const MatteOptions& o);
int runBatch(const BatchOptions& o);
int runBand(const BandOptions& o);
int runCutout(const CutoutOptions& o);
int runSession(const SessionOptions& o);
int runDemo(const DemoOptions& o);
