// A keep/cut request record decoded from fuzz bytes, with every buffer it
// points at held in a guarded block: a small picture, a brush map drawn from
// a few rectangles of mask codes, brushInfo (usually the painted map), a
// foreground buffer (usually the picture), row bytes sometimes larger than
// needed and, now and then, a null buffer, a negative size or short rows.
#pragma once

#include <cstring>
#include <optional>
#include <vector>

#include "api/keepcut.h"
#include "fuzz_checks.h"
#include "fuzz_input.h"
#include "guarded_buffer.h"

namespace kc_fuzz {

// Pictures stay this small so that one call takes milliseconds.
inline constexpr int kMaxSide = 48;
// Row bytes exceed the need by up to this much.
inline constexpr int kMaxRowPadding = 16;
inline constexpr int kPictureBytes = 4;
// Odds (one in N) of each broken argument.
inline constexpr int kBrokenOdds = 24;

// Mask codes the decoder draws: keep, cut, the band, its edges, the values
// counted as background and foreground around it, and arbitrary bytes.
inline unsigned char maskCode(FuzzInput& in) {
    static constexpr unsigned char kCodes[] = {255, 1, 128, 6, 249, 250, 5, 0, 254, 2, 11, 200};
    const int pick = in.range(0, 13);
    if (pick < 12) return kCodes[pick];
    return pick == 12 ? static_cast<unsigned char>(in.byte() | 1)
                      : static_cast<unsigned char>(in.byte() & 254);
}

// A picture of two colours split at a column, plus noise of a chosen strength.
struct SplitColours {
    int left[4], right[4], split, noise;
    SplitColours(FuzzInput& in, int channels) {
        for (int c = 0; c < channels; ++c) left[c] = in.byte(), right[c] = in.byte();
        split = in.range(0, kMaxSide), noise = in.byte() >> in.range(0, 7);
    }
    unsigned char at(int x, int c, Noise& rng) const {
        const int n = noise ? static_cast<int>(rng.next() % (noise + 1)) - noise / 2 : 0;
        return static_cast<unsigned char>(std::clamp((x < split ? left[c] : right[c]) + n, 0, 255));
    }
};

inline BufferLayout decodeLayout(FuzzInput& in, int width, int pixelBytes) {
    BufferLayout l{static_cast<long long>(width) * pixelBytes, in.range(0, 7), false};
    if (in.range(0, 2) == 0) l.rowBytes += in.range(1, kMaxRowPadding);
    if (in.rarely(kBrokenOdds)) l.rowBytes -= in.range(1, 2 * pixelBytes);  // short rows
    if (in.rarely(kBrokenOdds)) l.null = true;
    return l;
}

// Draws a map of w x h bytes: a background code, then a few rectangles of
// codes, optionally a left-cut / right-keep trimap with a band between, then
// scattered bytes.
inline std::vector<unsigned char> drawMap(FuzzInput& in, int w, int h) {
    std::vector<unsigned char> m(static_cast<size_t>(std::max(w, 0)) * std::max(h, 0),
                                 maskCode(in));
    auto rect = [&](int x0, int y0, int x1, int y1, unsigned char v) {
        for (int y = std::max(y0, 0); y < std::min(y1, h); ++y)
            for (int x = std::max(x0, 0); x < std::min(x1, w); ++x)
                m[static_cast<size_t>(y) * w + x] = v;
    };
    if (in.flag()) {
        const int a = in.range(0, std::max(w, 1)), b = in.range(0, std::max(w, 1));
        rect(0, 0, std::min(a, b), h, 1);
        rect(std::max(a, b), 0, w, h, 255);
        rect(std::min(a, b), 0, std::max(a, b), h, 128);
    }
    for (int k = in.range(0, 4); k > 0; --k) {
        const int x = in.range(0, kMaxSide), y = in.range(0, kMaxSide);
        rect(x, y, x + in.range(1, kMaxSide), y + in.range(1, kMaxSide), maskCode(in));
    }
    for (int k = in.range(0, 8); k > 0 && !m.empty(); --k) m[in.word() % m.size()] = maskCode(in);
    return m;
}

struct RequestFixture {
    int w, h;
    std::optional<GuardedBuffer> image, mask, brush, foreground;
    bool nullImage, nullMask, nullBrush, nullForeground;
    bool brushIsMaskCopy = false;
    RKPSStructMsk2 request{};
    RKPSStructMsk2 before{};

    explicit RequestFixture(FuzzInput& in) {
        const Size sides = decodeSize(in, kMaxSide, kBrokenOdds, 1);
        w = sides.w, h = sides.h;

        const BufferLayout li = decodeLayout(in, w, kPictureBytes), lm = decodeLayout(in, w, 1),
                           lb = decodeLayout(in, w, 1), lf = decodeLayout(in, w, kPictureBytes);
        image.emplace(w, h, kPictureBytes, li.rowBytes, li.misalign);
        mask.emplace(w, h, 1, lm.rowBytes, lm.misalign);
        brush.emplace(w, h, 1, lb.rowBytes, lb.misalign);
        foreground.emplace(w, h, kPictureBytes, lf.rowBytes, lf.misalign);
        nullImage = li.null, nullMask = lm.null, nullBrush = lb.null, nullForeground = lf.null;

        // Picture: the fourth byte is one constant.
        const SplitColours colours(in, 3);
        const unsigned char fourth = in.byte();
        Noise rng(in.dword());
        const size_t pixels = static_cast<size_t>(std::max(w, 0)) * std::max(h, 0);
        std::vector<unsigned char> picture(pixels * kPictureBytes);
        for (size_t i = 0; i < picture.size(); ++i) {
            const int c = static_cast<int>(i % kPictureBytes),
                      x = static_cast<int>(i / kPictureBytes) % w;
            picture[i] = c == 3 ? fourth : colours.at(x, c, rng);
        }
        const std::vector<unsigned char> map = drawMap(in, w, h);
        const bool ownBrush = in.rarely(6);  // a map of its own: painted bytes may differ
        const std::vector<unsigned char> brushMap = ownBrush ? drawMap(in, w, h) : map;
        brushIsMaskCopy = !ownBrush;
        auto pixel = [&](int x, int y) { return static_cast<size_t>(y) * w + x; };
        image->fill([&](int x, int y, int c) { return picture[pixel(x, y) * kPictureBytes + c]; });
        mask->fill([&](int x, int y, int) { return map[pixel(x, y)]; });
        brush->fill([&](int x, int y, int) { return brushMap[pixel(x, y)]; });
        if (in.flag())
            foreground->fill(
                [&](int x, int y, int c) { return picture[pixel(x, y) * kPictureBytes + c]; });

        request.image = nullImage ? nullptr : image->data();
        request.imageRowBytes = image->rowBytes();
        request.mask = nullMask ? nullptr : mask->data();
        request.maskRowBytes = mask->rowBytes();
        request.foreground = nullForeground ? nullptr : foreground->data();
        request.foregroundRowBytes = foreground->rowBytes();
        request.brushInfo = nullBrush ? nullptr : brush->data();
        request.brushInfoRowBytes = brush->rowBytes();
        request.width = w;
        request.height = h;
        if (in.range(0, 2) == 0) {
            request.roiX = request.roiY = 0;
            request.roiWidth = w;
            request.roiHeight = h;
        } else {
            request.roiX = in.range(-1, kMaxSide);
            request.roiY = in.range(-1, kMaxSide);
            request.roiWidth = in.range(-1, kMaxSide);
            request.roiHeight = in.range(-1, kMaxSide);
        }
        request.mergeMode = in.range(-1, 2);
        if (in.flag()) request.progProc = ProgressWatch::callback;
        giveProgressData = in.range(0, 3) != 0;
        ProgressWatch::returned() = in.range(-1, 1);
    }

    // Call just before the entry: fresh progress data, snapshots, empty log.
    void beginCall() {
        request.progData = ProgressWatch::beginCall(giveProgressData);
        for (auto* b : {&*image, &*mask, &*brush, &*foreground}) b->snapshot();
        std::memcpy(&before, &request, sizeof request);
        clearErrMsg();
    }

    bool regionInside(const RKPSStructMsk2& r) const {
        return r.roiWidth >= 1 && r.roiHeight >= 1 && r.roiX >= 0 && r.roiY >= 0 &&
               r.roiWidth <= w - r.roiX && r.roiHeight <= h - r.roiY;
    }
    bool usable(const std::optional<GuardedBuffer>& b, bool isNull) const {
        return !isNull && b->valid();
    }
    // What the keep/cut entries refuse in the request's buffers and region:
    // any unusable map or picture, a foreground that is given or asked for
    // but unusable, a region outside the picture.
    bool keepCutBuffersRefused(const RKPSStructMsk2& r) const {
        return !usable(image, nullImage) || !usable(mask, nullMask) || !usable(brush, nullBrush) ||
               ((r.recoverForeground || !nullForeground) && !usable(foreground, nullForeground)) ||
               !regionInside(r);
    }
    // The request's (possibly widened) region holds the pixel.
    bool inRegion(int x, int y) const {
        return x >= request.roiX && x < request.roiX + request.roiWidth && y >= request.roiY &&
               y < request.roiY + request.roiHeight;
    }

    // Nothing at all changed: what a refused call must leave.
    void requireUntouched(const char* entry) const {
        for (const auto* b : {&*image, &*mask, &*brush, &*foreground})
            requireNone(b->unexpectedChange(entry));
        require(std::memcmp(&request, &before, sizeof request) == 0,
                std::string(entry) + " changed the request record");
    }

    // Over the pixels inArea(x, y) picks: painted (odd) map bytes are as they
    // were, unpainted ones stay even and, when merged by minimum (0) or
    // maximum (1), did not rise or fall.
    template <typename Area>
    void requirePaintedKept(const char* entry, Area&& inArea, bool merged, int mergeMode) const {
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                if (!inArea(x, y)) continue;
                const int was = mask->old(x, y), is = mask->cur(x, y);
                const std::string at = std::string(entry) + ": map byte at (" + std::to_string(x) +
                                       ", " + std::to_string(y) + ") went from " +
                                       std::to_string(was) + " to " + std::to_string(is);
                if (was & 1) {
                    require(is == was, at + " (painted)");
                    continue;
                }
                require(!(is & 1), at + " (unpainted became odd)");
                if (merged && mergeMode == 0) require(is <= was, at + " (merged by minimum)");
                if (merged && mergeMode == 1) require(is >= was, at + " (merged by maximum)");
            }
    }

    bool giveProgressData = false;
};

}  // namespace kc_fuzz
