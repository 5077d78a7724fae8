/// The "?" button's action.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (SupportPage)

/// Opens the vendor's support page in the user's default web browser. Nothing is logged or shown, whether a browser
/// took it or not.
/// @param sender Ignored.
- (void)openSupportPage:(id)sender;

@end
