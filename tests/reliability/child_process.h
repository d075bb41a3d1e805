// Runs pieces of work in forked children, a few at a time, each with a
// zeroed memory area it shares with the parent (so whatever it wrote before
// dying is still readable), its standard error kept, an alarm against hangs,
// and the stack of a crash or hang recorded.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

namespace kc_sweep {

// How a child ended, with what the crash handler recorded.
struct ChildEnd {
    bool exited = false;  // true: exit status below; false: killed by signal
    int status = 0;
    int signal = 0;      // SIGALRM when the alarm ended a hang
    int stackDepth = 0;  // stack at the fatal signal, if one was caught
    void* stack[48] = {};
    std::string errorText;  // the child's standard error
};

struct ChildRunner {
    int parallel = 2;            // children at a time
    unsigned alarmSeconds = 20;  // a child still running after this is a hang
    std::size_t areaBytes = 0;   // size of each child's shared area

    // Runs work(i, area) in a child for every i in [0, count); finished(i,
    // area, end) then runs in the parent. The parent must not have started
    // threads: a child inherits only the forking one.
    void run(int count, const std::function<void(int, void*)>& work,
             const std::function<void(int, const void*, const ChildEnd&)>& finished) const;
};

// Warms up the stack walker (its first use loads a library and allocates), so
// that later walks inside the allocator or a signal handler do not.
void warmUpStackWalks();

}  // namespace kc_sweep
