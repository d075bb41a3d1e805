// Host buffers: type-code addressing, float round trips over every level, the
// 16-bit cap, the 8/15-bit pair, short planes, luma and the bordered forms.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "interchange/float_to_host.h"
#include "interchange/host_luma.h"
#include "interchange/host_short_planes.h"
#include "interchange/host_to_float.h"
#include "interchange/image_type_codes.h"
#include "interchange/u15.h"

namespace {

// Host rows carry three spare elements, so that steps exceed a row.
constexpr int kPad = 3;

// A host buffer of w x h pixels of n elements of T.
template <typename T>
struct Host {
    int w, n, step;
    std::vector<T> data;
    Host(int w_, int h, int n_, T fill = 0)
        : w(w_), n(n_), step(int((w_ * n_ + kPad) * sizeof(T))), data((w_ * n_ + kPad) * h, fill) {}
    T& at(int x, int y, int c) { return data[y * (w * n + kPad) + x * n + c]; }
};

struct Planes {
    std::unique_ptr<GIMG<float>> own[3];
    GIMG<float>* p[3];
    Planes(int w, int h) {
        for (int c = 0; c < 3; ++c)
            own[c] = std::make_unique<GIMG<float>>(w, h), p[c] = own[c].get();
    }
};

TEST(HostBuffers, AddressArithmeticPerCode) {
    static char base[128];
    // {code, offset of (2, 1) in rows of 100 bytes, or -1 for no address}
    const int cases[][2] = {{1, 106}, {3, 112}, {5, 108}, {6, 116}, {7, 102}, {8, 104},
                            {2, -1},  {16, -1}, {17, -1}, {33, -1}, {0, -1}};
    for (const auto& [code, offset] : cases)
        EXPECT_EQ(addImgPtr(code, base, 100, 2, 1), offset < 0 ? nullptr : base + offset) << code;
    for (int code = -2; code < 64; ++code) {
        const bool wide =
            code == 3 || code == 6 || code == 8 || code == 32 || code == 33 || code == 34;
        EXPECT_EQ(getNumBytePerCh(code), wide ? 2 : 1) << code;
    }
    EXPECT_EQ(getCvTypeFromImageType(17), CV_8UC3);
    EXPECT_EQ(getCvTypeFromImageType(33), CV_16UC3);
    EXPECT_EQ(getCvTypeFromImageType(3), 0);
    EXPECT_EQ(getNumChns(5), 3);
    EXPECT_EQ(getNumChns(99), 0);
}

// Host -> float -> host over every level of a code, through planes, through an
// IMG3 and (grey codes) one plane; the fourth channel of 5 and 6 stays as it was.
template <typename T>
void roundTrip(int code, int n, int levels) {
    const int w = levels;
    const float unit = sizeof(T) == 1 ? 256.0f : 32768.0f;
    Host<T> in(w, 2, n), out(w, 2, n, T(77));
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < w; ++x)
            for (int c = 0; c < n; ++c) in.at(x, y, c) = T(c % 2 ? levels - 1 - x : x);
    for (int form = 0; form < 3; ++form) {
        SCOPED_TRACE(testing::Message() << "code " << code << " form " << form);
        if (n == 1 && form < 2) continue;
        if (n > 1 && form == 2) continue;
        Planes planes(w, 2);
        IMG3<float> img(w, 2);
        GIMG<float> grey(w, 2);
        if (form == 0) {
            ASSERT_EQ(convertToIMG332f(code, in.data.data(), in.step, 0, 0, planes.p), 1);
            EXPECT_FLOAT_EQ(*imgPtr(*planes.p[0], 0, 0), 0.49f / unit);
            EXPECT_FLOAT_EQ(*imgPtr(*planes.p[0], w - 1, 0), (w - 1 + 0.49f) / unit);
            ASSERT_EQ(convertFromIMG332f(planes.p, code, out.data.data(), out.step, 0, 0), 1);
            EXPECT_FLOAT_EQ(*imgPtr(*planes.p[0], 3, 0), 3.49f);  // the source was multiplied
        } else if (form == 1) {
            ASSERT_EQ(convertToIMG332f(code, in.data.data(), in.step, 0, 0, img), 1);
            ASSERT_EQ(convertFromIMG332f(img, code, out.data.data(), out.step, 0, 0), 1);
        } else {
            ASSERT_EQ(convertToIMG332f(code, in.data.data(), in.step, 0, 0, grey), 1);
            ASSERT_EQ(convertFromIMG332f(grey, code, out.data.data(), out.step, 0, 0), 1);
        }
        for (int y = 0; y < 2; ++y)
            for (int x = 0; x < w; ++x)
                for (int c = 0; c < n; ++c)
                    ASSERT_EQ(out.at(x, y, c), c == 3 ? T(77) : in.at(x, y, c)) << x << "," << c;
    }
}

TEST(HostBuffers, EveryLevelComesBack) {
    roundTrip<unsigned char>(1, 3, 256);
    roundTrip<unsigned char>(5, 4, 256);
    roundTrip<unsigned char>(7, 1, 256);
    roundTrip<unsigned short>(3, 3, 32769);
    roundTrip<unsigned short>(6, 4, 32769);
    roundTrip<unsigned short>(8, 1, 32769);
}

TEST(HostBuffers, FloatToHostRoundsSaturatesAndCaps) {
    // {float, 8-bit result, 16-bit result}
    const float nan = std::nanf("");
    const struct {
        float f;
        int u8, u16;
    } cases[] = {{1.0f, 255, 32768},   {1.5f, 255, 32768}, {-0.25f, 0, 0},
                 {nan, 0, 0},          {0.5f, 128, 16384}, {2.5f / 256, 2, 320},
                 {3.5f / 256, 4, 448}, {0.99f, 253, 32440}};
    for (const auto& [f, u8, u16] : cases) {
        GIMG<float> g(1, 1);
        unsigned char b = 9;
        unsigned short s = 9;
        *g.ptr() = f;
        convertFromIMG332f(g, 7, &b, 1, 0, 0);
        *g.ptr() = f;
        convertFromIMG332f(g, 8, &s, 2, 0, 0);
        EXPECT_EQ(b, u8) << f;
        EXPECT_EQ(s, u16) << f;
    }
    GIMG<float> g(1, 1);
    unsigned char b = 9;
    EXPECT_EQ(convertFromIMG332f(g, 1, &b, 1, 0, 0), 0);  // colour code on a grey plane
    EXPECT_EQ(b, 9);
}

TEST(HostBuffers, U15PairIsExact) {
    std::vector<unsigned char> v(256), back(256, 7);
    std::vector<unsigned short> wide(256);
    for (int i = 0; i < 256; ++i) v[i] = static_cast<unsigned char>(i);
    EXPECT_EQ(psC1U8toU15(v.data(), 16, 16, 16, wide.data(), 32), 1);
    EXPECT_EQ(wide[0], 128);
    EXPECT_EQ(wide[255], 32768);
    EXPECT_EQ(psC1U15toU8(wide.data(), 32, 16, 16, back.data(), 16), 1);
    EXPECT_EQ(back, v);
    const unsigned short ends[] = {0, 32768, 65535, 191, 192};  // 192 = 1.5 levels: half to even
    unsigned char got[5];
    psC1U15toU8(ends, 10, 5, 1, got, 5);
    EXPECT_EQ(std::vector<int>(got, got + 5), (std::vector<int>{0, 255, 255, 0, 0}));
}

TEST(HostBuffers, ShortPlanesAreCentredAndComeBack) {
    for (int is16 : {0, 1}) {
        Host<unsigned short> in16(10, 10, 3), out16(10, 10, 3);
        Host<unsigned char> in8(10, 10, 3), out8(10, 10, 3);
        for (int y = 0; y < 10; ++y)
            for (int x = 0; x < 10; ++x)
                for (int c = 0; c < 3; ++c) {
                    in8.at(x, y, c) = static_cast<unsigned char>(20 * c + x + 10 * y);
                    in16.at(x, y, c) =
                        static_cast<unsigned short>(x == 9 ? 32768 : 300 * in8.at(x, y, c));
                }
        std::unique_ptr<GIMG<short>> own[3];
        GIMG<short>* p[3];
        for (int c = 0; c < 3; ++c) {
            own[c] = std::make_unique<GIMG<short>>(14, 12), p[c] = own[c].get();
            for (int y = 0; y < 12; ++y) std::fill_n(imgPtr(*p[c], 0, y), 14, short(-5));
        }
        const void* in = is16 ? (void*)in16.data.data() : (void*)in8.data.data();
        rkRGBPSToP3(is16, in, is16 ? in16.step : in8.step, 10, 10, p);
        for (int y = 0; y < 12; ++y)
            for (int x = 0; x < 14; ++x) {
                const bool inside = x >= 2 && x <= 11 && y >= 1 && y <= 10;
                const int want = !inside ? -5
                                 : is16  ? std::min(32767, int(in16.at(x - 2, y - 1, 1)))
                                         : in8.at(x - 2, y - 1, 1) * 128;
                ASSERT_EQ(*imgPtr(*p[1], x, y), want) << x << "," << y;
            }
        *imgPtr(*p[0], 2, 1) = -40;  // negative plane values come back as 0
        if (is16) {
            rkRGBP3ToPS(p, 1, out16.data.data(), out16.step, 10, 10);
            EXPECT_EQ(out16.at(9, 3, 2), 32767);
            EXPECT_EQ(out16.at(4, 3, 2), in16.at(4, 3, 2));
            EXPECT_EQ(out16.at(0, 0, 0), 0);
        } else {
            rkRGBP3ToPS(p, 0, out8.data.data(), out8.step, 10, 10);
            EXPECT_EQ(out8.data, in8.data);
        }
    }
}

TEST(HostBuffers, OneChannelPairUses127) {
    Host<unsigned char> in8(3, 2, 3);
    in8.at(1, 1, 2) = 200;
    GIMG<short> plane(4, 4);
    rkPSGet1Ch(0, in8.data.data(), in8.step, 3, 2, plane, 7);  // channel clamped to 2
    EXPECT_EQ(*imgPtr(plane, 1, 1), 200 * 127);
    *imgPtr(plane, 0, 0) = -3;
    *imgPtr(plane, 2, 0) = 32767;
    rkPSSet1Ch(0, in8.data.data(), in8.step, 3, 2, plane, 2);
    EXPECT_EQ(in8.at(1, 1, 2), 200);
    EXPECT_EQ(in8.at(0, 0, 2), 0);
    EXPECT_EQ(in8.at(2, 0, 2), 255);
    Host<unsigned short> in16(1, 1, 3);
    in16.at(0, 0, 0) = 40000;
    rkPSGet1Ch(1, in16.data.data(), in16.step, 1, 1, plane, -1);
    EXPECT_EQ(*imgPtr(plane, 0, 0), 32767);
    short flip[2] = {-32768, 100};
    IppiSize size{2, 1};
    rkIppi16sTo16u(flip, 4, size);
    EXPECT_EQ(flip[0], 0);
    EXPECT_EQ(static_cast<unsigned short>(flip[1]), 32868);
    rkIppi16uTo16s(flip, 4, size);
    EXPECT_EQ(flip[0], -32768);
    EXPECT_EQ(flip[1], 100);
}

TEST(HostBuffers, LumaWeights) {
    // {R, G, B, 8-bit from bytes, 16S from bytes}; then 16-bit input at 128x.
    // Grey pixels sum the three weights to 1, which truncation may leave a hair
    // short of the level: those are allowed one level.
    const int bytes[][5] = {{255, 0, 0, 76, 9759},
                            {0, 255, 0, 149, 19159},
                            {0, 0, 255, 29, 3720},
                            {100, 150, 201, 140, 18030},
                            {255, 255, 255, 255, 32640}};
    for (const auto& [r, g, b, y8, y16] : bytes) {
        const unsigned char px[3] = {(unsigned char)r, (unsigned char)g, (unsigned char)b};
        const unsigned short wide[3] = {(unsigned short)(r * 128), (unsigned short)(g * 128),
                                        (unsigned short)(b * 128)};
        cv::Mat m;
        for (int code : {1, 17}) {  // both read bytes
            PSRGB2Y8U(code, px, 3, 1, 1, m);
            EXPECT_NEAR(m.at<unsigned char>(0, 0), y8, r == g ? 1 : 0) << r << g << b;
        }
        PSRGB2Y16S(1, px, 3, 1, 1, m);
        EXPECT_NEAR(m.at<short>(0, 0), y16, r == g ? 1 : 0);
        PSRGB2Y8U(3, wide, 6, 1, 1, m);
        EXPECT_NEAR(m.at<unsigned char>(0, 0), y8, 1);
        const void* planes[3] = {&wide[0], &wide[1], &wide[2]};
        planarPSRGB2Y8U(3, planes, 2, 1, 1, 0, 0, m);
        EXPECT_NEAR(m.at<unsigned char>(0, 0), y8, 1);
    }
    const unsigned short top[3] = {32768, 32768, 32768}, red[3] = {1234, 0, 0};
    cv::Mat m;
    PSRGB2Y8U(3, top, 6, 1, 1, m);
    EXPECT_EQ(m.at<unsigned char>(0, 0), 255);  // 256 capped
    PSRGB2Y16S(3, top, 6, 1, 1, m);
    EXPECT_EQ(m.at<short>(0, 0), 32767);
    PSRGB2Y16S(17, red, 6, 1, 1, m);  // 17 reads 16-bit here, unlike the 8-bit luma
    EXPECT_EQ(m.at<short>(0, 0), 368);
}

TEST(HostBuffers, BorderedForms) {
    // 4 x 3 host pixels with value 10x + y (+ 100 per channel).
    Host<unsigned char> in(4, 3, 3);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x)
            for (int c = 0; c < 3; ++c)
                in.at(x, y, c) = static_cast<unsigned char>(10 * x + y + 100 * c);
    IMG3<float> img(6, 5);
    Planes planes(6, 5);
    ASSERT_EQ(convertToIMG332fDupBorder(1, in.data.data(), in.step, 0, 0, 1, img), 1);
    ASSERT_EQ(convertToIMGP32fDupBorder(1, in.data.data(), in.step, 0, 0, 1, planes.p), 1);
    for (int y = 0; y < 5; ++y)
        for (int x = 0; x < 6; ++x)
            for (int c = 0; c < 3; ++c) {
                const float want =
                    (in.at(std::clamp(x - 1, 0, 3), std::clamp(y - 1, 0, 2), c) + 0.49f) / 256;
                ASSERT_FLOAT_EQ(imgPtr(img, x, y)[c], want) << x << "," << y;
                ASSERT_FLOAT_EQ(*imgPtr(*planes.p[c], x, y), want) << x << "," << y;
            }
    // Extension: a 3 x 2 corner of a 5 x 4 plane from (1, 1) of the host.
    Planes ext(5, 4);
    ASSERT_EQ(convertToGIMG32fBExt(1, in.data.data(), in.step, 1, 1, 3, 2, ext.p), 1);
    Host<unsigned char> grey(4, 3, 1);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) grey.at(x, y, 0) = in.at(x, y, 2);
    GIMG<float> one(5, 4);
    ASSERT_EQ(convertToGIMG32fBExt(7, grey.data.data(), grey.step, 1, 1, 3, 2, one), 1);
    EXPECT_EQ(convertToGIMG32fBExt(1, grey.data.data(), grey.step, 1, 1, 3, 2, one), 0);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 5; ++x) {
            const int hx = 1 + std::min(x, 2), hy = 1 + std::min(y, 1);
            ASSERT_FLOAT_EQ(*imgPtr(*ext.p[1], x, y), in.at(hx, hy, 1) / 256.0f) << x << "," << y;
            ASSERT_FLOAT_EQ(*imgPtr(one, x, y), in.at(hx, hy, 2) / 256.0f) << x << "," << y;
        }
}

TEST(HostBuffers, InitRebuildsOnlyMisfitPlanes) {
    Host<unsigned char> in(4, 3, 3, 51);
    auto fit = std::make_unique<GIMG<float>>(4, 3);
    GIMG<float>* kept = fit.get();
    GIMG<float>* p[3] = {fit.release(), std::make_unique<GIMG<float>>(2, 2).release(), nullptr};
    EXPECT_EQ(initGIMGP32f(1, in.data.data(), in.step, 4, 3, 0, 0, 4, 3, p), 3);
    EXPECT_EQ(p[0], kept);
    for (auto* plane : p) {
        ASSERT_NE(plane, nullptr);
        EXPECT_EQ(plane->size, IPSize(4, 3));
        EXPECT_FLOAT_EQ(*imgPtr(*plane, 3, 2), 51.49f / 256);
        std::unique_ptr<GIMG<float>> release(plane);
    }
}

}  // namespace
