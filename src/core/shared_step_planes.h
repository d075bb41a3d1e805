// Three byte planes under one row step, the form in which the matting solver,
// the bilateral filter and the KD-tree take colour planes. Separately owned
// planes need not share a step: one that fell back to the general heap has
// another step than its neighbours.
#pragma once

#include <memory>

#include "core/img.h"

class SharedStepPlanes {
  public:
    static constexpr int kPlanes = 3;

    // The regions of interest of the three planes (all of the first plane's
    // size). Planes whose steps agree are used where they are; otherwise they
    // are copied into one block, whose rows all have one step.
    explicit SharedStepPlanes(GIMG<unsigned char>* const planes[kPlanes]);
    SharedStepPlanes(const SharedStepPlanes&) = delete;
    SharedStepPlanes& operator=(const SharedStepPlanes&) = delete;

    unsigned char* ptr[kPlanes];
    int step;

  private:
    std::unique_ptr<GIMG<unsigned char>> copy_;
};
