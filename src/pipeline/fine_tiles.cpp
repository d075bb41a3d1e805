// Tile loop of the fine pass. Tiles are solved in row order and read the
// alpha their neighbours already refined, so a tile's held rim carries the
// better values wherever an earlier tile covered it.
#include "pipeline/fine_tiles.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "api/keepcut.h"
#include "matting/held_laplacian_direct.h"
#include "matting/window_laplacian.h"

namespace {
// A variable needs all nine windows around it inside the tile: two pixels of
// held rim wherever the tile borders another tile. On the picture's border
// there is nothing beyond to hold: pixels there are solved with the windows
// they have, as the whole-picture solve does. Holding them at the first
// pass's values instead (only the outer two pixels) pulled the whole band:
// on GT01 at 0.4 MP the single-tile solve then sat 0.6 levels off the
// full solve (SAD 1.22 against 1.14); solved, it matches it exactly.
constexpr int kRim = 2;
constexpr double kByteMax = 255.0;
// Largest even byte: computed mask bytes keep bit 0 clear.
constexpr long kLargestEven = 254;

// Alpha 0..1 to the nearest even byte. Rounding to the nearest even value
// keeps the matte unbiased; truncating and then clearing bit 0 lowered every
// soft pixel by a level on average. The even bytes themselves cost: on GT01
// at 0.4 MP the same solution scores SAD 1.142 truncated to any byte (as the
// whole-picture solve writes it), 1.158 rounded to even, 1.171 truncated to
// even.
unsigned char evenByte(double a) {
    return static_cast<unsigned char>(std::min(kLargestEven, 2 * std::lround(a * kByteMax / 2)));
}

// Painted pixels a tile variable shares a window with are tied to their
// value with the weight the alpha driver gives its known pixels, not held
// exactly: with every unpainted pixel free this is the whole-picture solve's
// own system, and its answer (truncated as that solve truncates) equals the
// whole-picture solve's on GT01 at 0.4 MP pixel for pixel.
constexpr double kTieWeight = 255.0;
// Pixels two apart share a 3x3 window: a 5x5 neighbourhood.
constexpr int kShared = 2 * kRim + 1;
// Side of a window.
constexpr int kSide = 3;
}  // namespace

FineStats refineInTiles(const cv::Mat& picture, cv::Mat& matte, const cv::Mat& vars,
                        const cv::Mat& painted, const FineTiling& tiling, double epsilon) {
    CV_Assert(picture.type() == CV_8UC4 && matte.type() == CV_8UC1 && vars.type() == CV_8UC1 &&
              picture.size() == matte.size() && vars.size() == matte.size());
    FineStats stats;
    const cv::Rect all(0, 0, matte.cols, matte.rows);
    std::vector<double> alpha;
    std::vector<int> rows;
    std::vector<double> weight;
    for (int cy = 0; cy < matte.rows; cy += tiling.core)
        for (int cx = 0; cx < matte.cols; cx += tiling.core) {
            const cv::Rect core = cv::Rect(cx, cy, tiling.core, tiling.core) & all;
            if (cv::countNonZero(vars(core)) == 0) continue;
            const cv::Rect tile =
                cv::Rect(core.x - tiling.overlap, core.y - tiling.overlap,
                         core.width + 2 * tiling.overlap, core.height + 2 * tiling.overlap) &
                all;
            const int w = tile.width, h = tile.height;

            cv::Mat tileVars(h, w, CV_8UC1, cv::Scalar(0));
            const int left = tile.x > 0 ? kRim : 0, top = tile.y > 0 ? kRim : 0;
            const int right = tile.br().x < all.width ? kRim : 0;
            const int bottom = tile.br().y < all.height ? kRim : 0;
            const cv::Rect inner(left, top, w - left - right, h - top - bottom);
            // Fewer than three rows or columns hold no window at all.
            if (w < kSide || h < kSide || inner.width <= 0 || inner.height <= 0) continue;
            vars(tile)(inner).copyTo(tileVars(inner));
            cv::Mat tied;
            cv::dilate(tileVars, tied, cv::Mat::ones(kShared, kShared, CV_8UC1));
            tied &= painted(tile);
            rows.clear();
            weight.clear();
            alpha.resize(static_cast<size_t>(w) * h);
            for (int y = 0; y < h; ++y) {
                const unsigned char* m = matte.ptr<unsigned char>(tile.y + y) + tile.x;
                const unsigned char* v = tileVars.ptr<unsigned char>(y);
                const unsigned char* t = tied.ptr<unsigned char>(y);
                for (int x = 0; x < w; ++x) {
                    alpha[static_cast<size_t>(y) * w + x] = m[x] / kByteMax;
                    if (v[x] || t[x]) {
                        rows.push_back(y * w + x);
                        weight.push_back(v[x] ? 0.0 : kTieWeight);
                    }
                }
            }
            if (rows.empty()) continue;

            const cv::Mat tilePicture = picture(tile);
            {
                const WindowLaplacian op(tilePicture.data, static_cast<int>(tilePicture.step),
                                         tileVars.data, w, h, epsilon);
                solveHeldLaplacianDirect(op, rows, weight, alpha);
            }
            stats.variables += static_cast<long long>(rows.size());
            ++stats.tiles;

            // Only the core goes back; the overlap was context.
            const cv::Rect back = core - tile.tl();
            for (int y = back.y; y < back.y + back.height; ++y) {
                unsigned char* m = matte.ptr<unsigned char>(tile.y + y) + tile.x;
                const unsigned char* v = tileVars.ptr<unsigned char>(y);
                for (int x = back.x; x < back.x + back.width; ++x) {
                    if (!v[x]) continue;
                    const double a = std::clamp(alpha[static_cast<size_t>(y) * w + x], 0.0, 1.0);
                    m[x] = evenByte(a);
                }
            }
            progressKick();
        }
    return stats;
}
