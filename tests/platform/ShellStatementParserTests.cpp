#include "platform/gnustep/missing/ShellStatementParser.hpp"

#include <gtest/gtest.h>

namespace
{

/// The shell text of a source that must be a valid statement.
std::u16string textOf(std::u16string_view source)
{
    const auto text = parseShellStatement(source);
    EXPECT_TRUE(text) << "the source is refused";
    return text.value_or(u"");
}

}

TEST(ShellStatementParser, GivesTheShellText)
{
    EXPECT_EQ(textOf(u"do shell script \"exit 0\" with administrator privileges"), u"exit 0");
}

TEST(ShellStatementParser, UndoesTheFiveEscapes)
{
    EXPECT_EQ(textOf(uR"(do shell script "a\\b\"c\nd\re\tf" with administrator privileges)"), u"a\\b\"c\nd\re\tf");
}

TEST(ShellStatementParser, DoesNotStartAnotherEscapeAtAnEscapedBackslash)
{
    EXPECT_EQ(textOf(uR"(do shell script "\\n\\\\t\\\"" with administrator privileges)"), u"\\n\\\\t\\\"");
}

TEST(ShellStatementParser, KeepsEveryOtherCharacter)
{
    const std::u16string odd =
        std::u16string(u"'$(x)`;\t\n\r\u00e9\u4e16\U0001f600\ufffe") + char16_t(0xd800) + u'\0' + u"z";
    EXPECT_EQ(textOf(u"do shell script \"" + odd + u"\" with administrator privileges"), odd);
}

TEST(ShellStatementParser, AcceptsAnEmptyText)
{
    EXPECT_EQ(textOf(u"do shell script \"\" with administrator privileges"), u"");
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
             u"do shell script \" with administrator privileges",
             u"do shell script x with administrator privileges",
             u"do shell script 'x' with administrator privileges",
             u"do shell script \"x with administrator privileges",
             uR"(do shell script "x\" with administrator privileges)",
             uR"(do shell script "\q" with administrator privileges)",
             u"do shell script \"x\"",
             u"do shell script \"x\" without administrator privileges",
             u"do shell script \"x\" \"y\" with administrator privileges",
             u"do shell script \"x\" & \"y\" with administrator privileges",
             u"do shell script \"x\" with administrator privileges without altering line endings",
             u"do shell script \"x\" with administrator privileges\nbeep",
             u"do shell script \"x\" with administrator privileges --",
         }) {
        EXPECT_FALSE(parseShellStatement(source)) << std::string(source.begin(), source.end());
    }
}

TEST(ShellText, IsRefusedIfAShellCannotReadOneOfItsCharacters)
{
    using namespace std::string_literals;
    using namespace std::string_view_literals;
    EXPECT_TRUE(canReachTheShell(u""));
    EXPECT_TRUE(canReachTheShell(u"a\r\n\x01\u00e9\uffff\U0001f600\U0010ffff"));
    EXPECT_FALSE(canReachTheShell(u"a\0b"sv));
    for (const std::u16string &half :
        { u"\xd800"s, u"\xd83dx"s, u"x\xde00"s, u"\xde00\xd83d"s, u"\xd83d\xd83d\xde00"s }) {
        EXPECT_FALSE(canReachTheShell(half)) << half.size();
    }
}
