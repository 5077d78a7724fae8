#include "removal/Quoting.hpp"

std::u16string shellQuoted(std::u16string_view text)
{
    std::u16string word = u"'";
    for (const char16_t unit : text) {
        if (unit == u'\'') {
            word += uR"('\'')";
        } else {
            word += unit;
        }
    }
    return word += u'\'';
}

std::u16string appleScriptQuoted(std::u16string_view text)
{
    // One pass escapes each unit once. That equals escaping first the backslashes, then the quotes, then the line
    // feeds.
    std::u16string literal = u"\"";
    for (const char16_t unit : text) {
        switch (unit) {
        case u'\\':
            literal += uR"(\\)";
            break;
        case u'"':
            literal += uR"(\")";
            break;
        case u'\n':
            literal += uR"(\n)";
            break;
        default:
            literal += unit;
        }
    }
    return literal += u'"';
}
