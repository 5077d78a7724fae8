/// The controller, which is the only class of the tool. It owns the window, the controls that change, and the tool's
/// small state. Each folder adds its operations as a category with its own header.
///
/// Everything runs on the main thread. Do not call a method from another thread.
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
    // Points to the controller while the controller lives. The monitor's handler holds a weak pointer to this variable,
    // because Debian's runtime has no __weak.
    std::shared_ptr<AppDelegate *> _liveness;
}

/// The tool's only window; nil until it is built.
@property (nonatomic, strong) NSWindow *window;
/// The line that says what the latest scan found.
@property (nonatomic, strong) NSTextField *statusLabel;
/// "Remove Quorlen 3". Each scan enables or disables it. It is hidden while the override button is shown.
@property (nonatomic, strong) NSButton *removeButton;
/// "Override Cleanup". It has the remove button's frame and is shown while Shift is held and nothing is detected.
@property (nonatomic, strong) NSButton *overrideButton;
/// "Restore License".
@property (nonatomic, strong) NSButton *restoreLicenseButton;
/// Shows the activity log. The view's text is the log's only store.
@property (nonatomic, strong) NSTextView *logView;
/// The path of the newest licence archive of this run, or nil before the first. Nothing reads it back.
@property (nonatomic, copy) NSString *lastBackupPath;
/// Whether the latest scan found anything of the product.
@property (nonatomic) BOOL quorlenDetected;
/// The token of the installed event monitor, or nil.
@property (nonatomic, strong) id modifierMonitor;

@end
