#include "removal/PrivilegedStatement.hpp"
#include "removal/Quoting.hpp"

#include <gtest/gtest.h>

// These tests check the exact quoted text. tests/fuzz checks with real parsers that both quotings of any text can be
// undone.

TEST(ShellQuoting, OfAnEmptyTextIsTwoQuotes)
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

TEST(AppleScriptQuoting, OfAnEmptyTextIsTwoQuotes)
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
    EXPECT_EQ(appleScriptQuoted(u"\\n"), uR"("\\n")") << "a backslash and an n are not a line feed";
}

TEST(AppleScriptQuoting, OfTheRestartCommandOnlyAddsTheQuotes)
{
    const std::u16string command = u"/bin/sh -c '/bin/sleep 1; /sbin/shutdown -r now' >/dev/null 2>&1 &";

    EXPECT_EQ(appleScriptQuoted(command), u'"' + command + u'"');
}

TEST(PrivilegedStatement, AddsNoQuotesOfItsOwn)
{
    EXPECT_EQ(privilegedStatement(u"\"exit 0\""), u"do shell script \"exit 0\" with administrator privileges");
}
