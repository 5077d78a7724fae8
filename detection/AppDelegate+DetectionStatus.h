/// The one place where the tool decides whether the product is present.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (DetectionStatus)

/// Scans the disk and makes the result known: sets `quorlenDetected`, enables the remove button exactly when something
/// was found, replaces the status line, appends the scan's lines to the activity log and brings the two removal buttons
/// up to date. An absent view is skipped; nothing can fail.
- (void)updateDetectionStatus;

@end
