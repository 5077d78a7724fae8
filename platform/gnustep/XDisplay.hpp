/// The X server on which GNUstep shows its windows.
#pragma once

#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSDisplayServer.h>

#include <X11/Xlib.h>
#undef Status // Xlib defines it as a macro.

/// GNUstep's connection to the X server; null before the application object exists.
[[nodiscard]] inline Display *xDisplay()
{
    return static_cast<Display *>([GSCurrentServer() serverDevice]);
}
