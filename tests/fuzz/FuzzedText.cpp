#include "tests/fuzz/FuzzedText.hpp"

#include <cstdio>
#include <cstdlib>

namespace
{

bool isHighSurrogate(char16_t unit)
{
    return unit >= 0xd800 && unit <= 0xdbff;
}

bool isLowSurrogate(char16_t unit)
{
    return unit >= 0xdc00 && unit <= 0xdfff;
}

void appendUtf8(std::string &bytes, char32_t character)
{
    const auto tail = [character](int shift) { return static_cast<char>(0x80 | ((character >> shift) & 0x3f)); };
    if (character < 0x80) {
        bytes += static_cast<char>(character);
    } else if (character < 0x800) {
        bytes += static_cast<char>(0xc0 | (character >> 6));
        bytes += tail(0);
    } else if (character < 0x10000) {
        bytes += static_cast<char>(0xe0 | (character >> 12));
        bytes += tail(6);
        bytes += tail(0);
    } else {
        bytes += static_cast<char>(0xf0 | (character >> 18));
        bytes += tail(12);
        bytes += tail(6);
        bytes += tail(0);
    }
}

}

std::u16string textFromBytes(const std::uint8_t *bytes, std::size_t count)
{
    std::u16string text;
    for (std::size_t index = 0; index < count; ++index) {
        if (bytes[index] < 0x80) {
            text += static_cast<char16_t>(bytes[index]);
        } else if (index + 1 < count) {
            const int high = bytes[index] < 0xc0 ? bytes[index] & 0x3f : bytes[index];
            text += static_cast<char16_t>(high << 8 | bytes[++index]);
        }
    }
    return text;
}

std::optional<std::string> utf8ForShell(std::u16string_view text)
{
    std::string bytes;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const char16_t unit = text[index];
        if (isHighSurrogate(unit) && index + 1 < text.size() && isLowSurrogate(text[index + 1])) {
            appendUtf8(bytes, 0x10000 + ((unit & 0x3ffu) << 10) + (text[++index] & 0x3ffu));
        } else if (unit == 0 || isHighSurrogate(unit) || isLowSurrogate(unit)) {
            return std::nullopt;
        } else {
            appendUtf8(bytes, unit);
        }
    }
    return bytes;
}

void expect(bool holds, const char *promise)
{
    if (!holds) {
        std::fprintf(stderr, "broken: %s\n", promise);
        std::abort();
    }
}
