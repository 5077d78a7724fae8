/// The declarations that the product uses of the Objective-C runtime: its types and its root class.
///
/// To add a declaration, write it under the name of the file that declares it on a Mac, with Apple's types, nullability
/// and first macOS version, and add its line to tests/macos/interface-facts.txt (a method or property) or
/// tests/macos/InterfaceFacts.mm (anything else). A class or function that the app did not use before also needs a line
/// in platform/macos/stubs/symbols.txt; the link error names it.
#pragma once

@class NSString;

typedef struct objc_class *Class;

struct objc_object {
    Class _Nonnull isa;
};

typedef struct objc_object *id;
typedef struct objc_selector *SEL;

// A signed char on Intel, the language's bool on Apple silicon. The compiler defines which.
#if __OBJC_BOOL_IS_BOOL
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif

#define YES __objc_yes
#define NO __objc_no
#define nil nullptr
#define Nil nullptr

// NSObject.h
@protocol NSObject
- (instancetype)retain;
- (oneway void)release;
- (instancetype)autorelease;

@property (readonly, copy) NSString *description;
@end

__attribute__((objc_root_class, visibility("default")))
@interface NSObject<NSObject> {
    // Without it the compiler would put a subclass's first instance variable where the runtime stores the class.
    Class isa;
}

+ (instancetype)alloc;
- (instancetype)init;
- (void)dealloc;
@end
