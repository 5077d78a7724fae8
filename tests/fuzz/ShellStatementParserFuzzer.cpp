// The statement's parser: it refuses a source, or returns a text whose own statement it parses to the same text.
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
    expect(!embedded || embedded->size() <= source.size(), "a text is not longer than its literal");
    return 0;
}
