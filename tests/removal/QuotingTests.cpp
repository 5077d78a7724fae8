#include "platform/gnustep/missing/ShellStatementParser.hpp"
#include "removal/CleanupScript.hpp"
#include "removal/PrivilegedStatement.hpp"
#include "removal/Quoting.hpp"
#include "tests/removal/RandomText.hpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <optional>
#include <vector>

namespace
{

constexpr int numberOfTexts = 5000;

bool isHighSurrogate(char16_t unit)
{
    return unit >= 0xd800 && unit < 0xdc00;
}

bool isLowSurrogate(char16_t unit)
{
    return unit >= 0xdc00 && unit < 0xe000;
}

/// UTF-8, where half a surrogate pair becomes the three bytes of its number.
std::string bytes(std::u16string_view text)
{
    std::string result;
    for (std::size_t index = 0; index < text.size(); ++index) {
        char32_t point = text[index];
        if (isHighSurrogate(text[index]) && index + 1 < text.size() && isLowSurrogate(text[index + 1])) {
            point = 0x10000 + ((point - 0xd800) << 10) + (text[++index] - 0xdc00);
        }
        if (point < 0x80) {
            result += static_cast<char>(point);
            continue;
        }
        const int more = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
        result += static_cast<char>((0xf00 >> more & 0xff) | point >> 6 * more);
        for (int left = more; left-- > 0;) {
            result += static_cast<char>(0x80 | (point >> 6 * left & 0x3f));
        }
    }
    return result;
}

/// What the real shell makes of words: each one's bytes as an argument.
std::vector<std::string> argumentsFor(const std::vector<std::string> &words)
{
    const std::string script = testing::TempDir() + "quoted-words-" + std::to_string(getpid());
    {
        std::ofstream text(script, std::ios::binary);
        text << "printf '%s\\0'";
        for (const auto &word : words) {
            text << ' ' << word;
        }
    }
    FILE *output = popen(("/bin/sh '" + script + "'").c_str(), "r");
    std::vector<std::string> arguments(1);
    for (int byte; (byte = std::fgetc(output)) != EOF;) {
        if (byte == '\0') {
            arguments.emplace_back();
        } else {
            arguments.back() += static_cast<char>(byte);
        }
    }
    EXPECT_EQ(pclose(output), 0);
    std::remove(script.c_str());
    EXPECT_EQ(arguments.back(), "") << "each argument ends in a null byte";
    arguments.pop_back();
    return arguments;
}

/// Reads an AppleScript string literal: undoes its three escapes. Nothing when it is no literal, or its text holds a
/// line feed or a quote that no escape made.
std::optional<std::u16string> readLiteral(std::u16string_view literal)
{
    if (literal.size() < 2 || literal.front() != u'"' || literal.back() != u'"') {
        return std::nullopt;
    }
    std::u16string text;
    const auto inside = literal.substr(1, literal.size() - 2);
    for (std::size_t index = 0; index < inside.size(); ++index) {
        if (inside[index] == u'"' || inside[index] == u'\n') {
            return std::nullopt;
        }
        if (inside[index] != u'\\') {
            text += inside[index];
            continue;
        }
        if (++index == inside.size()) {
            return std::nullopt;
        }
        switch (inside[index]) {
        case u'\\':
        case u'"':
            text += inside[index];
            break;
        case u'n':
            text += u'\n';
            break;
        default:
            return std::nullopt;
        }
    }
    return text;
}

/// The shell text in a privileged statement as the platform's script runner reads it.
std::u16string readByTheRunner(const std::u16string &statement)
{
    const auto text = parseShellStatement(statement);
    EXPECT_TRUE(text) << bytes(statement);
    return text.value_or(u"");
}

}

TEST(ShellQuoting, OfNothingIsTwoQuotes)
{
    EXPECT_EQ(shellQuoted(u""), u"''");
}

TEST(ShellQuoting, ClosesEscapesAndReopensAroundAQuote)
{
    EXPECT_EQ(shellQuoted(u"/Users/o'neil/Library/Logs/Quorlen"), uR"('/Users/o'\''neil/Library/Logs/Quorlen')");
    EXPECT_EQ(shellQuoted(u"''"), uR"(''\'''\''')");
}

TEST(ShellQuoting, EscapesNothingElse)
{
    EXPECT_EQ(shellQuoted(u"a b$(c)`d`\\\"\n\t~*"), u"'a b$(c)`d`\\\"\n\t~*'");
}

TEST(ShellQuoting, GivesTheShellAnyTextAsOneArgument)
{
    RandomText random(RandomText::Holding::NoNulls);
    std::vector<std::string> words, texts;
    for (int count = 0; count < numberOfTexts; ++count) {
        const auto text = random.next();
        texts.push_back(bytes(text));
        words.push_back(bytes(shellQuoted(text)));
    }

    EXPECT_EQ(argumentsFor(words), texts);
}

TEST(AppleScriptQuoting, OfNothingIsTwoQuotes)
{
    EXPECT_EQ(appleScriptQuoted(u""), uR"("")");
}

TEST(AppleScriptQuoting, EscapesABackslashBeforeTheQuoteThatFollows)
{
    EXPECT_EQ(appleScriptQuoted(uR"(\")"), uR"("\\\"")");
}

TEST(AppleScriptQuoting, WritesALineFeedAsAnEscapeAndNoOtherControlCharacter)
{
    EXPECT_EQ(appleScriptQuoted(u"a\nb\tc\rd"), u"\"a\\nb\tc\rd\"");
    EXPECT_EQ(appleScriptQuoted(u"\\n"), uR"("\\n")") << "a backslash and an n stay what they are";
}

TEST(AppleScriptQuoting, OfTheRestartCommandOnlyAddsTheQuotes)
{
    const std::u16string command = u"/bin/sh -c '/bin/sleep 1; /sbin/shutdown -r now' >/dev/null 2>&1 &";

    EXPECT_EQ(appleScriptQuoted(command), u'"' + command + u'"');
}

TEST(AppleScriptQuoting, IsUndoneByAReaderOfLiterals)
{
    RandomText random(RandomText::Holding::Everything);
    for (int count = 0; count < numberOfTexts; ++count) {
        const auto text = random.next();
        const auto read = readLiteral(appleScriptQuoted(text));
        ASSERT_TRUE(read.has_value()) << bytes(text);
        ASSERT_EQ(*read, text) << bytes(text);
    }
}

TEST(PrivilegedStatement, AddsNoQuotesOfItsOwn)
{
    EXPECT_EQ(privilegedStatement(u"\"exit 0\""), u"do shell script \"exit 0\" with administrator privileges");
}

TEST(PrivilegedStatement, IsReadByTheScriptRunnerAsTheTextThatWasQuoted)
{
    RandomText random(RandomText::Holding::Everything);
    for (int count = 0; count < numberOfTexts; ++count) {
        const auto text = random.next();
        ASSERT_EQ(readByTheRunner(privilegedStatement(appleScriptQuoted(text))), text) << bytes(text);
    }
}

TEST(PrivilegedStatement, CarriesTheCleanupScriptOfAnyHomeUnitForUnit)
{
    RandomText random(RandomText::Holding::Everything);
    for (int count = 0; count < 200; ++count) {
        const auto script = cleanupScript(u"/Users/" + random.next());
        ASSERT_EQ(readByTheRunner(privilegedStatement(appleScriptQuoted(script))), script);
    }
}
