// The whole way of a removal's text: home directory, script, statement, reader, and the bytes that the shell gets.
#include "detection/KnownLocations.hpp"
#include "platform/gnustep/missing/ShellStatementParser.hpp"
#include "removal/CleanupScript.hpp"
#include "removal/PrivilegedStatement.hpp"
#include "removal/Quoting.hpp"
#include "tests/fuzz/FuzzedText.hpp"
#include "tests/fuzz/Shell.hpp"

#include <vector>

namespace
{

constexpr std::string_view Removal = "/bin/rm -rf ";
constexpr std::string_view Guard = " 2>/dev/null || true\n";

/// The paths that are to be removed, in the order of removal.
std::vector<std::string> locations(std::u16string_view home)
{
    std::vector<std::string> paths;
    for (const auto path : known_locations::absolute) {
        paths.push_back(*utf8ForShell(path));
    }
    const std::string base = *utf8ForShell(home) + (home.ends_with(u'/') ? "" : "/");
    for (const auto path : known_locations::homeRelative) {
        paths.push_back(base + *utf8ForShell(path));
    }
    return paths;
}

/// Reads the script as a shell does, from its first removal on, and judges each removed path. The result is a script
/// that prints the paths instead, each with a NUL behind it.
std::string judgedRemovals(std::string_view script, const std::vector<std::string> &paths)
{
    std::string printing;
    for (const auto &path : paths) {
        expect(script.starts_with(Removal), "one removal follows the other");
        script.remove_prefix(Removal.size());
        const std::string word(quotedWordAtStart(script));
        if (const auto read = wordAsShellReadsIt(word)) {
            expect(*read == path, "each location is one word to a shell");
        }
        script.remove_prefix(word.size());
        expect(script.starts_with(Guard), "each removal is guarded");
        script.remove_prefix(Guard.size());
        printing.append("printf '%s\\0' ").append(word).append(Guard);
    }
    expect(script == "/usr/bin/sfltool resetbtm 2>/dev/null || true\nexit 0", "nothing else follows the removals");
    return printing + "exit 0";
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t count)
{
    const auto home = textFromBytes(bytes, count);
    const auto script = cleanupScript(home);
    const auto received = parseShellStatement(privilegedStatement(appleScriptQuoted(script)));
    expect(received == script, "the parser hands on the script as it was built");

    const auto shellText = utf8ForShell(*received);
    expect(shellText.has_value() == utf8ForShell(home).has_value(), "only a home can hold what no shell can be given");
    if (!shellText) {
        return 0;
    }
    const auto firstRemoval = shellText->find(Removal);
    expect(firstRemoval != shellText->npos, "there are removals");
    const auto paths = locations(home);
    const auto printing = judgedRemovals(std::string_view(*shellText).substr(firstRemoval), paths);
    if (isSample(*shellText)) {
        std::string expected;
        for (const auto &path : paths) {
            expected.append(path).push_back('\0');
        }
        const auto shell = runShell("set -e\n" + printing);
        expect(shell.succeeded && shell.output == expected, "the real shell removes the locations and nothing else");
    }
    return 0;
}
