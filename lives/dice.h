// Choices of a random life. Plain arithmetic on the generator's numbers, so that a
// seed gives the same life with every library.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <random>

namespace nuvelta::explore {

class Dice {
 public:
  explicit Dice(uint64_t seed) : m_random(seed) {}

  // From 0 to `count` - 1.
  uint64_t Below(uint64_t count) { return m_random() % count; }
  // From `first` to `last`, both included.
  int64_t Between(int64_t first, int64_t last) {
    return first + static_cast<int64_t>(Below(static_cast<uint64_t>(last - first + 1)));
  }
  bool Percent(uint64_t chance) { return Below(100) < chance; }

  template <class Value, size_t count>
  const Value& Of(const std::array<Value, count>& values) {
    return values[Below(count)];
  }

 private:
  std::mt19937_64 m_random;
};

}  // namespace nuvelta::explore
