// Whole-picture colour-space conversions on a 12-megapixel picture (4000 x
// 3000), each beside a memcpy of its larger side (input or output bytes)
// measured in the same run. The summary prints each conversion's time as a
// multiple of that memcpy's; the aim is at most 3.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/img.h"
#include "interchange/colour_matrix.h"
#include "interchange/yuv_convert.h"

namespace {

// The picture size the engine meets in practice: a 12-megapixel photograph.
constexpr int kW = 4000;
constexpr int kH = 3000;
constexpr std::size_t kPixels = static_cast<std::size_t>(kW) * kH;
// The aim: no conversion slower than this many memcpy of its larger side.
constexpr double kTargetRatio = 3.0;

template <typename T>
struct Planes3 {
    std::unique_ptr<GIMG<T>> p[3];
    GIMG<T>* ptrs[3];
    Planes3() {
        for (int c = 0; c < 3; ++c) {
            p[c] = std::make_unique<GIMG<T>>(kW, kH);
            ptrs[c] = p[c].get();
        }
    }
};

struct Pictures {
    std::vector<unsigned char> rgb = std::vector<unsigned char>(3 * kPixels);
    Planes3<short> yuv;
    Planes3<float> colour;
    Pictures() {
        for (std::size_t i = 0; i < rgb.size(); ++i)
            rgb[i] = static_cast<unsigned char>(i * 7 % 251);
        rkRGBToYUV(rgb.data(), 3 * kW, kW, kH, yuv.ptrs);
        for (int c = 0; c < 3; ++c)
            for (int y = 0; y < kH; ++y) {
                float* row = imgPtr(*colour.ptrs[c], 0, y);
                for (int x = 0; x < kW; ++x)
                    row[x] = static_cast<float>((x * 3 + y + c) % 256) / 256;
            }
    }
};

Pictures& pictures() {
    static Pictures p;
    return p;
}

// Both the conversion and its memcpy count the same bytes (the larger side),
// so the ratio of their rates is the inverse ratio of their times.
template <typename Op>
void measure(benchmark::State& state, std::size_t bytes, Op op) {
    for (auto _ : state) {
        op();
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(static_cast<int64_t>(bytes) * state.iterations());
}

std::string baselineName(std::size_t bytes) {
    return "memcpy/" + std::to_string(bytes);
}

struct Entry {
    std::string name;
    std::size_t bytes;
};
std::vector<Entry>& entries() {
    static std::vector<Entry> e;
    return e;
}

template <typename Op>
void add(const std::string& name, std::size_t bytes, Op op) {
    entries().push_back({name, bytes});
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& s) { measure(s, bytes, op); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

void registerAll() {
    constexpr std::size_t yuvBytes = 3 * sizeof(short) * kPixels;  // larger than the 8-bit RGB
    constexpr std::size_t floatBytes = 3 * sizeof(float) * kPixels;
    for (const std::size_t bytes : {yuvBytes, floatBytes})
        benchmark::RegisterBenchmark(
            baselineName(bytes).c_str(),
            [bytes](benchmark::State& s) {
                std::vector<unsigned char> src(bytes, 1), dst(bytes, 0);
                measure(s, bytes, [&] { std::memcpy(dst.data(), src.data(), bytes); });
            })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    Pictures& p = pictures();
    add("rkRGBToYUV(8u)", yuvBytes, [&p] { rkRGBToYUV(p.rgb.data(), 3 * kW, kW, kH, p.yuv.ptrs); });
    add("rkYUVToRGB(8u)", yuvBytes, [&p] { rkYUVToRGB(p.yuv.ptrs, p.rgb.data(), 3 * kW, kW, kH); });
    add("RGB2YCbCr", floatBytes, [&p] { RGB2YCbCr(p.colour.ptrs, false); });
}

class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& r : runs) {
            if (r.run_type == Run::RT_Aggregate && r.aggregate_name != "median") continue;
            const auto it = r.counters.find("bytes_per_second");
            if (it != r.counters.end() && !r.error_occurred)
                rate_[r.run_name.function_name] = it->second.value;
        }
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\n%-20s %10s %14s %16s\n", "conversion", "ms", "memcpy ms", "time / memcpy");
        for (const Entry& e : entries()) {
            const std::string base = baselineName(e.bytes);
            if (!rate_.count(e.name) || !rate_.count(base)) continue;
            const double ms = 1e3 * e.bytes / rate_[e.name], mc = 1e3 * e.bytes / rate_[base];
            std::printf("%-20s %10.2f %14.2f %10.2f (%s)\n", e.name.c_str(), ms, mc, ms / mc,
                        ms / mc <= kTargetRatio ? "within 3x" : "ABOVE 3x");
        }
    }

  private:
    std::map<std::string, double> rate_;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    registerAll();
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
