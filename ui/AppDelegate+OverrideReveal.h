/// The override button, which is shown while Shift is held and nothing of the product is detected.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (OverrideReveal)

/// Installs the event monitor and keeps its token in `modifierMonitor`. At every mouse-moved, key-down and
/// modifier-change event of this application, the monitor updates the two removal buttons. Called once at launch, after
/// the window exists. The handler passes every event on unchanged and holds the controller weakly.
- (void)installModifierMonitor;

/// Shows the override button and hides the remove button if a Shift key is held now and nothing is detected. Otherwise
/// hides the override button and shows the remove button. Changes and logs nothing else. A nil button is skipped.
- (void)updateOverrideButtonVisibility;

@end
