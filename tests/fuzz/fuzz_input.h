// Reads fuzz bytes as the arguments of a call. An exhausted input reads as
// zeros, so every prefix of an input still decodes to a complete call.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kc_fuzz {

class FuzzInput {
  public:
    FuzzInput(const uint8_t* data, size_t size) : data_(data), size_(size) {}

    uint8_t byte() { return pos_ < size_ ? data_[pos_++] : 0; }
    uint16_t word() { return static_cast<uint16_t>(byte() | (byte() << 8)); }
    uint32_t dword() {
        return static_cast<uint32_t>(word()) | (static_cast<uint32_t>(word()) << 16);
    }

    // A value in [lo, hi]; one byte for spans up to 256, two beyond.
    int range(int lo, int hi) {
        const long long span = static_cast<long long>(hi) - lo + 1;
        const uint32_t raw = span <= 256 ? byte() : word();
        return static_cast<int>(lo + static_cast<long long>(raw % span));
    }
    bool flag() { return byte() & 1; }
    // True for about one byte value in `outOf`: how rarely broken arguments
    // are chosen, while the fuzzer can still pick them on purpose. Never true
    // once the input is exhausted.
    bool rarely(int outOf) { return remaining() > 0 && byte() % outOf == 0; }

    size_t remaining() const { return pos_ < size_ ? size_ - pos_ : 0; }

  private:
    const uint8_t* data_;
    size_t size_;
    size_t pos_ = 0;
};

// A picture size, each side in [lo, maxSide] and now and then below lo (a
// negative side, or zero when lo is 1): a size the entries must refuse.
struct Size {
    int w, h;
};
inline Size decodeSize(FuzzInput& in, int maxSide, int brokenOdds, int lo = 0) {
    Size s{in.range(lo, maxSide), in.range(lo, maxSide)};
    if (in.rarely(brokenOdds)) s.w = in.range(-3, lo - 1);
    if (in.rarely(brokenOdds)) s.h = in.range(-3, lo - 1);
    return s;
}

// Cheap deterministic noise for picture content, seeded from the input so
// that a few bytes describe a whole picture.
class Noise {
  public:
    explicit Noise(uint32_t seed) : s_(seed | 1u) {}
    uint32_t next() {
        s_ ^= s_ << 13;
        s_ ^= s_ >> 17;
        s_ ^= s_ << 5;
        return s_;
    }

  private:
    uint32_t s_;
};

}  // namespace kc_fuzz
