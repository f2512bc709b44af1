// Log files of earlier runs.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "notebook/model/scenario.h"
#include "wine/driver/win32.h"

namespace nuvelta::wine {

// The folder in which the service writes its log: where the registry has services'
// variables lead now. Throws std::runtime_error when it is not on drive C:, which is
// inside the prefix.
std::filesystem::path LogFolder();

// Removes the log folder, which is `folder`; puts it there anew with the old logs when
// there are any, `now` (seconds since 1970) being the story's begin. Files in use stay
// so as long as the handles are kept. Throws std::runtime_error naming the file.
std::vector<Handle> PutOldLogs(const std::filesystem::path& folder,
                               const std::vector<virtual_notebook::OldLog>& logs, int64_t now);

}  // namespace nuvelta::wine
