// What a story needs in the Wine prefix beside the service itself: the virtual
// hardware chosen in place of Wine's library, its classes, the notebook's registry
// and devices, old logs.
#pragma once

#include <filesystem>
#include <vector>

#include "notebook/model/scenario.h"
#include "wine/driver/win32.h"

namespace nuvelta::wine {

// The folder of this program, which is that of the service.
std::filesystem::path InstallFolder();

// Chooses the library beside the executable instead of Wine's own.
void ChooseVirtualHardware();

// Gives the prefix what the installer looks for, and the service what it needs to run in
// real time, without a story and without a modem.
void PrepareForInstaller();

// Makes the prefix the scenario's notebook for as long as the object lives. All of
// it is undone at its end, and by RemoveStory when it did not get that far.
class StoryInPrefix {
 public:
  // `scenario_file` as the virtual hardware shall read it. Throws
  // std::runtime_error; what has been done by then is undone.
  // The service is an `installed` one, which stays, or the player's.
  StoryInPrefix(const virtual_notebook::Scenario& scenario,
                const std::filesystem::path& scenario_file, bool installed = false);
  ~StoryInPrefix();
  StoryInPrefix(const StoryInPrefix&) = delete;
  StoryInPrefix& operator=(const StoryInPrefix&) = delete;

 private:
  std::vector<Handle> m_logs_in_use;
};

// Ends and removes the service, and undoes everything else that a story or a
// benchmark has put into the prefix. The journal, log files and crash dumps stay.
void RemoveStory(const std::string& service_key) noexcept;

}  // namespace nuvelta::wine
