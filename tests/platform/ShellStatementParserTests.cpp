#include "platform/gnustep/missing/ShellStatementParser.hpp"

#include <gtest/gtest.h>

namespace
{

/// The shell text of a source that must be the statement.
std::u16string textOf(std::u16string_view source)
{
    const auto result = parseShellStatement(source);
    if (const auto *error = std::get_if<SyntaxError>(&result)) {
        ADD_FAILURE() << "refused at " << error->position;
        return u"<refused>";
    }
    return std::get<std::u16string>(result);
}

} // namespace

TEST(ShellStatementParser, GivesTheShellText)
{
    EXPECT_EQ(textOf(u"do shell script \"exit 0\" with administrator privileges"), u"exit 0");
}

TEST(ShellStatementParser, UndoesTheFiveEscapes)
{
    EXPECT_EQ(textOf(uR"(do shell script "a\\b\"c\nd\re\tf" with administrator privileges)"), u"a\\b\"c\nd\re\tf");
}

TEST(ShellStatementParser, DoesNotTakeAnEscapedBackslashForTheStartOfAnotherEscape)
{
    EXPECT_EQ(textOf(uR"(do shell script "\\n\\\\t\\\"" with administrator privileges)"), u"\\n\\\\t\\\"");
}

TEST(ShellStatementParser, TakesEveryOtherCharacterAsItStands)
{
    const std::u16string odd =
        std::u16string(u"'$(x)`;\t\n\r\u00e9\u4e16\U0001f600\ufffe") + char16_t(0xd800) + u'\0' + u"z";
    EXPECT_EQ(textOf(u"do shell script \"" + odd + u"\" with administrator privileges"), odd);
}

TEST(ShellStatementParser, TakesAnEmptyText)
{
    EXPECT_EQ(textOf(u"do shell script \"\" with administrator privileges"), u"");
}

TEST(ShellStatementParser, AllowsAnySpaceBetweenWordsAndAround)
{
    EXPECT_EQ(textOf(u"\n  do\tshell  script\"x\"with administrator\r\nprivileges \n"), u"x");
}

struct BadSource {
    const char *name;
    std::u16string source;
    std::size_t position;
    std::size_t length;
    std::u16string message;
};

class ShellStatementParserRefuses : public testing::TestWithParam<BadSource>
{
};

TEST_P(ShellStatementParserRefuses, SayingWhatWasExpectedWhere)
{
    const BadSource &bad = GetParam();
    const auto result = parseShellStatement(bad.source);
    const auto *error = std::get_if<SyntaxError>(&result);
    ASSERT_TRUE(error) << "it was taken for the statement";
    EXPECT_EQ(error->position, bad.position);
    EXPECT_EQ(error->length, bad.length);
    EXPECT_EQ(error->message, bad.message);
}

INSTANTIATE_TEST_SUITE_P(Sources, ShellStatementParserRefuses,
    testing::Values(BadSource { "Nothing", u"", 0, 0, u"Expected do but found end of script." },
        BadSource { "OnlySpace", u" \n", 2, 0, u"Expected do but found end of script." },
        BadSource { "AnotherStatement", u"tell app \"x\"", 0, 4, u"Expected do but found “tell”." },
        BadSource {
            "OtherCase", u"Do shell script \"x\" with administrator privileges", 0, 2, u"Expected do but found “Do”." },
        BadSource { "LongerWord", u"do shells script \"x\"", 3, 6, u"Expected shell but found “shells”." },
        BadSource { "WordsRunTogether", u"doshell script \"x\"", 0, 7, u"Expected do but found “doshell”." },
        BadSource { "NoText", u"do shell script", 15, 0, u"Expected a string but found end of script." },
        BadSource { "AVariable", u"do shell script x with administrator privileges", 16, 1,
            u"Expected a string but found “x”." },
        BadSource { "SingleQuotes", u"do shell script 'x' with administrator privileges", 16, 3,
            u"Expected a string but found “'x'”." },
        BadSource { "OpenText", u"do shell script \"x with", 23, 0,
            u"Expected a closing quotation mark but found end of script." },
        BadSource { "TextThatEndsInABackslash", uR"(do shell script "x\)", 19, 0,
            uR"(Expected one of \ " n r t after a backslash but found end of script.)" },
        BadSource { "TextWhoseEndIsEscaped", uR"(do shell script "x\" with)", 25, 0,
            u"Expected a closing quotation mark but found end of script." },
        BadSource { "AnotherEscape", uR"(do shell script "\q" with administrator privileges)", 18, 1,
            uR"(Expected one of \ " n r t after a backslash but found “q”.)" },
        BadSource { "NoPrivileges", u"do shell script \"x\"", 19, 0, u"Expected with but found end of script." },
        BadSource { "HalfThePrivileges", u"do shell script \"x\" with administrator", 38, 0,
            u"Expected privileges but found end of script." },
        BadSource { "WithoutPrivileges", u"do shell script \"x\" without administrator privileges", 20, 7,
            u"Expected with but found “without”." },
        BadSource { "TwoTexts", u"do shell script \"x\" \"y\" with administrator privileges", 20, 1,
            u"Expected with but found “\"”." },
        BadSource { "AnExpression", u"do shell script \"x\" & \"y\" with administrator privileges", 20, 1,
            u"Expected with but found “&”." },
        BadSource { "AParameterMore",
            u"do shell script \"x\" with administrator privileges without altering line endings", 50, 7,
            u"Expected end of script but found “without”." },
        BadSource { "ASecondStatement", u"do shell script \"x\" with administrator privileges\nbeep", 50, 4,
            u"Expected end of script but found “beep”." },
        BadSource { "AComment", u"do shell script \"x\" with administrator privileges --", 50, 2,
            u"Expected end of script but found “--”." }),
    [](const auto &info) { return std::string(info.param.name); });

TEST(ShellText, ReachesTheShellUnlessACharacterOfItCannot)
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
