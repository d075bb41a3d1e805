// The type-code table and address arithmetic on host buffers.
#include "interchange/image_type_codes.h"

#include <cstddef>
#include <opencv2/core.hpp>

namespace {

struct TypeCode {
    int code;
    int channels;
    int bytesPerCh;
    int pixelBytes;  // 0: the code has no interleaved layout the engine addresses
    int cvType;      // 0 where no matrix type goes with the code
};

constexpr TypeCode kCodes[] = {
    {1, 3, 1, 3, 0},  {3, 3, 2, 6, 0},         {5, 3, 1, 4, 0},         {6, 3, 2, 8, 0},
    {7, 1, 1, 1, 0},  {8, 1, 2, 2, 0},         {16, 1, 1, 0, CV_8UC1},  {17, 3, 1, 0, CV_8UC3},
    {18, 3, 1, 0, 0}, {32, 1, 2, 0, CV_16UC1}, {33, 3, 2, 0, CV_16UC3}, {34, 3, 2, 0, 0},
};

// Any code outside the table: no channels, bytes, matrix type or address.
constexpr TypeCode kUnknown{0, 0, 1, 0, 0};

const TypeCode& lookUp(int type) {
    for (const TypeCode& c : kCodes)
        if (c.code == type) return c;
    return kUnknown;
}

}  // namespace

int getNumChns(int type) {
    return lookUp(type).channels;
}

int getNumBytePerCh(int type) {
    return lookUp(type).bytesPerCh;
}

int getCvTypeFromImageType(int type) {
    return lookUp(type).cvType;
}

const void* addImgPtr(int type, const void* base, int step, int x, int y) {
    const int pixelBytes = lookUp(type).pixelBytes;
    if (pixelBytes == 0) return nullptr;
    return static_cast<const char*>(base) + static_cast<std::ptrdiff_t>(y) * step +
           static_cast<std::ptrdiff_t>(x) * pixelBytes;
}

void* addImgPtr(int type, void* base, int step, int x, int y) {
    return const_cast<void*>(addImgPtr(type, static_cast<const void*>(base), step, x, y));
}
