// Closed-form matting at 0.1 to 2 million unknowns: assembly, the direct
// solver's phases and peak memory, then the CG path against the direct result.
// A real picture and trimap are upscaled to reach each size; without the
// shared data a generated picture stands in.
//
//   bench_matting [--max-unknowns N] [--compare]
//   bench_matting --at N [--repeat R] OPTIONS [--vs OPTIONS ...]
// --at measures variants of the direct solver in turn at one size (options:
// --ordering given|given-amd|amd|default|metis|given-metis, --threads T,
// --relax n0,n1,n2,z0,z1,z2, --small-pages, --simplicial).
// --compare also measures the direct solver's alternatives (orderings,
// simplicial factorisation) at 0.2 million unknowns.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <string>
#include <vector>

#include "matting/cfmatt.h"
#include "matting/direct_solver_stats.h"
#include "support/peak_memory.h"

namespace {

struct Picture {
    cv::Mat rgb;     // 8-bit, three channels, red first
    cv::Mat trimap;  // 0 background, 255 foreground, anything else unknown
    std::string name;
};

Picture loadPicture() {
    const std::filesystem::path dir = std::filesystem::path(KC_SHARED_DATA_DIR) / "alphamatting";
    Picture p;
    const auto in = dir / "input" / "GT04.png";
    const auto tri = dir / "trimap1" / "GT04.png";
    if (std::filesystem::exists(in) && std::filesystem::exists(tri)) {
        cv::Mat bgr = cv::imread(in.string(), cv::IMREAD_COLOR);
        cv::cvtColor(bgr, p.rgb, cv::COLOR_BGR2RGB);
        p.trimap = cv::imread(tri.string(), cv::IMREAD_GRAYSCALE);
        p.name = "alphamatting GT04 (trimap1)";
        return p;
    }
    // Generated: smooth colour fields with a soft disc, unknown ring around it.
    const int w = 800, h = 600;
    p.rgb.create(h, w, CV_8UC3);
    p.trimap.create(h, w, CV_8U);
    cv::RNG rng(7);
    cv::Mat noise(h / 8, w / 8, CV_8UC3);
    rng.fill(noise, cv::RNG::UNIFORM, 0, 255);
    cv::resize(noise, p.rgb, p.rgb.size(), 0, 0, cv::INTER_CUBIC);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const double r = std::hypot(x - w / 2.0, y - h / 2.0);
            p.trimap.at<unsigned char>(y, x) = r < 150 ? 255 : (r > 240 ? 0 : 128);
        }
    p.name = "generated";
    return p;
}

// Variables of the system for a trimap: pixels within two of an unknown one.
long long countVariables(const cv::Mat& trimap) {
    cv::Mat known = (trimap == 0) | (trimap == 255);
    cv::Mat eroded;
    cv::erode(known, eroded, cv::Mat::ones(5, 5, CV_8U), cv::Point(-1, -1), 1,
              cv::BORDER_REPLICATE);
    return static_cast<long long>(eroded.total()) - cv::countNonZero(eroded);
}

Picture scaledTo(const Picture& p, long long unknowns) {
    Picture s;
    double scale = std::sqrt(static_cast<double>(unknowns) / countVariables(p.trimap));
    for (int pass = 0; pass < 3; ++pass) {
        cv::resize(p.rgb, s.rgb, cv::Size(), scale, scale, cv::INTER_LINEAR);
        cv::resize(p.trimap, s.trimap, cv::Size(), scale, scale, cv::INTER_NEAREST);
        scale *= std::sqrt(static_cast<double>(unknowns) / countVariables(s.trimap));
    }
    return s;
}

struct RunResult {
    double total = 0.0;
    DirectSolveTimes times;
    double peakMB = 0.0;
    cv::Mat alpha;
    int status = 0;
};

RunResult solve(const Picture& p, bool direct) {
    RunResult r;
    std::vector<cv::Mat> planes;
    cv::split(p.rgb, planes);
    for (auto& pl : planes) pl = pl.clone();  // one common step
    unsigned char* ptrs[3] = {planes[0].data, planes[1].data, planes[2].data};
    r.alpha = p.trimap.clone();
    CFMatt m;
    m.setSolver(direct);
    resetPeakMemory();
    const auto t0 = std::chrono::steady_clock::now();
    try {
        r.status = m.CompAlpha(ptrs, static_cast<int>(planes[0].step), p.rgb.cols, p.rgb.rows,
                               r.alpha.data, static_cast<int>(r.alpha.step));
    } catch (int code) {
        r.status = code;
    }
    r.total = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    r.peakMB = peakMB();
    r.times = lastDirectSolveTimes();
    return r;
}

void compareAlternatives(const Picture& base, long long unknowns) {
    const Picture p = scaledTo(base, unknowns);
    struct Alt {
        const char* name;
        DirectSolveTuning t;
    };
    const Alt alts[] = {
        {"supernodal LL', grid dissection (default)", {}},
        {"supernodal LL', grid dissection only", {.ordering = DirectOrdering::GivenOnly}},
        {"supernodal LL', AMD only", {.ordering = DirectOrdering::MinDegree}},
        {"supernodal LL', graph partitioning", {.ordering = DirectOrdering::GraphPartition}},
        {"supernodal LL', two dense-kernel threads", {.blasThreads = 2}},
        {"supernodal LL', 4 KB pages only", {.hugePages = false}},
        {"simplicial LDL', grid dissection", {.supernodal = false}},
    };
    std::printf("\nDirect solver alternatives at %lld unknowns:\n", countVariables(p.trimap));
    std::printf("%-52s %9s %9s %9s %12s %10s\n", "", "analyse", "factor", "solve", "nnz(L)",
                "GFlop");
    for (const Alt& a : alts) {
        setDirectSolveTuning(a.t);
        const RunResult r = solve(p, true);
        std::printf("%-52s %8.2fs %8.2fs %8.2fs %12.0f %10.2f%s\n", a.name, r.times.analyse,
                    r.times.factorise, r.times.solve, r.times.factorNonzeros,
                    r.times.factorFlops / 1e9,
                    r.times.givenOrderingUsed ? "  (grid order won)" : "");
    }
    setDirectSolveTuning(DirectSolveTuning{});
}

// Configurations at one size, direct path only, run in turn and repeated so
// that they share the machine's load: min and median of every phase.
struct Variant {
    std::string label;
    DirectSolveTuning tuning;
    std::vector<double> assembly, analyse, factor, solve, total, cpu, peak;
    DirectSolveTimes last;
};

void measureAt(const Picture& base, long long unknowns, int repeats,
               std::vector<Variant>& variants) {
    const Picture p = scaledTo(base, unknowns);
    std::printf("%lld unknowns, %d runs of each variant (min/median seconds)\n",
                countVariables(p.trimap), repeats);
    for (int i = 0; i < repeats; ++i)
        for (Variant& v : variants) {
            setDirectSolveTuning(v.tuning);
            const double cpu0 = std::clock() / static_cast<double>(CLOCKS_PER_SEC);
            const RunResult r = solve(p, true);
            v.cpu.push_back(std::clock() / static_cast<double>(CLOCKS_PER_SEC) - cpu0);
            if (r.status != 0) {
                std::printf("%s: direct solve failed: %d\n", v.label.c_str(), r.status);
                return;
            }
            const double solverTime = r.times.analyse + r.times.factorise + r.times.solve;
            v.assembly.push_back(r.total - solverTime);
            v.analyse.push_back(r.times.analyse);
            v.factor.push_back(r.times.factorise);
            v.solve.push_back(r.times.solve);
            v.total.push_back(r.total);
            v.peak.push_back(r.peakMB);
            v.last = r.times;
        }
    setDirectSolveTuning(DirectSolveTuning{});
    auto st = [](std::vector<double> x) {
        std::sort(x.begin(), x.end());
        return std::make_pair(x.front(), x[x.size() / 2]);
    };
    for (const Variant& v : variants) {
        const auto as = st(v.assembly), an = st(v.analyse), fa = st(v.factor), so = st(v.solve),
                   to = st(v.total), cp = st(v.cpu);
        std::printf(
            "%-28s asm %.2f/%.2f an %.2f/%.2f fac %.2f/%.2f sol %.2f/%.2f total "
            "%.2f/%.2f cpu %.2f/%.2f peak %.0f MB nnz(L) %.0f %.2f GFlop%s%s\n",
            v.label.c_str(), as.first, as.second, an.first, an.second, fa.first, fa.second,
            so.first, so.second, to.first, to.second, cp.first, cp.second, st(v.peak).second,
            v.last.factorNonzeros, v.last.factorFlops / 1e9,
            v.last.givenOrderingUsed ? " grid" : "", v.last.perturbed ? " perturbed" : "");
    }
}

DirectOrdering orderingNamed(const std::string& s) {
    if (s == "given") return DirectOrdering::GivenOnly;
    if (s == "amd") return DirectOrdering::MinDegree;
    if (s == "default") return DirectOrdering::LibraryDefault;
    if (s == "metis") return DirectOrdering::GraphPartition;
    if (s == "given-metis") return DirectOrdering::GivenOrGraphPartition;
    return DirectOrdering::GivenOrMinDegree;
}

}  // namespace

int main(int argc, char** argv) {
    long long maxUnknowns = 2000000;
    bool compare = false;
    long long at = 0;
    int repeats = 3;
    std::vector<Variant> variants(1);
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--vs")) variants.emplace_back();
        DirectSolveTuning& tuning = variants.back().tuning;
        if (!std::strncmp(argv[i], "--", 2) && std::strcmp(argv[i], "--at") &&
            std::strcmp(argv[i], "--repeat"))
            variants.back().label +=
                argv[i] + std::string(i + 1 < argc && argv[i + 1][0] != '-'
                                          ? std::string(" ") + argv[i + 1] + " "
                                          : " ");
        if (!std::strcmp(argv[i], "--max-unknowns") && i + 1 < argc)
            maxUnknowns = std::atoll(argv[++i]);
        if (!std::strcmp(argv[i], "--compare")) compare = true;
        if (!std::strcmp(argv[i], "--at") && i + 1 < argc) at = std::atoll(argv[++i]);
        if (!std::strcmp(argv[i], "--repeat") && i + 1 < argc) repeats = std::atoi(argv[++i]);
        if (!std::strcmp(argv[i], "--ordering") && i + 1 < argc)
            tuning.ordering = orderingNamed(argv[++i]);
        if (!std::strcmp(argv[i], "--threads") && i + 1 < argc)
            tuning.blasThreads = std::atoi(argv[++i]);
        if (!std::strcmp(argv[i], "--simplicial")) tuning.supernodal = false;
        if (!std::strcmp(argv[i], "--small-pages")) tuning.hugePages = false;
        if (!std::strcmp(argv[i], "--relax") && i + 1 < argc)
            std::sscanf(argv[++i], "%d,%d,%d,%lf,%lf,%lf", &tuning.nrelax[0], &tuning.nrelax[1],
                        &tuning.nrelax[2], &tuning.zrelax[0], &tuning.zrelax[1], &tuning.zrelax[2]);
    }
    const Picture base = loadPicture();
    if (at > 0) {
        measureAt(base, at, std::max(repeats, 1), variants);
        return 0;
    }
    std::printf("Closed-form matting, picture: %s\n", base.name.c_str());
    std::printf("%9s %11s %9s %9s %9s %9s %9s %9s | %8s %9s %9s\n", "unknowns", "image", "assembly",
                "analyse", "factor", "solve", "total", "peak MB", "CG", "CG max", "CG rms");
    const long long targets[] = {100000, 200000, 500000, 1000000, 2000000};
    for (long long target : targets) {
        if (target > maxUnknowns) {
            std::printf("%9lld skipped (--max-unknowns)\n", target);
            continue;
        }
        const Picture p = scaledTo(base, target);
        const RunResult d = solve(p, true);
        if (d.status != 0) {
            std::printf("%9lld direct solve failed: %d\n", target, d.status);
            continue;
        }
        const double solverTime = d.times.analyse + d.times.factorise + d.times.solve;
        const RunResult c = solve(p, false);
        cv::Mat diff;
        cv::absdiff(d.alpha, c.alpha, diff);
        double maxDiff = 0.0;
        cv::minMaxLoc(diff, nullptr, &maxDiff);
        cv::Mat unknown = (p.trimap != 0) & (p.trimap != 255);
        diff.convertTo(diff, CV_64F);
        const double rms = std::sqrt(cv::mean(diff.mul(diff), unknown)[0]);
        std::printf(
            "%9lld %5dx%-5d %8.2fs %8.2fs %8.2fs %8.2fs %8.2fs %9.0f | %7.2fs %9.0f %9.2f\n",
            countVariables(p.trimap), p.rgb.cols, p.rgb.rows, d.total - solverTime, d.times.analyse,
            d.times.factorise, d.times.solve, d.total, d.peakMB, c.total, maxDiff, rms);
        std::fflush(stdout);
    }
    if (compare) compareAlternatives(base, 200000);
    return 0;
}
