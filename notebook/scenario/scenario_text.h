// The texts in which scenarios write values, and texts for people about them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/types.h"

namespace nuvelta::virtual_notebook {

// Pairs of hexadecimal digits, a blank allowed behind each pair.
std::optional<std::vector<uint8_t>> ParseHex(std::string_view text);
// "0x" and one to eight hexadecimal digits.
std::optional<uint32_t> ParseCode(std::string_view text);
// 8-4-4-4-12 hexadecimal digits, in braces or not.
std::optional<platform::Guid> ParseGuid(std::string_view text);

// "YYYY-MM-DD hh:mm:ss", a moment that exists, of the years 1990 to 2099.
bool IsDateTime(std::string_view text);
// Four numbers of 16 bits with dots between them.
bool IsVersion(std::string_view text);

// `text` for one line of any terminal: bytes other than printable ASCII as \xNN,
// long texts cut.
std::string Shown(std::string_view text, size_t limit = 80);
// "a", "b", "c"
std::string QuotedList(std::span<const std::string_view> names);
// `; did you mean "..."?` when one of the names is close to `name`, else empty.
// A name's last part, behind "::", counts as close.
std::string Suggestion(std::string_view name, std::span<const std::string_view> names);

}  // namespace nuvelta::virtual_notebook
