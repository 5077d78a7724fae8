// AppleScript quoting: the statement's parser returns any quoted text unchanged.
#include "platform/gnustep/missing/ShellStatementParser.hpp"
#include "removal/PrivilegedStatement.hpp"
#include "removal/Quoting.hpp"
#include "tests/fuzz/FuzzedText.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t count)
{
    const auto text = textFromBytes(bytes, count);
    const auto literal = appleScriptQuoted(text);
    expect(literal.find(u'\n') == literal.npos, "a literal is one line");
    expect(parseShellStatement(privilegedStatement(literal)) == text, "the statement's parser returns the text");
    return 0;
}
