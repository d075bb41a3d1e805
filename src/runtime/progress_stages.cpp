// Nested-stage progress (CProgMsgGlobal) and per-task steps (CProgMsg). Every
// call of the host callback is guarded: whatever it throws becomes a thrown C
// string naming the reporter.
#include <algorithm>
#include <iterator>
#include <new>

#include "runtime/progress.h"

namespace {
constexpr const char* kSetFailed = "CProgMsg - set ";
constexpr const char* kProgressFailed = "CProgMsg - proggress ";
constexpr const char* kDoneFailed = "CProgMsg - done ";

int callGuarded(RKProgressProc cb, int current, int total, void* data, const char* failText) {
    try {
        return cb(current, total, data);
    } catch (...) {
        throw failText;
    }
}
}  // namespace

thread_local CProgMsgGlobal* CProgMsgGlobal::m_inst = nullptr;

CProgMsgGlobal* CProgMsgGlobal::Inst() {
    // Each thread reports its own request's stages. The instance is built in
    // plain thread storage and never destroyed: a thread_local object with a
    // destructor registers that destructor on first use, and the C library
    // ends the process when the registration finds no memory. The instance
    // holds no resources, so nothing is lost when its thread ends.
    alignas(CProgMsgGlobal) thread_local unsigned char storage[sizeof(CProgMsgGlobal)];
    if (!m_inst) m_inst = new (storage) CProgMsgGlobal();
    return m_inst;
}

CProgMsgGlobal::~CProgMsgGlobal() {
    setup(nullptr, nullptr, 0.0f);
    if (m_inst == this) m_inst = nullptr;
}

void CProgMsgGlobal::setup(RKProgressProc cb, void* d, float /*unused*/) {
    callback = cb;
    data = d;
    level = 0;
    std::fill(std::begin(weight), std::end(weight), 0.0f);
    std::fill(std::begin(done), std::end(done), 0.0f);
    weight[0] = 1.0f;
}

void CProgMsgGlobal::setProgData(RKProgressProc cb, void* d) {
    callback = cb;
    data = d;
}

void CProgMsgGlobal::progStart(float w) {
    level = std::min(level + 1, kProgMaxLevel);
    weight[level] = w;
    done[level] = 0.0f;
}

float CProgMsgGlobal::progDone() {
    level = std::max(level - 1, 0);
    done[level] += weight[level + 1];
    if (done[level] > 1.0f) done[level] = 1.0f;
    return static_cast<float>(progress());
}

int CProgMsgGlobal::progress() {
    if (!callback || !data) return 1;
    float total = 0.0f;
    float scale = 1.0f;
    for (int i = 0; i <= level; ++i) {
        scale *= weight[i];
        total += scale * done[i];
    }
    const int value = static_cast<int>(total * static_cast<float>(kProgFullScale));
    return callGuarded(callback, value, kProgFullScale, data, kProgressFailed);
}

int CProgMsgGlobal::progComplete() {
    if (!callback || !data) return 1;
    return callGuarded(callback, kProgFullScale, kProgFullScale, data, kProgressFailed);
}

int CProgMsg::set(float frac, int steps) {
    if (missing()) return 0;
    start = record->current;
    end = std::min(start + static_cast<int>(record->scale * frac), record->total);
    // 0.3 rounds the share up a little so the steps do not fall short of end.
    inc = std::max(1, static_cast<int>((end - start) / static_cast<float>(steps) + 0.3f));
    callGuarded(record->callback, record->current + 1, record->total, record->data, kSetFailed);
    return inc;
}

int CProgMsg::proggress() {
    if (missing()) return 1;
    record->current = std::min(record->current + inc, end);
    return callGuarded(record->callback, record->current, record->total, record->data,
                       kProgressFailed);
}

int CProgMsg::done() {
    if (missing()) return 1;
    record->current = end;
    return callGuarded(record->callback, record->current, record->total, record->data, kDoneFailed);
}

void CProgMsg::startSubInc(int n) {
    if (!record) return;
    savedCurrent = record->current;
    savedInc = inc;
    inc = std::max(1, n > 0 ? inc / n : inc);  // a zero split keeps the whole step
}

void CProgMsg::endSubInc() {
    if (!record) return;
    record->current = savedCurrent + savedInc;
    inc = savedInc;
}
