// The statement's reader: what it understands, and what it says of all else, against a second reader of the same
// grammar.
#include "platform/gnustep/missing/ShellStatementParser.hpp"
#include "removal/PrivilegedStatement.hpp"
#include "removal/Quoting.hpp"
#include "tests/fuzz/FuzzedText.hpp"

#include <map>
#include <optional>
#include <vector>

namespace
{

constexpr std::u16string_view Separators = u" \t\n\r";

/// The grammar once more, by other means: the source is cut into tokens first, a literal being one of them, and the
/// tokens are then compared with those of the statement.
std::optional<std::u16string> readByTokens(std::u16string_view source)
{
    static const std::map<char16_t, char16_t> escapes { { u'\\', u'\\' }, { u'"', u'"' }, { u'n', u'\n' },
        { u'r', u'\r' }, { u't', u'\t' } };
    std::vector<std::u16string> words;
    std::optional<std::u16string> literal;
    std::size_t wordsBefore = 0;
    for (std::size_t at = source.find_first_not_of(Separators); at != source.npos;
        at = source.find_first_not_of(Separators, at)) {
        if (source[at] != u'"') {
            const auto end = std::min(source.find_first_of(u" \t\n\r\"", at), source.size());
            words.emplace_back(source.substr(at, end - at));
            at = end;
            continue;
        }
        if (literal) {
            return std::nullopt;
        }
        literal.emplace();
        wordsBefore = words.size();
        for (++at; at < source.size() && source[at] != u'"'; ++at) {
            if (source[at] != u'\\') {
                *literal += source[at];
                continue;
            }
            const auto escape = ++at < source.size() ? escapes.find(source[at]) : escapes.end();
            if (escape == escapes.end()) {
                return std::nullopt;
            }
            *literal += escape->second;
        }
        if (at++ == source.size()) {
            return std::nullopt;
        }
    }
    const std::vector<std::u16string> statement { u"do", u"shell", u"script", u"with", u"administrator",
        u"privileges" };
    return words == statement && wordsBefore == 3 ? literal : std::nullopt;
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t count)
{
    const auto source = textFromBytes(bytes, count);
    const auto read = parseShellStatement(source);
    const auto reference = readByTokens(source);
    if (const auto *text = std::get_if<std::u16string>(&read)) {
        expect(reference.has_value(), "nothing is understood but the one statement");
        expect(*reference == *text, "a literal stands for the same text to both readers");
        const auto again = parseShellStatement(privilegedStatement(appleScriptQuoted(*text)));
        expect(std::get<std::u16string>(again) == *text, "what was read can be written and read again");
        return 0;
    }
    expect(!reference.has_value(), "the one statement is understood in all its forms");
    const auto &error = std::get<SyntaxError>(read);
    expect(error.position <= source.size() && error.length <= source.size() - error.position,
        "an error lies within the source");
    expect((error.length == 0) == (error.position == source.size()), "only the end has no offending text");
    expect(error.message.starts_with(u"Expected ") && error.message.ends_with(u'.'), "an error is one sentence");
    return 0;
}
