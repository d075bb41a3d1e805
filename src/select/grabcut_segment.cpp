// CompAlphaMapGrabCut: one GrabCut segmentation at the working level. The
// user's alpha and constraints are laid over the session's kept mask, the cut
// runs (re-initialising the colour models only when the constraints changed),
// and the mask's foreground bit becomes the new alpha.
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "select/grabcut.h"
#include "select/grabcut_control.h"

namespace {

// Margin of the initial rectangle on every side: the region's rim starts as
// definite background, its inside as probable foreground.
constexpr int kRectMargin = 5;
// Alpha below this is the user's background, above kForegroundAlpha his
// foreground; values between leave the kept mask as the last cut left it.
constexpr int kBackgroundAlpha = 10;
constexpr int kForegroundAlpha = 245;
// Iterations of the cut on every call.
constexpr int kIterations = 3;
// The seed of OpenCV's random generator before every cut. The colour models
// are initialised by k-means with random centres drawn from the calling
// thread's generator, whose state is whatever earlier OpenCV calls on that
// thread left; a fixed state makes the same input give the same selection on
// every call and thread. The value is the state OpenCV gives a fresh
// generator, so a call selects what it would in a new process.
constexpr uint64_t kGrabCutSeed = 0xffffffffULL;

constexpr unsigned char kSelected = 255;
constexpr unsigned char kNotSelected = 0;

// Lays the user's alpha and constraints over the kept mask.
void overlayUserMaps(cv::Mat& mask, const unsigned char* alpha, int alphaStep,
                     const unsigned char* consts, int constsStep) {
    for (int y = 0; y < mask.rows; ++y) {
        unsigned char* m = mask.ptr<unsigned char>(y);
        const unsigned char* a = alpha + static_cast<std::ptrdiff_t>(y) * alphaStep;
        const unsigned char* c = consts + static_cast<std::ptrdiff_t>(y) * constsStep;
        for (int x = 0; x < mask.cols; ++x) {
            if (a[x] < kBackgroundAlpha)
                m[x] = c[x] ? cv::GC_BGD : cv::GC_PR_BGD;
            else if (a[x] > kForegroundAlpha)
                m[x] = c[x] ? cv::GC_FGD : cv::GC_PR_FGD;
        }
    }
}

// 255 where the mask code's foreground bit (bit 0) is set, else 0.
void alphaFromMask(const cv::Mat& mask, unsigned char* alpha, int alphaStep) {
    for (int y = 0; y < mask.rows; ++y) {
        const unsigned char* m = mask.ptr<unsigned char>(y);
        unsigned char* a = alpha + static_cast<std::ptrdiff_t>(y) * alphaStep;
        for (int x = 0; x < mask.cols; ++x) a[x] = (m[x] & 1) ? kSelected : kNotSelected;
    }
}

}  // namespace

int CompAlphaMapGrabCut(unsigned char* rgb, int rgbStep, int width, int height,
                        unsigned char* alpha, int alphaStep, unsigned char* consts, int constsStep,
                        void* session) {
    auto& s = *static_cast<GrabCutControl*>(session);
    // The kept mask is written pixel by pixel below: a session of another size
    // would be written out of bounds.
    if (s.width != width || s.height != height || s.mask->cols != width || s.mask->rows != height)
        throw std::invalid_argument("GrabCut session size differs from the image");

    cv::Mat image(height, width, CV_8UC3, rgb, static_cast<size_t>(rgbStep));
    const cv::Rect rect(kRectMargin, kRectMargin, width - 2 * kRectMargin,
                        height - 2 * kRectMargin);
    cv::Mat& mask = *s.mask;
    if (!s.maskInitialized) {
        mask.setTo(cv::GC_BGD);
        mask(rect).setTo(cv::GC_PR_FGD);
        s.maskInitialized = true;
    }
    overlayUserMaps(mask, alpha, alphaStep, consts, constsStep);

    const int mode = s.isConstsChanged(consts, constsStep) ? cv::GC_INIT_WITH_MASK : cv::GC_EVAL;
    cv::theRNG().state = kGrabCutSeed;
    cv::grabCut(image, mask, rect, *s.bgdModel, *s.fgdModel, kIterations, mode);

    alphaFromMask(mask, alpha, alphaStep);
    return 0;
}
