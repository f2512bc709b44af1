// What is wrong with a scenario, in one line: file, place, fault, expectation.
#pragma once

#include <stdexcept>

namespace nuvelta::virtual_notebook {

class ScenarioError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace nuvelta::virtual_notebook
