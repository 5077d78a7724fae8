/// The root class and its protocol, as <objc/NSObject.h> declares them.
#pragma once

#import <Foundation/NSObjCRuntime.h>

@protocol NSObject

- (instancetype)retain;
- (oneway void)release;
- (instancetype)autorelease;

@property (readonly, copy) NSString *description;

@end

__attribute__((objc_root_class, visibility("default")))
@interface NSObject<NSObject> {
    // Without it the compiler would lay a subclass's first instance variable where the runtime keeps the class.
    Class isa;
}

+ (instancetype)alloc;
- (instancetype)init;
- (void)dealloc;

@end
