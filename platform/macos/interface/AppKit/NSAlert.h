/// Modal alerts.
#pragma once

#import <AppKit/NSButton.h>
#import <AppKit/NSWindow.h>

NS_ASSUME_NONNULL_BEGIN

static const NSModalResponse NSAlertFirstButtonReturn = 1000;

@interface NSAlert : NSObject

@property (copy) NSString *messageText;
@property (copy) NSString *informativeText;

- (NSButton *)addButtonWithTitle:(NSString *)title;
- (NSModalResponse)runModal;

@end

NS_ASSUME_NONNULL_END
