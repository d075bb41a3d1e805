// One keep/cut job on the generated sample, as the reliability tests run it in
// a child: the request is built first, then the main entry runs between two
// hooks, then the painted bytes are checked.
#pragma once

#include <functional>

namespace kc_sweep {

struct JobSpec {
    const char* name;
    int width, height;
    int hiResPass;
    bool region;  // a region job over part of the picture (cellMode 1, merged by maximum)
    bool recoverForeground;
};

struct JobOutcome {
    int result;
    int paintedChanged;  // painted (odd) input bytes that changed
    int oddResults;      // unpainted input bytes of the region that came out odd
    bool strokesIntact() const { return paintedChanged == 0 && oddResults == 0; }
};

// The results the main entry documents: success, the engine's thrown codes
// (a piece too large, invalid argument, too few strokes, solver and matting
// failures) and -6 for memory or an unexpected failure.
bool isDocumentedResult(int result);

// Builds the job, calls before(), runs rkKeepCutToAlpha, calls after() and
// checks the painted bytes. Nothing between the hooks allocates but the entry.
JobOutcome runJob(const JobSpec& spec, const std::function<void()>& before,
                  const std::function<void()>& after);

}  // namespace kc_sweep
