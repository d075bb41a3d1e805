// Foreground and background colours of one tile from its picture and alpha.
//
// Per colour channel the tile's F and B minimise
//   sum_i (a_i F_i + (1 - a_i) B_i - I_i)^2
//   + sum over 4-neighbour pairs of wF (F_i - F_j)^2 + wB (B_i - B_j)^2
//   + delta sum_i ((F_i - I_i)^2 + (B_i - I_i)^2),
// with smoothness weights that grow with the alpha step between the pair: a
// colour can only be told apart from its neighbour's where alpha changes, so
// that is where the two layers are tied to their neighbours. The problem is
// one sparse least-squares system A x = b over [F; B]; its normal matrix does
// not depend on the channel, so it is factorised once and solved for the three
// channels together.
#include <cmath>
#include <vector>

#include "matting/cfmatt.h"
#include "matting/csr_normal.h"
#include "matting/direct_solver.h"

namespace {

constexpr float kByteMax = 255.0f;
// Weight of the alpha step |a_i - a_j| in the smoothness of both layers.
constexpr float kAlphaStepWeight = 1.0f;
// Smoothness floor of a layer where the composite hardly sees it: F where
// alpha is low, B where alpha is high. It carries each layer across the
// region where the data term cannot determine it.
constexpr float kHiddenLayerSmoothness = 0.05f;
// Smoothness floor everywhere, so that flat fractional areas (no alpha step)
// still borrow colour from their neighbours.
constexpr float kBaseSmoothness = 0.005f;
// Pull of both layers towards the picture: keeps the system positive definite
// when alpha is constant over the tile, and is far below the data weight (1)
// so that it does not bias a determined layer.
constexpr float kPicturePull = 1e-5f;
constexpr int kChannels = 3;

// Sparse rows appended one at a time, columns ascending within a row.
struct RowBuilder {
    CsrMatrix& m;
    void begin() { m.ia.push_back(static_cast<int>(m.a.size()) + 1); }
    void put(int col, float v) {
        if (v == 0.0f) return;
        m.a.push_back(v);
        m.ja.push_back(col + 1);
    }
};

}  // namespace

int CFMatt::CompFBExtract(GIMG<unsigned char>** planes, bool background,
                          GIMG<unsigned char>* alpha) {
    const int w = alpha->width(), h = alpha->height();
    if (w <= 0 || h <= 0) return kMattNothingToSolve;
    const int n = w * h;

    std::vector<float> a(static_cast<size_t>(n));
    bool fractional = false;
    for (int y = 0; y < h; ++y) {
        const unsigned char* ar = imgPtr(*alpha, 0, y);
        for (int x = 0; x < w; ++x) {
            a[static_cast<size_t>(y) * w + x] = ar[x] / kByteMax;
            fractional |= ar[x] != 0 && ar[x] != 255;
        }
    }
    // Without a fractional pixel every layer that shows is the picture itself.
    if (!fractional) return kMattNothingToSolve;

    // Rows: n data rows, then smoothness rows of F and B per neighbour pair,
    // then the pull rows of F and B. Columns: F_i = i, B_i = n + i.
    CsrMatrix A;
    A.cols = 2 * n;
    const size_t pairs = static_cast<size_t>(w - 1) * h + static_cast<size_t>(h - 1) * w;
    const size_t rows = static_cast<size_t>(n) + 2 * pairs + 2 * static_cast<size_t>(n);
    A.ia.reserve(rows + 1);
    A.a.reserve(2 * rows);
    A.ja.reserve(2 * rows);
    // Which pixel each data / pull row refers to (-1 for smoothness rows).
    std::vector<int> rowPixel;
    rowPixel.reserve(rows);
    std::vector<float> rowScale;  // factor on the picture value in the rhs
    rowScale.reserve(rows);
    RowBuilder rb{A};

    for (int i = 0; i < n; ++i) {
        rb.begin();
        rb.put(i, a[i]);
        rb.put(n + i, 1.0f - a[i]);
        rowPixel.push_back(i);
        rowScale.push_back(1.0f);
    }
    auto pair = [&](int i, int j) {
        const float step = std::fabs(a[i] - a[j]);
        const float mean = 0.5f * (a[i] + a[j]);
        const float wf =
            kAlphaStepWeight * step + kHiddenLayerSmoothness * (1.0f - mean) + kBaseSmoothness;
        const float wb = kAlphaStepWeight * step + kHiddenLayerSmoothness * mean + kBaseSmoothness;
        const float sf = std::sqrt(wf), sb = std::sqrt(wb);
        rb.begin();
        rb.put(i, sf);
        rb.put(j, -sf);
        rb.begin();
        rb.put(n + i, sb);
        rb.put(n + j, -sb);
        rowPixel.push_back(-1);
        rowPixel.push_back(-1);
        rowScale.push_back(0.0f);
        rowScale.push_back(0.0f);
    };
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const int i = y * w + x;
            if (x + 1 < w) pair(i, i + 1);
            if (y + 1 < h) pair(i, i + w);
        }
    const float pull = std::sqrt(kPicturePull);
    for (int layer = 0; layer < 2; ++layer)
        for (int i = 0; i < n; ++i) {
            rb.begin();
            rb.put(layer * n + i, pull);
            rowPixel.push_back(i);
            rowScale.push_back(pull);
        }
    A.rows = static_cast<int>(rowPixel.size());
    A.ia.push_back(static_cast<int>(A.a.size()) + 1);

    // Right-hand sides of the three channels, in 0..1.
    std::vector<float> b(static_cast<size_t>(A.rows) * kChannels, 0.0f);
    for (int c = 0; c < kChannels; ++c) {
        float* bc = b.data() + static_cast<size_t>(c) * A.rows;
        for (int r = 0; r < A.rows; ++r) {
            const int i = rowPixel[r];
            if (i < 0) continue;
            bc[r] = rowScale[r] * *imgPtr(*planes[c], i % w, i / w) / kByteMax;
        }
    }

    CsrMatrix N = csrNormalUpper(A);
    std::vector<float> x = csrTransposeTimes(A, b, kChannels);
    const int r = pardisoSolver(N.rows, N.a.data(), N.ia.data(), N.ja.data(), x.data(), nullptr,
                                kChannels, kMtypeSymPosDef);
    if (r != 0) myThrow(r + kMattSolverCodeBase);

    // The asked-for layer back into the planes, rounded and clamped; where
    // that layer is all the composite shows, the picture is taken exactly.
    const int offset = background ? n : 0;
    const unsigned char exact = background ? 0 : 255;
    for (int c = 0; c < kChannels; ++c) {
        const float* xc = x.data() + static_cast<size_t>(c) * A.cols + offset;
        for (int y = 0; y < h; ++y) {
            unsigned char* p = imgPtr(*planes[c], 0, y);
            const unsigned char* ar = imgPtr(*alpha, 0, y);
            for (int xx = 0; xx < w; ++xx) {
                if (ar[xx] == exact) continue;
                const float v = xc[y * w + xx] * kByteMax + 0.5f;
                // A non-finite value fails both comparisons and keeps the picture.
                if (v >= 0.0f && v < 256.0f)
                    p[xx] = static_cast<unsigned char>(v);
                else if (v >= 256.0f)
                    p[xx] = 255;
                else if (v < 0.0f)
                    p[xx] = 0;
            }
        }
    }
    return 1;
}
