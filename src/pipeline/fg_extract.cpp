// Tiled foreground extraction: tiles are copied into three work planes, solved
// in place, and copied back into the foreground without the margins their
// neighbours cover better. Tiles are read from the picture's planes, never
// from results already written, so the overlap does not feed one tile's
// estimate into the next as if it were picture.
#include "pipeline/fg_extract.h"

#include <array>
#include <memory>
#include <opencv2/core.hpp>

#include "api/keepcut.h"
#include "core/ippi_copy.h"
#include "matting/cfmatt.h"
#include "pipeline/comp_pixels.h"
#include "pipeline/fg_recover_tiles.h"

namespace {
constexpr int kColours = kFgColours;
constexpr int kPixelBytes = 4;
}  // namespace

RgbPlanes::RgbPlanes(const cv::Mat& picture) {
    cv::split(picture, bgra);
    for (int c = 0; c < kFgColours; ++c) ptr[c] = bgra[kFgChannelOfPlane[c]].data;
    step = static_cast<int>(bgra[0].step);
}

int extractForegroundTiles(unsigned char* const planes[3], int planeStep, const cv::Mat& mask,
                           cv::Mat& foreground, const cv::Rect& box, const cv::Rect& keep,
                           CFMatt& matt) {
    const std::vector<FgTile> tiles =
        fgRecoverTiling(box.width, box.height, fgRecoverTileSide(usableMemInMB()));
    if (tiles.empty()) return 0;
    const cv::Size tileSize = tiles.front().rect.size();
    std::array<std::unique_ptr<GIMG<unsigned char>>, kColours> work;
    for (auto& p : work) p = std::make_unique<GIMG<unsigned char>>(tileSize.width, tileSize.height);
    GIMG<unsigned char>* tilePlanes[kColours] = {work[0].get(), work[1].get(), work[2].get()};
    const int fgStep = static_cast<int>(foreground.step);

    int solved = 0;
    for (const FgTile& t : tiles) {
        const cv::Rect r = t.rect + box.tl();
        unsigned char* m = const_cast<unsigned char*>(mask.ptr<unsigned char>(r.y)) + r.x;
        const int maskStep = static_cast<int>(mask.step);
        if (numCompPixels(m, maskStep, r.width, r.height) == 0) continue;

        const IppiSize roi{r.width, r.height};
        for (int c = 0; c < kColours; ++c)
            ippiCopy_8u_C1R(imgPtr(planes[c], planeStep, r.x, r.y), planeStep, tilePlanes[c]->ptr(),
                            tilePlanes[c]->step, roi);
        GIMG<unsigned char> alpha(r.width, r.height, m, maskStep);
        matt.CompFBExtract(tilePlanes, false, &alpha);
        ++solved;

        const cv::Rect out = (t.keep() + box.tl()) & keep;
        if (out.empty()) continue;
        const cv::Point in = out.tl() - r.tl();
        for (int c = 0; c < kColours; ++c)
            ippiCopy_8u_C1C4R(
                imgPtr(*tilePlanes[c], in.x, in.y), tilePlanes[c]->step,
                foreground.ptr<unsigned char>(out.y) + out.x * kPixelBytes + kFgChannelOfPlane[c],
                fgStep, IppiSize{out.width, out.height});
    }
    return solved;
}
