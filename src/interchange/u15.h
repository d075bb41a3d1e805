// The host's own mapping between 8-bit levels and its 16-bit range 0..32768.
#pragma once

// dst = (src + 1) * 128 over a w x h plane: 0 -> 128, 255 -> 32768. Returns 1.
int psC1U8toU15(const unsigned char* src, int srcStep, int w, int h, unsigned short* dst,
                int dstStep);

// dst = min((src - 128) / 128, 255), the difference saturated at 0 and the
// quotient rounded to nearest with exact halves to even: the exact inverse of
// psC1U8toU15 on the 256 values it produces (32768 -> 255, 0 -> 0). Returns 1.
int psC1U15toU8(const unsigned short* src, int srcStep, int w, int h, unsigned char* dst,
                int dstStep);
