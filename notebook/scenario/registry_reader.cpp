#include <array>
#include <limits>

#include "notebook/model/unicode.h"
#include "notebook/scenario/scenario_parts.h"

namespace nuvelta::virtual_notebook {

namespace {

constexpr std::array kTypeWords{
    Word{"REG_NONE", uint32_t{0}},      Word{"REG_SZ", uint32_t{1}},
    Word{"REG_EXPAND_SZ", uint32_t{2}}, Word{"REG_BINARY", uint32_t{3}},
    Word{"REG_DWORD", uint32_t{4}},     Word{"REG_MULTI_SZ", uint32_t{7}},
    Word{"REG_QWORD", uint32_t{11}},
};

RegistryValue Number(uint32_t number) {
  RegistryValue value;
  for (uint32_t i = 0; i < 4; ++i) value.data.push_back(static_cast<uint8_t>(number >> (8 * i)));
  return value;
}

}  // namespace

RegistryValue ReadRegistryValue(const JsonCursor& at) {
  if (at.IsText()) return {.type = 1, .data = Utf16Bytes(at.Text(), 1)};
  if (at.IsNumber()) return Number(static_cast<uint32_t>(at.Whole(0, 0xFFFFFFFF)));
  if (!at.IsObject()) at.RefuseValue("a number, a text, or an object with \"type\" and \"hex\"");
  const JsonObject object(at, {"type", "hex"});
  const JsonCursor type = object.Need("type");
  return {.type = type.IsNumber() ? type.Code() : type.Choice(kTypeWords),
          .data = object.Need("hex").Hex()};
}

void CheckRegistryKey(const JsonCursor& at, const std::string& path) {
  const std::string folded = Folded(path);
  if (folded.starts_with("hkey_") || folded.starts_with("hklm")) {
    at.Refuse("names a root key", "a path below HKEY_LOCAL_MACHINE such as \"SOFTWARE\\Example\"");
  }
  const bool empty_part = path.empty() || path.front() == '\\' || path.back() == '\\' ||
                          path.find("\\\\") != std::string::npos;
  if (empty_part) at.Refuse("the key path has an empty part", "names with one backslash between");
}

}  // namespace nuvelta::virtual_notebook
