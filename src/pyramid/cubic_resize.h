// Cubic resampling of a byte plane onto another plane's region size, for the
// pyramid steps that must land on an arbitrary size.
#pragma once

#include "core/img.h"

// Resizes src's region to dst's region (factors dst / src per axis). Both
// regions must be non-empty.
void resizeCubic(const GIMG<unsigned char>& src, GIMG<unsigned char>& dst);
