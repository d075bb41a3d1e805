// Typed wrappers over the containers: they work on the destination's region,
// record the status in the destination and reach the right primitive.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "core/img_ops.h"

namespace {

// Fills the whole block (margin included) from gen(x, y, c).
template <typename T, int C, typename Gen>
void fillAll(IMG<T, C>& img, Gen gen) {
    for (int y = 0; y < img.size.height; ++y) {
        T* row = reinterpret_cast<T*>(reinterpret_cast<char*>(img.buf) + y * img.step);
        for (int x = 0; x < img.size.width; ++x)
            for (int c = 0; c < C; ++c) row[x * C + c] = gen(x, y, c);
    }
}
template <typename T, int C>
T& px(IMG<T, C>& img, int x, int y, int c = 0) {
    return reinterpret_cast<T*>(reinterpret_cast<char*>(img.buf) + y * img.step)[x * C + c];
}
// True when (x, y) of the block lies in the inner region of margin 1.
template <typename T, int C>
bool inner(const IMG<T, C>& img, int x, int y) {
    return x >= 1 && y >= 1 && x < img.size.width - 1 && y < img.size.height - 1;
}

constexpr int kW = 11, kH = 6;  // odd, so rows are not a multiple of any vector width

TEST(ImgOps, ByteArithmeticWorksOnTheRegionAndRecordsStatus) {
    GIMG<unsigned char> a(kW, kH), d(kW, kH), d2(kW, kH);
    fillAll(a, [](int x, int y, int) { return static_cast<unsigned char>(x * 20 + y); });
    fillAll(d, [](int x, int, int) { return static_cast<unsigned char>(250 - x); });
    a.roiRect(1, 1, -1, -1);
    d.roiRect(1, 1, -1, -1);
    EXPECT_EQ(d.status, 1);
    ASSERT_EQ(Add(a, d, 1), 0);
    EXPECT_EQ(d.status, 0);
    for (int y = 0; y < kH; ++y)
        for (int x = 0; x < kW; ++x) {
            const int sum = x * 20 + y + 250 - x;
            const int half = (sum >> 1) + ((sum & 1) && ((sum >> 1) & 1));
            ASSERT_EQ(px(d, x, y), inner(d, x, y) ? std::min(half, 255) : 250 - x);
        }
    // Sub(src1, src2, dst, sf) is src2 - src1; Sub(value, dst, sf) subtracts.
    d2.roiRect(1, 1, -1, -1);
    ASSERT_EQ(Sub(a, d, d2, 0), 0);
    ASSERT_EQ(Sub(5, d2, 0), 0);
    ASSERT_EQ(Mul(2, d2, 1), 0);  // * 2 / 2: unchanged
    ASSERT_EQ(Add(3, d2, 0), 0);
    ASSERT_EQ(Sub(a, d2, 0), 0);
    ASSERT_EQ(Mul(a, d2, 0), 0);
    for (int y = 1; y < kH - 1; ++y)
        for (int x = 1; x < kW - 1; ++x) {
            const int av = px(a, x, y);
            int v = std::max(px(d, x, y) - av, 0);
            v = std::max(v - 5, 0) + 3;
            v = std::min(std::max(v - av, 0) * av, 255);
            ASSERT_EQ(px(d2, x, y), v);
        }
    // A bad region is recorded in the destination.
    d2.roiSize = IPSize(0, 3);
    EXPECT_EQ(Add(a, d2, 0), ippStsSizeErr);
    EXPECT_EQ(d2.status, ippStsSizeErr);
}

TEST(ImgOps, SixteenBitAddScales) {
    GIMG<unsigned short> a(kW, kH), d(kW, kH);
    fillAll(a, [](int x, int, int) { return static_cast<unsigned short>(60000 + x); });
    fillAll(d, [](int, int y, int) { return static_cast<unsigned short>(9000 + y); });
    ASSERT_EQ(Add(a, d, 0), 0);
    EXPECT_EQ(px(d, 0, 0), 65535);
    ASSERT_EQ(Add(a, d, 2), 0);
    EXPECT_EQ(px(d, 4, 1), (60004 + 65535 + 2) / 4);  // 31384.75 -> 31385
}

TEST(ImgOps, FloatArithmeticOneAndThreeChannels) {
    GIMG<float> s(kW, kH), d(kW, kH), out(kW, kH);
    fillAll(s, [](int x, int y, int) { return 0.5f + x - 0.25f * y; });
    fillAll(d, [](int x, int y, int) { return 2.f * x + y + 1.f; });
    d.roiRect(1, 1, -1, -1);
    s.roiRect(1, 1, -1, -1);
    ASSERT_EQ(Add(s, d), 0);
    ASSERT_EQ(Mul(s, d), 0);
    ASSERT_EQ(Sub(s, d), 0);
    ASSERT_EQ(Div(s, d), 0);
    ASSERT_EQ(Add(1.5f, d), 0);
    ASSERT_EQ(Mul(2, d), 0);
    out.roiRect(1, 1, -1, -1);
    ASSERT_EQ(Mul(d, 0.5f, out), 0);
    for (int y = 1; y < kH - 1; ++y)
        for (int x = 1; x < kW - 1; ++x) {
            const float sv = px(s, x, y);
            float v = 2.f * x + y + 1.f;
            v = ((v + sv) * sv - sv) / sv;
            v = (v + 1.5f) * 2.f;
            ASSERT_FLOAT_EQ(px(d, x, y), v);
            ASSERT_FLOAT_EQ(px(out, x, y), v * 0.5f);
        }

    IMG3<float> s3(kW, kH), d3(kW, kH), o3(kW, kH);
    fillAll(s3, [](int x, int y, int c) { return float(x + y + c); });
    fillAll(d3, [](int x, int, int c) { return float(x * c) - 4.f; });
    float k[3] = {1.f, 2.f, -1.f};
    const float lo[3] = {0.f, 0.f, -3.f};
    const float hi[3] = {40.f, 30.f, 0.f};
    d3.roiRect(1, 1, -1, -1);
    s3.roiRect(1, 1, -1, -1);
    o3.roiRect(1, 1, -1, -1);  // the source is read over the destination's region
    ASSERT_EQ(Add(s3, d3), 0);
    ASSERT_EQ((Add<float, float*>(k, d3)), 0);
    ASSERT_EQ((Mul<float, float*>(k, d3)), 0);
    ASSERT_EQ(Threshold_LT(d3, lo), 0);
    ASSERT_EQ(Threshold_GT(d3, hi), 0);
    ASSERT_EQ(Mul(d3, k, o3), 0);
    ASSERT_EQ(o3.roiSize, IPSize(kW - 2, kH - 2));
    for (int y = 1; y < kH - 1; ++y)
        for (int x = 1; x < kW - 1; ++x)
            for (int c = 0; c < 3; ++c) {
                float v = float(x * c) - 4.f + float(x + y + c);
                v = (v + k[c]) * k[c];
                v = std::min(std::max(v, lo[c]), hi[c]);
                ASSERT_FLOAT_EQ(px(d3, x, y, c), v);
                ASSERT_FLOAT_EQ(px(o3, x, y, c), v * k[c]);
            }
    EXPECT_EQ(px(d3, 0, 0, 1), -4.f);  // the margin is untouched
}

TEST(ImgOps, CopySetAndChannels) {
    GIMG<short> s(kW, kH), d(kW, kH);
    fillAll(s, [](int x, int y, int) { return short(x - 100 * y); });
    fillAll(d, [](int, int, int) { return short(7); });
    d.roiRect(1, 1, -1, -1);
    s.roiRect(1, 1, -1, -1);
    ASSERT_EQ(Copy(s, d), 0);
    EXPECT_EQ(px(d, 3, 2), 3 - 200);
    EXPECT_EQ(px(d, 0, 2), 7);

    s.restoreRect();
    IMG3<short> three(kW, kH);
    fillAll(three, [](int, int, int) { return short(-1); });
    ASSERT_EQ(Copy(2, s, three), 0);
    EXPECT_EQ(three.status, 0);
    GIMG<short> back(kW, kH);
    ASSERT_EQ(Copy(2, three, back), 0);
    EXPECT_EQ(px(back, 4, 1), 4 - 100);
    EXPECT_EQ(px(three, 4, 1, 1), -1);

    GIMG<float> f(kW, kH), g(kW, kH);
    GIMG<unsigned char> mask(kW, kH);
    fillAll(mask, [](int x, int, int) { return static_cast<unsigned char>(x % 2); });
    ASSERT_EQ(Set(3, f), 0);      // int value
    ASSERT_EQ(Set(0.25f, g), 0);  // element value
    ASSERT_EQ(Copy(g, f, mask), 0);
    EXPECT_EQ(px(f, 1, 0), 0.25f);
    EXPECT_EQ(px(f, 2, 0), 3.f);
    IMG3<float> c3(kW, kH), c3b(kW, kH);
    fillAll(c3, [](int x, int y, int c) { return float(x + 10 * y + 100 * c); });
    ASSERT_EQ(Copy(c3, c3b), 0);
    EXPECT_EQ(px(c3b, 3, 4, 2), 243.f);
    GIMG<unsigned char> b(kW, kH);
    ASSERT_EQ(Set<unsigned char>(300 - 45, b), 0);
    EXPECT_EQ(px(b, kW - 1, kH - 1), 255);
}

TEST(ImgOps, ConvertCompareOrSum) {
    GIMG<unsigned short> u(kW, kH);
    GIMG<float> f(kW, kH), g(kW, kH);
    GIMG<short> s(kW, kH);
    fillAll(u, [](int x, int y, int) { return static_cast<unsigned short>(x * 6000 + y); });
    ASSERT_EQ(Convert(u, f), 0);
    ASSERT_EQ(Mul(0.5f, f), 0);
    ASSERT_EQ(Convert(f, s, ippRndNear), 0);
    EXPECT_EQ(px(s, 1, 1), 3000);  // 3000.5 -> even
    EXPECT_EQ(px(s, 1, 3), 3002);  // 3001.5 -> even
    EXPECT_EQ(px(s, 10, 0), 30000);
    ASSERT_EQ(Convert(f, s, ippRndZero), 0);
    EXPECT_EQ(px(s, 1, 1), 3000);
    EXPECT_EQ(px(s, 1, 3), 3001);
    IMG3<unsigned char> rgb(kW, kH);
    IMG3<float> rgbf(kW, kH);
    fillAll(rgb, [](int x, int, int c) { return static_cast<unsigned char>(x * 3 + c); });
    ASSERT_EQ(Convert(rgb, rgbf), 0);
    EXPECT_EQ(px(rgbf, 5, 2, 2), 17.f);

    GIMG<unsigned char> b(kW, kH), m(kW, kH);
    fillAll(b, [](int x, int, int) { return static_cast<unsigned char>(x * 25); });
    ASSERT_EQ(Compare(b, 100, m, ippCmpGreaterEq), 0);
    EXPECT_EQ(px(m, 3, 0), 0);
    EXPECT_EQ(px(m, 4, 0), 255);
    // Out-of-range ints keep their integer meaning.
    ASSERT_EQ(Compare(b, 256, m, ippCmpLess), 0);
    EXPECT_EQ(px(m, 10, 5), 255);
    ASSERT_EQ(Compare(b, -1, m, ippCmpEq), 0);
    EXPECT_EQ(px(m, 0, 0), 0);
    ASSERT_EQ(Compare(b, -1, m, ippCmpGreater), 0);
    EXPECT_EQ(px(m, 0, 0), 255);
    ASSERT_EQ(Compare(b, 300, m, ippCmpGreaterEq), 0);
    EXPECT_EQ(px(m, 10, 0), 0);

    fillAll(g, [](int x, int, int) { return float(x); });
    fillAll(f, [](int, int y, int) { return float(y); });
    ASSERT_EQ(Compare(g, f, m, ippCmpLess), 0);
    EXPECT_EQ(px(m, 2, 3), 255);
    EXPECT_EQ(px(m, 3, 3), 0);

    fillAll(b, [](int x, int, int) { return static_cast<unsigned char>(1 << (x % 8)); });
    fillAll(m, [](int, int y, int) { return static_cast<unsigned char>(y); });
    m.roiRect(1, 1, -1, -1);
    ASSERT_EQ(Or(b, m), 0);
    EXPECT_EQ(px(m, 2, 1), 0x02 | 1);  // region pixel (1,0) reads b's pixel (1,0)
    EXPECT_EQ(px(m, 0, 0), 0);

    double total = -1;
    const int before = m.status;
    ASSERT_EQ(Sum(m, &total), 0);
    EXPECT_EQ(m.status, before);  // a sum records nothing
    double want = 0;
    for (int y = 1; y < kH - 1; ++y)
        for (int x = 1; x < kW - 1; ++x) want += px(m, x, y);
    EXPECT_EQ(total, want);
}

}  // namespace
