// Cross (joint) bilateral filter for 8-bit planes guided by separate planes:
// smooths alpha inside regions of similar colour and keeps alpha edges that
// coincide with colour edges.
#pragma once

// Filters the interior of each of the nPlanes planes in place (a frame as wide
// as radius stays unchanged). The range term is the byte-saturated sum of the
// absolute differences of the nGuide guide planes; sigmaRange is in grey levels
// of that sum, sigmaSpace in pixels, and centreWeight weights the centre pixel
// as a fraction of the largest range weight (255). Returns 1 when the planes
// were filtered, 0 when radius is outside 1..3 or the interior is narrower or
// lower than 2 pixels.
int CBLFRGB(int width, int height, unsigned char** planes, int step, int nPlanes,
            unsigned char** guide, int guideStep, int nGuide, int radius, float sigmaRange,
            float sigmaSpace, float centreWeight);
