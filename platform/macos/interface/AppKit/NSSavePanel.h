/// What the open panel has from the save panel.
#pragma once

#import <AppKit/NSPanel.h>

NS_ASSUME_NONNULL_BEGIN

@interface NSSavePanel : NSPanel

@property (nullable, readonly, copy) NSURL *URL;
@property (nullable, copy)
    NSArray<NSString *> *allowedFileTypes API_DEPRECATED("Use -allowedContentTypes instead", macos(10.3, 12.0));
@property (null_resettable, copy) NSString *prompt;
@property (null_resettable, copy) NSString *title;
@property (null_resettable, copy) NSString *message;

- (NSModalResponse)runModal;

@end

NS_ASSUME_NONNULL_END
