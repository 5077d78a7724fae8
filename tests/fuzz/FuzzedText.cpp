#include "tests/fuzz/FuzzedText.hpp"

#include <cstdio>
#include <cstdlib>
#include <iconv.h>

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
    static const iconv_t converter = iconv_open("UTF-8", "UTF-16LE");
    std::u16string units(text);
    std::string bytes(text.size() * 3, '\0'); // the longest UTF-8 of a unit
    char *input = reinterpret_cast<char *>(units.data());
    char *output = bytes.data();
    std::size_t inputLeft = units.size() * sizeof(char16_t), outputLeft = bytes.size();
    iconv(converter, nullptr, nullptr, nullptr, nullptr); // forgets what a failure left
    const bool converted = iconv(converter, &input, &inputLeft, &output, &outputLeft) != static_cast<std::size_t>(-1);
    if (!converted || text.find(u'\0') != text.npos) {
        return std::nullopt;
    }
    bytes.resize(bytes.size() - outputLeft);
    return bytes;
}

void expect(bool holds, const char *promise)
{
    if (!holds) {
        std::fprintf(stderr, "broken: %s\n", promise);
        std::abort();
    }
}
