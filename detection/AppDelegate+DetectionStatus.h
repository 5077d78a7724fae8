/// Decides whether the product is present, and shows the result.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (DetectionStatus)

/// Scans the disk. Sets `quorlenDetected`, enables the remove button if something was found and disables it otherwise,
/// replaces the status line, appends the scan's lines to the activity log, and updates which of the two removal buttons
/// is shown. A nil view is skipped. It cannot fail.
- (void)updateDetectionStatus;

@end
