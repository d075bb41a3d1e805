// Every result an entry can hand back, with the meaning its log line gives.
// Thrown codes travel up as bare ints and leave the entry unchanged, so the
// table spans the runtime, the solver, the matting core and the pipeline.
#pragma once

// Meaning of a result, for the line an entry logs when it fails; null for a
// code no entry returns.
inline const char* rkResultMeaning(int code) {
    switch (code) {
        case 1: return "success";
        case 0: return "the solver ran out of memory";
        case -1: return "a piece of the job is too large to solve in the memory available";
        case -2: return "invalid argument";
        case -5: return "not enough keep and cut strokes to compute";
        case -6: return "out of memory or an unexpected failure";
        case 102: return "an image or work buffer could not be allocated";
        case 121: return "the direct solver's analysis failed";
        case 122: return "the direct solver's factorisation failed";
        case 123: return "the direct solver's solve failed";
        case 125: return "the direct solver ran out of memory";
        case 130: return "a matting work array could not be allocated";
        default: return nullptr;
    }
}
