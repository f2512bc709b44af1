#include "source_folder.h"

namespace nuvelta::test {

std::filesystem::path SourceFolder() { return NUVELTA_SOURCE_DIR; }

}  // namespace nuvelta::test
