// Speed of the masking-screen tools. On a 12-megapixel picture (4000 x 3000):
// display compositing beside a memcpy of the 4-byte picture, whole-map edits
// and the flood fill of half the map beside a memcpy of the map, all measured
// in the same run. Brush strokes run at 1 and at 12 megapixels: a stroke only
// works inside its box, so its time should not grow with the picture.
// Every call edits its buffers in place; the untouched input is copied back
// with the timer paused (state.PauseTiming) before each call, so every
// iteration sees the same input and the copy is never timed.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "api/keepcut_display.h"
#include "api/keepcut_editing.h"

namespace {

// The picture size the engine meets in practice: a 12-megapixel photograph.
constexpr int kBigW = 4000;
constexpr int kBigH = 3000;
// A 1-megapixel picture of the same 4:3 shape, for the stroke comparison.
constexpr int kSmallW = 1155;
constexpr int kSmallH = 866;
// Host pictures: blue, green, red and a fourth byte per pixel.
constexpr int kPictureBytes = 4;

// Aims: whole-buffer display and map operations within this many memcpy of
// their buffer; the flood fill (class map, fill, write-back) within its own.
constexpr double kDisplayAim = 3.0;
constexpr double kFillAim = 10.0;
// A stroke at 12 MP within this many times its 1 MP time.
constexpr double kStrokeAim = 2.0;

// Map codes the synthetic map is made of.
constexpr unsigned char kCut = 1;
constexpr unsigned char kKeep = 255;
constexpr unsigned char kBand = 126;
// Height of the compute-band stripe across the alpha half, in rows.
constexpr int kBandRows = 40;
// Cell size of the chequer of painted alpha bytes inside the alpha half.
constexpr int kPaintedCell = 64;

// The stroke: radius 50 and a diagonal of 212 pixels each way (about 300
// pixels long), through the middle of the picture.
constexpr int kStrokeRadius = 50;
constexpr int kStrokeHalfSpan = 106;
// Margin restored around the stroke's box: the box plus a guard pixel.
constexpr int kRestoreMargin = kStrokeRadius + 2;

// Colour-range brush: a colour of the picture's middle and a tolerance that
// takes part of the stroke, not all of it.
constexpr unsigned char kPickedRgb[3] = {128, 128, 128};
constexpr int kTolerance = 60;
// Hair brush: a light hair colour against a dark background (R, G, B).
constexpr unsigned char kHairRgb[3] = {210, 180, 120};
constexpr unsigned char kBackRgb[3] = {30, 50, 80};

// Display parameters: a stretch that is not the identity, so modes 3 to 6
// and rkScaleAlpha do the full scaling work.
constexpr unsigned char kHi = 230;
constexpr unsigned char kLo = 20;
constexpr unsigned char kBackgroundRgb[3] = {40, 200, 90};
constexpr float kDesaturate = 0.7f;
constexpr float kBlendWeight = 0.5f;
constexpr int kFeather = 16;

// A picture and its brush map, with untouched copies to restore from.
struct Scene {
    int w, h;
    std::vector<unsigned char> picture, pictureSaved, map, mapSaved, otherMap, aux, auxSaved;
    RKPSStructMsk2 request{};

    Scene(int width, int height) : w(width), h(height) {
        const std::size_t pixels = static_cast<std::size_t>(w) * h;
        picture.resize(kPictureBytes * pixels);
        map.resize(pixels);
        otherMap.resize(pixels);
        aux.assign(pixels, 0);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x) {
                unsigned char* px = &picture[kPictureBytes * (static_cast<std::size_t>(y) * w + x)];
                // Smooth gradients with a little texture, so colour tests vary.
                const int noise = (x * 131 + y * 71) % 32;
                px[0] = static_cast<unsigned char>(x * 223 / w + noise);
                px[1] = static_cast<unsigned char>(y * 223 / h + noise);
                px[2] = static_cast<unsigned char>((x + y) * 223 / (w + h) + noise);
                px[3] = 255;
                map[static_cast<std::size_t>(y) * w + x] = mapByte(x, y);
                otherMap[static_cast<std::size_t>(y) * w + x] =
                    static_cast<unsigned char>((x * 3 + y * 5) & 0xfe);
            }
        pictureSaved = picture;
        mapSaved = map;
        auxSaved = aux;
        request.image = picture.data();
        request.imageRowBytes = kPictureBytes * w;
        request.mask = map.data();
        request.maskRowBytes = w;
        request.width = w;
        request.height = h;
        request.hairForeColor = kHairRgb;
        request.hairBackColor = kBackRgb;
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    // Left half: fractional alpha with a band stripe and painted alpha cells,
    // all one 8-connected area of the fill's "other" class; right half: keep
    // above, cut below.
    unsigned char mapByte(int x, int y) const {
        if (x >= w / 2) return y < h / 2 ? kKeep : kCut;
        if (y >= h / 3 && y < h / 3 + kBandRows) return kBand;
        const auto alpha = static_cast<unsigned char>(((x + 2 * y) % 127) * 2);
        const bool painted = ((x / kPaintedCell + y / kPaintedCell) % 5) == 0;
        // Painted alpha is odd; keep it off 1 and 255 so it stays "other".
        return painted ? static_cast<unsigned char>(std::clamp(alpha | 1, 3, 253)) : alpha;
    }

    void restorePicture() { std::memcpy(picture.data(), pictureSaved.data(), picture.size()); }
    void restoreMap() { std::memcpy(map.data(), mapSaved.data(), map.size()); }

    // Stroke end points.
    int x0() const { return w / 2 - kStrokeHalfSpan; }
    int y0() const { return h / 2 - kStrokeHalfSpan; }
    int x1() const { return w / 2 + kStrokeHalfSpan; }
    int y1() const { return h / 2 + kStrokeHalfSpan; }

    // Copies back the map and aux bytes around the stroke only: a whole
    // 12 MP copy would outweigh the stroke and flush the caches.
    void restoreStrokeBox() {
        const int left = std::max(x0() - kRestoreMargin, 0);
        const int right = std::min(x1() + kRestoreMargin, w - 1);
        const int top = std::max(y0() - kRestoreMargin, 0);
        const int bottom = std::min(y1() + kRestoreMargin, h - 1);
        for (int y = top; y <= bottom; ++y) {
            const std::size_t at = static_cast<std::size_t>(y) * w + left;
            std::memcpy(&map[at], &mapSaved[at], right - left + 1);
            std::memcpy(&aux[at], &auxSaved[at], right - left + 1);
        }
    }
};

Scene& big() {
    static Scene s(kBigW, kBigH);
    return s;
}
Scene& small() {
    static Scene s(kSmallW, kSmallH);
    return s;
}

// Milliseconds per call of every benchmark, by name, filled by the reporter.
std::map<std::string, double>& timesMs() {
    static std::map<std::string, double> t;
    return t;
}

// Times op, with restore run before each call and not timed. An op returns
// the entry's result; anything but 1 stops the benchmark with an error.
void timed(benchmark::State& state, const std::function<void()>& restore,
           const std::function<int()>& op) {
    for (auto _ : state) {
        state.PauseTiming();
        restore();
        state.ResumeTiming();
        const int result = op();
        benchmark::DoNotOptimize(result);
        benchmark::ClobberMemory();
        if (result != 1) {
            state.SkipWithError("entry did not return 1");
            break;
        }
    }
}

void add(const std::string& name, std::function<void()> restore, std::function<int()> op) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [restore, op](benchmark::State& s) { timed(s, restore, op); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

// A plain copy of `bytes` from one buffer to another: the floor any pass
// over a buffer of that size pays.
void addMemcpy(const std::string& name, std::size_t bytes) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [bytes](benchmark::State& s) {
                                     std::vector<unsigned char> src(bytes, 1), dst(bytes, 0);
                                     for (auto _ : s) {
                                         std::memcpy(dst.data(), src.data(), bytes);
                                         benchmark::ClobberMemory();
                                     }
                                 })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

struct Row {
    std::string name, baseline;
    double aim;
};
std::vector<Row>& wholeRows() {
    static std::vector<Row> r;
    return r;
}
std::vector<std::string>& strokeNames() {
    static std::vector<std::string> r;
    return r;
}

const std::string kPictureCopy = "memcpy picture 48MB";
const std::string kMapCopy = "memcpy map 12MB";

void registerWhole() {
    addMemcpy(kPictureCopy, big().picture.size());
    addMemcpy(kMapCopy, big().map.size());
    Scene& s = big();
    const int picStep = kPictureBytes * s.w;
    auto restorePicture = [&s] { s.restorePicture(); };
    auto restoreMap = [&s] { s.restoreMap(); };
    static unsigned char colour[3] = {kBackgroundRgb[0], kBackgroundRgb[1], kBackgroundRgb[2]};
    for (int mode = 1; mode <= 6; ++mode) {
        const std::string name = "rkShowImageAlpha/mode" + std::to_string(mode);
        add(name, restorePicture, [&s, picStep, mode] {
            return rkShowImageAlpha(s.picture.data(), picStep, s.w, s.h, s.map.data(), s.w, kHi,
                                    kLo, mode, colour);
        });
        wholeRows().push_back({name, kPictureCopy, kDisplayAim});
    }
    add("rkDesaturation", restorePicture, [&s, picStep] {
        return rkDesaturation(s.picture.data(), picStep, s.w, s.h, s.map.data(), s.w, kDesaturate);
    });
    wholeRows().push_back({"rkDesaturation", kPictureCopy, kDisplayAim});
    add("rkShowKeepBlend", restorePicture, [&s, picStep] {
        rkShowKeepBlend(s.picture.data(), picStep, s.w, s.h, s.pictureSaved.data(), picStep,
                        kBlendWeight);
        return 1;
    });
    wholeRows().push_back({"rkShowKeepBlend", kPictureCopy, kDisplayAim});
    add("rkScaleAlpha", restoreMap,
        [&s] { return rkScaleAlpha(s.map.data(), s.w, s.w, s.h, kHi, kLo, 1); });
    wholeRows().push_back({"rkScaleAlpha", kMapCopy, kDisplayAim});
    add("rkMergeAlphaRect", restoreMap, [&s] {
        return rkMergeAlphaRect(s.otherMap.data(), s.w, s.map.data(), s.w, s.w, s.h, kFeather);
    });
    wholeRows().push_back({"rkMergeAlphaRect", kMapCopy, kDisplayAim});
    // Seeded in the alpha half: the fill turns the whole left half to cut.
    add("rkFloodFillAlpha/half", restoreMap, [&s] {
        int rect[4];
        const int result = rkFloodFillAlpha(s.map.data(), s.w, s.w, s.h, 10, 10, 0, 0, 0, 0, rect);
        const bool half = rect[0] == 0 && rect[1] == 0 && rect[2] == s.w / 2 && rect[3] == s.h;
        return half ? result : 0;
    });
    wholeRows().push_back({"rkFloodFillAlpha/half", kMapCopy, kFillAim});
}

void registerStrokes(Scene& s, const std::string& size) {
    auto restore = [&s] { s.restoreStrokeBox(); };
    const std::pair<std::string, std::function<int()>> strokes[] = {
        {"rkDrawLine8u",
         [&s] {
             return rkDrawLine8u(s.map.data(), s.w, s.w, s.h, s.x0(), s.y0(), s.x1(), s.y1(),
                                 kStrokeRadius, 1, 0);
         }},
        {"rkDrawGradientLine8u",
         [&s] {
             rkDrawGradientLine8u(s.map.data(), s.w, s.w, s.h, s.aux.data(), s.w, s.x0(), s.y0(),
                                  s.x1(), s.y1(), kStrokeRadius, 40, 220);
             return 1;
         }},
        {"rkColorRangeSelect",
         [&s] {
             return rkColorRangeSelect(&s.request, s.x0(), s.y0(), s.x1(), s.y1(), kStrokeRadius,
                                       kPickedRgb, kTolerance, true);
         }},
        {"rkHairSelect",
         [&s] { return rkHairSelect(&s.request, s.x0(), s.y0(), s.x1(), s.y1(), kStrokeRadius); }},
    };
    for (const auto& [name, op] : strokes) {
        add(name + "/" + size, restore, op);
        if (size == "1MP") strokeNames().push_back(name);
    }
}

class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& r : runs)
            if (r.run_type == Run::RT_Iteration && !r.error_occurred && r.iterations > 0)
                timesMs()[r.run_name.function_name] =
                    1e3 * r.real_accumulated_time / static_cast<double>(r.iterations);
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        auto& t = timesMs();
        std::printf("\nWhole picture, %d x %d (input restored with the timer paused)\n", kBigW,
                    kBigH);
        std::printf("%-24s %10s %-20s %10s %8s  %s\n", "entry", "ms", "baseline", "base ms",
                    "ratio", "aim");
        for (const Row& r : wholeRows()) {
            if (!t.count(r.name) || !t.count(r.baseline)) continue;
            const double ratio = t[r.name] / t[r.baseline];
            std::printf("%-24s %10.2f %-20s %10.2f %8.2f  %s %.0fx\n", r.name.c_str(), t[r.name],
                        r.baseline.c_str(), t[r.baseline], ratio,
                        ratio <= r.aim ? "within" : "ABOVE", r.aim);
        }
        std::printf("\nStroke, radius %d, about 300 px (box restored with the timer paused)\n",
                    kStrokeRadius);
        std::printf("%-24s %10s %10s %12s  %s\n", "entry", "1MP ms", "12MP ms", "12MP / 1MP",
                    "aim");
        for (const std::string& n : strokeNames()) {
            const std::string a = n + "/1MP", b = n + "/12MP";
            if (!t.count(a) || !t.count(b)) continue;
            const double ratio = t[b] / t[a];
            std::printf("%-24s %10.3f %10.3f %12.2f  %s %.0fx\n", n.c_str(), t[a], t[b], ratio,
                        ratio <= kStrokeAim ? "within" : "ABOVE", kStrokeAim);
        }
    }
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    registerWhole();
    registerStrokes(small(), "1MP");
    registerStrokes(big(), "12MP");
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
