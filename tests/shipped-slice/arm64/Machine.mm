// The parts for the Arm slice. Columns: Arm's "DWARF for the Arm 64-bit Architecture", 4.1; calls: Arm's AAPCS64 and
// Apple's "Writing ARM64 code for Apple platforms".
#include "../Machine.hpp"

#include "../Slice.hpp"

#include <cstdarg>
#import <Foundation/Foundation.h>
#import <objc/message.h>
#include <regex>
#include <utility>

namespace machine
{

const std::uint8_t framePointer = 29, returnAddress = 30;

std::optional<std::vector<std::uint8_t>> savedRegisters(std::uint32_t encoding)
{
    const auto mode = encoding >> 24 & 0xf;
    if (mode == 2) { // A leaf function: it calls nothing that could raise.
        return {};
    }
    if (mode != 4) {
        refuse("a function keeps no frame pointer");
    }
    std::vector<std::uint8_t> rules;
    std::uint8_t depth = 3; // In steps of 8 below the frame's address.
    // By their bits: x19 and up, d8 and up.
    constexpr std::uint8_t pairs[] { 19, 21, 23, 25, 27, 0, 0, 0, 72, 74, 76, 78 };
    for (std::size_t bit = 0; bit < std::size(pairs); ++bit) {
        for (const std::uint8_t column : { pairs[bit], static_cast<std::uint8_t>(pairs[bit] + 1) }) {
            if (encoding >> bit & 1) {
                rules.insert(rules.end(), { 0x05, column, depth++ });
            }
        }
    }
    return rules;
}

constexpr std::uint8_t brk[] { 0x00, 0x00, 0x20, 0xd4 };
const std::span<const std::uint8_t> breakpoint = brk;

std::uint8_t *takeBreakpoint(ucontext_t &context)
{
    return reinterpret_cast<std::uint8_t *>(context.uc_mcontext.pc);
}

namespace
{

// In Apple's convention a constructor and a destructor return the object, and callers rely on that.

using Function = void (*)(void *, long, long, long, long, long, long, long);
std::array<Function, 8> originals; // The function that each bridge calls.

template <std::size_t index> void *returnObject(void *object, long a, long b, long c, long d, long e, long f, long g)
{
    originals[index](object, a, b, c, d, e, f, g);
    return object;
}

template <std::size_t... indexes> auto bridges(std::index_sequence<indexes...>)
{
    return std::array { returnObject<indexes>... };
}

// Apple's convention passes the arguments of "..." on the stack. Debian's passes them in registers first.

/// A method in Apple's convention, with a format before the "...". Named arguments use all registers, so the others are
/// read from the stack.
template <auto method>
id variadic(id self, SEL, id format, long, long, long, long, long, double, double, double, double, double, double,
    double, double last, ...)
{
    va_list arguments;
    va_start(arguments, last);
    id result = method(self, format, arguments);
    va_end(arguments);
    return result;
}

id stringWithFormat(id self, id format, va_list arguments)
{
    return [[[self alloc] initWithFormat:format arguments:arguments] autorelease];
}

id stringByAppendingFormat(id self, id format, va_list arguments)
{
    return [self stringByAppendingString:stringWithFormat([NSString class], format, arguments)];
}

const std::map<std::string_view, decltype(&variadic<stringWithFormat>)> bridged {
    { "stringWithFormat:", variadic<stringWithFormat> },
    { "stringByAppendingFormat:", variadic<stringByAppendingFormat> },
};

// The other variadic methods that GNUstep declares.
constexpr std::string_view unknown[] { "appendFormat:", "arrayWithObjects:", "dictionaryWithObjectsAndKeys:", "error:",
    "decodeValuesOfObjCTypes:", "encodeValuesOfObjCTypes:", "initWithColorsAndLocations:", "initWithFormat:",
    "initWithFormat:locale:", "initWithObjects:", "initWithObjectsAndKeys:", "localizedStringWithFormat:",
    "orderedSetWithObjects:", "predicateWithFormat:", "raise:format:", "setWithObjects:",
    "alertWithMessageText:defaultButton:alternateButton:otherButton:informativeTextWithFormat:",
    "handleFailureInFunction:file:lineNumber:description:",
    "handleFailureInMethod:object:file:lineNumber:description:" };

std::map<const void *, IMP> variadicMethods; // By the slice's selectors.

}

void noteSelector(std::string_view name, const void *selector)
{
    if (std::ranges::count(unknown, name)) {
        refuse("the slice sends " + std::string(name) + ", whose arguments are not where this system expects them");
    }
    if (const auto method = bridged.find(name); method != bridged.end()) {
        variadicMethods[selector] = reinterpret_cast<IMP>(method->second);
    }
}

std::uintptr_t bridgedImport(std::string_view name, std::uintptr_t found)
{
    static const auto all = bridges(std::make_index_sequence<originals.size()>());
    static std::size_t count = 0;
    static const std::regex constructorOrDestructor("__ZN.*[CD][12]E.*"); // In a mangled name.
    if (!found || !std::regex_match(name.begin(), name.end(), constructorOrDestructor)) {
        return found;
    }
    if (count == all.size()) {
        refuse("the slice imports more than " + std::to_string(count) + " constructors and destructors");
    }
    originals[count] = reinterpret_cast<Function>(found);
    return reinterpret_cast<std::uintptr_t>(all[count++]);
}

}

/// Returns the method to call: the bridge of a variadic method, or the receiver's method. Sends.S calls this.
extern "C" IMP lookUpMethod(id receiver, SEL selector)
{
    const auto bridge = machine::variadicMethods.find(reinterpret_cast<const void *>(selector));
    return bridge != machine::variadicMethods.end() ? bridge->second : objc_msg_lookup(receiver, selector);
}
