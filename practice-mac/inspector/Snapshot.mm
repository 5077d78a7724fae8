#include "Snapshot.hpp"

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

NSString *class_name(id object)
{
    return object ? NSStringFromClass([object class]) : @"";
}

/// Where a window's content lies on the X server: its top-left corner in root coordinates, and its size.
struct Place {
    Window window = 0;
    NSPoint origin = NSZeroPoint;
    NSSize size = NSZeroSize;
};

Place place_of(NSWindow *window)
{
    Place place;
    GSDisplayServer *server = GSCurrentServer();
    auto *display = static_cast<Display *>([server serverDevice]);
    place.window = reinterpret_cast<Window>([server windowDevice:static_cast<int>([window windowNumber])]);
    Window root, child;
    int x = 0, y = 0;
    unsigned width = 0, height = 0, border, depth;
    if (place.window && XGetGeometry(display, place.window, &root, &x, &y, &width, &height, &border, &depth) &&
        XTranslateCoordinates(display, place.window, root, 0, 0, &x, &y, &child)) {
        place.origin = NSMakePoint(x, y);
        place.size = NSMakeSize(width, height);
    }
    return place;
}

/// A rectangle of a view, in root coordinates of the X server (top-left origin).
NSRect on_screen(NSRect rect, NSView *view, const Place &place)
{
    const NSRect base = [view convertRect:rect toView:nil];
    return NSMakeRect(place.origin.x + NSMinX(base), place.origin.y + place.size.height - NSMaxY(base), NSWidth(base),
        NSHeight(base));
}

NSDictionary *description_of_font(NSFont *font)
{
    if (!font) {
        return @ {};
    }
    const NSFontTraitMask traits = [[NSFontManager sharedFontManager] traitsOfFont:font];
    return @{
        @"name" : text([font fontName]),
        @"size" : @([font pointSize]),
        @"bold" : @((traits & NSBoldFontMask) != 0),
        @"fixed" : @([font isEqual:[NSFont userFixedPitchFontOfSize:[font pointSize]]]),
    };
}

NSDictionary *description_of_control(NSControl *control)
{
    return @{
        @"enabled" : @([control isEnabled]),
        @"target" : class_name([control target]),
        @"action" : text(NSStringFromSelector([control action])),
        @"alignment" : @([control alignment]),
        @"font" : description_of_font([control font]),
    };
}

NSDictionary *description_of_button(NSButton *button)
{
    return @{
        @"text" : text([button title]),
        @"bezel_style" : @([button bezelStyle]),
        @"key_equivalent" : text([button keyEquivalent]),
    };
}

NSDictionary *description_of_text_field(NSTextField *field)
{
    return @{
        @"text" : text([field stringValue]),
        @"editable" : @([field isEditable]),
        @"selectable" : @([field isSelectable]),
        @"bezeled" : @([field isBezeled]),
        @"draws_background" : @([field drawsBackground]),
        @"line_break_mode" : @([[field cell] lineBreakMode]),
    };
}

NSDictionary *description_of_text_view(NSTextView *view)
{
    return @{
        @"text" : text([view string]),
        @"editable" : @([view isEditable]),
        @"selectable" : @([view isSelectable]),
        @"selection" : @[ @([view selectedRange].location), @([view selectedRange].length) ],
        @"container_width" : @([[view textContainer] containerSize].width),
        @"font" : description_of_font([view font]),
    };
}

NSDictionary *description_of_image_view(NSImageView *view)
{
    return @{
        @"image" : text([[view image] name]),
        @"has_image" : @([view image] != nil),
        @"image_scaling" : @([view imageScaling]),
    };
}

NSDictionary *description_of_scroll_view(NSScrollView *view)
{
    return @{
        @"border_type" : @([view borderType]),
        @"vertical_scroller" : @([view hasVerticalScroller]),
        @"horizontal_scroller" : @([view hasHorizontalScroller]),
        @"document_visible" : numbers([view documentVisibleRect]),
    };
}

/// The cells of a matrix: a browser's column, for instance, where each cell is a file.
NSDictionary *description_of_matrix(NSMatrix *matrix, const Place &place)
{
    NSMutableArray *cells = [NSMutableArray array];
    for (NSInteger row = 0; row < [matrix numberOfRows]; ++row) {
        NSCell *cell = [matrix cellAtRow:row column:0];
        const NSRect frame = [matrix cellFrameAtRow:row column:0];
        [cells addObject:@{
            @"text" : text([cell stringValue]),
            @"enabled" : @([cell isEnabled]),
            @"selected" : @([cell isHighlighted]),
            @"shown" : numbers(on_screen(NSIntersectionRect(frame, [matrix visibleRect]), matrix, place)),
        }];
    }
    return @ { @"cells" : cells };
}

NSDictionary *description_of_view(NSView *view, NSView *content, const Place &place)
{
    NSMutableArray *subviews = [NSMutableArray array];
    for (NSView *subview in [view subviews]) {
        [subviews addObject:description_of_view(subview, content, place)];
    }

    NSMutableDictionary *description = [NSMutableDictionary dictionaryWithDictionary:@{
        @"class" : class_name(view),
        @"frame" : numbers([view frame]),
        @"in_window" : numbers([view convertRect:[view bounds] toView:content]),
        @"on_screen" : numbers(on_screen([view bounds], view, place)),
        @"shown" : numbers(on_screen([view visibleRect], view, place)),
        @"hidden" : @([view isHidden]),
        @"visible" : @(![view isHiddenOrHasHiddenAncestor]),
        @"tool_tip" : text([view toolTip]),
        @"autoresizing" : @([view autoresizingMask]),
        @"views" : subviews,
    }];
    const auto add = [&](Class kind, auto describe) {
        if ([view isKindOfClass:kind]) {
            [description addEntriesFromDictionary:describe(static_cast<id>(view))];
        }
    };
    add([NSControl class], description_of_control);
    add([NSButton class], description_of_button);
    add([NSTextField class], description_of_text_field);
    add([NSTextView class], description_of_text_view);
    add([NSImageView class], description_of_image_view);
    add([NSScrollView class], description_of_scroll_view);
    add([NSMatrix class], [&](NSMatrix *matrix) { return description_of_matrix(matrix, place); });
    return description;
}

NSDictionary *description_of_window(NSWindow *window)
{
    NSView *content = [window contentView];
    const Place place = place_of(window);
    NSMutableArray *views = [NSMutableArray array];
    for (NSView *view in [content subviews]) {
        [views addObject:description_of_view(view, content, place)];
    }
    return @{
        @"title" : text([window title]),
        @"class" : class_name(window),
        @"x_window" : @(static_cast<unsigned long>(place.window)),
        @"level" : @([window level]),
        @"modal" : @([NSApp modalWindow] == window),
        @"key" : @([window isKeyWindow]),
        @"style_mask" : @([window styleMask]),
        @"default_button" : text([[window defaultButtonCell] title]),
        @"frame" : numbers(on_screen([content bounds], content, place)),
        @"views" : views,
    };
}

} // namespace

std::string snapshot_of_application()
{
    NSMutableArray *windows = [NSMutableArray array];
    for (NSWindow *window in GSOrderedWindows()) {
        if ([window isVisible]) {
            [windows addObject:description_of_window(window)];
        }
    }
    NSDictionary *application = @{@"active" : @([NSApp isActive]), @"windows" : windows};
    NSData *json = [NSJSONSerialization dataWithJSONObject:application options:0 error:nullptr];
    return std::string(static_cast<const char *>([json bytes]), [json length]);
}
