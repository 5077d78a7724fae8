/// The application object, its delegate and its main loop.
#pragma once

#import <AppKit/NSResponder.h>

NS_ASSUME_NONNULL_BEGIN

@protocol NSApplicationDelegate;

@interface NSApplication : NSResponder

@property (class, readonly, strong) __kindof NSApplication *sharedApplication;
@property (nullable, weak) id<NSApplicationDelegate> delegate;

- (void)terminate:(nullable id)sender;

@end

APPKIT_EXTERN __kindof NSApplication *_Null_unspecified NSApp;

@protocol NSApplicationDelegate <NSObject>

@optional
- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication *)sender;
- (void)applicationDidFinishLaunching:(NSNotification *)notification;
- (void)applicationWillTerminate:(NSNotification *)notification;

@end

APPKIT_EXTERN int NSApplicationMain(int argc, const char *_Nonnull argv[_Nonnull]);

NS_ASSUME_NONNULL_END
