#include "platform/gnustep/StatementReader.hpp"

namespace
{

bool isSeparator(char16_t unit)
{
    return unit == u' ' || unit == u'\t' || unit == u'\n' || unit == u'\r';
}

/// A position in a source that moves forward as the source is read.
class Reader
{
public:
    explicit Reader(std::u16string_view source) : _source(source) { }

    /// Passes the separators that stand here, if any.
    void passSeparators()
    {
        while (!atEnd() && isSeparator(_source[_position])) {
            ++_position;
        }
    }

    /// Passes one word; false, and nothing passed, when another one stands here.
    bool passWord(std::u16string_view word)
    {
        passSeparators();
        if (tokenHere() != word) {
            return false;
        }
        _position += word.size();
        return true;
    }

    /// Passes a string literal and appends what it stands for to `text`. The result is empty; at a place that is wrong,
    /// it says what was expected there.
    [[nodiscard]] std::u16string_view passLiteral(std::u16string &text)
    {
        passSeparators();
        if (!passUnit(u'"')) {
            return u"a string";
        }
        while (!passUnit(u'"')) {
            if (atEnd()) {
                return u"a closing quotation mark";
            }
            if (!passUnit(u'\\')) {
                text += _source[_position++];
            } else if (!passEscape(text)) {
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
    /// What stands here up to the next separator or quotation mark: a word, one such mark, or nothing at the end.
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

    bool passUnit(char16_t unit)
    {
        if (atEnd() || _source[_position] != unit) {
            return false;
        }
        ++_position;
        return true;
    }

    /// Passes what follows an escaping backslash.
    bool passEscape(std::u16string &text)
    {
        struct Escape {
            char16_t letter;
            char16_t meaning;
        };
        constexpr Escape escapes[] = { { u'\\', u'\\' }, { u'"', u'"' }, { u'n', u'\n' }, { u'r', u'\r' },
            { u't', u'\t' } };
        for (const Escape &escape : escapes) {
            if (passUnit(escape.letter)) {
                text += escape.meaning;
                return true;
            }
        }
        return false;
    }

    std::u16string_view _source;
    std::size_t _position = 0;
};

} // namespace

std::variant<std::u16string, SyntaxError> readStatement(std::u16string_view source)
{
    Reader reader(source);
    for (const std::u16string_view word : { u"do", u"shell", u"script" }) {
        if (!reader.passWord(word)) {
            return reader.expected(word);
        }
    }
    std::u16string text;
    if (const auto expectation = reader.passLiteral(text); !expectation.empty()) {
        return reader.expected(expectation);
    }
    for (const std::u16string_view word : { u"with", u"administrator", u"privileges" }) {
        if (!reader.passWord(word)) {
            return reader.expected(word);
        }
    }
    reader.passSeparators();
    if (!reader.atEnd()) {
        return reader.expected(u"end of script");
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
