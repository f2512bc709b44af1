// What every fuzz target is made of: its registration, the reader of its input
// and the check of a property.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <span>
#include <string>
#include <vector>

namespace nuvelta::fuzz {

using Bytes = std::span<const uint8_t>;
using Target = void (*)(Bytes input);

// Ends the process, with `what` as its last words, unless the property holds.
void Require(bool holds, const char* what);

struct Registration {
  Registration(const char* name, Target target);
};
// The target of that name; with one registered, as under libFuzzer, any name
// will do. Null when there is none.
Target FindTarget(const std::string& name);

// A copy with up to four changes: a byte, a few put in or taken out, the end
// cut off. The same with every library.
std::vector<uint8_t> Damaged(Bytes input, std::mt19937& random);

// Takes an input apart from the front; what is missing reads as zero or empty.
class Input {
 public:
  explicit Input(Bytes bytes) : m_rest(bytes) {}

  uint8_t Byte() {
    const Bytes taken = Take(1);
    return taken.empty() ? uint8_t{0} : taken[0];
  }
  bool Bit() { return (Byte() & 1U) != 0; }
  uint32_t Below(uint32_t limit) { return Byte() % limit; }
  uint32_t Word() {
    uint32_t word = 0;
    for (unsigned shift = 0; shift < 32; shift += 8) word |= uint32_t{Byte()} << shift;
    return word;
  }
  Bytes Take(size_t count) {
    const Bytes taken = m_rest.first(std::min(count, m_rest.size()));
    m_rest = m_rest.subspan(taken.size());
    return taken;
  }
  // As many bytes as the two in front say, modulo `limit`.
  Bytes Some(uint32_t limit) {
    const uint32_t low = Byte();
    return Take((low | uint32_t{Byte()} << 8U) % limit);
  }
  std::string Text(uint32_t limit) { return TextOf(Some(limit)); }
  Bytes Rest() { return Take(m_rest.size()); }

  static std::string TextOf(Bytes bytes) { return {bytes.begin(), bytes.end()}; }

 private:
  Bytes m_rest;
};

}  // namespace nuvelta::fuzz
