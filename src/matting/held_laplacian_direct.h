// Closed-form alpha over a set of variable pixels with every other pixel held
// exactly at its value (Dirichlet, not a weighted soft constraint): the
// reduced system L_UU x_U = -L_UK x_K is assembled from the tile's windows and
// factored by the sparse direct solver.
#pragma once

#include <optional>
#include <vector>

#include "matting/direct_solver.h"
#include "matting/window_laplacian.h"

// A tile's reduced system, assembled apart from the values it holds: the
// matrix and its ordering need only the picture and the variables, so the
// next tile's system can be built while the current one is being solved and
// its results still change what the next one holds.
class HeldSystem {
  public:
    // rows: the variable pixels (increasing pixel order); weight (empty, or
    // one per row) pulls a row towards the value it holds with that weight,
    // as the alpha driver ties its known pixels next to the band: they may
    // then give a little where the colour model insists. The system is
    // factorised here; throws what DirectFactor throws.
    HeldSystem(const WindowLaplacian& op, std::vector<int> rows, std::vector<double> weight);
    HeldSystem(HeldSystem&&) = default;
    HeldSystem& operator=(HeldSystem&&) = default;
    HeldSystem(const HeldSystem&) = delete;
    HeldSystem& operator=(const HeldSystem&) = delete;

    int variables() const { return static_cast<int>(rows_.size()); }
    // alpha: the tile plane (values 0..1); the rows are solved in place, all
    // other pixels are read only.
    void solve(std::vector<double>& alpha);
    double analyseSeconds() const { return factor_ ? factor_->analyseSeconds() : 0.0; }
    double factoriseSeconds() const { return factor_ ? factor_->factoriseSeconds() : 0.0; }

  private:
    std::vector<int> rows_;
    std::vector<double> weight_;
    std::optional<DirectFactor> factor_;
    // Per variable (CSR, zero-based): the held pixels it couples to and the
    // coefficient that moves their value to the right-hand side.
    std::vector<int> heldStart_, heldPixel_;
    std::vector<double> heldCoef_;
};

// Assembles and solves at once (see HeldSystem).
void solveHeldLaplacianDirect(const WindowLaplacian& op, const std::vector<int>& rows,
                              const std::vector<double>& weight, std::vector<double>& alpha);
