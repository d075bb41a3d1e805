// Everything the neighbourhood primitives offer, in one include: morphology,
// linear filters, medians, the bilateral filter, resampling and flood fill.
#pragma once

#include "core/ippi_bilateral.h"
#include "core/ippi_filter.h"
#include "core/ippi_floodfill.h"
#include "core/ippi_median.h"
#include "core/ippi_morph.h"
#include "core/ippi_resize.h"
