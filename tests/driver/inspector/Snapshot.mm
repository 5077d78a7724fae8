#include "Snapshot.hpp"

#include "Witness.hpp"

#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSDisplayServer.h>
#include <X11/Xlib.h>
#undef Status

namespace
{

NSArray *numbers(NSRect r)
{
    return @[ @(r.origin.x), @(r.origin.y), @(r.size.width), @(r.size.height) ];
}

NSString *text(NSString *s)
{
    return s ? s : @"";
}

/// Where a window's content lies on the X server: its top-left corner in root coordinates, and its size.
struct Place {
    Window window = 0;
    bool isOnScreen = false; // The window manager places a window before it shows it.
    NSPoint origin = NSZeroPoint;
    NSSize size = NSZeroSize;
};

Place placeOf(NSWindow *window)
{
    Place place;
    GSDisplayServer *server = GSCurrentServer();
    auto *display = static_cast<Display *>([server serverDevice]);
    place.window = reinterpret_cast<Window>([server windowDevice:static_cast<int>([window windowNumber])]);
    XWindowAttributes found;
    Window child;
    int x = 0, y = 0;
    if (place.window && XGetWindowAttributes(display, place.window, &found) &&
        XTranslateCoordinates(display, place.window, found.root, 0, 0, &x, &y, &child)) {
        place.isOnScreen = found.map_state == IsViewable;
        place.origin = NSMakePoint(x, y);
        place.size = NSMakeSize(found.width, found.height);
    }
    return place;
}

/// A rectangle of a view, in root coordinates of the X server (top-left origin).
NSRect onScreen(NSRect rect, NSView *view, const Place &place)
{
    const NSRect base = [view convertRect:rect toView:nil];
    return NSMakeRect(place.origin.x + NSMinX(base), place.origin.y + place.size.height - NSMaxY(base), NSWidth(base),
        NSHeight(base));
}

NSDictionary *descriptionOfButton(NSButton *button)
{
    return @{
        @"button" : @(YES),
        @"text" : text([button title]),
        @"enabled" : @([button isEnabled]),
        @"action" : text(NSStringFromSelector([button action])),
        @"key_equivalent" : text([button keyEquivalent]),
    };
}

/// The cells of a matrix: a browser's column, for instance, where each cell is a file.
NSDictionary *descriptionOfMatrix(NSMatrix *matrix, const Place &place)
{
    NSMutableArray *cells = [NSMutableArray array];
    for (NSInteger row = 0; row < [matrix numberOfRows]; ++row) {
        NSCell *cell = [matrix cellAtRow:row column:0];
        const NSRect frame = [matrix cellFrameAtRow:row column:0];
        [cells addObject:@ {
            @"text" : text([cell stringValue]),
            @"on_screen" : numbers(onScreen(NSIntersectionRect(frame, [matrix visibleRect]), matrix, place)),
        }];
    }
    return @ { @"cells" : cells };
}

NSArray *descriptionsOfSubviews(NSView *view, NSView *content, const Place &place);

NSDictionary *descriptionOfView(NSView *view, NSView *content, const Place &place)
{
    NSMutableDictionary *description = [NSMutableDictionary dictionaryWithDictionary:@{
        @"class" : NSStringFromClass([view class]),
        @"in_window" : numbers([view convertRect:[view bounds] toView:content]),
        @"on_screen" : numbers(onScreen([view bounds], view, place)),
        @"visible" : @(![view isHiddenOrHasHiddenAncestor]),
        @"views" : descriptionsOfSubviews(view, content, place),
    }];
    if ([view isKindOfClass:[NSButton class]]) {
        [description addEntriesFromDictionary:descriptionOfButton(static_cast<NSButton *>(view))];
    } else if ([view isKindOfClass:[NSTextField class]]) {
        [description addEntriesFromDictionary:@{
            @"label" : @(YES),
            @"text" : text([static_cast<NSTextField *>(view) stringValue]),
        }];
    } else if ([view isKindOfClass:[NSTextView class]]) {
        [description setObject:text([static_cast<NSTextView *>(view) string]) forKey:@"text"];
    } else if ([view isKindOfClass:[NSImageView class]]) {
        [description setObject:text([[static_cast<NSImageView *>(view) image] name]) forKey:@"image"];
    } else if ([view isKindOfClass:[NSMatrix class]]) {
        [description addEntriesFromDictionary:descriptionOfMatrix(static_cast<NSMatrix *>(view), place)];
    }
    return description;
}

NSArray *descriptionsOfSubviews(NSView *view, NSView *content, const Place &place)
{
    NSMutableArray *descriptions = [NSMutableArray array];
    for (NSView *subview in [view subviews]) {
        [descriptions addObject:descriptionOfView(subview, content, place)];
    }
    return descriptions;
}

NSDictionary *descriptionOfWindow(NSWindow *window, const Place &place)
{
    NSView *content = [window contentView];
    return @{
        @"title" : text([window title]),
        @"x_window" : @(static_cast<unsigned long>(place.window)),
        @"modal" : @([NSApp modalWindow] == window),
        @"frame" : numbers(onScreen([content bounds], content, place)),
        @"views" : descriptionsOfSubviews(content, content, place),
    };
}

} // namespace

std::string snapshotOfApplication()
{
    NSMutableArray *windows = [NSMutableArray array];
    for (NSWindow *window in GSOrderedWindows()) {
        const Place place = placeOf(window);
        if ([window isVisible] && place.isOnScreen) {
            [windows addObject:descriptionOfWindow(window, place)];
        }
    }
    NSDictionary *application = @{
        @"windows" : windows,
        @"presses" : @(pointerEvents().presses),
        @"moves" : @(pointerEvents().moves),
    };
    NSData *json = [NSJSONSerialization dataWithJSONObject:application options:0 error:nullptr];
    return std::string(static_cast<const char *>([json bytes]), [json length]);
}
