// From the bytes of a scenario file to JSON that is safe to walk.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

namespace nuvelta::virtual_notebook {

// Objects and lists may nest this deep, so that code may recurse into them.
inline constexpr size_t kDeepestNesting = 64;

// Parses `text`. Throws ScenarioError, with `file` as the place, when it is no
// JSON (line and column are named), nests too deep, or an object holds a key twice.
nlohmann::json ParseDocument(std::string_view text, const std::string& file);

// One step of a JSON pointer.
std::string PointerStep(std::string_view key);

}  // namespace nuvelta::virtual_notebook
