#include "platform/gnustep/missing/ShellStatementParser.hpp"

namespace
{

constexpr std::u16string_view beforeText = u"do shell script \"";
constexpr std::u16string_view afterText = u"\" with administrator privileges";

/// The letters that can follow a backslash, and at the same index what each pair stands for.
constexpr std::u16string_view escapeLetters = u"\\\"nrt";
constexpr std::u16string_view escapedUnits = u"\\\"\n\r\t";

}

std::optional<std::u16string> parseShellStatement(std::u16string_view source)
{
    if (source.size() < beforeText.size() + afterText.size() || !source.starts_with(beforeText) ||
        !source.ends_with(afterText)) {
        return std::nullopt;
    }
    source.remove_prefix(beforeText.size());
    source.remove_suffix(afterText.size());
    std::u16string text;
    for (std::size_t place = 0; place < source.size(); ++place) {
        if (source[place] == u'"') { // The literal ends before the end of the source.
            return std::nullopt;
        }
        if (source[place] != u'\\') {
            text += source[place];
            continue;
        }
        ++place;
        const auto escape = place < source.size() ? escapeLetters.find(source[place]) : escapeLetters.npos;
        if (escape == escapeLetters.npos) {
            return std::nullopt;
        }
        text += escapedUnits[escape];
    }
    return text;
}

bool canReachTheShell(std::u16string_view text)
{
    const auto isHigh = [](char16_t unit) { return (unit & 0xfc00) == 0xd800; };
    const auto isLow = [](char16_t unit) { return (unit & 0xfc00) == 0xdc00; };
    for (std::size_t place = 0; place < text.size(); ++place) {
        if (text[place] == u'\0' || isLow(text[place])) {
            return false;
        }
        if (isHigh(text[place])) {
            ++place;
            if (place == text.size() || !isLow(text[place])) {
                return false;
            }
        }
    }
    return true;
}
