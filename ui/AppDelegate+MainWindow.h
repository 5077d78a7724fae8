/// The window and the factory of its text labels.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (MainWindow)

/// Builds the window with all its views, keeps the views that change in the controller's properties, centres the
/// window, and shows it in front as the key window. Called once, when launching has finished. The log view starts with
/// the version, the updated date and "Ready.". A missing image leaves its view empty; nothing else can fail.
- (void)buildWindow;

/// Makes a read-only text label: not editable, not selectable, without bezel or background.
/// @param frame The label's rectangle in points.
/// @param text Its text; nil is taken as empty.
/// @param font Its font.
/// @param alignment Its text alignment.
/// @return A new label that is in no view yet; never nil.
- (NSTextField *)labelWithFrame:(NSRect)frame
                           text:(NSString *)text
                           font:(NSFont *)font
                      alignment:(NSTextAlignment)alignment;

@end
