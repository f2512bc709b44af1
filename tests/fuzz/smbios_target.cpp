// The walk over a firmware table and what is read of one structure.
#include "auth/smbios.h"
#include "platform/fcc_marker.h"
#include "smbios_reference.h"
#include "target.h"

namespace nuvelta::fuzz {
namespace {

constexpr size_t kHeader = 8;

// The text lies in the table, up to a zero or the table's end.
void RequireInside(std::string_view text, Bytes table) {
  if (text.data() == nullptr) return;
  const auto* const begin = reinterpret_cast<const char*>(table.data());
  const auto* const end = begin + table.size();
  if (text.empty()) return;
  Require(text.data() >= begin && text.data() + text.size() <= end, "a text lies in the table");
  Require(text.find('\0') == std::string_view::npos, "a text ends at its first zero");
  Require(text.data() + text.size() == end || text.data()[text.size()] == '\0',
          "a text ends at a zero or with the table");
}

void Look(const SmbiosTable& table, const SmbiosReference& reference, Bytes input, uint8_t type,
          uint8_t least) {
  const auto found = FindStructure(table, type, least);
  const auto expected = reference.First(type, least);
  Require(found.has_value() == expected.has_value(), "a structure is found where there is one");
  if (!found) return;
  Require(found->offset + kHeader == expected->at, "it is the first that fits");
  Require(found->offset < table.End(), "it begins in the structures");
  Require(found->type == type && found->length >= least && found->length >= 4, "it fits");
  for (const int wanted : {0, 1, 2, 3, 4, 5, 7, 64, 255}) {
    const auto number = static_cast<uint8_t>(wanted);
    const std::string_view text = ResolveString(table, *found, number);
    RequireInside(text, input);
    Require(text == reference.Text(*expected, number), "the string is the one of that number");
  }
}

void Run(Bytes input) {
  const SmbiosTable table(std::as_bytes(input));
  const SmbiosReference reference(input);
  Require(table.End() + kHeader == reference.End(), "the structures end with Length or the bytes");
  for (const auto& [type, least] : {std::pair(1, 25), {1, 26}, {2, 8}, {4, 22}, {127, 4}, {0, 0}}) {
    Look(table, reference, input, static_cast<uint8_t>(type), static_cast<uint8_t>(least));
  }
  // One that the input names, in a byte that the walk does not read.
  Look(table, reference, input, table.Used20CallingMethod, table.DmiRevision);

  const auto content = FindFccContent(table);
  const auto expected = reference.FccContent();
  Require((content && content->closed) == expected.has_value(), "closed content is found");
  if (content) {
    Require(content->offset <= table.End() + 4, "the content begins in the table");
    Require(content->length == 0 || content->offset + content->length <= table.Size(),
            "the content lies in the bytes");
    if (content->closed) Require(content->length == expected->size(), "up to its double zero");
    Require(IsFccContent(table, *content, platform::kFccMarker) == reference.IsFcc(),
            "the marker is accepted as it stands, letter case aside");
  }
}

const Registration g_registration("smbios", Run);

}  // namespace
}  // namespace nuvelta::fuzz
