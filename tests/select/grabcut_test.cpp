// GrabCut selection: the map's bit rules in and out, the session lifecycle,
// the same selection from the same input, the trimap band of rkGrabCutEdgeGen,
// refusals, the stroke's failure results and the working level of a region.
// Pictures are a red disc on a yellow-green background with a little noise.
#include <gtest/gtest.h>

#include <cstring>
#include <new>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>

#include "api/keepcut.h"
#include "select/grabcut_control.h"
#include "select/grabcut_guard.h"
#include "select/grabcut_levels.h"

namespace {

struct GrabCutJob {
    cv::Mat image, mask, brush;
    RKPSStructMsk2 r{};
    cv::Point centre;
    int radius;

    // A w x h picture with a disc; the GrabCut region is the whole picture,
    // the map probable foreground (1) in the disc's box widened by `margin`,
    // probable background (0) elsewhere.
    GrabCutJob(int w, int h, int margin = 6)
        : image(h, w, CV_8UC4), mask(h, w, CV_8UC1, cv::Scalar(0)), brush(h, w, CV_8UC1) {
        centre = {w / 2, h / 2};
        radius = std::min(w, h) / 4;
        image.setTo(cv::Scalar(60, 170, 180, 255));
        cv::circle(image, centre, radius, cv::Scalar(40, 60, 200, 255), cv::FILLED);
        cv::Mat noise(h, w, CV_8UC4);
        cv::RNG(7).fill(noise, cv::RNG::UNIFORM, 0, 12);
        image += noise;
        const int half = radius + margin;
        mask(cv::Rect(centre.x - half, centre.y - half, 2 * half, 2 * half)).setTo(1);
        brush.setTo(77);
        r.image = image.data, r.imageRowBytes = static_cast<int>(image.step);
        r.mask = mask.data, r.maskRowBytes = static_cast<int>(mask.step);
        r.brushInfo = brush.data, r.brushInfoRowBytes = static_cast<int>(brush.step);
        r.width = w, r.height = h;
        r.gcWidth = w, r.gcHeight = h;
    }
    ~GrabCutJob() { rkGrabCutDeleteBuf(&r); }
    unsigned char& at(cv::Point p) { return mask.at<unsigned char>(p); }
};

TEST(GrabCut, MapBitsInAndOut) {
    // Probes on the disc-and-box map: bytes with bit 0 set are the only ones a
    // stroke can change (to bit 0 cleared, where the cut finds background);
    // bits 1 to 7 make a pixel a hard constraint the cut must keep.
    struct Probe {
        const char* where;
        int dx, dy;  // from the disc's centre, in radii / 4
        unsigned char in, out;
    } probes[] = {
        {"probable foreground on background", 5, 5, 1, 0},
        {"hard foreground (bit 1) on background", 5, -5, 3, 3},
        {"hard foreground (bit 2) on background", -5, 5, 5, 5},
        {"hard foreground (bit 7) on background", -5, -5, 129, 129},
        {"keep on background", 0, 5, 255, 255},
        {"probable foreground in the disc", 0, 0, 1, 1},
        {"probable background in the disc keeps bit 0 clear", 1, 0, 0, 0},
        {"hard background in the disc", 0, 1, 2, 2},
        {"hard background with bit 0 clear, high bits", -1, 0, 254, 254},
    };
    GrabCutJob job(80, 80);
    for (const Probe& p : probes)
        job.at(job.centre + cv::Point(p.dx, p.dy) * (job.radius / 4)) = p.in;
    ASSERT_EQ(rkGrabCut(&job.r, 0), 1) << getErrMsg();
    for (const Probe& p : probes)
        EXPECT_EQ(job.at(job.centre + cv::Point(p.dx, p.dy) * (job.radius / 4)), p.out) << p.where;
    // Far background never had bit 0; brushInfo receives the same map.
    EXPECT_EQ(job.at({1, 1}), 0);
    EXPECT_EQ(cv::countNonZero(job.mask != job.brush), 0);
}

TEST(GrabCut, SelectionFollowsTheDisc) {
    // On the pyramid road (240 x 200 works at 120 x 100) and at full size, the
    // kept box pixels are the disc, give or take its rim.
    for (const cv::Size size : {cv::Size(80, 80), cv::Size(240, 200)})
        for (int stepwise : {0, 1}) {
            GrabCutJob job(size.width, size.height);
            ASSERT_EQ(rkGrabCut(&job.r, stepwise), 1) << getErrMsg();
            cv::Mat truth = cv::Mat::zeros(job.mask.size(), CV_8UC1);
            cv::circle(truth, job.centre, job.radius, cv::Scalar(1), cv::FILLED);
            const cv::Mat selected = job.mask == 1, disc = truth == 1;
            const double iou = cv::countNonZero(selected & disc) /
                               static_cast<double>(cv::countNonZero(selected | disc));
            EXPECT_GT(iou, 0.9) << size << " stepwise " << stepwise;
        }
}

TEST(GrabCut, SameInputSameSelection) {
    // Two fresh sessions on the same input, with the thread's random generator
    // disturbed between them, and a stroke that changes the constraint sum
    // (models re-initialised) on each. Strong noise makes the colour models
    // depend on their random start.
    cv::Mat results[2], models[2];
    for (int k = 0; k < 2; ++k) {
        GrabCutJob job(240, 200, 20);
        cv::Mat noise(job.image.size(), CV_8UC4);
        cv::RNG(11).fill(noise, cv::RNG::UNIFORM, 0, 160);
        job.image += noise;
        for (int i = 0; i < 17; ++i) cv::theRNG().next();
        ASSERT_EQ(rkGrabCut(&job.r, 1), 1);
        job.mask(cv::Rect(job.centre.x - 3, job.centre.y - 3, 6, 6)).setTo(3);
        ASSERT_EQ(rkGrabCut(&job.r, 1), 1);
        results[k] = job.mask.clone();
        models[k] = static_cast<GrabCutControl*>(job.r.grabCutBuf)->fgdModel->clone();
    }
    EXPECT_EQ(cv::countNonZero(results[0] != results[1]), 0);
    // The colour models too, to the bit: they depend on the random start.
    EXPECT_EQ(cv::norm(models[0], models[1], cv::NORM_INF), 0.0);
}

TEST(GrabCut, SessionLifecycle) {
    const int liveBefore = liveGrabCutSessions();
    GrabCutJob job(80, 80);
    ASSERT_EQ(rkGrabCut(&job.r, 0), 1);
    void* session = job.r.grabCutBuf;
    ASSERT_NE(session, nullptr);  // made by the first stroke
    EXPECT_EQ(static_cast<GrabCutControl*>(session)->width, 80);
    ASSERT_EQ(rkGrabCut(&job.r, 0), 1);
    EXPECT_EQ(job.r.grabCutBuf, session);  // reused
    EXPECT_EQ(liveGrabCutSessions(), liveBefore + 1);

    // Ending the session rewrites the map into the pipeline's coding.
    const unsigned char in[] = {0, 1, 2, 3, 128, 129, 253, 254, 255};
    const unsigned char out[] = {1, 1, 2, 2, 128, 128, 252, 255, 255};
    for (int i = 0; i < 9; ++i) job.mask.at<unsigned char>(0, i) = in[i];
    rkGrabCutDeleteBuf(&job.r);
    EXPECT_EQ(liveGrabCutSessions(), liveBefore);
    EXPECT_EQ(job.r.grabCutBuf, session);  // the host clears it
    for (int i = 0; i < 9; ++i) {
        EXPECT_EQ(job.mask.at<unsigned char>(0, i), out[i]) << int(in[i]);
        EXPECT_EQ(job.brush.at<unsigned char>(0, i), out[i]) << int(in[i]);
    }
    // The stale handle is refused, not followed; deleting it again is harmless.
    clearErrMsg();
    EXPECT_EQ(rkGrabCut(&job.r, 0), -2);
    EXPECT_NE(std::string(getErrMsg()).find("not a live GrabCut session"), std::string::npos);
    rkGrabCutDeleteBuf(&job.r);
    job.r.grabCutBuf = nullptr;

    // A session made by the host at the region's working size is taken.
    job.r.grabCutBuf = rkGrabCutCreateBuf(80, 80);
    EXPECT_EQ(rkGrabCut(&job.r, 0), 1);
}

TEST(GrabCut, EdgeGenBand) {
    // A selection right of column 30 in a 60 x 40 region at (5, 3) of a larger
    // map; on a row, the band spans columns 30 - r .. 30 + r - 1.
    struct Case {
        int brushSize, r;
    } cases[] = {{10, 5}, {9, 4}, {2, 1}, {1, 0}, {0, 0}};
    for (const Case& c : cases) {
        cv::Mat mask(50, 70, CV_8UC1, cv::Scalar(99)), brush(50, 70, CV_8UC1, cv::Scalar(0));
        RKPSStructMsk2 r{};
        r.mask = mask.data, r.maskRowBytes = 70, r.brushInfo = brush.data;
        r.brushInfoRowBytes = 70, r.width = 70, r.height = 50;
        r.gcLeft = 5, r.gcTop = 3, r.gcWidth = 60, r.gcHeight = 40;
        cv::Mat sel = brush(cv::Rect(5, 3, 60, 40));
        sel(cv::Rect(30, 0, 30, 40)).setTo(254);
        sel(cv::Rect(50, 0, 10, 40)).setTo(255);  // keep, also selected
        sel.at<unsigned char>(20, 2) = 1;         // painted cut outside
        sel.at<unsigned char>(20, 31) = 7;        // an odd byte in the band
        rkGrabCutEdgeGen(&r, c.brushSize);
        const cv::Mat out = mask(cv::Rect(5, 3, 60, 40));
        for (int x = 0; x < 60; ++x) {
            const int want = x >= 50                         ? 255
                             : x >= 30 - c.r && x < 30 + c.r ? 126
                             : x >= 30                       ? 254
                                                             : 0;
            ASSERT_EQ(out.at<unsigned char>(10, x), want) << "brush " << c.brushSize << " x " << x;
            // The picture's edge (top row) does not eat into the selection.
            ASSERT_EQ(out.at<unsigned char>(0, x), want) << "top row, x " << x;
        }
        EXPECT_EQ(out.at<unsigned char>(20, 2), 1);
        EXPECT_EQ(out.at<unsigned char>(20, 31), 7);
        // Outside the region nothing changed.
        EXPECT_EQ(mask.at<unsigned char>(1, 1), 99);
        EXPECT_EQ(mask.at<unsigned char>(45, 68), 99);
    }
}

TEST(GrabCut, Refusals) {
    struct Case {
        const char* what;
        bool mapsBroken;  // refused by the trimap and delete entries too
        void (*breakIt)(RKPSStructMsk2&);
    } cases[] = {
        {"null image", false, [](RKPSStructMsk2& r) { r.image = nullptr; }},
        {"null mask", true, [](RKPSStructMsk2& r) { r.mask = nullptr; }},
        {"null brushInfo", true, [](RKPSStructMsk2& r) { r.brushInfo = nullptr; }},
        {"negative width", true, [](RKPSStructMsk2& r) { r.width = -1; }},
        {"short mask rows", true, [](RKPSStructMsk2& r) { r.maskRowBytes = r.width - 1; }},
        {"short picture rows", false, [](RKPSStructMsk2& r) { r.imageRowBytes = 4 * r.width - 1; }},
        {"region past the right", true, [](RKPSStructMsk2& r) { r.gcLeft = 1; }},
        {"region above the top", true, [](RKPSStructMsk2& r) { r.gcTop = -1, r.gcHeight = 20; }},
        {"region 10 wide", false, [](RKPSStructMsk2& r) { r.gcWidth = 10; }},
        {"region 10 high", false, [](RKPSStructMsk2& r) { r.gcHeight = 10; }},
        {"session of another size", false,
         [](RKPSStructMsk2& r) { r.grabCutBuf = rkGrabCutCreateBuf(40, 80); }},
        {"foreign session handle", false, [](RKPSStructMsk2& r) { r.grabCutBuf = &r.gcLeft; }},
    };
    for (const Case& c : cases) {
        GrabCutJob job(80, 80);
        c.breakIt(job.r);
        const cv::Mat mask = job.mask.clone(), brush = job.brush.clone();
        void* const session = job.r.grabCutBuf;
        clearErrMsg();
        EXPECT_EQ(rkGrabCut(&job.r, 0), -2) << c.what;
        EXPECT_NE(std::string(getErrMsg()).find("rkGrabCut: "), std::string::npos) << c.what;
        EXPECT_EQ(job.r.grabCutBuf, session) << c.what;
        if (c.mapsBroken) {
            clearErrMsg();
            rkGrabCutEdgeGen(&job.r, 5);
            EXPECT_NE(std::string(getErrMsg()).find("rkGrabCutEdgeGen: "), std::string::npos)
                << c.what;
            rkGrabCutDeleteBuf(&job.r);
        }
        EXPECT_EQ(cv::countNonZero(mask != job.mask), 0) << c.what;
        EXPECT_EQ(cv::countNonZero(brush != job.brush), 0) << c.what;
        if (session == &job.r.gcLeft) job.r.grabCutBuf = nullptr;
    }
    EXPECT_EQ(rkGrabCut(nullptr, 0), -2);
    GrabCutJob job(80, 80);
    const cv::Mat mask = job.mask.clone();
    for (int brushSize : {-1, 1025}) rkGrabCutEdgeGen(&job.r, brushSize);
    EXPECT_EQ(cv::countNonZero(mask != job.mask), 0);
    EXPECT_EQ(rkGrabCutCreateBuf(10, 50), nullptr);
    EXPECT_EQ(rkGrabCutCreateBuf(50, -1), nullptr);
    clearErrMsg();
    rkGrabCutDeleteBuf(nullptr);
    EXPECT_NE(std::string(getErrMsg()).find("rkGrabCutDeleteBuf: "), std::string::npos);
}

TEST(GrabCut, StrokeFailureResults) {
    struct Case {
        void (*thrower)();
        int result;
    } cases[] = {
        {[] { throw 102; }, -898},
        {[] { throw -5; }, -1005},
        {[] { throw std::bad_alloc(); }, -1},
        {[] { CV_Error(cv::Error::StsNoMem, "no memory"); }, -1},
        {[] { CV_Error(cv::Error::StsBadArg, "bad"); }, -1000},
        {[] { throw std::runtime_error("odd"); }, -1000},
        {[] { throw 3.5; }, -1000},
    };
    for (const Case& c : cases) {
        clearErrMsg();
        const int result = grabCutGuard("rkGrabCut", [&] {
            c.thrower();
            return 1;
        });
        EXPECT_EQ(result, c.result);
        EXPECT_NE(std::string(getErrMsg()).find("rkGrabCut: result " + std::to_string(c.result)),
                  std::string::npos);
    }
}

TEST(GrabCut, WorkingLevel) {
    struct Case {
        int w, h, levels, workW, workH;
    } cases[] = {
        {100, 20, -1, 100, 20},    {101, 60, 0, 101, 60},     {60, 200, 0, 60, 200},
        {201, 50, 1, 101, 25},     {799, 799, 1, 400, 400},   {800, 11, 2, 200, 3},
        {1599, 300, 2, 400, 75},   {1600, 1200, 3, 200, 150}, {3199, 12, 3, 400, 2},
        {4000, 3000, 4, 500, 375}, {6399, 100, 4, 800, 13},   {6400, 100, 5, 800, 13},
        {100, 20000, 5, 13, 2500},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(grabCutLevels(c.w, c.h), c.levels) << c.w << " x " << c.h;
        EXPECT_EQ(grabCutWorkSize(c.w, c.h), IPSize(c.workW, c.workH)) << c.w << " x " << c.h;
    }
}

}  // namespace
