// Names of people and of single machines, and what stands for them in a capture: another
// name of the same length and alphabet, the same wherever it stands.
//
// A replacement can be told from its form: letters are "x" and digits "9", but for the last
// ones, which count: "PF3KX1Q7" becomes "XX9XX9XB"-like texts. A name of that form stands
// for itself, so that a capture of a replayed capture is the same again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace nuvelta::support {

enum class NameKind : uint8_t { kSerialNumber, kAssetTag, kUuid, kAccount, kComputer };
const char* NameOf(NameKind kind);

struct FoundName {
  NameKind kind{};
  std::string text;   // UTF-8
  std::string raw{};  // as it stands in a table of bytes, when that is no text
};

// Why a name stays.
enum class NameFate : uint8_t {
  kReplaced,
  kTooShort,  // too short to be told from other texts
  kDecisive,  // part of a text that the service decides by, or of the format
};

struct NameReport {
  NameKind kind{};
  size_t length = 0;  // characters
  NameFate fate{};
};

class Renaming {
 public:
  // Names that occur in one of `kept`, letter case aside, stay.
  Renaming(std::span<const FoundName> names, std::span<const std::string> kept);

  // Any bytes: texts in UTF-8, in the ANSI code page and in UTF-16, tables with them.
  std::string Rename(std::string_view bytes) const;
  void Rename(std::vector<uint8_t>& bytes) const;

  // The names replaced by others, in any spelling of theirs, that stand in the bytes.
  std::vector<std::string> SurvivorsIn(std::string_view bytes) const;

  const std::vector<NameReport>& Report() const { return m_report; }

 private:
  struct Spelling {
    std::string from;  // folded
    std::string exact;
    std::string to;
    size_t name = 0;
  };

  void Add(size_t name, const std::string& from, const std::string& to);
  void AddName(const FoundName& name, const std::string& to);
  const Spelling* At(std::string_view bytes) const;

  std::vector<std::string> m_names;   // replaced by others
  std::vector<Spelling> m_spellings;  // longest first
  std::vector<std::vector<size_t>> m_by_first{256};
  std::vector<NameReport> m_report;
};

// The replacement that counts `number`, for a name in lower case.
std::string ReplacementOf(const std::string& name, unsigned number);

}  // namespace nuvelta::support
