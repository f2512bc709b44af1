// Where the scenarios and the data of the tests are.
#pragma once

#include <filesystem>

namespace nuvelta::test {

// The root of the sources that the tests were built from.
std::filesystem::path SourceFolder();

}  // namespace nuvelta::test
