// Reading a session script: each operation is an object with an "op" name and
// the fields that operation needs; every field is checked for presence, type
// and range, and every point against the picture, before anything runs.
#include "session_script.h"

#include <map>
#include <nlohmann/json.hpp>

#include "grabcut_road.h"
#include "image_io.h"

namespace {

using nlohmann::json;

// Brush codes of the stroke operations, as the brush entry numbers them.
const std::map<std::string, int> kStrokeBrushTypes = {
    {"cut", 0}, {"keep", 1}, {"band", 2}, {"alpha", 3}};
// Fill operations name what they fill with, in the flood fill's numbering.
const std::map<std::string, int> kFillTypes = {{"cut", 0}, {"keep", 1}, {"band", 2}};
const std::map<std::string, int> kMergeModes = {{"subtract", 0}, {"add", 1}, {"none", 2}};
// Display modes the compositing entry knows.
constexpr int kFirstShowMode = 1;
constexpr int kLastShowMode = 6;
// Band widths the trimap entry takes.
constexpr int kMaxBand = 1024;
// A brush wider than this many pixels is a typing error, not a stroke.
constexpr int kMaxRadius = 4096;
constexpr long long kMaxCoordinate = 1000000000;

class OpReader {
  public:
    OpReader(const json& op, int index, cv::Size picture)
        : op_(op), index_(index), picture_(picture) {}

    [[noreturn]] void fail(const std::string& what) const {
        std::string name = op_.is_object() && op_.contains("op") && op_["op"].is_string()
                               ? " (" + op_["op"].get<std::string>() + ")"
                               : "";
        throw ToolError("script operation " + std::to_string(index_) + name + ": " + what);
    }

    const json& field(const char* key) const {
        if (!op_.contains(key)) fail(std::string("missing field \"") + key + "\"");
        return op_[key];
    }
    bool has(const char* key) const { return op_.contains(key); }

    int integer(const char* key, int lo, int hi) const {
        const json& v = field(key);
        if (!v.is_number_integer()) fail(std::string("\"") + key + "\" must be an integer");
        const long long n = v.get<long long>();
        if (n < lo || n > hi)
            fail(std::string("\"") + key + "\" must lie in " + std::to_string(lo) + ".." +
                 std::to_string(hi));
        return static_cast<int>(n);
    }
    float number(const char* key, float lo, float hi) const {
        const json& v = field(key);
        if (!v.is_number()) fail(std::string("\"") + key + "\" must be a number");
        const double d = v.get<double>();
        if (d < lo || d > hi)
            fail(std::string("\"") + key + "\" must lie in " + std::to_string(lo) + ".." +
                 std::to_string(hi));
        return static_cast<float>(d);
    }
    bool flag(const char* key) const {
        const json& v = field(key);
        if (!v.is_boolean()) fail(std::string("\"") + key + "\" must be true or false");
        return v.get<bool>();
    }
    std::string text(const char* key) const {
        const json& v = field(key);
        if (!v.is_string()) fail(std::string("\"") + key + "\" must be a string");
        return v.get<std::string>();
    }
    std::vector<int> integers(const char* key, size_t count) const {
        const json& v = field(key);
        if (!v.is_array() || v.size() != count)
            fail(std::string("\"") + key + "\" must be a list of " + std::to_string(count) +
                 " integers");
        std::vector<int> out;
        for (const json& e : v) {
            // Beyond +-1e9 nothing lies inside a picture; refusing it here
            // keeps the value from wrapping into one that does.
            if (!e.is_number_integer() || e.get<long long>() < -kMaxCoordinate ||
                e.get<long long>() > kMaxCoordinate)
                fail(std::string("\"") + key + "\" must hold integers of at most 1e9");
            out.push_back(static_cast<int>(e.get<long long>()));
        }
        return out;
    }
    cv::Point point(const char* key) const {
        const std::vector<int> p = integers(key, 2);
        if (p[0] < 0 || p[1] < 0 || p[0] >= picture_.width || p[1] >= picture_.height)
            fail("point (" + std::to_string(p[0]) + ", " + std::to_string(p[1]) +
                 ") lies outside the " + std::to_string(picture_.width) + "x" +
                 std::to_string(picture_.height) + " picture");
        return {p[0], p[1]};
    }
    std::array<unsigned char, 3> colour(const char* key) const {
        const std::vector<int> c = integers(key, 3);
        for (int v : c)
            if (v < 0 || v > 255) fail(std::string("\"") + key + "\" values must lie in 0..255");
        return {static_cast<unsigned char>(c[0]), static_cast<unsigned char>(c[1]),
                static_cast<unsigned char>(c[2])};
    }
    cv::Rect region(const char* key) const {
        const std::vector<int> r = integers(key, 4);
        const cv::Rect rect(r[0], r[1], r[2], r[3]);
        if (rect.width <= 0 || rect.height <= 0 || rect.x < 0 || rect.y < 0 ||
            rect.x + rect.width > picture_.width || rect.y + rect.height > picture_.height)
            fail("region must lie inside the " + std::to_string(picture_.width) + "x" +
                 std::to_string(picture_.height) + " picture");
        return rect;
    }
    int choice(const char* key, const std::map<std::string, int>& names) const {
        const std::string s = text(key);
        const auto it = names.find(s);
        if (it == names.end()) {
            std::string known;
            for (const auto& [n, v] : names) known += (known.empty() ? "" : ", ") + n;
            fail(std::string("\"") + key + "\" must be one of " + known);
        }
        return it->second;
    }

  private:
    const json& op_;
    int index_;
    cv::Size picture_;
};

void readStroke(const OpReader& r, SessionOp& op) {
    op.from = r.point("from");
    op.to = r.point("to");
    op.radius = r.integer("radius", 0, kMaxRadius);
}

// `grabCutOpen` tracks whether a GrabCut selection is open at this point.
SessionOp readOp(const json& j, int index, cv::Size picture, bool& grabCutOpen) {
    const OpReader r(j, index, picture);
    if (!j.is_object()) r.fail("must be an object with an \"op\" field");
    SessionOp op;
    op.index = index;
    op.name = r.text("op");
    if (const auto it = kStrokeBrushTypes.find(op.name); it != kStrokeBrushTypes.end()) {
        op.kind = SessionOpKind::Stroke;
        op.brushType = it->second;
        readStroke(r, op);
        if (op.name == "alpha") op.value = r.integer("value", 0, 255);
    } else if (op.name == "gradient") {
        op.kind = SessionOpKind::Gradient;
        readStroke(r, op);
        op.start = r.integer("start", 0, 255);
        op.end = r.integer("end", 0, 255);
    } else if (op.name == "fill") {
        op.kind = SessionOpKind::Fill;
        op.from = r.point("at");
        op.fillType = r.choice("with", kFillTypes);
    } else if (op.name == "colour-range") {
        op.kind = SessionOpKind::ColourRange;
        readStroke(r, op);
        op.colour = r.colour("colour");
        op.tolerance = r.integer("tolerance", 0, 1000);
        op.keep = r.choice("select", {{"keep", 1}, {"cut", 0}}) == 1;
    } else if (op.name == "hair") {
        op.kind = SessionOpKind::Hair;
        readStroke(r, op);
        op.colour = r.colour("hair");
        op.background = r.colour("background");
    } else if (op.name == "compute") {
        op.kind = SessionOpKind::Compute;
        if (r.has("region")) {
            op.hasRegion = true;
            op.region = r.region("region");
        }
        if (r.has("hires")) op.hires = r.flag("hires");
        if (r.has("merge")) op.mergeMode = r.choice("merge", kMergeModes);
        if (r.has("foreground")) op.foreground = r.flag("foreground");
    } else if (op.name == "show") {
        op.kind = SessionOpKind::Show;
        op.mode = r.integer("mode", kFirstShowMode, kLastShowMode);
        op.file = r.text("file");
        if (op.file.empty() || op.file.find('/') != std::string::npos)
            r.fail("\"file\" must be a plain file name inside the output directory");
        if (r.has("hi")) op.hi = r.integer("hi", 0, 255);
        if (r.has("lo")) op.lo = r.integer("lo", 0, 255);
        if (op.mode >= 3 && op.hi == op.lo) r.fail("\"hi\" and \"lo\" must differ");
        op.colour = r.has("colour") ? r.colour("colour") : std::array<unsigned char, 3>{255, 0, 0};
        if (r.has("desaturate")) {
            op.desaturate = true;
            op.strength = r.number("desaturate", 0.0f, 1.0f);
        }
    } else if (op.name == "grabcut-rect") {
        op.kind = SessionOpKind::GrabCutRect;
        op.region = r.region("rect");
        if (const std::string problem = grabCutRectProblem(op.region, picture); !problem.empty())
            r.fail(problem);
        grabCutOpen = true;
    } else if (op.name == "grabcut-stroke" || op.name == "grabcut-edge") {
        if (!grabCutOpen) r.fail("no GrabCut selection is open (start one with grabcut-rect)");
        if (op.name == "grabcut-stroke") {
            op.kind = SessionOpKind::GrabCutStroke;
            readStroke(r, op);
            op.keep = r.choice("select", {{"foreground", 1}, {"background", 0}}) == 1;
        } else {
            op.kind = SessionOpKind::GrabCutEdge;
            if (r.has("band")) op.band = r.integer("band", 1, kMaxBand);
            grabCutOpen = false;
        }
    } else {
        r.fail("unknown operation \"" + op.name + "\"");
    }
    return op;
}

}  // namespace

std::vector<SessionOp> parseSessionScript(const std::string& text, cv::Size picture) {
    json script;
    try {
        script = json::parse(text);
    } catch (const json::parse_error& e) {
        throw ToolError(std::string("script is not valid JSON: ") + e.what());
    }
    if (!script.is_array()) throw ToolError("script must be a JSON list of operations");
    std::vector<SessionOp> ops;
    bool grabCutOpen = false;
    for (size_t i = 0; i < script.size(); ++i)
        ops.push_back(readOp(script[i], static_cast<int>(i) + 1, picture, grabCutOpen));
    return ops;
}
