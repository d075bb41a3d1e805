// `keepcut session`: replays a masking session the way a host drives the
// engine between two computes (strokes, fills, colour range and hair
// selection, GrabCut selections, computes, displays), then writes the final
// map, matte and cut-out.
#include <filesystem>
#include <fstream>
#include <opencv2/imgproc.hpp>
#include <optional>
#include <sstream>

#include "commands.h"
#include "engine_job.h"
#include "grabcut_road.h"
#include "image_io.h"
#include "progress_bar.h"
#include "session_script.h"

namespace {

// What a fresh session's map holds: every pixel unpainted in the band.
constexpr unsigned char kBandByte = 126;

class Session {
  public:
    Session(const cv::Mat& picture, const cv::Mat& map, std::filesystem::path dir)
        : job_(picture, map), aux_(picture.size(), CV_8UC1, cv::Scalar(0)), dir_(std::move(dir)) {}

    void run(const SessionOp& op) {
        switch (op.kind) {
            case SessionOpKind::Stroke:
                check(op, rkDrawLine8u(mask().data, step(), width(), height(), op.from.x, op.from.y,
                                       op.to.x, op.to.y, op.radius,
                                       static_cast<unsigned char>(op.brushType),
                                       static_cast<unsigned char>(op.value)));
                break;
            case SessionOpKind::Gradient:
                rkDrawGradientLine8u(mask().data, step(), width(), height(), aux_.data,
                                     static_cast<int>(aux_.step), op.from.x, op.from.y, op.to.x,
                                     op.to.y, op.radius, static_cast<unsigned char>(op.start),
                                     static_cast<unsigned char>(op.end));
                break;
            case SessionOpKind::Fill: {
                int rect[4] = {};
                check(op,
                      rkFloodFillAlpha(mask().data, step(), width(), height(), op.from.x, op.from.y,
                                       0, 0, static_cast<char>(op.fillType), 0, rect));
                break;
            }
            case SessionOpKind::ColourRange: {
                std::array<unsigned char, 3> colour = op.colour;
                check(op, rkColorRangeSelect(&job_.r, op.from.x, op.from.y, op.to.x, op.to.y,
                                             op.radius, colour.data(), op.tolerance, op.keep));
                break;
            }
            case SessionOpKind::Hair: {
                RKPSStructMsk2 r = job_.r;
                r.hairForeColor = op.colour.data();
                r.hairBackColor = op.background.data();
                check(op, rkHairSelect(&r, op.from.x, op.from.y, op.to.x, op.to.y, op.radius));
                break;
            }
            case SessionOpKind::Compute:
                compute(op);
                break;
            case SessionOpKind::Show:
                show(op);
                break;
            case SessionOpKind::GrabCutRect:
                grabCut_.reset();  // a new rectangle ends the last selection
                grabCut_.emplace(job_.image, op.region);
                select(op);
                break;
            case SessionOpKind::GrabCutStroke:
                grabCut_->paint(op.from, op.to, op.radius, op.keep);
                select(op);
                break;
            case SessionOpKind::GrabCutEdge: {
                const cv::Mat map = grabCut_->finishAsBrushMap(
                    op.band > 0 ? op.band : defaultBandWidth(job_.mask.size()));
                grabCut_.reset();
                map.copyTo(job_.mask);
                map.copyTo(job_.brushInfo);
                break;
            }
        }
    }

    void writeResults() const {
        const cv::Mat alpha = matteFromMask(job_.mask);
        writeImage((dir_ / "map.png").string(), job_.mask);
        writeImage((dir_ / "matte.png").string(), alpha);
        writeImage((dir_ / "cutout.png").string(),
                   makeCutout(cutoutColours(job_.image, alpha), alpha));
    }

  private:
    cv::Mat& mask() { return job_.mask; }
    int step() const { return static_cast<int>(job_.mask.step); }
    int width() const { return job_.mask.cols; }
    int height() const { return job_.mask.rows; }

    static void check(const SessionOp& op, int rc) {
        if (rc == 1) return;
        std::fprintf(stderr, "%s\n", getErrMsg());
        throw ToolError("script operation " + std::to_string(op.index) + " (" + op.name +
                        "): the engine returned " + std::to_string(rc));
    }

    void compute(const SessionOp& op) {
        RKPSStructMsk2 r = job_.r;
        if (op.hasRegion) {
            r.roiX = op.region.x, r.roiY = op.region.y;
            r.roiWidth = op.region.width, r.roiHeight = op.region.height;
            r.cellMode = 1;
        } else {
            // A whole-picture job reads the painted map from brushInfo, which
            // a host keeps filled; a region job fills it itself.
            job_.mask.copyTo(job_.brushInfo);
        }
        r.mergeMode = op.mergeMode;
        r.recoverForeground = op.foreground;
        check(op, runMainEntry(r, op.hires ? 1 : 0));
    }

    void select(const SessionOp& op) {
        const int rc = grabCut_->select(drawProgressBar, nullptr);
        finishProgressBar();
        check(op, rc);
    }

    void show(const SessionOp& op) {
        cv::Mat display = job_.image.clone();
        std::array<unsigned char, 3> colour = op.colour;
        check(op, rkShowImageAlpha(display.data, static_cast<int>(display.step), width(), height(),
                                   mask().data, step(), static_cast<unsigned char>(op.hi),
                                   static_cast<unsigned char>(op.lo), op.mode, colour.data()));
        if (op.desaturate)
            check(op, rkDesaturation(display.data, static_cast<int>(display.step), width(),
                                     height(), mask().data, step(), op.strength));
        cv::Mat bgr;
        cv::cvtColor(display, bgr, cv::COLOR_BGRA2BGR);
        writeImage((dir_ / op.file).string(), bgr);
    }

    EngineJob job_;
    cv::Mat aux_;  // the gradient brush's side map, kept for the session as a host would
    std::filesystem::path dir_;
    // The open GrabCut selection, if any; it reads job_'s picture, so it is
    // declared after it and given back first, on every way out.
    std::optional<GrabCutSelection> grabCut_;
};

std::string readText(const std::string& path) {
    std::ifstream in(path);
    if (!in) throw ToolError("script not found: " + path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

}  // namespace

int runSession(const SessionOptions& o) {
    const cv::Mat picture = loadPicture(o.picture);
    const std::vector<SessionOp> ops = parseSessionScript(readText(o.script), picture.size());
    const cv::Mat map = o.map.empty() ? cv::Mat(picture.size(), CV_8UC1, cv::Scalar(kBandByte))
                                      : loadTrimap(o.map, picture.size());
    std::filesystem::create_directories(o.outDir);
    Session session(picture, map, o.outDir);
    for (const SessionOp& op : ops) session.run(op);
    session.writeResults();
    std::printf("session of %zu operations on %dx%d -> %s\n", ops.size(), picture.cols,
                picture.rows, o.outDir.c_str());
    return 0;
}
