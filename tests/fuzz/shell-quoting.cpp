// Shell quoting: whatever the text, a shell reads it back as one word, byte for byte.
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
    expect(word.has_value(), "quoting adds nothing that no shell can be given");
    expect(quotedWordAtStart(*word) == *word, "a quoted text is single-quoted from end to end");
    if (const auto read = wordAsShellReadsIt(*word)) {
        expect(*read == *plain, "a POSIX word parser reads the text back");
    }
    if (isSample(*plain)) {
        const auto shell = runShell("printf '%s.' " + *word + " end");
        expect(shell.succeeded && shell.output == *plain + ".end.", "the real shell reads the text back as one word");
    }
    return 0;
}
