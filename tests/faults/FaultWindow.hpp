/// The traced program's side of fault injection: it tells the tracer (Tracer.cpp), by a system call that means nothing
/// else, from when to when calls are counted, and which of them is to fail.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <sys/prctl.h>

/// What the traced program asks; the second argument of the call.
enum class TracerVerb : unsigned long { Begin = 1, End = 2, FaultsOfCall = 3, IsOfChild = 4 };

/// The first argument of the call, which the system itself knows nothing of.
inline constexpr int TracerRequest = 0x51464c54;
/// For a window that only counts.
inline constexpr unsigned long NoCall = 0;

/// While it lives, the calls of this process and of its children that open, write, rename, make, remove, fork, exec or
/// wait are counted, and at most one of them fails.
class FaultWindow
{
public:
    /// @param call The number of the call that is to fail, from 1 on, or NoCall.
    /// @param fault Which of the faults that this kind of call can have, from 0 on.
    explicit FaultWindow(unsigned long call = NoCall, unsigned long fault = 0)
    {
        if (ask(TracerVerb::Begin, call, fault) != 0) {
            std::fputs("This program belongs under the fault tracer.\n", stderr);
            std::abort();
        }
    }
    ~FaultWindow() { close(); }
    FaultWindow(const FaultWindow &) = delete;
    FaultWindow &operator=(const FaultWindow &) = delete;

    /// Ends the window. The result is how many calls it saw; of a window that was to have a fault, how many failed.
    unsigned long close()
    {
        if (_open) {
            _seen = static_cast<unsigned long>(ask(TracerVerb::End, 0, 0));
        }
        _open = false;
        return _seen;
    }

    /// How many different faults a call of the last counting window can have.
    static unsigned long faultsOf(unsigned long call)
    {
        return static_cast<unsigned long>(ask(TracerVerb::FaultsOfCall, call, 0));
    }

    /// Whether a call of the last counting window was made by another process than this one.
    static bool isOfChild(unsigned long call) { return ask(TracerVerb::IsOfChild, call, 0) == 1; }

private:
    static int ask(TracerVerb verb, unsigned long first, unsigned long second)
    {
        return prctl(TracerRequest, static_cast<unsigned long>(verb), first, second, 0);
    }

    bool _open = true;
    unsigned long _seen = 0;
};
