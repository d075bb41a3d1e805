// `keepcut batch`: the matte road of `keepcut matte` over every picture in a
// folder, each with the trimap of the same name from another folder. A bad
// pair is reported and passed over, never the end of the run.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <system_error>
#include <vector>

#include "commands.h"
#include "image_io.h"

namespace fs = std::filesystem;

namespace {

// The regular, non-hidden files of a folder, sorted by name; a missing or
// empty folder is the end of the run.
std::vector<fs::path> filesIn(const std::string& dir, const std::string& what) {
    std::error_code ec;
    if (!fs::exists(dir, ec)) throw ToolError(what + " folder not found: " + dir);
    if (!fs::is_directory(dir, ec)) throw ToolError(what + " folder is not a folder: " + dir);
    std::vector<fs::path> files;
    for (const fs::directory_entry& e : fs::directory_iterator(dir, ec)) {
        const std::string name = e.path().filename().string();
        if (e.is_regular_file(ec) && name.front() != '.') files.push_back(e.path());
    }
    if (ec) throw ToolError("cannot read the " + what + " folder " + dir + ": " + ec.message());
    if (files.empty()) throw ToolError(what + " folder has no files: " + dir);
    std::sort(files.begin(), files.end());
    return files;
}

// The trimap for a picture: the file of the same name if there is one, else
// the one file whose name differs only in its extension.
fs::path trimapFor(const fs::path& picture, const std::vector<fs::path>& trimaps) {
    std::vector<fs::path> sameStem;
    for (const fs::path& t : trimaps) {
        if (t.filename() == picture.filename()) return t;
        if (t.stem() == picture.stem()) sameStem.push_back(t);
    }
    const std::string pattern = picture.stem().string() + ".*";
    if (sameStem.empty()) throw ToolError("no trimap named " + pattern);
    if (sameStem.size() > 1)
        throw ToolError("several trimaps named " + pattern + ", and none is " +
                        picture.filename().string());
    return sameStem.front();
}

// Pictures that differ only in their extension would write the same files.
std::map<fs::path, int> stemCounts(const std::vector<fs::path>& pictures) {
    std::map<fs::path, int> counts;
    for (const fs::path& p : pictures) ++counts[p.stem()];
    return counts;
}

void checkOutputFolder(const BatchOptions& o) {
    std::error_code ec;
    fs::create_directories(o.outDir, ec);
    if (!fs::is_directory(o.outDir, ec)) throw ToolError("cannot create output folder " + o.outDir);
    // Mattes are named like their pictures and trimaps: they would overwrite them.
    if (fs::equivalent(o.outDir, o.pictureDir, ec) || fs::equivalent(o.outDir, o.trimapDir, ec))
        throw ToolError("the output folder must not be the picture or trimap folder: " + o.outDir);
}

}  // namespace

int runBatch(const BatchOptions& o) {
    const std::vector<fs::path> pictures = filesIn(o.pictureDir, "picture");
    const std::vector<fs::path> trimaps = filesIn(o.trimapDir, "trimap");
    checkOutputFolder(o);
    const std::map<fs::path, int> stems = stemCounts(pictures);

    const size_t total = pictures.size();
    std::vector<std::string> failures;
    for (size_t i = 0; i < total; ++i) {
        const fs::path& picture = pictures[i];
        const std::string name = picture.filename().string();
        std::printf("pair %zu of %zu: %s\n", i + 1, total, name.c_str());
        std::fflush(stdout);  // ahead of the engine's bar on stderr
        try {
            if (stems.at(picture.stem()) > 1)
                throw ToolError("another picture is named " + picture.stem().string() +
                                ".* and would write the same files");
            MatteOptions m;
            m.picture = picture.string();
            m.trimap = trimapFor(picture, trimaps).string();
            m.alphaOut = (fs::path(o.outDir) / (picture.stem().string() + ".png")).string();
            if (o.cutout)
                m.cutoutOut =
                    (fs::path(o.outDir) / (picture.stem().string() + "-cutout.png")).string();
            m.hires = o.hires;
            m.coarse = o.coarse;
            const MatteSummary done = matteOnePair(m);
            std::printf("  matte %dx%d by the %s in %.2f s -> %s\n", done.size.width,
                        done.size.height, done.mode, done.seconds, m.alphaOut.c_str());
        } catch (const std::exception& e) {
            // ToolError says what is wrong with the pair; anything else (a
            // failed allocation, an OpenCV error) is as much the pair's fault.
            failures.push_back(name + ": " + e.what());
            std::fprintf(stderr, "  failed: %s\n", e.what());
        }
    }

    for (const std::string& f : failures) std::fprintf(stderr, "keepcut: failed %s\n", f.c_str());
    std::fprintf(failures.empty() ? stdout : stderr, "%zu of %zu pairs done\n",
                 total - failures.size(), total);
    return failures.empty() ? 0 : 1;
}
