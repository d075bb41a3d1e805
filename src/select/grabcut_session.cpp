// Creation and deletion of GrabCut sessions, and the registry of live ones.
// The host holds a session only as an untyped pointer in its request record;
// the registry lets the entries tell a live session from a stale or foreign
// pointer, so that a host that forgot to clear a deleted handle gets a
// refusal instead of a crash or a double free.
#include <mutex>
#include <unordered_set>

#include "select/grabcut_control.h"

namespace {

struct SessionRegistry {
    std::mutex lock;
    std::unordered_set<const void*> live;
};

SessionRegistry& registry() {
    static SessionRegistry r;
    return r;
}

}  // namespace

void* grabcutCreateBuf(int width, int height) {
    auto session = std::make_unique<GrabCutControl>(width, height);
    SessionRegistry& r = registry();
    std::lock_guard<std::mutex> hold(r.lock);
    r.live.insert(session.get());
    return session.release();
}

void GrabCutDeleteBuf(void* session) {
    if (!session) return;
    SessionRegistry& r = registry();
    {
        std::lock_guard<std::mutex> hold(r.lock);
        if (r.live.erase(session) == 0) return;
    }
    std::unique_ptr<GrabCutControl> owned(static_cast<GrabCutControl*>(session));
}

bool isLiveGrabCutSession(const void* session) {
    SessionRegistry& r = registry();
    std::lock_guard<std::mutex> hold(r.lock);
    return r.live.count(session) != 0;
}

int liveGrabCutSessions() {
    SessionRegistry& r = registry();
    std::lock_guard<std::mutex> hold(r.lock);
    return static_cast<int>(r.live.size());
}
