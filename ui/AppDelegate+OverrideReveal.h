/// The hidden override button: shown while Shift is held and nothing of the product is detected.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (OverrideReveal)

/// Installs the monitor that keeps the two removal buttons right at every mouse-moved, key-down and modifier-change
/// event of this application, and keeps its token in `modifierMonitor`. Called once at launch, after the window exists.
/// The handler passes every event on unchanged and holds the controller weakly.
- (void)installModifierMonitor;

/// Shows the override button and hides the remove button while a Shift key is held and nothing is detected; the other
/// way round otherwise. The keys are read as they are held now. Nothing else changes and nothing is logged. An absent
/// button is skipped.
- (void)updateOverrideButtonVisibility;

@end
