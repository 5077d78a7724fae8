/// The modal alerts of the tool: a message, an informative text and buttons in order. Style and icon stay the
/// platform's.
#pragma once

#import <Cocoa/Cocoa.h>

/// Shows a modal alert and waits until it is dismissed.
/// @param message The message text; not nil.
/// @param informativeText The text below it; not nil.
/// @param buttons The buttons' titles, the first one being the default button; at least one.
/// @return Whether the first button was pressed, the only one that ever goes on: false for any other, and for an alert
///     that ended another way.
bool runModalAlert(NSString *message, NSString *informativeText, NSArray<NSString *> *buttons);
