// Widening of a small keep/cut region: the solver needs context around the
// strokes, so a region narrower or lower than a large one grows by about
// its own span on every side, clipped to the picture.
#pragma once

// A rectangle of the picture in pixels: left column, top row, width, height.
struct KeepCutRegion {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    bool operator==(const KeepCutRegion&) const = default;
};

// A region whose width and height both reach this many pixels already holds
// enough context and is left as it is.
inline constexpr int kWidenBelowSide = 1500;

// The region as the main entry widens it inside a pictureWidth x
// pictureHeight picture: unchanged when both sides are kWidenBelowSide or
// more; otherwise grown by half a target span on each side, the part that
// would fall left of (above) the picture moved to the right (bottom), and
// clipped to the picture.
KeepCutRegion widenRegion(KeepCutRegion region, int pictureWidth, int pictureHeight);
