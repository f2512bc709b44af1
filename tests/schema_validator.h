// Holds documents against a JSON schema. The library behind it takes long to compile,
// so that nothing else includes it.
#pragma once

#include <memory>
#include <nlohmann/json.hpp>

namespace nuvelta::test {

class SchemaValidator {
 public:
  explicit SchemaValidator(const nlohmann::json& schema);
  ~SchemaValidator();
  SchemaValidator(const SchemaValidator&) = delete;
  SchemaValidator& operator=(const SchemaValidator&) = delete;

  bool Accepts(const nlohmann::json& document) const;

 private:
  struct Parsed;
  std::unique_ptr<Parsed> m_parsed;
};

}  // namespace nuvelta::test
