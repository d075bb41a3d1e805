// The grid nested dissection must be a permutation whose separators really
// separate: a variable ordered before a separator never couples (within two
// pixels) to a variable of the other side ordered before that separator.
#include "matting/grid_ordering.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

// Variable numbers of a w x h grid where `mask` says which pixels are variables.
std::vector<int> numberVariables(const std::vector<bool>& isVar, int& n) {
    std::vector<int> idx(isVar.size(), -1);
    n = 0;
    for (size_t i = 0; i < isVar.size(); ++i)
        if (isVar[i]) idx[i] = n++;
    return idx;
}

// The variables ordered last (the top separator) must split the others into
// parts that do not couple, each ordered in one run: a plain row-major order
// (no dissection) fails this.
void expectTopSeparatorSplits(const std::vector<int>& idx, const std::vector<int>& perm, int w,
                              int h, int n) {
    std::vector<int> rank(n);
    for (int k = 0; k < n; ++k) rank[perm[k]] = k;
    // Find the largest k such that removing ranks >= k disconnects the rest:
    // grow components over ranks < k with coupling distance 2.
    for (int cut = n - 1; cut > n / 2; --cut) {
        std::vector<int> comp(w * h, -1);
        int comps = 0;
        for (int s = 0; s < w * h; ++s) {
            if (idx[s] < 0 || rank[idx[s]] >= cut || comp[s] >= 0) continue;
            std::vector<int> stack{s};
            comp[s] = comps;
            while (!stack.empty()) {
                const int p = stack.back();
                stack.pop_back();
                const int px = p % w, py = p / w;
                for (int dy = -2; dy <= 2; ++dy)
                    for (int dx = -2; dx <= 2; ++dx) {
                        const int qx = px + dx, qy = py + dy;
                        if (qx < 0 || qy < 0 || qx >= w || qy >= h) continue;
                        const int q = qy * w + qx;
                        if (idx[q] < 0 || rank[idx[q]] >= cut || comp[q] >= 0) continue;
                        comp[q] = comps;
                        stack.push_back(q);
                    }
            }
            ++comps;
        }
        if (comps >= 2) {
            // The parts are ordered one after the other: no interleaving.
            std::vector<int> maxRank(comps, -1), minRank(comps, n);
            for (int s = 0; s < w * h; ++s)
                if (comp[s] >= 0) {
                    maxRank[comp[s]] = std::max(maxRank[comp[s]], rank[idx[s]]);
                    minRank[comp[s]] = std::min(minRank[comp[s]], rank[idx[s]]);
                }
            std::vector<int> order(comps);
            for (int c = 0; c < comps; ++c) order[c] = c;
            std::sort(order.begin(), order.end(),
                      [&](int a, int b) { return minRank[a] < minRank[b]; });
            for (int c = 1; c < comps; ++c)
                EXPECT_LT(maxRank[order[c - 1]], minRank[order[c]]) << "parts interleave";
            return;
        }
    }
    ADD_FAILURE() << "no separator found among the last-ordered variables";
}

TEST(GridOrdering, IsAPermutationThatDissects) {
    std::mt19937 rng(3);
    for (const auto& [w, h] : {std::pair{40, 30}, std::pair{7, 90}, std::pair{64, 64}}) {
        for (double density : {1.0, 0.6}) {
            std::vector<bool> isVar(w * h);
            std::bernoulli_distribution keep(density);
            for (size_t i = 0; i < isVar.size(); ++i) isVar[i] = keep(rng);
            int n = 0;
            const std::vector<int> idx = numberVariables(isVar, n);
            const std::vector<int> perm = gridNestedDissection(idx.data(), w, h, n);
            ASSERT_EQ(static_cast<int>(perm.size()), n);
            std::vector<int> sorted = perm;
            std::sort(sorted.begin(), sorted.end());
            for (int k = 0; k < n; ++k) ASSERT_EQ(sorted[k], k) << w << "x" << h;
            if (density == 1.0) expectTopSeparatorSplits(idx, perm, w, h, n);
        }
    }
}

TEST(GridOrdering, HandlesEmptyAndTinyGrids) {
    EXPECT_TRUE(gridNestedDissection(nullptr, 0, 0, 0).empty());
    const int one[1] = {0};
    EXPECT_EQ(gridNestedDissection(one, 1, 1, 1), std::vector<int>{0});
    const int gaps[5] = {0, -1, -1, -1, 1};
    std::vector<int> p = gridNestedDissection(gaps, 5, 1, 2);
    std::sort(p.begin(), p.end());
    EXPECT_EQ(p, (std::vector<int>{0, 1}));
}

}  // namespace
