// Copy of a rectangle of a planar image record into another record, which is
// reallocated to the rectangle. The rectangle is staged in a buffer of its
// own first, so that a record can be cropped into itself.
#include <cstring>
#include <memory>

#include "api/keepcut_image.h"
#include "core/aligned_alloc.h"
#include "runtime/entry_guard.h"

namespace {

constexpr const char* kEntry = "rkRKPImageROIcopy";
// Result of the copy's own refusals, as the reallocation reports them.
constexpr int kRecordRefused = -1;

int refuseCopy(const char* text) {
    copyErrMsg(text);
    copyErrMsg("\n");
    return kRecordRefused;
}

int bytesPerSample(int type) {
    return type == IMTYPE_16S ? 2 : 1;
}

// Where the record or rectangle would make the copy read outside in's planes.
const char* outOfBounds(const RKPImage* in, const RKROI* roi) {
    if (roi->x < 0 || roi->y < 0 || roi->width < 0 || roi->height < 0)
        return "the rectangle has a negative origin or size";
    if (static_cast<long long>(roi->x) + roi->width > in->width ||
        static_cast<long long>(roi->y) + roi->height > in->height)
        return "the rectangle reaches outside the image";
    if (roi->width == 0 || roi->height == 0) return nullptr;
    for (int i = 0; i < in->numPlane; ++i)
        if (!in->planes[i]) return "a plane of the image is null";
    if (in->step < static_cast<long long>(in->width) * bytesPerSample(in->type))
        return "the image's rows are shorter than its width";
    return nullptr;
}

struct StagingFree {
    void operator()(Ipp8u* p) const { ippsFree(p); }
};

int copyRoi(RKPImage* in, const RKROI* roi, RKPImage* out) {
    if (in->type != IMTYPE_8U && in->type != IMTYPE_16S)
        return refuseCopy(
            "rkRKPImageROIcopy - in_p->type != IMTYPE_8U || in_p->type != IMTYPE_16S");
    if (in->numPlane != 1 && in->numPlane != 3)
        return refuseCopy("rkRKPImageROIcopy - in_p->numPlane != 1 && in_p->numPlane != 3");
    if (!out) return refuseCopy("rkRKPImageROIcopy - !out_p");
    if (const char* why = outOfBounds(in, roi)) return rkRefuseWith(kEntry, why);

    const int type = in->type, numPlane = in->numPlane;
    const long long rowBytes = static_cast<long long>(roi->width) * bytesPerSample(type);
    const long long planeBytes = rowBytes * roi->height;
    const long long bufsize = planeBytes * numPlane;
    std::unique_ptr<Ipp8u, StagingFree> staging;
    if (bufsize > 0) {
        staging.reset(bufsize <= 0x7fffffffLL ? ippsMalloc_8u(static_cast<int>(bufsize)) : nullptr);
        if (!staging) return refuseCopy("rkRKPImageROIcopy - *buf_p = ippsMalloc_8u( bufsize )");
        for (int p = 0; p < numPlane; ++p)
            for (int y = 0; y < roi->height; ++y)
                std::memcpy(staging.get() + p * planeBytes + y * rowBytes,
                            static_cast<const Ipp8u*>(in->planes[p]) +
                                static_cast<long long>(roi->y + y) * in->step +
                                roi->x * static_cast<long long>(bytesPerSample(type)),
                            static_cast<size_t>(rowBytes));
    }
    if (0 >= rkRKPImageReAlloc(out, type, roi->width, roi->height, numPlane))
        return refuseCopy(
            "rkRKPImageROIcopy - 0 >= rkRKPImageReAlloc(out_p, in_p->type, inRoi_p->width, "
            "inRoi_p->height, in_p->numPlane)");
    for (int p = 0; p < numPlane; ++p)
        for (int y = 0; y < roi->height; ++y)
            std::memcpy(static_cast<Ipp8u*>(out->planes[p]) + static_cast<long long>(y) * out->step,
                        staging.get() + p * planeBytes + y * rowBytes,
                        static_cast<size_t>(rowBytes));
    return 1;
}

}  // namespace

extern "C" KC_EXPORT int rkRKPImageROIcopy(RKPImage* in, RKROI* roi, RKPImage* out) {
    return rkGuardEntry(kEntry, [&] {
        if (!in) return rkRefuseWith(kEntry, "in is null");
        if (!roi) return rkRefuseWith(kEntry, "roi is null");
        return copyRoi(in, roi, out);
    });
}
