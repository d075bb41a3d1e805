// Trace lines of the image records, formatted into a stack buffer: they are
// written on the release path too, where memory may be short.
#include "interchange/image_record_trace.h"

#include <cstdio>

#include "runtime/environment.h"
#include "runtime/err_msg.h"

namespace {
// Four pointers and a dozen ints with their separators fit well within this.
constexpr int kTraceLineBytes = 320;
}  // namespace

void traceReallocRequest(const RKPImage* img, int type, int width, int height, int numPlane) {
    char line[kTraceLineBytes];
    std::snprintf(line, sizeof line, "%s-%p-%d %d %d %d %d %d %d %d %d- %p %p %p %p\n",
                  "ImageReAlloc", static_cast<const void*>(img), img->type, img->width, img->height,
                  img->numPlane, type, width, height, numPlane, getRKPNUM(), img->planes[0],
                  img->planes[1], img->planes[2], img->planes[3]);
    copyErrMsg(line);
}

void traceReallocDone(const RKPImage* img) {
    char line[kTraceLineBytes];
    std::snprintf(line, sizeof line, "%s- %p %p %p %p %d\n", "ImageReAlloc done", img->planes[0],
                  img->planes[1], img->planes[2], img->planes[3], getRKPNUM());
    copyErrMsg(line);
}

void traceRecord(const char* what, const RKPImage* img) {
    char line[kTraceLineBytes];
    std::snprintf(line, sizeof line, "%s-%p - %d %d %d %d %d- %p %p %p %p\n", what,
                  static_cast<const void*>(img), img->type, img->width, img->height, img->numPlane,
                  getRKPNUM(), img->planes[0], img->planes[1], img->planes[2], img->planes[3]);
    copyErrMsg(line);
}
