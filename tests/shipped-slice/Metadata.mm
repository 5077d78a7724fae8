// Makes the slice's Objective-C known to GNU's runtime (libobjc 4). Reads the metadata that clang lays out for Apple's
// runtime: its lib/CodeGen/CGObjCMac.cpp, "non-fragile ABI".
#include "Machine.hpp"
#include "Slice.hpp"

#import <AppKit/AppKit.h>
#import <objc/runtime.h>
#include <utility>

// The runtime knows a protocol only if a class that it knows adopts the protocol.
@interface Adopter : NSObject <NSApplicationDelegate>
@end

@implementation Adopter
@end

namespace
{

template <typename Entry> struct List {
    std::uint32_t entrySize, count;
    Entry entries[];
};

template <typename Entry> std::span<const Entry> entriesOf(const List<Entry> *list)
{
    if (list && list->entrySize != sizeof(Entry)) {
        refuse("a list of methods or variables is of a kind that is not known");
    }
    return list ? std::span(list->entries, list->count) : std::span<const Entry> {};
}

struct Method {
    const char *name, *types;
    IMP implementation;
};

struct Variable {
    const std::int32_t *offset;
    const char *name, *type;
    std::uint32_t alignment, size; // The alignment's binary logarithm.
};

struct ProtocolRecord {
    const void *isa;
    const char *name;
};

struct ProtocolList {
    std::uint64_t count;
    const ProtocolRecord *entries[];
};

struct Description {
    std::uint32_t flags, start, size, reserved;
    const void *layout;
    const char *name;
    const List<Method> *methods;
    const ProtocolList *protocols;
    const List<Variable> *variables;
};

struct ClassRecord {
    const ClassRecord *metaclass, *superclass;
    const void *cache, *table;
    const Description *description;
};

struct CategoryRecord {
    const char *name;
    const ClassRecord *extended;
    const List<Method> *methods, *classMethods;
    const ProtocolList *protocols;
};

/// The runtime's class for a reference to a class. The slice refers to the platform's classes and to its own records.
Class classOf(const Image &image, const void *reference)
{
    if (!image.contains(reference)) {
        return reinterpret_cast<Class>(const_cast<void *>(reference));
    }
    const Description &own = *static_cast<const ClassRecord *>(reference)->description;
    return (own.flags & 1 ? objc_getMetaClass : objc_lookUpClass)(own.name);
}

void addMethods(Class extended, const List<Method> *methods)
{
    for (const auto &[name, types, implementation] : entriesOf(methods)) {
        const SEL selector = sel_registerTypedName(name, types);
        if (!class_addMethod(extended, selector, implementation, types)) { // A category replaces an existing method.
            method_setImplementation(class_getInstanceMethod(extended, selector), implementation);
        }
    }
}

void addClass(const Image &image, const ClassRecord *record)
{
    const Description &own = *record->description;
    const Class added = objc_allocateClassPair(classOf(image, record->superclass), own.name, 0);
    const auto variables = entriesOf(own.variables);
    for (const auto &variable : variables) {
        class_addIvar(added, variable.name, variable.size, variable.alignment, variable.type);
    }
    addMethods(added, own.methods);
    addMethods(object_getClass(added), record->metaclass->description->methods);
    for (std::uint64_t i = 0; own.protocols && i < own.protocols->count; ++i) {
        const char *name = own.protocols->entries[i]->name;
        if (!class_addProtocol(added, objc_getProtocol(name))) {
            refuse("the slice adopts the protocol " + std::string(name) + ", which is not known");
        }
    }
    objc_registerClassPair(added);
    for (const auto &variable : variables) { // Offsets cannot change: the compiler may have put them into instructions.
        const auto offset = ivar_getOffset(class_getInstanceVariable(added, variable.name));
        if (offset != *variable.offset) {
            refuse(own.name + std::string("'s ") + variable.name + " is at " + std::to_string(*variable.offset) +
                " for the compiler, at " + std::to_string(offset) + " for the runtime");
        }
    }
}

}

void connectMetadata(const Image &image)
{
    constexpr std::array<std::string_view, 12> known { "__objc_methname", "__objc_classrefs", "__objc_superrefs",
        "__objc_selrefs", "__objc_classlist", "__objc_catlist", "__objc_nlcatlist", "__objc_const", "__objc_data",
        "__objc_ivar", "__objc_imageinfo", "__objc_protolist" };
    for (const auto &[name, content] : image.sections) {
        if (name.starts_with("__objc_") && !std::ranges::count(known, name)) {
            refuse("the slice has Objective-C metadata in " + name + ", which is not known");
        }
    }
    for (auto &[isa, flags, bytes, length] : image.section<std::array<std::uint64_t, 4>>("__cfstring")) {
        if (flags != 0x7c8) {
            refuse("a constant string is not ASCII");
        }
        flags = std::exchange(bytes, length); // GNUstep's layout: the class, the bytes, their number.
    }
    for (auto &selector : image.section<const char *>("__objc_selrefs")) {
        const char *name = std::exchange(selector, reinterpret_cast<const char *>(sel_registerName(selector)));
        machine::noteSelector(name, selector);
    }
    for (const auto *record : image.section<const ClassRecord *>("__objc_classlist")) {
        addClass(image, record);
    }
    for (const auto *category : image.section<const CategoryRecord *>("__objc_catlist")) {
        const Class extended = classOf(image, category->extended);
        addMethods(extended, category->methods);
        addMethods(object_getClass(extended), category->classMethods);
        if (category->protocols) {
            refuse("the category " + std::string(category->name) + " adopts a protocol");
        }
    }
    for (const auto name : { "__objc_classrefs", "__objc_superrefs" }) {
        for (auto &reference : image.section<const void *>(name)) {
            reference = classOf(image, reference);
        }
    }
}

void callLoadMethods(const Image &image)
{
    for (const auto *category : image.section<const CategoryRecord *>("__objc_nlcatlist")) {
        const Class extended = classOf(image, category->extended); // A message would initialise it too early.
        method_getImplementation(class_getClassMethod(extended, @selector(load)))(extended, @selector(load));
    }
}
