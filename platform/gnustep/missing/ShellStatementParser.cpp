#include "platform/gnustep/missing/ShellStatementParser.hpp"

namespace
{

bool isSeparator(char16_t unit)
{
    return unit == u' ' || unit == u'\t' || unit == u'\n' || unit == u'\r';
}

/// A position in a source that moves forward as the source is parsed.
class Parser
{
public:
    explicit Parser(std::u16string_view source) : _source(source) { }

    /// Consumes the separators at this position, if any.
    void consumeSeparators()
    {
        while (!atEnd() && isSeparator(_source[_position])) {
            ++_position;
        }
    }

    /// Consumes one word. Returns false, and consumes only separators, when another word stands here.
    bool consumeWord(std::u16string_view word)
    {
        consumeSeparators();
        if (tokenHere() != word) {
            return false;
        }
        _position += word.size();
        return true;
    }

    /// Consumes a string literal and appends the text that it stands for to `text`. Returns an empty text, or, at a
    /// wrong position, what was expected there.
    [[nodiscard]] std::u16string_view consumeLiteral(std::u16string &text)
    {
        consumeSeparators();
        if (!consumeUnit(u'"')) {
            return u"a string";
        }
        while (!consumeUnit(u'"')) {
            if (atEnd()) {
                return u"a closing quotation mark";
            }
            if (!consumeUnit(u'\\')) {
                text += _source[_position++];
            } else if (!consumeEscape(text)) {
                return u"one of \\ \" n r t after a backslash";
            }
        }
        return {};
    }

    [[nodiscard]] bool atEnd() const { return _position == _source.size(); }

    [[nodiscard]] SyntaxError expected(std::u16string_view what) const
    {
        const std::u16string_view token = tokenHere();
        std::u16string message = u"Expected ";
        message.append(what).append(u" but found ");
        if (token.empty()) {
            message.append(u"end of script.");
        } else {
            message.append(u"“").append(token).append(u"”.");
        }
        return { _position, token.size(), message };
    }

private:
    /// The token at this position: a word up to the next separator or quotation mark, one such mark, or nothing at the
    /// end.
    [[nodiscard]] std::u16string_view tokenHere() const
    {
        std::size_t end = _position;
        while (end < _source.size() && !isSeparator(_source[end]) && _source[end] != u'"') {
            ++end;
        }
        if (end == _position && !atEnd()) {
            ++end;
        }
        return _source.substr(_position, end - _position);
    }

    bool consumeUnit(char16_t unit)
    {
        if (atEnd() || _source[_position] != unit) {
            return false;
        }
        ++_position;
        return true;
    }

    /// Consumes what follows a backslash.
    bool consumeEscape(std::u16string &text)
    {
        struct Escape {
            char16_t letter;
            char16_t meaning;
        };
        constexpr Escape escapes[] = { { u'\\', u'\\' }, { u'"', u'"' }, { u'n', u'\n' }, { u'r', u'\r' },
            { u't', u'\t' } };
        for (const Escape &escape : escapes) {
            if (consumeUnit(escape.letter)) {
                text += escape.meaning;
                return true;
            }
        }
        return false;
    }

    std::u16string_view _source;
    std::size_t _position = 0;
};

}

std::variant<std::u16string, SyntaxError> parseShellStatement(std::u16string_view source)
{
    Parser parser(source);
    for (const std::u16string_view word : { u"do", u"shell", u"script" }) {
        if (!parser.consumeWord(word)) {
            return parser.expected(word);
        }
    }
    std::u16string text;
    if (const auto expectation = parser.consumeLiteral(text); !expectation.empty()) {
        return parser.expected(expectation);
    }
    for (const std::u16string_view word : { u"with", u"administrator", u"privileges" }) {
        if (!parser.consumeWord(word)) {
            return parser.expected(word);
        }
    }
    parser.consumeSeparators();
    if (!parser.atEnd()) {
        return parser.expected(u"end of script");
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
