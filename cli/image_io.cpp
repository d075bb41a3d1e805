// Picture and trimap reading with clear errors; cut-out assembly.
#include "image_io.h"

#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "interchange/u15.h"

namespace {

// Reads at the file's own depth (16-bit and float stay as they are) and turns
// the picture upright by its EXIF orientation, so a phone photo lines up with a
// trimap painted over it as shown. OpenCV skips the orientation for
// IMREAD_UNCHANGED, hence ANYDEPTH | ANYCOLOR, which gives 1 or 3 channels
// (an alpha channel is dropped; nothing here reads it).
constexpr int kReadFlags = cv::IMREAD_ANYDEPTH | cv::IMREAD_ANYCOLOR;

cv::Mat readAnything(const std::string& path, const char* what) {
    if (!std::filesystem::exists(path)) throw ToolError(std::string(what) + " not found: " + path);
    cv::Mat m;
    try {
        m = cv::imread(path, kReadFlags);
    } catch (const cv::Exception&) {
        m.release();
    }
    if (m.empty()) throw ToolError(std::string(what) + " is not a readable image: " + path);
    return m;
}

// 16-bit pictures take the engine's own narrowing of 16-bit host pixels, so
// that the tool and the engine have one path from 16 to 8 bits: the file's
// 0..65535 is first brought onto the host's 16-bit range 0..32768, then
// psC1U15toU8 maps that to 0..255 (0 and 65535 stay 0 and 255; elsewhere the
// result is within one level of a division by 257). That narrowing rather
// than the float round trip: it needs no float planes (twelve bytes a
// pixel) and touches each element once. Channels are independent, so an
// interleaved row is one plane of width x channels elements.
cv::Mat from16Bit(const cv::Mat& m) {
    constexpr double kHostTop = 32768.0;  // the top of the host's 16-bit range
    constexpr double kFileTop = 65535.0;  // the top of a 16-bit file
    cv::Mat host;
    m.convertTo(host, CV_16U, kHostTop / kFileTop);
    cv::Mat out(m.size(), CV_MAKETYPE(CV_8U, m.channels()));
    psC1U15toU8(host.ptr<unsigned short>(), static_cast<int>(host.step), m.cols * m.channels(),
                m.rows, out.ptr<unsigned char>(), static_cast<int>(out.step));
    return out;
}

cv::Mat to8Bit(const cv::Mat& m) {
    if (m.depth() == CV_8U) return m;
    if (m.depth() == CV_16U) return from16Bit(m);
    cv::Mat out;
    if (m.depth() == CV_32F || m.depth() == CV_64F)
        m.convertTo(out, CV_8U, 255.0);  // float images hold 0..1
    else
        m.convertTo(out, CV_8U);
    return out;
}

}  // namespace

cv::Mat loadPicture(const std::string& path) {
    const cv::Mat m = to8Bit(readAnything(path, "picture"));
    cv::Mat bgr;
    switch (m.channels()) {
        case 1:
            cv::cvtColor(m, bgr, cv::COLOR_GRAY2BGR);
            break;
        case 3:
            bgr = m;
            break;
        case 4:
            cv::cvtColor(m, bgr, cv::COLOR_BGRA2BGR);
            break;
        default:
            throw ToolError("picture has an unsupported number of channels: " + path);
    }
    return bgr;
}

cv::Mat loadTrimap(const std::string& path, cv::Size pictureSize) {
    const cv::Mat m = to8Bit(readAnything(path, "trimap"));
    if (m.size() != pictureSize)
        throw ToolError("trimap is " + std::to_string(m.cols) + "x" + std::to_string(m.rows) +
                        " but the picture is " + std::to_string(pictureSize.width) + "x" +
                        std::to_string(pictureSize.height) + ": " + path);
    cv::Mat grey;
    if (m.channels() == 1)
        grey = m;
    else
        cv::extractChannel(m, grey, 0);  // trimaps saved as colour are grey in every channel
    return grey;
}

cv::Mat loadMask(const std::string& path) {
    const cv::Mat m = to8Bit(readAnything(path, "mask"));
    if (m.channels() == 1) return m;
    cv::Mat grey;
    cv::cvtColor(m, grey, cv::COLOR_BGR2GRAY);
    return grey;
}

void writeImage(const std::string& path, const cv::Mat& image) {
    bool ok = false;
    try {
        ok = cv::imwrite(path, image);
    } catch (const cv::Exception&) {
        ok = false;
    }
    if (!ok) throw ToolError("cannot write " + path);
}

cv::Mat makeCutout(const cv::Mat& colours, const cv::Mat& alpha) {
    std::vector<cv::Mat> ch;
    cv::split(colours, ch);
    ch.resize(3);
    ch.push_back(alpha);
    cv::Mat out;
    cv::merge(ch, out);
    return out;
}

cv::Mat compositeOver(const cv::Mat& colours, const cv::Mat& alpha, const cv::Scalar& background) {
    cv::Mat a, a3, fg;
    alpha.convertTo(a, CV_32F, 1.0 / 255.0);
    cv::merge(std::vector<cv::Mat>{a, a, a}, a3);
    colours.convertTo(fg, CV_32FC3);
    const cv::Mat bg(colours.size(), CV_32FC3, background);
    cv::Mat out;
    cv::Mat(fg.mul(a3) + bg.mul(cv::Scalar::all(1.0) - a3)).convertTo(out, CV_8UC3);
    return out;
}
