// Shell quoting: a shell reads any quoted text as one word with the same bytes.
#include "removal/Quoting.hpp"
#include "tests/fuzz/FuzzedText.hpp"
#include "tests/fuzz/Shell.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t count)
{
    const auto text = textFromBytes(bytes, count);
    const auto plain = utf8ForShell(text);
    if (!plain) {
        return 0;
    }
    const auto word = utf8ForShell(shellQuoted(text));
    expect(word.has_value(), "a shell can receive every quoted text");
    expect(quotedWordAtStart(*word) == *word, "a quoted text is single-quoted from end to end");
    if (const auto read = wordAsShellReadsIt(*word)) {
        expect(*read == *plain, "a POSIX word parser reads the same text");
    }
    if (isSample(*plain)) {
        const auto shell = runShell("printf '%s.' " + *word + " end");
        expect(shell.succeeded && shell.output == *plain + ".end.", "the real shell reads the same text as one word");
    }
    return 0;
}
