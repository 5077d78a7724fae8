// Finds what the slice imports, or bridges it: GNUstep's classes and functions, Apple's runtime calls on top of GNU's
// runtime (libobjc 4), the C++ libraries. The calls are those that Apple's <objc/message.h> and <objc/objc-exception.h>
// and clang's "Objective-C Automatic Reference Counting" (runtime support) document.
#include "Machine.hpp"
#include "Slice.hpp"

#import <Cocoa/Cocoa.h>

#include <cstdlib>
#include <cxxabi.h>
#include <dlfcn.h>
#import <objc/message.h>
#import <objc/runtime.h>
#include <typeinfo>
#include <unwind.h>
#include <utility>

extern "C" {
/// Apple's super reference has the class that sends the message. GNU's has that class's superclass.
IMP lookUpSuperMethod(const objc_super *reference, SEL selector)
{
    objc_super super { reference->self, class_getSuperclass(reference->super_class) };
    return objc_msg_lookup_super(&super, selector);
}

_Unwind_Reason_Code libraryPersonality(int, _Unwind_Action, _Unwind_Exception_Class, _Unwind_Exception *,
    _Unwind_Context *) __asm__("__gxx_personality_v0");
}

namespace
{

// Exceptions. GNU's runtime throws an object right after the unwinder's header. To libstdc++ that is an exception of a
// foreign language. With the object and the handler's class from this file, libstdc++'s personality reads the slice's
// tables for both languages, as Apple's does.

thread_local _Unwind_Exception *current; // The exception that a personality handles now.

bool isObject(const _Unwind_Exception *exception)
{
    return exception->exception_class == 0x474e55434f424a43; // "GNUCOBJC"
}

/// The exception type of a platform class.
struct ObjectType : std::type_info {
    explicit ObjectType(Class type) : std::type_info(class_getName(type)), caught(type) { }
    bool __do_catch(const std::type_info *, void **, unsigned) const override
    {
        return isObject(current) && [*reinterpret_cast<id *>(current + 1) isKindOfClass:caught];
    }
    const Class caught;
};

auto personality(int version, _Unwind_Action actions, _Unwind_Exception_Class language, _Unwind_Exception *exception,
    _Unwind_Context *context)
{
    current = exception;
    return libraryPersonality(version, actions, language, exception, context);
}

void *beginCatch(_Unwind_Exception *exception)
{
    void *thrown = abi::__cxa_begin_catch(exception);
    return isObject(exception) ? *reinterpret_cast<void **>(exception + 1) : thrown;
}

void setVariable(id self, std::ptrdiff_t offset, id value)
{
    [std::exchange(*reinterpret_cast<id *>(reinterpret_cast<char *>(self) + offset), value) release];
}

std::uintptr_t address(auto *thing)
{
    return reinterpret_cast<std::uintptr_t>(thing);
}

std::map<std::string_view, std::uintptr_t> makeBridges()
{
    return {
        { "_objc_msgSend", address(&sendMessage) }, { "_objc_msgSendSuper2", address(&sendSuper) },
        { "_objc_alloc", address(+[](Class type) { return [type alloc]; }) },
        { "_objc_retain", address(+[](id object) { return [object retain]; }) },
        { "_objc_release", address(+[](id object) { [object release]; }) },
        { "_objc_autorelease", address(+[](id object) { return [object autorelease]; }) },
        { "_objc_autoreleasePoolPush", address(+[] { return [[NSAutoreleasePool alloc] init]; }) },
        { "_objc_autoreleasePoolPop", address(+[](NSAutoreleasePool *pool) { [pool release]; }) },
        { "_objc_setProperty_nonatomic",
            address(+[](id self, SEL, id value, std::ptrdiff_t at) { setVariable(self, at, [value retain]); }) },
        { "_objc_setProperty_nonatomic_copy",
            address(+[](id self, SEL, id value, std::ptrdiff_t at) { setVariable(self, at, [value copy]); }) },
        { "_objc_enumerationMutation", address(std::abort) }, // The product changes no collection in a loop.
        { "_objc_begin_catch", address(beginCatch) },
        { "_objc_end_catch", address(dlsym(RTLD_DEFAULT, "__cxa_end_catch")) },
        { "___objc_personality_v0", address(personality) },
        { "_OBJC_CLASS_$_NSTask", address([NSTask class]) }, // The platform's header gives our class this name.
        { "__objc_empty_cache", 0 },                         // GNU's runtime has its own cache.
        { "___CFConstantStringClassReference", address(objc_lookUpClass("NSConstantString")) },
        { "___NSDictionary0__", address(new id([[NSDictionary alloc] init])) },
        { "___stack_chk_guard", address(new std::uintptr_t(0x2a6f0d51c4e97b00)) },
        { "dyld_stub_binder", 0 }, // Everything is bound before the start.
    };
}

// Functions and variables that are the same on both systems, including the layout of their arguments. The same name is
// not enough: `stat` is a different function on a Mac.
constexpr std::array<std::string_view, 13> same { "_NSApp", "_NSApplicationMain",
    "_NSApplicationWillFinishLaunchingNotification", "_NSHomeDirectory", "_NSTemporaryDirectory",
    "_NSSearchPathForDirectoriesInDomains", "__NSConcreteGlobalBlock", "__NSConcreteStackBlock", "__Unwind_Resume",
    "___stack_chk_fail", "_memcpy", "_memmove", "_puts" };

}

std::uintptr_t addressOfImport(std::string_view name)
{
    static const auto bridges = makeBridges();
    if (const auto bridge = bridges.find(name); bridge != bridges.end()) {
        return bridge->second;
    }
    // "_OBJC_CLASS_$_NSString", or a plain name after its underscore.
    const auto mark = name.find("_$_");
    const auto kind = name.substr(0, mark);
    const std::string plain(name.substr(mark == name.npos ? 1 : mark + 3));
    std::uintptr_t found = 0;
    if (kind == "_OBJC_METACLASS") {
        found = address(objc_getMetaClass(plain.c_str()));
    } else if (const Class platformClass = objc_lookUpClass(plain.c_str())) {
        found = kind == "_OBJC_EHTYPE" ? address(new ObjectType(platformClass)) : address(platformClass);
    } else if (name.starts_with("__Z") || name.starts_with("___cxa_") || name.starts_with("___gxx_") ||
        std::ranges::count(same, name)) {
        // Debian has two C++ libraries. The one that unwinds comes first; only the other has Apple's names.
        static void *const secondLibrary = dlopen("libc++.so.1", RTLD_NOW);
        found = address(dlsym(RTLD_DEFAULT, plain.c_str()) ?: dlsym(secondLibrary, plain.c_str()));
    }
    found = machine::bridgedImport(name, found);
    if (!found) {
        refuse("the slice imports " + std::string(name) + ", which is not known");
    }
    return found;
}
