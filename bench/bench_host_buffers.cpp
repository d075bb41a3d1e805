// Host pixel buffers at 12 megapixels (4000 x 3000): 8-bit RGB (code 1) and
// 16-bit RGB (code 3) into three float planes and back, each beside a memcpy
// of its larger side (the three float planes, 144 MB) measured in the same
// run. The summary prints each conversion's time as a multiple of that copy.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "core/img.h"
#include "interchange/float_to_host.h"
#include "interchange/host_to_float.h"

namespace {

// The picture size the engine meets in practice: a 12-megapixel photograph.
constexpr int kW = 4000;
constexpr int kH = 3000;
// Elements per host pixel: R, G, B.
constexpr int kElems = 3;
// The larger side of every conversion here: three float planes.
constexpr std::size_t kFloatBytes = std::size_t(kW) * kH * 3 * sizeof(float);
const char* const kBaseline = "memcpy(float planes)";

struct Buffers {
    std::vector<unsigned char> host8 = std::vector<unsigned char>(std::size_t(kW) * kH * kElems);
    std::vector<unsigned short> host16 = std::vector<unsigned short>(std::size_t(kW) * kH * kElems);
    std::unique_ptr<GIMG<float>> own[3];
    GIMG<float>* planes[3];
    Buffers() {
        for (std::size_t i = 0; i < host8.size(); ++i) {
            host8[i] = static_cast<unsigned char>(i * 7 % 251);
            host16[i] = static_cast<unsigned short>(i * 7 % 32769);
        }
        for (int c = 0; c < 3; ++c) {
            own[c] = std::make_unique<GIMG<float>>(kW, kH);
            planes[c] = own[c].get();
        }
    }
};

Buffers& buffers() {
    static Buffers b;
    return b;
}

template <typename Fn>
void add(const char* name, Fn fn) {
    benchmark::RegisterBenchmark(name, fn)->Unit(benchmark::kMillisecond)->UseRealTime();
}

void registerAll() {
    Buffers& b = buffers();
    add(kBaseline, [](benchmark::State& s) {
        std::vector<unsigned char> src(kFloatBytes, 1), dst(kFloatBytes);
        for (auto _ : s) {
            std::memcpy(dst.data(), src.data(), kFloatBytes);
            benchmark::ClobberMemory();
        }
    });
    constexpr int step8 = kW * kElems;
    constexpr int step16 = kW * kElems * 2;
    // The float-to-host forms multiply their source in place: after a few
    // rounds it saturates, which costs the loop nothing.
    add("code 1 -> float planes", [&b](benchmark::State& s) {
        for (auto _ : s)
            benchmark::DoNotOptimize(convertToIMG332f(1, b.host8.data(), step8, 0, 0, b.planes));
    });
    add("float planes -> code 1", [&b](benchmark::State& s) {
        for (auto _ : s)
            benchmark::DoNotOptimize(convertFromIMG332f(b.planes, 1, b.host8.data(), step8, 0, 0));
    });
    add("code 3 -> float planes", [&b](benchmark::State& s) {
        for (auto _ : s)
            benchmark::DoNotOptimize(convertToIMG332f(3, b.host16.data(), step16, 0, 0, b.planes));
    });
    add("float planes -> code 3", [&b](benchmark::State& s) {
        for (auto _ : s)
            benchmark::DoNotOptimize(
                convertFromIMG332f(b.planes, 3, b.host16.data(), step16, 0, 0));
    });
}

// Console output as usual, then each conversion's time over the memcpy's.
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& r : runs) {
            const bool median = r.run_type == Run::RT_Aggregate && r.aggregate_name == "median";
            if ((r.run_type == Run::RT_Aggregate && !median) || r.error_occurred) continue;
            const std::string& name = r.run_name.function_name;
            // With repetitions the median stands for the conversion.
            if (!seconds_.count(name)) order_.push_back(name);
            if (median || !medianSeen_.count(name)) seconds_[name] = r.GetAdjustedRealTime();
            if (median) medianSeen_.insert(name);
        }
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        if (!seconds_.count(kBaseline)) return;
        const double base = seconds_[kBaseline];
        std::printf("\n%-28s %10s %10s %8s\n", "conversion", "ms", "memcpy ms", "ratio");
        for (const std::string& name : order_) {
            if (name == kBaseline || !seconds_.count(name)) continue;
            std::printf("%-28s %10.2f %10.2f %8.2f\n", name.c_str(), seconds_[name], base,
                        seconds_[name] / base);
        }
    }

  private:
    std::map<std::string, double> seconds_;
    std::set<std::string> medianSeen_;
    std::vector<std::string> order_;
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
