// A computed brush map as a plain 0..255 matte, so a host can take its mask
// out without knowing the map's byte codes: painted cut (1) is the only byte
// whose value is not its alpha.
#include <cstring>

#include "api/keepcut.h"
#include "runtime/arg_check.h"
#include "runtime/entry_guard.h"

extern "C" KC_EXPORT int rkMapToMatte(const unsigned char* map, int mapRowBytes,
                                      unsigned char* matte, int matteRowBytes, int width,
                                      int height) {
    constexpr const char* kEntry = "rkMapToMatte";
    return rkGuardEntry(kEntry, [&] {
        if (!rkCheckBuffer(kEntry, "map", map, width, height, mapRowBytes, 1) ||
            !rkCheckBuffer(kEntry, "matte", matte, width, height, matteRowBytes, 1))
            return kInvalidArgument;
        for (int y = 0; y < height; ++y) {
            const unsigned char* in = map + static_cast<std::ptrdiff_t>(y) * mapRowBytes;
            unsigned char* out = matte + static_cast<std::ptrdiff_t>(y) * matteRowBytes;
            for (int x = 0; x < width; ++x) out[x] = in[x] == RK_MASK_CUT ? 0 : in[x];
        }
        return 1;
    });
}
