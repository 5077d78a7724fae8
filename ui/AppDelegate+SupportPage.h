/// The "?" button's action.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (SupportPage)

/// Opens the vendor's support page in the user's default web browser. Logs and shows nothing, even when no browser
/// opens it.
/// @param sender Ignored.
- (void)openSupportPage:(id)sender;

@end
