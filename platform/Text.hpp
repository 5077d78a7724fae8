/// Text across the border between the platform's strings and plain C++: UTF-16 code units on both sides, so that on a
/// Mac any string passes unchanged, lone surrogates included. `nsString` says what GNUstep cannot pass.
#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

/// The code units of a platform string; empty for nil.
[[nodiscard]] inline std::u16string utf16(NSString *string)
{
    static_assert(sizeof(unichar) == sizeof(char16_t));
    std::u16string units([string length], u'\0');
    [string getCharacters:reinterpret_cast<unichar *>(units.data()) range:NSMakeRange(0, units.size())];
    return units;
}

/// A new autoreleased platform string of these code units. Not nil on a Mac; GNUstep 1.28 has no string for half a
/// surrogate pair (nil, though its mutable strings can hold one) and takes a leading U+FEFF for a byte-order mark.
[[nodiscard]] inline NSString *nsString(std::u16string_view units)
{
    return [NSString stringWithCharacters:reinterpret_cast<const unichar *>(units.data()) length:units.size()];
}
