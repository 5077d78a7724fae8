// AppleScript quoting: whatever the text, the statement's reader reads it back, unit for unit.
#include "platform/gnustep/missing/ShellStatementParser.hpp"
#include "removal/PrivilegedStatement.hpp"
#include "removal/Quoting.hpp"
#include "tests/fuzz/FuzzedText.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t count)
{
    const auto text = textFromBytes(bytes, count);
    const auto literal = appleScriptQuoted(text);
    expect(literal.find(u'\n') == literal.npos, "a literal is one line");
    const auto read = parseShellStatement(privilegedStatement(literal));
    const auto *understood = std::get_if<std::u16string>(&read);
    expect(understood != nullptr, "the statement is understood");
    expect(*understood == text, "the statement's reader reads the text back");
    return 0;
}
