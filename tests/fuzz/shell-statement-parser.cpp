// The statement's parser: whatever the source, it refuses it or gives a text whose statement it parses again.
#include "platform/gnustep/missing/ShellStatementParser.hpp"
#include "removal/PrivilegedStatement.hpp"
#include "removal/Quoting.hpp"
#include "tests/fuzz/FuzzedText.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t count)
{
    const auto source = textFromBytes(bytes, count);
    if (const auto text = parseShellStatement(source)) {
        expect(parseShellStatement(privilegedStatement(appleScriptQuoted(*text))) == text,
            "what the parser gives is one statement again");
    }
    const auto embedded = parseShellStatement(privilegedStatement(u'"' + source + u'"'));
    expect(!embedded || embedded->size() <= source.size(), "a literal stands for a text that is not longer");
    return 0;
}
