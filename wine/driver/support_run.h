// The support program on the story's notebook.
#pragma once

#include <windows.h>

#include <filesystem>
#include <span>

namespace nuvelta::wine {

// Runs it in `folder`, with the variables that services have there; what it prints goes to files
// (places.h). Answers its exit code. Throws std::runtime_error.
DWORD RunSupport(const std::filesystem::path& folder, std::span<wchar_t* const> arguments);

}  // namespace nuvelta::wine
