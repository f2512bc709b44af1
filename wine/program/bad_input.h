// What the user has asked for cannot be: told in one line that names the place and
// what was expected there. Nothing has been changed by then.
#pragma once

#include <stdexcept>

namespace nuvelta::wine_notebook {

class BadInput : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace nuvelta::wine_notebook
