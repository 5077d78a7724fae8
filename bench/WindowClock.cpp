/// Measures how fast a program shows its window. It starts the program and prints two times in milliseconds since the
/// exec: when the window was mapped and first drawn into, and when it was last drawn into before it came to rest.
///
/// usage: window-clock [--status-line] PROGRAM [ARGUMENT]...
///
/// With --status-line the first time is when the tool's window shows the status line of a detection.
///
/// It prints one line, "shown rested pid". Then it waits until its standard input ends, and kills the program. The X
/// server reports the mapping and each drawing (its Damage extension), so the measurement does not disturb the program.
/// A window is at rest if nothing is drawn for a while; the times do not include that while.
#include <X11/extensions/Xdamage.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <poll.h>
#include <spawn.h>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

using Clock = std::chrono::steady_clock;
constexpr int restMilliseconds = 400;
constexpr int timeoutMilliseconds = 30000;

double milliseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

/// Ignores X errors: a window may have been destroyed meanwhile.
int ignoreError(Display *, XErrorEvent *)
{
    return 0;
}

/// Whether the tool's window shows the status line of a detection. It checks a part of the label's frame
/// (ui/WindowLayout.hpp) that only this text is long enough to reach. Coordinates count from the top.
bool showsStatusLine(Display *display, Window window)
{
    constexpr int left = 270, top = 193, width = 60, height = 22;
    XImage *image = XGetImage(display, window, left, top, width, height, AllPlanes, ZPixmap);
    bool drawn = false;
    for (int y = 0; image && y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            drawn = drawn || XGetPixel(image, x, y) != XGetPixel(image, 0, 0);
        }
    }
    if (image) {
        XDestroyImage(image);
    }
    return drawn;
}

/// The part of a resource's number that identifies the client that made it.
XID clientOf(XID resource)
{
    constexpr XID clientBits = 0x1fe00000;
    return resource & clientBits;
}

/// The client part of the window manager's resources, or 0 if there is no window manager.
XID windowManager(Display *display)
{
    const Atom property = XInternAtom(display, "_NET_SUPPORTING_WM_CHECK", False);
    Atom type;
    int format;
    unsigned long count, left;
    unsigned char *data = nullptr;
    XID client = 0;
    if (XGetWindowProperty(display, DefaultRootWindow(display), property, 0, 1, False, AnyPropertyType, &type, &format,
            &count, &left, &data) == Success &&
        count == 1) {
        client = clientOf(*reinterpret_cast<Window *>(data));
    }
    if (data) {
        XFree(data);
    }
    return client;
}

}

int main(int argc, char **argv)
{
    const bool statusLine = argc > 2 && std::string_view(argv[1]) == "--status-line";
    char **command = argv + (statusLine ? 2 : 1);
    Display *display = *command ? XOpenDisplay(nullptr) : nullptr;
    int damageEvents, damageErrors;
    if (!display || !XDamageQueryExtension(display, &damageEvents, &damageErrors)) {
        std::fprintf(stderr, "window-clock: needs a program and an X display with the Damage extension\n");
        return 2;
    }
    XSetErrorHandler(ignoreError);
    XSelectInput(display, DefaultRootWindow(display), SubstructureNotifyMask);
    const XID manager = windowManager(display);
    XSync(display, False);

    const auto begin = Clock::now();
    pid_t process = 0;
    if (const int error = posix_spawn(&process, command[0], nullptr, nullptr, command, environ)) {
        std::fprintf(stderr, "window-clock: cannot start %s: error %d\n", command[0], error);
        return 2;
    }

    Window window = None;
    std::optional<Clock::time_point> shown;
    Clock::time_point drawn;
    for (;;) {
        bool changed = false;
        while (XPending(display)) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == CreateNotify && clientOf(event.xcreatewindow.window) != manager &&
                event.xcreatewindow.width > 1) {
                XDamageCreate(display, event.xcreatewindow.window, XDamageReportRawRectangles);
                XSelectInput(display, event.xcreatewindow.window, StructureNotifyMask);
                // The window may be on the screen already.
                XWindowAttributes attributes;
                if (XGetWindowAttributes(display, event.xcreatewindow.window, &attributes) &&
                    attributes.map_state == IsViewable) {
                    window = event.xcreatewindow.window;
                }
            } else if (event.type == MapNotify && event.xmap.event == event.xmap.window) {
                window = event.xmap.window;
            } else if (event.type == damageEvents + XDamageNotify) {
                changed = true;
            }
        }
        if (window && changed) {
            drawn = Clock::now();
            if (!shown && (!statusLine || showsStatusLine(display, window))) {
                shown = drawn;
            }
        }
        pollfd connection { ConnectionNumber(display), POLLIN, 0 };
        if (poll(&connection, 1, shown ? restMilliseconds : timeoutMilliseconds) == 0) {
            break;
        }
    }
    if (shown) {
        std::printf("%.2f %.2f %d\n", milliseconds(*shown - begin), milliseconds(drawn - begin), process);
        std::fflush(stdout);
        for (char byte; read(STDIN_FILENO, &byte, 1) > 0;) { }
    } else {
        std::fprintf(stderr, "window-clock: no such window within %d s\n", timeoutMilliseconds / 1000);
    }
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
    return shown ? 0 : 1;
}
