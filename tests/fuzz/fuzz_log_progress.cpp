// Fuzz target for the message log and the flat progress counter: a sequence
// of appends (short, long, ring-wrapping), reads and clears, and of counter
// set-ups, range changes and kicks. The log read back must be the newest
// text appended since the last clear, oldest first, as much as the ring
// holds; the counter must advance by its increment, fall back to half of the
// total at the end, and hand the callback exactly the data pointer it was
// given.
#include <climits>
#include <cstdint>
#include <cstring>
#include <string>

#include "api/keepcut.h"
#include "fuzz_checks.h"
#include "fuzz_input.h"

namespace {

using namespace kc_fuzz;

// The ring's size; a read shows one byte less, its last byte being the
// terminator.
constexpr size_t kRingBytes = 40960;
constexpr size_t kReadable = kRingBytes - 1;
// Longest single append: more than the ring, so one text can wrap it.
constexpr int kMaxAppend = 50000;
constexpr int kMaxOps = 64;

struct Kick {
    int calls = 0, current = 0, total = 0;
    void* data = nullptr;
    int answer = 0;
};
Kick g_kick;

int kickCallback(int current, int total, void* data) {
    ++g_kick.calls;
    g_kick.current = current, g_kick.total = total, g_kick.data = data;
    return g_kick.answer;
}

// What the counter should hold; unknown after an increment that leaves the
// int range below (the engine clamps there, a choice not pinned down here).
struct CounterModel {
    bool known = true;
    bool installed = false;  // callback and data both set
    long long current = 0, total = 0, inc = 0;
    void* data = nullptr;
};

std::string appendText(FuzzInput& in) {
    const int len = in.flag() ? in.range(0, 64) : in.range(0, kMaxAppend);
    const char fillChar = static_cast<char>(in.range('!', '~'));
    std::string s(static_cast<size_t>(len), fillChar);
    // Position-dependent characters, so that a rotation off by one shows.
    for (size_t i = 0; i < s.size(); ++i) s[i] = static_cast<char>('!' + (i * 7 + fillChar) % 94);
    for (size_t i = 0; i < s.size() && in.remaining() && i < 16; ++i) {
        const char c = static_cast<char>(in.byte());
        if (c) s[i] = c;  // no terminator inside the text
    }
    return s;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzInput in(data, size);
    clearErrMsg();
    initProgProc();
    std::string log;  // text appended since the last clear (its newest part)
    CounterModel m;
    static int tokens[2];

    for (int op = 0; op < kMaxOps && in.remaining(); ++op) {
        switch (in.range(0, 6)) {
            case 0: {
                const std::string s = appendText(in);
                const int end = copyErrMsg(s.c_str());
                require(end >= 0 && static_cast<size_t>(end) < kRingBytes,
                        "copyErrMsg returned end " + std::to_string(end));
                log += s;
                if (log.size() > kRingBytes) log.erase(0, log.size() - kRingBytes);
                break;
            }
            case 1: {
                const std::string got = getErrMsg();
                const size_t want = std::min(log.size(), kReadable);
                require(got.size() == want && log.compare(log.size() - want, want, got) == 0,
                        "getErrMsg gave " + std::to_string(got.size()) +
                            " bytes that are not the newest " + std::to_string(want) + " appended");
                break;
            }
            case 2:
                clearErrMsg();
                log.clear();
                break;
            case 3:
                require(initProgProc() == 1, "initProgProc did not return 1");
                m = CounterModel{};
                break;
            case 4: {
                const bool withProc = in.range(0, 3) != 0, withData = in.range(0, 3) != 0;
                void* d = withData ? &tokens[in.flag()] : nullptr;
                const int total = static_cast<int>(in.dword()) >> in.range(0, 31);
                const int inc = static_cast<int>(in.dword()) >> in.range(0, 31);
                require(setProgProc(withProc ? kickCallback : nullptr, d, total, inc) == 1,
                        "setProgProc did not return 1");
                m = CounterModel{true, withProc && withData, 0, total, inc, d};
                break;
            }
            case 5: {
                const int total = static_cast<int>(in.dword()) >> in.range(0, 31);
                const int inc = static_cast<int>(in.dword()) >> in.range(0, 31);
                const int current = setProgRange(total, inc);
                if (m.known)
                    require(current == m.current,
                            "setProgRange returned " + std::to_string(current) +
                                ", the counter was " + std::to_string(m.current));
                m.total = total, m.inc = inc;
                break;
            }
            case 6: {
                g_kick = Kick{};
                g_kick.answer = static_cast<int>(in.dword());
                const int result = progressKick();
                if (!m.installed) {
                    require(result == 1 && g_kick.calls == 0,
                            "progressKick without callback and data did not just return 1");
                    break;
                }
                require(g_kick.calls == 1 && result == g_kick.answer && g_kick.data == m.data &&
                            g_kick.total == m.total,
                        "progressKick did not pass the callback's answer, data and total through");
                long long next = m.current + m.inc;
                if (next >= m.total) next = m.total / 2;
                if (next < INT_MIN) m.known = false;
                if (m.known)
                    require(g_kick.current == next, "progressKick reported " +
                                                        std::to_string(g_kick.current) +
                                                        ", expected " + std::to_string(next));
                m.current = g_kick.current;
                m.known = true;  // the callback saw the counter
                break;
            }
        }
    }
    return 0;
}
