// The whole path of a removal's text: home directory, script, statement, parser, and the bytes that the shell gets.
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

constexpr std::string_view removal = "/bin/rm -rf ";
constexpr std::string_view guard = " 2>/dev/null || true\n";

/// The paths to remove, in the order of removal.
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

/// Reads the script as a shell does, from its first removal on, and checks each removed path. Returns a script that
/// prints the paths instead, with a NUL after each.
std::string judgedRemovals(std::string_view script, const std::vector<std::string> &paths)
{
    std::string printing;
    for (const auto &path : paths) {
        expect(script.starts_with(removal), "the removals follow one another");
        script.remove_prefix(removal.size());
        const std::string word(quotedWordAtStart(script));
        if (const auto read = wordAsShellReadsIt(word)) {
            expect(*read == path, "each location is one word to a shell");
        }
        script.remove_prefix(word.size());
        expect(script.starts_with(guard), "each removal is guarded");
        script.remove_prefix(guard.size());
        printing.append("printf '%s\\0' ").append(word).append(guard);
    }
    expect(script == "/usr/bin/sfltool resetbtm 2>/dev/null || true\nexit 0",
        "only the last two lines follow the removals");
    return printing + "exit 0";
}

}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t count)
{
    const auto home = textFromBytes(bytes, count);
    const auto script = cleanupScript(home);
    const auto received = parseShellStatement(privilegedStatement(appleScriptQuoted(script)));
    expect(received == script, "the parser returns the script unchanged");

    const auto shellText = utf8ForShell(*received);
    expect(shellText.has_value() == utf8ForShell(home).has_value(),
        "only the home can make a script that a shell cannot receive");
    if (!shellText) {
        return 0;
    }
    const auto firstRemoval = shellText->find(removal);
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
