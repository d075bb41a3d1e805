// Region size, point and status conventions shared by every image primitive.
#pragma once

#include <cstdint>

#include "core/ip_size.h"

using Ipp8u = unsigned char;
using Ipp16u = unsigned short;
using Ipp16s = short;
using Ipp32s = int;
using Ipp32f = float;
using Ipp64f = double;

// Region size in pixels: width then height, the same layout as IPSize.
using IppiSize = IPSize;

struct IppiPoint {
    int x;
    int y;
};

// Status of a primitive: 0 success, negative errors, positive warnings.
using IppStatus = int;
enum : int {
    ippStsNoErr = 0,
    ippStsBadArgErr = -5,
    ippStsSizeErr = -6,
    ippStsNullPtrErr = -8,
    ippStsMemAllocErr = -9,
    ippStsStepErr = -14,
    ippStsDivByZero = 6,  // warning: a division by zero produced inf/nan
};

// Rounding modes for float-to-integer conversions.
enum IppRoundMode { ippRndZero = 0, ippRndNear = 1 };

// Comparison operators of the Compare family.
enum IppCmpOp { ippCmpLess = 0, ippCmpLessEq, ippCmpEq, ippCmpGreaterEq, ippCmpGreater };
