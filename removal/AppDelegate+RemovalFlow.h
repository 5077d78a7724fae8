/// The removal as the user lives it, from the button to the fresh scan that ends it.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (RemovalFlow)

/// The remove button's action: an ordinary removal.
/// @param sender Ignored.
- (void)removeQuorlen3:(id)sender;

/// The override button's action: the same cleanup though nothing was detected.
/// @param sender Ignored.
- (void)overrideRemoveQuorlen3:(id)sender;

/// Runs one removal and blocks until it has ended.
///
/// An ordinary removal that finds nothing on disk says so in an alert, scans again and ends. Otherwise the user
/// confirms; then the licence file is backed up, the cleanup script runs with administrator rights, the outcome is
/// logged and shown, and the disk is scanned again. Only after success the log is written to the Desktop and a restart
/// is offered. A failed backup doesn't stop the removal; a refused administrator prompt is an ordinary failure,
/// reported in the log and in the completion alert. "Cancel" in the confirmation leaves no trace.
/// @param override Whether to go on when nothing is found, with the override's own texts.
- (void)beginRemovalWithOverride:(BOOL)override;

@end
