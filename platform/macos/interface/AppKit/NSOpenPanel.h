/// The open panel.
#pragma once

#import <AppKit/NSSavePanel.h>

NS_ASSUME_NONNULL_BEGIN

@interface NSOpenPanel : NSSavePanel

+ (NSOpenPanel *)openPanel;

@property BOOL canChooseDirectories;
@property BOOL allowsMultipleSelection;
@property BOOL canChooseFiles;

@end

NS_ASSUME_NONNULL_END
