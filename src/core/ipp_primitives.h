// Every image, signal and small-matrix primitive of the engine in one include.
#pragma once

#include "core/aligned_alloc.h"
#include "core/ippi_arith.h"
#include "core/ippi_arith_const.h"
#include "core/ippi_color.h"
#include "core/ippi_convert.h"
#include "core/ippi_copy.h"
#include "core/ippi_logic_compare.h"
#include "core/ippi_lut.h"
#include "core/ippi_noise.h"
#include "core/ippi_set.h"
#include "core/ippi_stats.h"
#include "core/ippi_threshold.h"
#include "core/ippm_small_matrix.h"
#include "core/ipps_sort.h"
