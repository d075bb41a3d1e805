// IPSize: width and height of an image or of a region, in pixels.
#pragma once

struct IPSize {
    int width = 0;
    int height = 0;

    IPSize() = default;
    IPSize(int w, int h) : width(w), height(h) {}

    // Relative change, not an assignment: the region code moves corners by deltas.
    IPSize& resize(int dw, int dh) {
        width += dw;
        height += dh;
        return *this;
    }
    bool operator==(const IPSize&) const = default;
};
