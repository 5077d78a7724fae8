#include "removal/Quoting.hpp"

#include <gtest/gtest.h>

// These tests check the exact quoted text. tests/fuzz checks with real parsers that both quotings of any text can be
// undone.

TEST(ShellQuoting, ClosesEscapesAndReopensAroundAQuoteAndEscapesNothingElse)
{
    EXPECT_EQ(shellQuoted(u""), u"''");
    EXPECT_EQ(shellQuoted(u"/Users/o'neil/Library/Logs/Quorlen"), uR"('/Users/o'\''neil/Library/Logs/Quorlen')");
    EXPECT_EQ(shellQuoted(u"''"), uR"(''\'''\''')");
    EXPECT_EQ(shellQuoted(u"a b$(c)`d`\\\"\n\t~*"), u"'a b$(c)`d`\\\"\n\t~*'");
}

TEST(AppleScriptQuoting, EscapesABackslashAQuoteAndALineFeedAndNothingElse)
{
    EXPECT_EQ(appleScriptQuoted(u""), uR"("")");
    EXPECT_EQ(appleScriptQuoted(uR"(\")"), uR"("\\\"")") << "a backslash before a quote";
    EXPECT_EQ(appleScriptQuoted(u"a\nb\tc\rd"), u"\"a\\nb\tc\rd\"");
    EXPECT_EQ(appleScriptQuoted(u"\\n"), uR"("\\n")") << "a backslash and an n are not a line feed";
}
