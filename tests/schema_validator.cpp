#include "schema_validator.h"

#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validator.hpp>

namespace nuvelta::test {

using valijson::adapters::NlohmannJsonAdapter;

struct SchemaValidator::Parsed {
  valijson::Schema schema;
};

SchemaValidator::SchemaValidator(const nlohmann::json& schema)
    : m_parsed(std::make_unique<Parsed>()) {
  valijson::SchemaParser().populateSchema(NlohmannJsonAdapter(schema), m_parsed->schema);
}

SchemaValidator::~SchemaValidator() = default;

bool SchemaValidator::Accepts(const nlohmann::json& document) const {
  return valijson::Validator().validate(m_parsed->schema, NlohmannJsonAdapter(document), nullptr);
}

}  // namespace nuvelta::test
