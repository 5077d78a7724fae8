/// What the fuzz targets share: text made from a fuzzer's bytes, and the end of a run that breaks a promise.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Text of any code units, lone surrogates included. An ASCII byte is a unit of its own, so that inputs read well; a
/// byte above makes one together with the next, from the ranges up to 3FFF and from C000.
[[nodiscard]] std::u16string textFromBytes(const std::uint8_t *bytes, std::size_t count);

/// The text in UTF-8; nothing when it holds a NUL or a lone surrogate, which no shell can be given.
[[nodiscard]] std::optional<std::string> utf8ForShell(std::u16string_view text);

/// Ends the run, as a finding of the fuzzer, unless the promise holds. `promise` says it in words.
void expect(bool holds, const char *promise);
