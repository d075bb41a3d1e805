// `keepcut cutout`: a subject cut out of a picture from a rectangle around it,
// through a GrabCut selection, a band along its edge and the main entry.
#include <chrono>
#include <cstdio>
#include <sstream>

#include "commands.h"
#include "grabcut_road.h"
#include "image_io.h"

namespace {

// "X,Y,W,H" with nothing else around the four integers.
cv::Rect parseRect(const std::string& text) {
    std::istringstream in(text);
    int v[4];
    char comma[3];
    in >> v[0] >> comma[0] >> v[1] >> comma[1] >> v[2] >> comma[2] >> v[3];
    if (!in || comma[0] != ',' || comma[1] != ',' || comma[2] != ',' || in.peek() != EOF)
        throw ToolError("--rect must be four integers X,Y,W,H, not \"" + text + "\"");
    return {v[0], v[1], v[2], v[3]};
}

}  // namespace

int runCutout(const CutoutOptions& o) {
    const cv::Rect rect = parseRect(o.rect);
    const cv::Mat picture = loadPicture(o.picture);
    if (const std::string problem = grabCutRectProblem(rect, picture.size()); !problem.empty())
        throw ToolError("--rect: " + problem);
    const int band = o.band > 0 ? o.band : defaultBandWidth(picture.size());

    const auto start = std::chrono::steady_clock::now();
    const CutoutResult cut = cutOut(picture, rect, band);
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();

    writeImage(o.cutoutOut, makeCutout(cut.colours, cut.alpha));
    if (!o.matteOut.empty()) writeImage(o.matteOut, cut.alpha);
    if (!o.mapOut.empty()) writeImage(o.mapOut, cut.map);
    std::printf("cut-out %dx%d (band %d px) in %.2f s -> %s\n", picture.cols, picture.rows, band,
                seconds, o.cutoutOut.c_str());
    return 0;
}
