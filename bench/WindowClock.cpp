/// Tells when a program's window has come up: starts the program and prints, in milliseconds since the exec, when its
/// window had been mapped and drawn into, and when it was last drawn into before it came to rest.
///
/// usage: window-clock [--status-line] PROGRAM [ARGUMENT]...
///
/// With --status-line the first of the two is when the tool's window shows the status line of a detection.
///
/// One line, "shown rested pid", then it goes on running, and so does the program, until standard input ends; it ends
/// the program then. The X server itself tells of the mapping and of each drawing (its Damage extension), so nothing is
/// asked of the program and nothing is polled. At rest means that nothing was drawn for a while, which does not count.
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
constexpr int RestMilliseconds = 400;
constexpr int PatienceMilliseconds = 30000;

double milliseconds(Clock::duration duration)
{
    return std::chrono::duration<double, std::milli>(duration).count();
}

/// A window that was destroyed meanwhile is no error here.
int ignoreError(Display *, XErrorEvent *)
{
    return 0;
}

/// Whether anything is drawn where only a detection's status line is long enough to reach: a part of the label's
/// frame in the tool's window (ui/WindowLayout.hpp), counted from the top.
bool showsStatusLine(Display *display, Window window)
{
    constexpr int X = 270, Y = 193, Width = 60, Height = 22;
    XImage *image = XGetImage(display, window, X, Y, Width, Height, AllPlanes, ZPixmap);
    bool drawn = false;
    for (int y = 0; image && y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            drawn = drawn || XGetPixel(image, x, y) != XGetPixel(image, 0, 0);
        }
    }
    if (image) {
        XDestroyImage(image);
    }
    return drawn;
}

/// The part of a resource's number that tells which client made it.
XID clientOf(XID resource)
{
    constexpr XID ClientBits = 0x1fe00000;
    return resource & ClientBits;
}

/// The window manager's client part, or 0 when there is none.
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
        bool news = false;
        while (XPending(display)) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == CreateNotify && clientOf(event.xcreatewindow.window) != manager &&
                event.xcreatewindow.width > 1) {
                XDamageCreate(display, event.xcreatewindow.window, XDamageReportRawRectangles);
                XSelectInput(display, event.xcreatewindow.window, StructureNotifyMask);
                // It may be on the screen already.
                XWindowAttributes attributes;
                if (XGetWindowAttributes(display, event.xcreatewindow.window, &attributes) &&
                    attributes.map_state == IsViewable) {
                    window = event.xcreatewindow.window;
                }
            } else if (event.type == MapNotify && event.xmap.event == event.xmap.window) {
                window = event.xmap.window;
            } else if (event.type == damageEvents + XDamageNotify) {
                news = true;
            }
        }
        if (window && news) {
            drawn = Clock::now();
            if (!shown && (!statusLine || showsStatusLine(display, window))) {
                shown = drawn;
            }
        }
        pollfd connection { ConnectionNumber(display), POLLIN, 0 };
        if (poll(&connection, 1, shown ? RestMilliseconds : PatienceMilliseconds) == 0) {
            break;
        }
    }
    if (shown) {
        std::printf("%.2f %.2f %d\n", milliseconds(*shown - begin), milliseconds(drawn - begin), process);
        std::fflush(stdout);
        for (char byte; read(STDIN_FILENO, &byte, 1) > 0;) { }
    } else {
        std::fprintf(stderr, "window-clock: no such window within %d s\n", PatienceMilliseconds / 1000);
    }
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
    return shown ? 0 : 1;
}
