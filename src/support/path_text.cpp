#include "support/path_text.h"

#include <cstdint>
#include <system_error>

namespace nuvelta::support {

namespace fs = std::filesystem;

fs::path PathOf(std::string_view text) { return {std::u8string(text.begin(), text.end())}; }

std::string TextOf(const fs::path& path) {
  try {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
  } catch (const std::system_error&) {
    // Half of a surrogate pair, which Windows lets into names.
    std::string text;
    for (const auto character : path.native()) {
      text += static_cast<uint16_t>(character) < 0x80 ? static_cast<char>(character) : '?';
    }
    return text;
  }
}

}  // namespace nuvelta::support
