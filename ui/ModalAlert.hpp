/// The modal alerts of the tool: a message, an informative text, and buttons in order. The platform chooses style and
/// icon.
#pragma once

#import <Cocoa/Cocoa.h>

/// Shows a modal alert and waits until it is dismissed.
/// @param message The message text; not nil.
/// @param informativeText The text below it; not nil.
/// @param buttons The buttons' titles, the first one being the default button; at least one.
/// @return True if the user pressed the first button; false for every other end of the alert.
bool runModalAlert(NSString *message, NSString *informativeText, NSArray<NSString *> *buttons);
