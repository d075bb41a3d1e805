// Values of the shared Gaussian weight tables. They are fixed numbers, not
// computed at start-up, because results elsewhere depend on them to the last
// digit (row 1 of the blending window is a coarse hand-rounded version of the
// product rule the other rows follow).
#include "pipeline/weight_tables.h"

// clang-format off
const float gaussianTable[kGaussianTableSide * kGaussianTableSide] = {
    0.212132f,  0.184166f,  0.120509f,  0.0594338f, 0.022093f,
    0.184166f,  0.159887f,  0.104622f,  0.0515985f, 0.0191804f,
    0.120509f,  0.104622f,  0.068459f,  0.0337634f, 0.0125507f,
    0.0594338f, 0.0515985f, 0.0337634f, 0.0166518f, 0.00618989f,
    0.022093f,  0.0191804f, 0.0125507f, 0.00618989f, 0.00230093f,
};

const float gaussianBlurTable[kGaussianBlurTableSide * kGaussianBlurTableSide] = {
    0, 0, 0,      0,      0,      0,      0,      0,      0,      0,      0,      0, 0,
    0, 0, 0.001f, 0.003f, 0.005f, 0.009f, 0.01f,  0.009f, 0.005f, 0.003f, 0.001f, 0, 0,
    0, 0, 0.0108f, 0.0292f, 0.0592f, 0.0904f, 0.1041f, 0.0904f, 0.0592f, 0.0292f, 0.0108f, 0, 0,
    0, 0, 0.0292f, 0.0785f, 0.1592f, 0.2432f, 0.2802f, 0.2432f, 0.1592f, 0.0785f, 0.0292f, 0, 0,
    0, 0, 0.0592f, 0.1592f, 0.3227f, 0.4932f, 0.5681f, 0.4932f, 0.3227f, 0.1592f, 0.0592f, 0, 0,
    0, 0, 0.0904f, 0.2432f, 0.4932f, 0.7537f, 0.8682f, 0.7537f, 0.4932f, 0.2432f, 0.0904f, 0, 0,
    0, 0, 0.1041f, 0.2802f, 0.5681f, 0.8682f, 1.0f,    0.8682f, 0.5681f, 0.2802f, 0.1041f, 0, 0,
    0, 0, 0.0904f, 0.2432f, 0.4932f, 0.7537f, 0.8682f, 0.7537f, 0.4932f, 0.2432f, 0.0904f, 0, 0,
    0, 0, 0.0592f, 0.1592f, 0.3227f, 0.4932f, 0.5681f, 0.4932f, 0.3227f, 0.1592f, 0.0592f, 0, 0,
    0, 0, 0.0292f, 0.0785f, 0.1592f, 0.2432f, 0.2802f, 0.2432f, 0.1592f, 0.0785f, 0.0292f, 0, 0,
    0, 0, 0.0108f, 0.0292f, 0.0592f, 0.0904f, 0.1041f, 0.0904f, 0.0592f, 0.0292f, 0.0108f, 0, 0,
    0, 0, 0.001f, 0.003f, 0.005f, 0.009f, 0.01f,  0.009f, 0.005f, 0.003f, 0.001f, 0, 0,
    0, 0, 0,      0,      0,      0,      0,      0,      0,      0,      0,      0, 0,
};
// clang-format on

float nDistribution(int i, int j) {
    return gaussianTable[i * kGaussianTableSide + j];
}
