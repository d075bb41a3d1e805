// The guard around the GrabCut stroke. The stroke has results of its own: an
// engine code n thrown as an int becomes n - 1000, memory exhaustion -1 and
// any other failure -1000, each with a line in the message log. Nothing
// escapes to the host.
#pragma once

#include <new>
#include <opencv2/core.hpp>
#include <stdexcept>

// An engine code n thrown inside gives n minus this.
inline constexpr int kGrabCutThrownCodeOffset = 1000;
inline constexpr int kGrabCutOutOfMemory = -1;
inline constexpr int kGrabCutOtherFailure = -1000;

// Appends "<entry>: result <result>, <what>" to the log; returns result.
int grabCutLogFailure(const char* entry, int result, const char* what) noexcept;
// The out-of-memory text and line; returns -1.
int grabCutOutOfMemory(const char* entry) noexcept;
// The line of a thrown engine code; returns code - 1000.
int grabCutThrownCode(const char* entry, int code) noexcept;

template <typename Body>
int grabCutGuard(const char* entry, Body&& body) noexcept {
    try {
        return body();
    } catch (int code) {
        return grabCutThrownCode(entry, code);
    } catch (const std::bad_alloc&) {
        return grabCutOutOfMemory(entry);
    } catch (const cv::Exception& e) {
        // OpenCV reports its own allocation failures as an exception of its
        // type: memory exhaustion all the same.
        if (e.code == cv::Error::StsNoMem) return grabCutOutOfMemory(entry);
        return grabCutLogFailure(entry, kGrabCutOtherFailure, e.what());
    } catch (const std::exception& e) {
        return grabCutLogFailure(entry, kGrabCutOtherFailure, e.what());
    } catch (...) {
        return grabCutLogFailure(entry, kGrabCutOtherFailure, "an unknown failure");
    }
}
