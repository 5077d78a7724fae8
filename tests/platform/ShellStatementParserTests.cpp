#include "platform/gnustep/missing/ShellStatementParser.hpp"

#include <gtest/gtest.h>

using namespace std::string_literals;
using namespace std::string_view_literals;

TEST(ShellStatementParser, GivesTheShellTextOfAStatement)
{
    const std::u16string odd = u"'$(x)`;\t\n\r\u00e9\u4e16\U0001f600\ufffe\xd800\0z"s;
    const std::pair<std::u16string, std::u16string> rows[] = {
        { u"exit 0", u"exit 0" },
        { u"", u"" },
        { uR"(a\\b\"c\nd\re\tf)", u"a\\b\"c\nd\re\tf" },
        { uR"(\\n\\\\t\\\")", u"\\n\\\\t\\\"" }, // An escaped backslash starts no other escape.
        { odd, odd },
    };
    for (const auto &[literal, text] : rows) {
        EXPECT_EQ(parseShellStatement(u"do shell script \"" + literal + u"\" with administrator privileges"), text);
    }
}

TEST(ShellStatementParser, RefusesEveryOtherSource)
{
    for (const std::u16string_view source : {
             u"",
             u"tell app \"x\"",
             u"Do shell script \"x\" with administrator privileges",
             u"do  shell script \"x\" with administrator privileges",
             u" do shell script \"x\" with administrator privileges",
             u"do shell script",
             u"do shell script x with administrator privileges",
             u"do shell script \"x with administrator privileges",
             uR"(do shell script "x\" with administrator privileges)",
             uR"(do shell script "\q" with administrator privileges)",
             u"do shell script \"x\"",
             u"do shell script \"x\" without administrator privileges",
             u"do shell script \"x\" \"y\" with administrator privileges",
             u"do shell script \"x\" with administrator privileges\nbeep",
         }) {
        EXPECT_FALSE(parseShellStatement(source)) << std::string(source.begin(), source.end());
    }
}

TEST(ShellText, IsRefusedIfAShellCannotReadOneOfItsCharacters)
{
    for (const std::u16string_view text : { u""sv, u"a\r\n\x01\u00e9\uffff\U0001f600\U0010ffff"sv }) {
        EXPECT_TRUE(canReachTheShell(text)) << text.size();
    }
    for (const std::u16string_view text :
        { u"a\0b"sv, u"\xd800"sv, u"\xd83dx"sv, u"x\xde00"sv, u"\xde00\xd83d"sv, u"\xd83d\xd83d\xde00"sv }) {
        EXPECT_FALSE(canReachTheShell(text)) << text.size();
    }
}
