// The support program on the story's notebook.
#pragma once

#include <windows.h>

#include <filesystem>

namespace nuvelta::wine {

// Runs it in `folder`, with the variables that services have there; its arguments are in a file
// and what it prints goes to files (places.h). Answers its exit code. Throws std::runtime_error.
DWORD RunSupport(const std::filesystem::path& folder);

}  // namespace nuvelta::wine
