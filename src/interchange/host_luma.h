// Luma of host pixels (Y = 0.299 R + 0.587 G + 0.114 B) into OpenCV matrices,
// for the engine's grey-level work. Y is capped at the output's top and
// truncated. Interleaved sources are always read with three elements per
// pixel, whatever the code says about a fourth. Nothing is checked.
#pragma once

#include <opencv2/core.hpp>

// out becomes h x w 8-bit. Codes 1 and 17 are read as 8-bit; any other code as
// 16-bit 0..32768 with the weights divided by 128.
void PSRGB2Y8U(int type, const void* buf, int step, int w, int h, cv::Mat& out);

// out becomes h x w signed 16-bit, capped at 32767. Code 1 is read as 8-bit
// with the weights multiplied by 128 (so Y lands in 0..32767 too); any other
// code, 17 included, is read as 16-bit with the plain weights.
void PSRGB2Y16S(int type, const void* buf, int step, int w, int h, cv::Mat& out);

// As PSRGB2Y8U from three planes R, G, B sharing the row step `step`, starting
// at pixel (x, y) of each.
void planarPSRGB2Y8U(int type, const void* const* planes, int step, int w, int h, int x, int y,
                     cv::Mat& out);
