// Planar image records for the host: creation, reallocation, release. Every
// call leaves a trace line in the message log and keeps the live-record count
// (records holding planes the engine allocated) in step.
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "api/keepcut_image.h"
#include "core/aligned_alloc.h"
#include "interchange/image_record_trace.h"
#include "runtime/entry_guard.h"
#include "runtime/environment.h"

namespace {

// Flag bits naming the allocator that owns a record's planes.
constexpr int kPlanesAligned = 1;
constexpr int kPlanesHeap = 2;
constexpr int kMaxPlanes = 4;

bool knownType(int type) {
    return type == IMTYPE_8U || type == IMTYPE_16S;
}

void setEmptyRoi(RKPImage* img, int width, int height) {
    img->roi = RKROI{1, 0, 0, width, height};
}

// Empties the record; releases its planes first when it owns them.
void freeRecord(RKPImage* img) {
    traceRecord("ImageFree", img);
    const bool owned = (img->flags & (kPlanesAligned | kPlanesHeap)) != 0;
    if (owned) {
        for (void*& plane : img->planes) {
            if (!plane) continue;
            if (img->flags & kPlanesAligned)
                ippiFree(plane);
            else
                std::free(plane);
        }
        changeRKPNUM(-1);
    }
    for (void*& plane : img->planes) plane = nullptr;
    img->flags = img->width = img->height = img->numPlane = img->step = 0;
    setEmptyRoi(img, 0, 0);
    // A record that only borrowed its planes stays valid; one whose own
    // planes went is marked so.
    img->self = owned ? nullptr : img;
}

long long planeBytes(const RKPImage* img) {
    return static_cast<long long>(img->numPlane) * img->height * img->step;
}

long long reallocRecord(RKPImage* img, int type, int width, int height, int numPlane) {
    traceReallocRequest(img, type, width, height, numPlane);
    if (img->width == width && img->height == height && img->type == type &&
        img->numPlane == numPlane)
        return planeBytes(img);
    if (numPlane >= 5 || numPlane < 0 || !knownType(type)) return -1;

    freeRecord(img);
    if (width < 1 || height < 1) {
        copyErrMsg("ImageReAlloc ok - no need to allocate\n");
        return 0;
    }
    img->width = width;
    img->height = height;
    img->numPlane = numPlane;
    img->type = type;
    img->flags = kPlanesAligned;
    setEmptyRoi(img, width, height);
    img->self = img;
    for (int i = 0; i < numPlane; ++i) {
        void* plane = nullptr;
        switch (type) {
            case IMTYPE_8U:
                plane = ippiMalloc_8u_C1(width, height, &img->step);
                break;
            case IMTYPE_16S:
                plane = ippiMalloc_16s_C1(width, height, &img->step);
                break;
            default:
                copyErrMsg("ImageReAlloc failed - wrong type\n");
                return -1;
        }
        if (!plane) {
            // Leave no half-built record behind: what was allocated goes, and
            // the record was never counted.
            for (void*& p : img->planes) {
                ippiFree(p);
                p = nullptr;
            }
            img->flags = img->width = img->height = img->numPlane = img->step = 0;
            setEmptyRoi(img, 0, 0);
            throw "rkRKPImageReAlloc allocate error";
        }
        img->planes[i] = plane;
    }
    changeRKPNUM(1);
    traceReallocDone(img);
    return planeBytes(img);
}

}  // namespace

extern "C" KC_EXPORT long long rkRKPImageReAlloc(RKPImage* img, int type, int width, int height,
                                                 int numPlane) {
    constexpr const char* kEntry = "rkRKPImageReAlloc";
    long long bytes = 0;
    const int result = rkGuardEntry(kEntry, [&] {
        if (!img) return rkRefuseWith(kEntry, "img is null");
        try {
            bytes = reallocRecord(img, type, width, height, numPlane);
        } catch (const char* failure) {
            // Keep the allocator's own words in the log; the guard adds the result.
            copyErrMsg(failure);
            copyErrMsg("\n");
            throw;
        }
        if (bytes < 0) rkRefuse(kEntry, "type or plane count out of range");
        return 1;
    });
    return result == 1 ? bytes : result;
}

extern "C" KC_EXPORT RKPImage* rkRKPImageCreate(int type, int width, int height, int numPlane) {
    constexpr const char* kEntry = "rkRKPImageCreate";
    if (numPlane >= 5 || numPlane < 0 || width < 0 || height < 0 || !knownType(type)) {
        rkRefuse(kEntry, "type, size or plane count out of range");
        return nullptr;
    }
    RKPImage* made = nullptr;
    rkGuardEntry(kEntry, [&] {
        auto img = std::make_unique<RKPImage>();
        img->type = type;
        setEmptyRoi(img.get(), 0, 0);
        img->self = img.get();
        if (reallocRecord(img.get(), type, width, height, numPlane) < 0) return -1;
        made = img.release();
        return 1;
    });
    return made;
}

extern "C" KC_EXPORT void rkRKPImageFree(RKPImage* img) {
    constexpr const char* kEntry = "rkRKPImageFree";
    rkGuardEntry(kEntry, [&] {
        if (!img) return rkRefuseWith(kEntry, "img is null");
        freeRecord(img);
        return 1;
    });
}

extern "C" KC_EXPORT void rkRKPImageDestroy(RKPImage* img) {
    if (!img) return;
    rkGuardEntry("rkRKPImageDestroy", [&] {
        const std::unique_ptr<RKPImage> owned(img);
        freeRecord(img);
        return 1;
    });
}
