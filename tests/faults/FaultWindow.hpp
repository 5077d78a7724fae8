/// The traced program's side of fault injection. An unused form of prctl(2) tells the tracer (Tracer.cpp) when to begin
/// and end counting calls, and which call must fail.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <sys/prctl.h>

/// A request of the traced program: the second argument of the call.
enum class TracerVerb : unsigned long { Begin = 1, End = 2, FaultsOfCall = 3, IsOfChild = 4 };

/// The first argument of the call. The kernel does not know this value.
inline constexpr int tracerRequest = 0x51464c54;
/// The call number of a window that only counts.
inline constexpr unsigned long noCall = 0;

/// During its lifetime the tracer counts the calls of this process and of its children that open, read, write, rename,
/// make, remove, fork, execute or wait, and makes at most one of them fail.
class FaultWindow
{
public:
    /// @param call The number of the call that must fail, from 1 on, or noCall.
    /// @param fault The number of the fault, from 0 on, among the faults of this kind of call.
    explicit FaultWindow(unsigned long call = noCall, unsigned long fault = 0)
    {
        if (ask(TracerVerb::Begin, call, fault) != 0) {
            std::fputs("This program runs only under the fault tracer.\n", stderr);
            std::abort();
        }
    }
    ~FaultWindow() { close(); }
    FaultWindow(const FaultWindow &) = delete;
    FaultWindow &operator=(const FaultWindow &) = delete;

    /// Ends the window. Returns the number of its calls, or, if one had to fail, the number of calls that failed.
    unsigned long close()
    {
        if (_open) {
            _seen = static_cast<unsigned long>(ask(TracerVerb::End, 0, 0));
        }
        _open = false;
        return _seen;
    }

    /// The number of faults that a call of the last counting window can have.
    static unsigned long faultsOf(unsigned long call)
    {
        return static_cast<unsigned long>(ask(TracerVerb::FaultsOfCall, call, 0));
    }

    /// Whether another process made a call of the last counting window.
    static bool isOfChild(unsigned long call) { return ask(TracerVerb::IsOfChild, call, 0) == 1; }

private:
    static int ask(TracerVerb verb, unsigned long first, unsigned long second)
    {
        return prctl(tracerRequest, static_cast<unsigned long>(verb), first, second, 0);
    }

    bool _open = true;
    unsigned long _seen = 0;
};
