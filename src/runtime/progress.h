// Progress reporting: the flat counter the solvers kick, the nested-stage
// singleton that reports millionths, and the per-task step reporter.
#pragma once

#include "api/keepcut.h"

// Flat counter state, one per thread: a host installs the callback on the
// thread it computes on, and the solvers kick from that same thread, so two
// requests on two threads never see each other's callback or count.
extern thread_local RKProgressProc gProgProc;
extern thread_local void* gProgDatap;
extern thread_local int gProgressCurrent;
extern thread_local int gProgressInc;
extern thread_local int gProgressTotal;

// Deepest nesting level of CProgMsgGlobal; deeper stages overwrite this one.
inline constexpr int kProgMaxLevel = 126;
// Slots of the stage arrays.
inline constexpr int kProgLevels = 128;
// CProgMsgGlobal reports in millionths of the whole job.
inline constexpr int kProgFullScale = 1000000;

// Nested stages: each stage has a weight relative to its parent and a done
// fraction; the reported value is the weighted sum of the done fractions.
// There is one instance per thread, like the flat counter.
class CProgMsgGlobal {
  public:
    RKProgressProc callback = nullptr;
    void* data = nullptr;
    int level = 0;
    float weight[kProgLevels] = {};
    float done[kProgLevels] = {};

    static thread_local CProgMsgGlobal* m_inst;
    // This thread's instance, created on first use; it lives as long as the
    // thread.
    static CProgMsgGlobal* Inst();

    CProgMsgGlobal() { setup(nullptr, nullptr, 0.0f); }
    CProgMsgGlobal(const CProgMsgGlobal&) = delete;
    CProgMsgGlobal& operator=(const CProgMsgGlobal&) = delete;
    virtual ~CProgMsgGlobal();

    void setup(RKProgressProc cb, void* d, float unused);
    void setProgData(RKProgressProc cb, void* d);
    void progStart(float w);
    float progDone();
    int progress();
    int progComplete();
};

// Record shared between a CProgMsg and whoever created it.
struct ProgRecord {
    float scale = 0.0f;  // counter units that a fraction of 1.0 stands for
    int total = 0;
    RKProgressProc callback = nullptr;
    void* data = nullptr;
    int current = 0;
};

// Spreads a share of a shared counter over a number of steps.
class CProgMsg {
  public:
    ProgRecord* record;  // borrowed; the creator keeps it alive
    int start = 0;
    int end = 0;
    int inc = 0;
    int savedCurrent = 0;
    int savedInc = 0;

    explicit CProgMsg(ProgRecord* r) : record(r) {}

    int set(float frac, int steps);
    int proggress();
    int done();
    void startSubInc(int n);
    void endSubInc();

  private:
    bool missing() const { return !record || !record->callback || !record->data; }
};
