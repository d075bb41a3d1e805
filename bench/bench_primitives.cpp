// Throughput of the image primitives on a 12-megapixel plane (4000 x 3000),
// each beside a plain memcpy of its destination plane measured in the same
// run. Throughput counts every byte read and written, so memcpy of N bytes
// moves 2N; the summary prints each primitive's ratio to its memcpy.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "core/aligned_alloc.h"
#include "core/ipp_filters.h"
#include "core/ippi_arith.h"
#include "core/ippi_convert.h"
#include "core/ippi_copy.h"

namespace {

// The plane size the engine meets in practice: a 12-megapixel photograph.
constexpr int kW = 4000;
constexpr int kH = 3000;
// Margin of the bordered plane: the widest neighbourhood benchmarked (5x5) reads two pixels.
constexpr int kMargin = 2;

// An aligned plane of w x h elements of T that frees itself.
template <typename T>
struct Plane {
    T* data = nullptr;
    int step = 0;
    Plane(int w, int h) {
        data = static_cast<T*>(kcAlignedAllocRows(static_cast<long long>(w) * sizeof(T), h, &step));
        if (!data) throw std::bad_alloc();
        for (int y = 0; y < h; ++y) {
            auto* row = reinterpret_cast<unsigned char*>(data) + static_cast<std::size_t>(y) * step;
            for (int x = 0; x < step; ++x)
                row[x] = static_cast<unsigned char>((x * 7 + y * 13) & 0xff);
        }
    }
    Plane(const Plane&) = delete;
    Plane& operator=(const Plane&) = delete;
    ~Plane() { kcAlignedFree(data); }
    std::size_t bytes(int h) const { return static_cast<std::size_t>(step) * h; }
};

struct Planes {
    Plane<Ipp8u> a{kW, kH}, b{kW, kH};
    Plane<Ipp32f> f{kW, kH};
    Plane<Ipp8u> bordered{kW + 2 * kMargin, kH + 2 * kMargin};
    Plane<Ipp8u> half{kW / 2, kH / 2};
    std::vector<Ipp8u> resizeWork;
    const Ipp8u* inner() const { return bordered.data + kMargin * bordered.step + kMargin; }
};

Planes& planes() {
    static Planes p;
    return p;
}

const IppiSize kRoi{kW, kH};
constexpr std::size_t kPlane8 = static_cast<std::size_t>(kW) * kH;

// Runs op repeatedly and reports read + written bytes per second.
template <typename Op>
void measure(benchmark::State& state, std::size_t bytesMoved, Op op) {
    for (auto _ : state) {
        const IppStatus st = op();
        benchmark::DoNotOptimize(st);
        benchmark::ClobberMemory();
        if (st != ippStsNoErr) state.SkipWithError("primitive failed");
    }
    state.SetBytesProcessed(static_cast<int64_t>(bytesMoved) * state.iterations());
}

void memcpyBaseline(benchmark::State& state, std::size_t bytes) {
    // The float plane is big enough to be the target of the largest copy.
    Planes& p = planes();
    std::vector<unsigned char> src(bytes, 1);
    measure(state, 2 * bytes, [&] {
        std::memcpy(p.f.data, src.data(), bytes);
        return ippStsNoErr;
    });
}

// Each primitive with the destination bytes that its memcpy baseline copies.
struct Entry {
    std::string name;
    std::size_t baselineBytes;
};
std::vector<Entry>& entries() {
    static std::vector<Entry> e;
    return e;
}

std::string baselineName(std::size_t bytes) {
    return "memcpy/" + std::to_string(bytes);
}

template <typename Op>
void add(const std::string& name, std::size_t bytesMoved, std::size_t baselineBytes, Op op) {
    entries().push_back({name, baselineBytes});
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State& s) { measure(s, bytesMoved, op); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

void registerAll() {
    Planes& p = planes();
    for (const std::size_t bytes : {kPlane8, 4 * kPlane8, kPlane8 / 4})
        benchmark::RegisterBenchmark(baselineName(bytes).c_str(),
                                     [=](benchmark::State& s) { memcpyBaseline(s, bytes); })
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();

    add("Copy_8u_C1R", 2 * kPlane8, kPlane8,
        [&p] { return ippiCopy_8u_C1R(p.a.data, p.a.step, p.b.data, p.b.step, kRoi); });
    add("Add_8u_C1IRSfs", 3 * kPlane8, kPlane8,
        [&p] { return ippiAdd_8u_C1IRSfs(p.a.data, p.a.step, p.b.data, p.b.step, kRoi, 1); });
    add("Mul_8u_C1IRSfs(sf=8)", 3 * kPlane8, kPlane8,
        [&p] { return ippiMul_8u_C1IRSfs(p.a.data, p.a.step, p.b.data, p.b.step, kRoi, 8); });
    add("Convert_8u32f_C1R", 5 * kPlane8, 4 * kPlane8,
        [&p] { return ippiConvert_8u32f_C1R(p.a.data, p.a.step, p.f.data, p.f.step, kRoi); });
    add("Erode3x3_8u_C1R", 2 * kPlane8, kPlane8,
        [&p] { return ippiErode3x3_8u_C1R(p.inner(), p.bordered.step, p.b.data, p.b.step, kRoi); });
    add("FilterGauss_8u_C1R(5x5)", 2 * kPlane8, kPlane8, [&p] {
        return ippiFilterGauss_8u_C1R(p.inner(), p.bordered.step, p.b.data, p.b.step, kRoi,
                                      ippMskSize5x5);
    });
    for (const auto& [mode, label] :
         {std::pair{IPPI_INTER_LINEAR, "linear"}, std::pair{IPPI_INTER_CUBIC, "cubic"},
          std::pair{IPPI_INTER_SUPER, "super"}}) {
        const IppiRect src{0, 0, kW, kH}, dst{0, 0, kW / 2, kH / 2};
        int bytes = 0;
        ippiResizeGetBufSize(src, dst, 1, mode, &bytes);
        if (p.resizeWork.size() < static_cast<std::size_t>(bytes)) p.resizeWork.resize(bytes);
        const int m = mode;
        add(std::string("ResizeSqrPixel_8u_C1R(1/2,") + label + ")", kPlane8 + kPlane8 / 4,
            kPlane8 / 4, [&p, src, dst, m] {
                return ippiResizeSqrPixel_8u_C1R(p.a.data, kRoi, p.a.step, src, p.half.data,
                                                 p.half.step, dst, 0.5, 0.5, 0, 0, m,
                                                 p.resizeWork.data());
            });
    }
}

// Console output as usual, then each primitive's throughput beside its memcpy.
class RatioReporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        // With repetitions, the median stands for the primitive; the other
        // aggregates (mean, stddev, cv) are not rates to compare.
        for (const Run& r : runs) {
            const bool median = r.run_type == Run::RT_Aggregate && r.aggregate_name == "median";
            if (r.run_type == Run::RT_Aggregate && !median) continue;
            const auto it = r.counters.find("bytes_per_second");
            if (it == r.counters.end() || r.error_occurred) continue;
            const std::string& name = r.run_name.function_name;
            if (median || !medianSeen_.count(name)) rate_[name] = it->second.value;
            if (median) medianSeen_.insert(name);
        }
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\n%-36s %12s %14s %8s\n", "primitive", "GB/s", "memcpy GB/s", "ratio");
        for (const Entry& e : entries()) {
            const std::string base = baselineName(e.baselineBytes);
            if (!rate_.count(e.name) || !rate_.count(base)) continue;
            const double op = rate_[e.name], mc = rate_[base];
            std::printf("%-36s %12.2f %14.2f %8.2f\n", e.name.c_str(), op / 1e9, mc / 1e9, op / mc);
        }
    }

  private:
    std::map<std::string, double> rate_;
    std::set<std::string> medianSeen_;
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
