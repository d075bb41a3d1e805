// Fuzz target for the planar image records: a sequence of creations,
// reallocations, releases, rectangle copies (in place too) and destructions
// over a few slots, with arguments in and out of range and, now and then, a
// host-built record over a guarded buffer with a short row step or a null
// plane. Checked: documented results, a log line for each refusal, rectangle
// contents against a model of every record's samples, nothing written outside
// a host's buffer, and the live-record count back where it started once
// every slot is destroyed.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "api/keepcut.h"
#include "fuzz_checks.h"
#include "fuzz_input.h"
#include "guarded_buffer.h"
#include "runtime/environment.h"

namespace {

using namespace kc_fuzz;

constexpr int kSlots = 3;
constexpr int kMaxOps = 24;
constexpr int kMaxSide = 40;
constexpr int kBrokenOdds = 12;

int sampleBytes(int type) {
    return type == IMTYPE_16S ? 2 : 1;
}

// The samples a record is known to hold, plane by plane, row by row; empty
// when they are not known (fresh planes hold whatever the allocator gave).
struct Model {
    std::vector<std::vector<unsigned char>> planes;
};

void fillRecord(RKPImage& img, Model& model, Noise& noise) {
    model.planes.assign(img.numPlane, {});
    const int rowBytes = img.width * sampleBytes(img.type);
    for (int p = 0; p < img.numPlane; ++p) {
        auto& plane = model.planes[p];
        plane.resize(static_cast<size_t>(rowBytes) * img.height);
        for (size_t i = 0; i < plane.size(); ++i)
            plane[i] = static_cast<unsigned char>(noise.next());
        for (int y = 0; y < img.height; ++y)
            std::memcpy(
                static_cast<unsigned char*>(img.planes[p]) + static_cast<size_t>(y) * img.step,
                plane.data() + static_cast<size_t>(y) * rowBytes, rowBytes);
    }
}

void requireMatches(const RKPImage& img, const Model& model) {
    const int rowBytes = img.width * sampleBytes(img.type);
    require(static_cast<int>(model.planes.size()) == img.numPlane, "plane count differs");
    for (int p = 0; p < img.numPlane; ++p)
        for (int y = 0; y < img.height; ++y)
            require(std::memcmp(static_cast<const unsigned char*>(img.planes[p]) +
                                    static_cast<size_t>(y) * img.step,
                                model.planes[p].data() + static_cast<size_t>(y) * rowBytes,
                                rowBytes) == 0,
                    "rkRKPImageROIcopy copied the wrong samples");
}

// The samples of roi, plane by plane, from planes whose rows row(p, y) gives.
template <typename Row>
Model crop(int planes, int type, const RKROI& roi, Row row) {
    Model m;
    m.planes.assign(planes, {});
    const int bytes = sampleBytes(type);
    for (int p = 0; p < planes; ++p)
        for (int y = roi.y; y < roi.y + roi.height; ++y) {
            const unsigned char* src = row(p, y) + roi.x * bytes;
            m.planes[p].insert(m.planes[p].end(), src, src + roi.width * bytes);
        }
    return m;
}

// A host-built record of borrowed planes over a guarded buffer, sometimes
// with a short row step or a null plane (which the copy must refuse).
void copyFromHostRecord(FuzzInput& in, Noise& noise, RKPImage* out, Model& outModel) {
    const int type = in.flag() ? IMTYPE_16S : IMTYPE_8U, planes = in.flag() ? 3 : 1;
    const int w = in.range(1, kMaxSide), h = in.range(1, kMaxSide);
    long long step = static_cast<long long>(w) * sampleBytes(type) + in.range(0, 3);
    if (in.rarely(kBrokenOdds / 3)) step -= in.range(1, 4);
    const bool shortRows = step < static_cast<long long>(w) * sampleBytes(type);
    std::vector<GuardedBuffer> bufs;
    RKPImage host{};
    host.type = type, host.numPlane = planes, host.width = w, host.height = h;
    host.step = static_cast<int>(step), host.self = &host;
    for (int p = 0; p < planes; ++p) bufs.emplace_back(w, h, sampleBytes(type), step, p);
    for (int p = 0; p < planes; ++p) {
        bufs[p].fill([&](int, int, int) { return static_cast<unsigned char>(noise.next()); });
        bufs[p].snapshot();
        host.planes[p] = bufs[p].data();
    }
    const bool nullPlane = in.rarely(kBrokenOdds / 3);
    if (nullPlane) host.planes[planes - 1] = nullptr;
    RKROI roi{1, in.range(0, w), in.range(0, h), 0, 0};
    roi.width = in.range(1, w - roi.x > 0 ? w - roi.x : 1);
    roi.height = in.range(1, h - roi.y > 0 ? h - roi.y : 1);
    const bool inside = roi.x + roi.width <= w && roi.y + roi.height <= h;
    clearErrMsg();
    const int result = rkRKPImageROIcopy(&host, &roi, out);
    for (const auto& b : bufs) requireNone(b.unexpectedChange("host plane"));
    if (!inside || shortRows || nullPlane) {
        require(result == -2, "rkRKPImageROIcopy accepted a bad host record");
        requireLogged("rkRKPImageROIcopy");
        return;
    }
    require(result == 1, "rkRKPImageROIcopy failed on a sound host record");
    outModel = crop(planes, type, roi, [&](int p, int y) { return bufs[p].data() + y * step; });
    requireMatches(*out, outModel);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput in(data, size);
    Noise noise(in.dword());
    const int base = getRKPNUM();
    RKPImage* slot[kSlots] = {};
    Model model[kSlots];

    for (int op = in.range(1, kMaxOps); op > 0; --op) {
        const int s = in.range(0, kSlots - 1), t = in.range(0, kSlots - 1);
        int type = in.flag() ? IMTYPE_16S : IMTYPE_8U;
        if (in.rarely(kBrokenOdds)) type = in.range(0, 70);
        int w = in.range(0, kMaxSide), h = in.range(0, kMaxSide), planes = in.range(0, 4);
        if (in.rarely(kBrokenOdds)) w = -in.range(1, 3);
        if (in.rarely(kBrokenOdds)) planes = in.range(-2, 6);
        const bool sound = (type == IMTYPE_8U || type == IMTYPE_16S) && planes >= 0 && planes < 5;
        switch (in.range(0, 5)) {
            case 0: {  // create into an empty slot
                if (slot[s]) break;
                clearErrMsg();
                slot[s] = rkRKPImageCreate(type, w, h, planes);
                require((slot[s] != nullptr) == (sound && w >= 0),
                        "rkRKPImageCreate: wrong refusal");
                if (!slot[s]) requireLogged("rkRKPImageCreate");
                if (slot[s] && slot[s]->planes[0]) fillRecord(*slot[s], model[s], noise);
                break;
            }
            case 1: {  // reallocate
                if (!slot[s]) break;
                RKPImage& img = *slot[s];
                const bool same =
                    img.width == w && img.height == h && img.type == type && img.numPlane == planes;
                clearErrMsg();
                const long long r = rkRKPImageReAlloc(&img, type, w, h, planes);
                if (same) {
                    require(r == static_cast<long long>(planes) * h * img.step,
                            "rkRKPImageReAlloc changed an unchanged shape");
                } else if (!sound) {
                    require(r == -1, "rkRKPImageReAlloc accepted a bad type or plane count");
                    requireLogged("rkRKPImageReAlloc");
                } else if (model[s].planes.clear(); w < 1 || h < 1) {
                    require(r == 0 && img.planes[0] == nullptr, "rkRKPImageReAlloc kept planes");
                } else {
                    require(r == static_cast<long long>(planes) * h * img.step && img.width == w,
                            "rkRKPImageReAlloc gave the wrong shape");
                    if (planes > 0) fillRecord(img, model[s], noise);
                }
                break;
            }
            case 2:  // release the planes
                if (slot[s]) rkRKPImageFree(slot[s]);
                model[s].planes.clear();
                break;
            case 3: {  // rectangle copy, in place when s == t
                if (!slot[s] || !slot[t]) break;
                RKPImage& src = *slot[s];
                RKROI roi{1, in.range(-1, kMaxSide), in.range(0, kMaxSide), in.range(0, kMaxSide),
                          in.range(-1, kMaxSide)};
                const bool known = !model[s].planes.empty() && src.planes[0];
                const bool inside = roi.x >= 0 && roi.width >= 0 && roi.height >= 0 &&
                                    roi.x + roi.width <= src.width &&
                                    roi.y + roi.height <= src.height;
                const bool copyable = src.numPlane == 1 || src.numPlane == 3;
                Model expected;
                if (known && inside && copyable)
                    expected = crop(src.numPlane, src.type, roi, [&](int p, int y) {
                        return model[s].planes[p].data() +
                               static_cast<size_t>(y) * src.width * sampleBytes(src.type);
                    });
                clearErrMsg();
                const int r = rkRKPImageROIcopy(&src, &roi, slot[t]);
                require(r == 1 || r == -1 || r == -2, "rkRKPImageROIcopy: undocumented result");
                if (r != 1) requireLogged("rkRKPImageROIcopy");
                if (!copyable) require(r == -1, "rkRKPImageROIcopy copied 0, 2 or 4 planes");
                if (copyable && !inside) require(r == -2, "rkRKPImageROIcopy read outside");
                if (r == 1 && known) {
                    requireMatches(*slot[t], expected);
                    model[t] = expected;
                } else if (r != -2) {
                    model[t].planes.clear();  // out may have been reallocated
                }
                break;
            }
            case 4:  // copy out of a host-built record
                if (slot[t]) copyFromHostRecord(in, noise, slot[t], model[t]);
                break;
            default:
                rkRKPImageDestroy(slot[s]);
                slot[s] = nullptr;
                model[s].planes.clear();
                break;
        }
    }
    for (RKPImage*& img : slot) rkRKPImageDestroy(img);
    require(getRKPNUM() == base, "the live-record count did not come back");
    return 0;
}
