/// Measures the time from a press of Shift to the next drawing on the screen. Nothing else may draw meanwhile. For each
/// press it prints one line: the milliseconds from the press to the drawing, and the milliseconds of a round trip to
/// the X server just before.
///
/// usage: shift-clock PRESSES
#include <X11/extensions/Xdamage.h>
#include <X11/extensions/XTest.h>
#include <X11/keysym.h>
#include <X11/Xlib.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <poll.h>

namespace
{

using Clock = std::chrono::steady_clock;
constexpr int timeoutMilliseconds = 2000;
constexpr int restMilliseconds = 100;

double millisecondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

/// Waits for the next drawing. Returns false if there is none within `timeout` milliseconds.
bool drawn(Display *display, int damageNotify, int timeout)
{
    for (;;) {
        while (XPending(display)) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == damageNotify) {
                return true;
            }
        }
        pollfd connection { ConnectionNumber(display), POLLIN, 0 };
        if (poll(&connection, 1, timeout) == 0) {
            return false;
        }
    }
}

/// Waits until nothing is drawn for a while: a swap takes several drawings.
void waitForRest(Display *display, int damageNotify)
{
    while (drawn(display, damageNotify, restMilliseconds)) { }
}

/// Waits until a program's window is focused. Returns false if that takes too long.
bool aWindowIsFocused(Display *display)
{
    for (int waited = 0; waited < timeoutMilliseconds; waited += restMilliseconds) {
        Window window = None;
        int revert;
        XGetInputFocus(display, &window, &revert);
        XWindowAttributes attributes;
        if (window > PointerRoot && XGetWindowAttributes(display, window, &attributes) && attributes.width > 1) {
            return true;
        }
        poll(nullptr, 0, restMilliseconds);
    }
    return false;
}

}

int main(int argc, char **argv)
{
    Display *display = XOpenDisplay(nullptr);
    int damage, error, event, major, minor;
    if (argc != 2 || !display || !XDamageQueryExtension(display, &damage, &error) ||
        !XTestQueryExtension(display, &event, &error, &major, &minor)) {
        std::fprintf(stderr, "usage: shift-clock PRESSES, on a display with the Damage and XTest extensions\n");
        return 2;
    }
    const KeyCode shift = XKeysymToKeycode(display, XK_Shift_L);
    if (!aWindowIsFocused(display)) {
        std::fprintf(stderr, "shift-clock: no window is focused\n");
        return 1;
    }
    XDamageCreate(display, DefaultRootWindow(display), XDamageReportRawRectangles);
    XSync(display, False);
    waitForRest(display, damage + XDamageNotify);
    for (int press = std::atoi(argv[1]); press > 0; --press) {
        const auto trip = Clock::now();
        XSync(display, False);
        const double roundTrip = millisecondsSince(trip);

        const auto begin = Clock::now();
        XTestFakeKeyEvent(display, shift, True, CurrentTime);
        XFlush(display);
        const bool seen = drawn(display, damage + XDamageNotify, timeoutMilliseconds);
        const double swapped = millisecondsSince(begin);
        waitForRest(display, damage + XDamageNotify);
        XTestFakeKeyEvent(display, shift, False, CurrentTime);
        XFlush(display);
        if (!seen || !drawn(display, damage + XDamageNotify, timeoutMilliseconds)) {
            std::fprintf(stderr, "shift-clock: nothing was drawn after a press or a release\n");
            return 1;
        }
        waitForRest(display, damage + XDamageNotify);
        std::printf("%.4f %.4f\n", swapped, roundTrip);
    }
}
