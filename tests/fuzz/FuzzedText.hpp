/// Shared by the fuzz targets: text from a fuzzer's bytes, and the check of a promise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Makes text of any code units, lone surrogates included. An ASCII byte makes one unit, so that inputs are readable. A
/// higher byte and the next one make one unit together, up to 3FFF or from C000.
[[nodiscard]] std::u16string textFromBytes(const std::uint8_t *bytes, std::size_t count);

/// The text in UTF-8, or nothing if it has a NUL or a lone surrogate, because a shell cannot receive these.
[[nodiscard]] std::optional<std::string> utf8ForShell(std::u16string_view text);

/// Ends the run as a finding of the fuzzer if a promise does not hold. `promise` describes it.
void expect(bool holds, const char *promise);
