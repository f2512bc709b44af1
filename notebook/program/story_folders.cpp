#include "notebook/program/story_folders.h"

#include <algorithm>
#include <set>

#include "notebook/story/marked_folder.h"
#include "notebook/story/story.h"

namespace nuvelta::story {

namespace fs = std::filesystem;

std::vector<std::string> FolderNames(const std::vector<std::string>& files) {
  std::vector<std::string> names;
  names.reserve(files.size());
  for (const std::string& file : files) {
    names.push_back(file == kStandardInput ? "standard_input" : fs::path(file).stem().string());
  }
  const std::set<std::string> natural(names.begin(), names.end());
  std::set<std::string> taken;
  for (std::string& name : names) {
    const std::string base = name;
    for (int number = 2; !taken.insert(name).second;) {
      do {
        name = base + "-" + std::to_string(number++);
      } while (natural.contains(name));
    }
  }
  return names;
}

std::string WhyNotInto(const fs::path& disk, const virtual_notebook::Scenario& scenario) {
  switch (MarkedFolder::Look(disk)) {
    case MarkedFolder::State::kFree:
      return {};
    case MarkedFolder::State::kHeld:
      return disk.string() + ": another run is using it";
    case MarkedFolder::State::kForeign:
      break;
  }
  std::error_code error;
  const fs::path logs = LogFolder(scenario, disk);
  if (fs::is_directory(disk, error) && (!fs::exists(logs, error) || fs::is_empty(logs, error))) {
    return {};
  }
  return disk.string() + ": holds what virtual_notebook has not made; name another --log-dir";
}

}  // namespace nuvelta::story
