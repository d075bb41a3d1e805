// Planar image records: the live-record count through every way a record is
// made and released (a failed allocation included), the trace lines, and the
// rectangle copy with each of its refusals.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "api/keepcut.h"
#include "core/aligned_alloc.h"
#include "runtime/environment.h"

namespace {

struct RecordDeleter {
    void operator()(RKPImage* img) const { rkRKPImageDestroy(img); }
};
using Record = std::unique_ptr<RKPImage, RecordDeleter>;

Record make(int type, int w, int h, int planes) {
    return Record(rkRKPImageCreate(type, w, h, planes));
}

int bytesPerSample(const RKPImage& img) {
    return img.type == IMTYPE_16S ? 2 : 1;
}
unsigned char* at(const RKPImage& img, int plane, int x, int y) {
    return static_cast<unsigned char*>(img.planes[plane]) + y * img.step + x * bytesPerSample(img);
}
// Sample bytes that differ by plane, row and column.
void fillPattern(RKPImage& img) {
    for (int p = 0; p < img.numPlane; ++p)
        for (int y = 0; y < img.height; ++y)
            for (int x = 0; x < img.width * bytesPerSample(img); ++x)
                static_cast<unsigned char*>(img.planes[p])[y * img.step + x] =
                    static_cast<unsigned char>(p * 71 + y * 13 + x);
}

bool logHas(const char* text) {
    return std::string(getErrMsg()).find(text) != std::string::npos;
}

TEST(ImageRecord, CountFollowsEveryAllocationAndRelease) {
    const int base = getRKPNUM();
    {
        Record empty = make(IMTYPE_8U, 0, 0, 3);
        ASSERT_TRUE(empty);
        EXPECT_EQ(empty->planes[0], nullptr);
        EXPECT_EQ(getRKPNUM(), base);
    }
    Record img = make(IMTYPE_8U, 10, 7, 3);
    ASSERT_TRUE(img);
    EXPECT_EQ(getRKPNUM(), base + 1);
    EXPECT_EQ(img->self, img.get());
    EXPECT_EQ(img->flags, 1);
    EXPECT_GE(img->step, 10);
    EXPECT_EQ(img->planes[3], nullptr);
    const RKROI whole{1, 0, 0, 10, 7};
    EXPECT_EQ(std::memcmp(&img->roi, &whole, sizeof whole), 0);

    // The same shape again touches nothing and logs only the request.
    clearErrMsg();
    void* plane0 = img->planes[0];
    EXPECT_EQ(rkRKPImageReAlloc(img.get(), IMTYPE_8U, 10, 7, 3), 3LL * 7 * img->step);
    EXPECT_EQ(img->planes[0], plane0);
    EXPECT_TRUE(logHas("ImageReAlloc-"));
    EXPECT_FALSE(logHas("ImageReAlloc done"));

    const long long bytes = rkRKPImageReAlloc(img.get(), IMTYPE_16S, 5, 4, 1);
    EXPECT_EQ(bytes, 4LL * img->step);
    EXPECT_GE(img->step, 10);
    EXPECT_EQ(getRKPNUM(), base + 1);
    EXPECT_EQ(rkRKPImageReAlloc(img.get(), IMTYPE_16S, 0, 4, 1), 0);
    EXPECT_TRUE(logHas("ImageReAlloc ok - no need to allocate\n"));
    EXPECT_EQ(getRKPNUM(), base);

    const long long again = rkRKPImageReAlloc(img.get(), IMTYPE_8U, 3, 3, 2);
    EXPECT_EQ(again, 2LL * 3 * img->step);
    rkRKPImageFree(img.get());
    EXPECT_EQ(getRKPNUM(), base);
    EXPECT_EQ(img->self, nullptr);
    EXPECT_EQ(img->type, IMTYPE_8U);
    EXPECT_EQ(img->roi.width, 0);
    img.reset();
    EXPECT_EQ(getRKPNUM(), base);
}

TEST(ImageRecord, RefusedArgumentsAndFailedAllocations) {
    const int base = getRKPNUM();
    struct Shape {
        int type, w, h, planes;
    };
    for (const Shape s :
         {Shape{67, 2, 2, 1}, Shape{IMTYPE_8U, -1, 2, 1}, Shape{IMTYPE_8U, 2, -1, 1},
          Shape{IMTYPE_16S, 2, 2, 5}, Shape{IMTYPE_16S, 2, 2, -1}})
        EXPECT_FALSE(make(s.type, s.w, s.h, s.planes)) << s.type << " " << s.planes;

    Record img = make(IMTYPE_8U, 4, 4, 1);
    EXPECT_EQ(rkRKPImageReAlloc(img.get(), IMTYPE_8U, 4, 4, 5), -1);
    EXPECT_EQ(rkRKPImageReAlloc(img.get(), 3, 4, 4, 1), -1);
    EXPECT_NE(img->planes[0], nullptr);
    EXPECT_EQ(rkRKPImageReAlloc(nullptr, IMTYPE_8U, 4, 4, 1), -2);

    // A plane that cannot be allocated: the failure is a result with its
    // text, the record is left empty and the count unchanged.
    clearErrMsg();
    EXPECT_EQ(getRKPNUM(), base + 1);
    kc::testing::failNextAlignedAllocs(1);
    EXPECT_EQ(rkRKPImageReAlloc(img.get(), IMTYPE_16S, 6, 6, 3), -6);
    EXPECT_TRUE(logHas("rkRKPImageReAlloc allocate error"));
    EXPECT_EQ(img->planes[0], nullptr);
    EXPECT_EQ(img->numPlane, 0);
    EXPECT_EQ(getRKPNUM(), base);
    kc::testing::failNextAlignedAllocs(1);
    EXPECT_FALSE(make(IMTYPE_8U, 3, 3, 1));
    EXPECT_EQ(getRKPNUM(), base);
}

TEST(ImageRecord, BorrowedPlanesAreForgottenNotReleased) {
    const int base = getRKPNUM();
    unsigned char pixels[4 * 3] = {};
    RKPImage host{};
    host.type = IMTYPE_8U;
    host.numPlane = 1;
    host.planes[0] = pixels;
    host.step = 4;
    host.width = 4;
    host.height = 3;
    host.self = &host;
    rkRKPImageFree(&host);
    EXPECT_EQ(host.planes[0], nullptr);
    EXPECT_EQ(host.self, &host);
    EXPECT_EQ(getRKPNUM(), base);
}

TEST(ImageRecord, RectangleCopy) {
    for (int type : {IMTYPE_8U, IMTYPE_16S})
        for (int planes : {1, 3})
            for (bool inPlace : {false, true}) {
                Record in = make(type, 9, 6, planes);
                fillPattern(*in);
                Record keep = make(type, 9, 6, planes);
                RKROI whole{1, 0, 0, 9, 6};
                ASSERT_EQ(rkRKPImageROIcopy(in.get(), &whole, keep.get()), 1);
                Record out = inPlace ? std::move(in) : make(IMTYPE_8U, 1, 1, 1);
                RKROI roi{1, 2, 1, 5, 4};
                ASSERT_EQ(rkRKPImageROIcopy(inPlace ? out.get() : in.get(), &roi, out.get()), 1);
                ASSERT_EQ(out->width, 5);
                ASSERT_EQ(out->type, type);
                ASSERT_EQ(out->numPlane, planes);
                for (int p = 0; p < planes; ++p)
                    for (int y = 0; y < 4; ++y)
                        ASSERT_EQ(std::memcmp(at(*out, p, 0, y), at(*keep, p, 2, y + 1),
                                              5 * bytesPerSample(*out)),
                                  0)
                            << type << " planes " << planes << " in place " << inPlace;
            }
}

TEST(ImageRecord, RectangleCopyRefusals) {
    Record in = make(IMTYPE_8U, 8, 8, 3);
    Record out = make(IMTYPE_8U, 2, 2, 1);
    RKROI good{1, 1, 1, 4, 4};
    struct Case {
        const char* what;
        int type, planes;
        RKROI roi;
        bool nullOut;
        int result;
        const char* text;
        int outWidthAfter = 2;  // out keeps its 2 x 2 planes
    };
    const Case cases[] = {
        {"type", 67, 3, good, false, -1,
         "rkRKPImageROIcopy - in_p->type != IMTYPE_8U || in_p->type != IMTYPE_16S"},
        {"planes", IMTYPE_8U, 2, good, false, -1,
         "rkRKPImageROIcopy - in_p->numPlane != 1 && in_p->numPlane != 3"},
        {"no out", IMTYPE_8U, 3, good, true, -1, "rkRKPImageROIcopy - !out_p"},
        {"outside", IMTYPE_8U, 3, {1, 5, 1, 4, 4}, false, -2, "reaches outside"},
        {"negative", IMTYPE_8U, 3, {1, -1, 0, 2, 2}, false, -2, "negative"},
        // Last: an empty rectangle empties out before the refusal.
        {"empty",
         IMTYPE_8U,
         3,
         {1, 1, 1, 0, 4},
         false,
         -1,
         "rkRKPImageROIcopy - 0 >= rkRKPImageReAlloc(out_p, in_p->type, inRoi_p->width, "
         "inRoi_p->height, in_p->numPlane)",
         0},
    };
    for (const Case& c : cases) {
        clearErrMsg();
        in->type = c.type;
        in->numPlane = c.planes;
        RKROI roi = c.roi;
        EXPECT_EQ(rkRKPImageROIcopy(in.get(), &roi, c.nullOut ? nullptr : out.get()), c.result)
            << c.what;
        EXPECT_TRUE(logHas(c.text)) << c.what;
        EXPECT_EQ(out->width, c.outWidthAfter) << c.what;
    }
    in->type = IMTYPE_8U;
    in->numPlane = 3;
    kc::testing::failNextAlignedAllocs(1);
    EXPECT_EQ(rkRKPImageROIcopy(in.get(), &good, out.get()), -1);
    EXPECT_TRUE(logHas("rkRKPImageROIcopy - *buf_p = ippsMalloc_8u( bufsize )"));
    EXPECT_EQ(rkRKPImageROIcopy(nullptr, &good, out.get()), -2);
    EXPECT_EQ(rkRKPImageROIcopy(in.get(), nullptr, out.get()), -2);
}

}  // namespace
