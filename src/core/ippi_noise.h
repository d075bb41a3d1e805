// Additive Gaussian noise from a seeded generator: the same seed gives the
// same noise, and *pSeed is advanced so that consecutive calls continue the
// sequence instead of repeating it.
#pragma once

#include "core/ipp_types.h"

IppStatus ippiAddRandGauss_Direct_32f_C1IR(Ipp32f* pSrcDst, int srcDstStep, IppiSize roi,
                                           Ipp32f mean, Ipp32f stdev, unsigned int* pSeed);
// The first three channels get noise; the fourth is left alone.
IppStatus ippiAddRandGauss_Direct_32f_AC4IR(Ipp32f* pSrcDst, int srcDstStep, IppiSize roi,
                                            Ipp32f mean, Ipp32f stdev, unsigned int* pSeed);
