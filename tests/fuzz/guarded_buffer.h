// A host buffer placed inside a larger block: guard bytes before and after it
// and in every row's padding hold a known pattern, so that a write outside
// the picture, past a row or outside an allowed area is found after a call.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz_input.h"

namespace kc_fuzz {

class GuardedBuffer {
  public:
    // Guard bytes on each side of the buffer: more than any vector load or
    // off-by-one row could reach past the end.
    static constexpr int kGuardBytes = 64;

    // width x height pixels of pixelBytes, rowBytes apart, starting `misalign`
    // bytes past an aligned address. A layout the engine must refuse
    // (negative sizes, short rows) still gets a block, filled with the
    // pattern only, so that a call that reads or writes it anyway is caught.
    GuardedBuffer(int width, int height, int pixelBytes, long long rowBytes, int misalign)
        : width_(width), height_(height), pixelBytes_(pixelBytes), rowBytes_(rowBytes) {
        const long long rows = std::max(height, 0);
        const long long stored = valid() ? rows * rowBytes : 0;
        start_ = kGuardBytes + misalign;
        block_.resize(static_cast<size_t>(start_ + stored + kGuardBytes));
        for (size_t i = 0; i < block_.size(); ++i) block_[i] = pattern(i);
    }

    // True when the engine may address the buffer: sizes non-negative and
    // rows at least as long as the picture's.
    bool valid() const {
        return width_ >= 0 && height_ >= 0 &&
               rowBytes_ >= static_cast<long long>(width_) * pixelBytes_;
    }
    unsigned char* data() { return block_.data() + start_; }
    int rowBytes() const { return static_cast<int>(rowBytes_); }
    unsigned char* at(int x, int y, int c = 0) {
        return data() + static_cast<long long>(y) * rowBytes_ +
               static_cast<long long>(x) * pixelBytes_ + c;
    }
    // A pixel byte at the snapshot and now.
    unsigned char old(int x, int y, int c = 0) const { return before_[offset(x, y, c)]; }
    unsigned char cur(int x, int y, int c = 0) const { return block_[offset(x, y, c)]; }

    // Sets every pixel byte through fill(x, y, channel); valid layouts only.
    template <typename Fill>
    void fill(Fill&& f) {
        if (!valid()) return;
        for (int y = 0; y < height_; ++y)
            for (int x = 0; x < width_; ++x)
                for (int c = 0; c < pixelBytes_; ++c) *at(x, y, c) = f(x, y, c);
    }

    void snapshot() { before_ = block_; }
    const std::vector<unsigned char>& before() const { return before_; }
    const std::vector<unsigned char>& now() const { return block_; }

    // The first byte changed since the snapshot that allowed(x, y, channel)
    // does not permit, described for the failure message; empty if none.
    // Bytes outside the pixels (guards, row padding) are never allowed.
    template <typename Allowed>
    std::string unexpectedChange(const char* name, Allowed&& allowed) const {
        for (size_t i = 0; i < block_.size(); ++i) {
            if (block_[i] == before_[i]) continue;
            const long long off = static_cast<long long>(i) - start_;
            const long long stored = valid() ? std::max(height_, 0) * rowBytes_ : 0;
            std::string where;
            if (off < 0)
                where = "the guard before it";
            else if (off >= stored)
                where = "the guard after it";
            else {
                const int y = static_cast<int>(off / rowBytes_);
                const long long xb = off % rowBytes_;
                if (xb >= static_cast<long long>(width_) * pixelBytes_)
                    where = "row " + std::to_string(y) + "'s padding";
                else {
                    const int x = static_cast<int>(xb / pixelBytes_);
                    const int c = static_cast<int>(xb % pixelBytes_);
                    if (allowed(x, y, c)) continue;
                    where = "pixel (" + std::to_string(x) + ", " + std::to_string(y) + ") byte " +
                            std::to_string(c);
                }
            }
            return std::string(name) + ": " + where + " changed from " +
                   std::to_string(before_[i]) + " to " + std::to_string(block_[i]);
        }
        return {};
    }
    std::string unexpectedChange(const char* name) const {
        return unexpectedChange(name, [](int, int, int) { return false; });
    }

  private:
    size_t offset(int x, int y, int c) const {
        return static_cast<size_t>(start_ + static_cast<long long>(y) * rowBytes_ +
                                   static_cast<long long>(x) * pixelBytes_ + c);
    }
    // Varies with the position, so that a shifted copy of guard bytes shows.
    static unsigned char pattern(size_t i) { return static_cast<unsigned char>(i * 131u + 0x5Au); }

    int width_, height_, pixelBytes_;
    long long rowBytes_;
    long long start_ = 0;
    std::vector<unsigned char> block_, before_;
};

// Where a host buffer lies: its row bytes, its start past an aligned
// address, and whether the host passes null instead.
struct BufferLayout {
    long long rowBytes;
    int misalign;
    bool null;
};

// Rows of width * pixelBytes plus up to maxPadding bytes, now and then short
// by up to maxShort; up to 3 bytes misaligned; now and then null.
inline BufferLayout decodePaddedLayout(FuzzInput& in, int width, int pixelBytes, int maxPadding,
                                       int maxShort, int brokenOdds) {
    long long rowBytes = static_cast<long long>(width) * pixelBytes + in.range(0, maxPadding);
    if (in.rarely(brokenOdds)) rowBytes -= in.range(1, maxShort);
    const int misalign = in.range(0, 3);
    return {rowBytes, misalign, in.rarely(brokenOdds)};
}

// A guarded buffer as the host passes it: null now and then.
struct HostBuffer {
    GuardedBuffer buf;
    bool null;
    HostBuffer(int width, int height, int pixelBytes, BufferLayout l)
        : buf(width, height, pixelBytes, l.rowBytes, l.misalign), null(l.null) {}
    bool usable() const { return !null && buf.valid(); }
    unsigned char* ptr() { return null ? nullptr : buf.data(); }
};

// Every pixel byte may change (guards and row padding still may not).
inline bool anyPixel(int, int, int) {
    return true;
}

}  // namespace kc_fuzz
