// Marks a hot loop of a function template for an AVX2 clone beside the
// default build, chosen when the library loads. Clang cannot clone function
// templates for several targets, so its builds (the fuzzing build) keep the
// default target only.
#pragma once

#if defined(__clang__)
#define KC_TEMPLATE_AVX2_CLONES
#else
#define KC_TEMPLATE_AVX2_CLONES __attribute__((target_clones("avx2", "default")))
#endif
