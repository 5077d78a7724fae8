/// Tells how long after a press of Shift something is drawn on the screen, on which nothing else moves: for each press,
/// one line with the milliseconds from the press to the drawing, and those of a round trip to the X server just before.
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
constexpr int PatienceMilliseconds = 2000;
constexpr int RestMilliseconds = 100;

double millisecondsSince(Clock::time_point begin)
{
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

/// Waits for the next drawing; false when none comes within so many milliseconds.
bool drawn(Display *display, int damageNotify, int patience)
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
        if (poll(&connection, 1, patience) == 0) {
            return false;
        }
    }
}

/// Waits until nothing is drawn any more: a swap takes several drawings.
void waitForRest(Display *display, int damageNotify)
{
    while (drawn(display, damageNotify, RestMilliseconds)) { }
}

/// Waits until the keyboard is some program's; false when it never is.
bool keyboardIsTaken(Display *display)
{
    for (int waited = 0; waited < PatienceMilliseconds; waited += RestMilliseconds) {
        Window window = None;
        int revert;
        XGetInputFocus(display, &window, &revert);
        XWindowAttributes attributes;
        if (window > PointerRoot && XGetWindowAttributes(display, window, &attributes) && attributes.width > 1) {
            return true;
        }
        poll(nullptr, 0, RestMilliseconds);
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
    if (!keyboardIsTaken(display)) {
        std::fprintf(stderr, "shift-clock: no program has the keyboard\n");
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
        const bool seen = drawn(display, damage + XDamageNotify, PatienceMilliseconds);
        const double swapped = millisecondsSince(begin);
        waitForRest(display, damage + XDamageNotify);
        XTestFakeKeyEvent(display, shift, False, CurrentTime);
        XFlush(display);
        if (!seen || !drawn(display, damage + XDamageNotify, PatienceMilliseconds)) {
            std::fprintf(stderr, "shift-clock: nothing was drawn after a press or a release\n");
            return 1;
        }
        waitForRest(display, damage + XDamageNotify);
        std::printf("%.4f %.4f\n", swapped, roundTrip);
    }
}
