/// The controller: the one class of the tool. It owns the window, the controls that change and the tool's small state;
/// each room adds its operations as a category with a header of its own.
///
/// Everything runs on the main thread; no method may be called from another.
#pragma once

#import <Cocoa/Cocoa.h>

#include <memory>

@interface AppDelegate : NSObject <NSApplicationDelegate> {
    NSWindow *_window;
    NSTextField *_statusLabel;
    NSButton *_removeButton;
    NSButton *_overrideButton;
    NSButton *_restoreLicenseButton;
    NSTextView *_logView;
    NSString *_lastBackupPath;
    BOOL _quorlenDetected;
    id _modifierMonitor;
    // Points to the controller while it lives; the monitor's handler holds it weakly (Debian's runtime has no __weak).
    std::shared_ptr<AppDelegate *> _liveness;
}

/// The tool's only window; nil until it is built.
@property (nonatomic, strong) NSWindow *window;
/// The line that says what the latest scan found.
@property (nonatomic, strong) NSTextField *statusLabel;
/// "Remove Quorlen 3": enabled by each scan, shown unless the override takes its place.
@property (nonatomic, strong) NSButton *removeButton;
/// "Override Cleanup": lies over the remove button, shown while Shift is held and nothing is detected.
@property (nonatomic, strong) NSButton *overrideButton;
/// "Restore License".
@property (nonatomic, strong) NSButton *restoreLicenseButton;
/// Shows the activity log; its text is the log's only store.
@property (nonatomic, strong) NSTextView *logView;
/// The path of the newest licence archive of this run; nil before the first. Bookkeeping: nothing reads it back.
@property (nonatomic, copy) NSString *lastBackupPath;
/// Whether the latest scan found anything of the product.
@property (nonatomic) BOOL quorlenDetected;
/// The token of the installed event monitor; nil when none is.
@property (nonatomic, strong) id modifierMonitor;

@end
