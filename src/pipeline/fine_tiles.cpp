// Tile loop of the fine pass. Tiles are solved in row order and read the
// alpha their neighbours already refined, so a tile's held rim carries the
// better values wherever an earlier tile covered it. A tile's matrix does not
// depend on those values: it is assembled, analysed and factorised on a second
// thread while the tile before it is being solved.
#include "pipeline/fine_tiles.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <future>
#include <opencv2/imgproc.hpp>
#include <optional>
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

// Tiles prepared at once: with two, one is assembled and analysed while the
// other is being factorised, which keeps both cores busy. Measured on GT01 and
// GT14 at 10 MP (tiled stage): one ahead 3.15 / 3.4 s (the serial time), two
// 2.4 / 2.7 s, three no better; each tile ahead holds its factor.
constexpr size_t kAhead = 2;

// A tile with its system, ready for the values it holds.
struct PreparedTile {
    cv::Rect core, tile;
    cv::Mat tileVars;
    std::optional<HeldSystem> system;
};

// Everything of a tile that does not read the matte: its variables, tied
// pixels and assembled system (none when the tile holds no variable).
PreparedTile prepareTile(const cv::Mat& picture, const cv::Mat& vars, const cv::Mat& painted,
                         const cv::Rect& core, int overlap, double epsilon) {
    PreparedTile p;
    const cv::Rect all(0, 0, vars.cols, vars.rows);
    p.core = core;
    if (cv::countNonZero(vars(core)) == 0) return p;
    p.tile = cv::Rect(core.x - overlap, core.y - overlap, core.width + 2 * overlap,
                      core.height + 2 * overlap) &
             all;
    const int w = p.tile.width, h = p.tile.height;
    const int left = p.tile.x > 0 ? kRim : 0, top = p.tile.y > 0 ? kRim : 0;
    const int right = p.tile.br().x < all.width ? kRim : 0;
    const int bottom = p.tile.br().y < all.height ? kRim : 0;
    const cv::Rect inner(left, top, w - left - right, h - top - bottom);
    // Fewer than three rows or columns hold no window at all.
    if (w < kSide || h < kSide || inner.width <= 0 || inner.height <= 0) return p;
    p.tileVars = cv::Mat(h, w, CV_8UC1, cv::Scalar(0));
    vars(p.tile)(inner).copyTo(p.tileVars(inner));
    cv::Mat tied;
    cv::dilate(p.tileVars, tied, cv::Mat::ones(kShared, kShared, CV_8UC1));
    tied &= painted(p.tile);
    std::vector<int> rows;
    std::vector<double> weight;
    for (int y = 0; y < h; ++y) {
        const unsigned char* v = p.tileVars.ptr<unsigned char>(y);
        const unsigned char* t = tied.ptr<unsigned char>(y);
        for (int x = 0; x < w; ++x)
            if (v[x] || t[x]) {
                rows.push_back(y * w + x);
                weight.push_back(v[x] ? 0.0 : kTieWeight);
            }
    }
    if (rows.empty()) return p;
    const cv::Mat tilePicture = picture(p.tile);
    const WindowLaplacian op(tilePicture.data, static_cast<int>(tilePicture.step), p.tileVars.data,
                             w, h, epsilon);
    p.system.emplace(op, std::move(rows), std::move(weight));
    return p;
}
}  // namespace

FineStats refineInTiles(const cv::Mat& picture, cv::Mat& matte, const cv::Mat& vars,
                        const cv::Mat& painted, const FineTiling& tiling, double epsilon) {
    CV_Assert(picture.type() == CV_8UC4 && matte.type() == CV_8UC1 && vars.type() == CV_8UC1 &&
              picture.size() == matte.size() && vars.size() == matte.size());
    FineStats stats;
    const cv::Rect all(0, 0, matte.cols, matte.rows);
    std::vector<cv::Rect> cores;
    for (int cy = 0; cy < matte.rows; cy += tiling.core)
        for (int cx = 0; cx < matte.cols; cx += tiling.core)
            cores.push_back(cv::Rect(cx, cy, tiling.core, tiling.core) & all);
    const auto prepare = [&](const cv::Rect& core) {
        return prepareTile(picture, vars, painted, core, tiling.overlap, epsilon);
    };
    std::vector<double> alpha;
    std::deque<std::future<PreparedTile>> ahead;
    size_t queued = 0;
    for (size_t i = 0; i < cores.size(); ++i) {
        while (queued < cores.size() && queued < i + kAhead)
            ahead.push_back(std::async(std::launch::async, prepare, cores[queued++]));
        PreparedTile p = ahead.front().get();
        ahead.pop_front();
        if (!p.system) continue;
        const cv::Rect& tile = p.tile;
        const int w = tile.width, h = tile.height;
        alpha.resize(static_cast<size_t>(w) * h);
        for (int y = 0; y < h; ++y) {
            const unsigned char* m = matte.ptr<unsigned char>(tile.y + y) + tile.x;
            for (int x = 0; x < w; ++x) alpha[static_cast<size_t>(y) * w + x] = m[x] / kByteMax;
        }
        p.system->solve(alpha);
        stats.variables += p.system->variables();
        stats.analyse += p.system->analyseSeconds();
        stats.factorise += p.system->factoriseSeconds();
        ++stats.tiles;

        // Only the core goes back; the overlap was context.
        const cv::Rect back = p.core - tile.tl();
        for (int y = back.y; y < back.y + back.height; ++y) {
            unsigned char* m = matte.ptr<unsigned char>(tile.y + y) + tile.x;
            const unsigned char* v = p.tileVars.ptr<unsigned char>(y);
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
