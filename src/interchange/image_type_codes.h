// The host's buffer type codes: how many channels and bytes a code stands
// for, the OpenCV matrix type that matches it, and pixel addressing in host
// buffers. Interleaved host buffers hold red first, then green, then blue.
#pragma once

// Host buffer type codes with a pixel layout the engine reads directly.
inline constexpr int kHostRgb8 = 1;     // R, G, B bytes
inline constexpr int kHostRgb16 = 3;    // R, G, B 16-bit, 0..32768
inline constexpr int kHostRgbx8 = 5;    // R, G, B and a carried fourth byte
inline constexpr int kHostRgbx16 = 6;   // R, G, B and a fourth 16-bit channel
inline constexpr int kHostGrey8 = 7;    // one byte
inline constexpr int kHostGrey16 = 8;   // one 16-bit channel
inline constexpr int kHostCvRgb8 = 17;  // the OpenCV three-channel 8-bit matrix type

// Colour channels of a code (the carried fourth channel is not counted); 0 for
// an unknown code.
int getNumChns(int type);
// 2 for the 16-bit codes (3, 6, 8, 32, 33, 34), else 1 (unknown codes too).
int getNumBytePerCh(int type);
// The OpenCV matrix type of the codes that have one (16, 17, 32, 33), else 0.
int getCvTypeFromImageType(int type);
// Address of pixel (x, y): base + y*step + x*(bytes per pixel) for the
// interleaved codes 1, 3, 5, 6, 7 and 8 (3, 6, 4, 8, 1 and 2 bytes), null for
// any other code. (calcPixelStep in runtime/blocking.h gives the bytes per
// pixel of the colour codes only, for the blocking code below this layer.)
void* addImgPtr(int type, void* base, int step, int x, int y);
const void* addImgPtr(int type, const void* base, int step, int x, int y);
