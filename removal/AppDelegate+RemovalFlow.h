/// The removal, from the press of the button to the scan that ends it.
#pragma once

#import "app/AppDelegate.h"

@interface AppDelegate (RemovalFlow)

/// The remove button's action: an ordinary removal.
/// @param sender Ignored.
- (void)removeQuorlen3:(id)sender;

/// The override button's action: the same cleanup when nothing was detected.
/// @param sender Ignored.
- (void)overrideRemoveQuorlen3:(id)sender;

/// Runs one removal and returns when it has ended.
///
/// An ordinary removal that finds nothing on disk shows an alert, scans again and ends. Otherwise this asks the user to
/// confirm, backs up the licence file, runs the cleanup script with administrator rights, logs and shows the outcome,
/// and scans the disk again. After a success it also writes the log to the Desktop and offers a restart. A failed
/// backup does not stop the removal. A refused administrator prompt is a failure like any other. If the user cancels
/// the confirmation, nothing happens and nothing is logged.
/// @param override Whether to continue when nothing is found, and to show the override's texts.
- (void)beginRemovalWithOverride:(BOOL)override;

@end
