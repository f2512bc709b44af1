#include "wine/driver/prefix.h"

#include <array>
#include <chrono>
#include <fstream>
#include <stdexcept>
#include <string>

#include "platform/registry.h"
#include "wine/driver/old_logs.h"
#include "wine/driver/service_entry.h"
#include "wine/driver/undo_record.h"
#include "wine/story/places.h"
#include "wine/story/wine_devices.h"
#include "wine/story/wine_registry.h"

namespace nuvelta::wine {

namespace fs = std::filesystem;
using virtual_notebook::Action;
using virtual_notebook::RegistryContent;
using virtual_notebook::RegistryValue;
using virtual_notebook::Scenario;
using virtual_notebook::Utf16Bytes;

namespace {

constexpr std::array kClasses{
    "Windows.Networking.NetworkOperators.MobileBroadbandModem",
    "Windows.Networking.NetworkOperators.MobileBroadbandAccountWatcher",
    "Windows.Storage.Streams.DataWriter",
};
constexpr const char* kClassesKey = "Software\\Microsoft\\WindowsRuntime\\ActivatableClassId\\";

std::wstring OverridesKey(const char* program) {
  return L"Software\\Wine\\AppDefaults\\" + Wide(program);
}

RegistryValue Text(const fs::path& text) {
  return {.type = REG_SZ, .data = Utf16Bytes(text.string(), 1)};
}

// The notebook's registry, and the virtual hardware as the home of the classes
// that Wine lacks.
RegistryContent Content(const Scenario& scenario) {
  RegistryContent content = scenario.notebook.registry;
  for (const char* name : kClasses) {
    content[std::string(kClassesKey) + name]["DllPath"] = Text(InstallFolder() / kHardwareFile);
  }
  return content;
}

RegistryPlaces Places(const RegistryContent& content, const Scenario& scenario) {
  RegistryPlaces places;
  for (const auto& [key, values] : content) {
    places.emplace(key, "");
    for (const auto& [name, value] : values) places.emplace(key, name);
  }
  for (const auto& event : scenario.events) {
    const Action& action = event.action;
    if (action.kind == Action::Kind::kRegistrySet || action.kind == Action::Kind::kRegistryDelete) {
      places.emplace(action.text, action.value_name);
    }
  }
  return places;
}

void WriteRegistry(const RegistryContent& content) {
  for (const auto& [key, values] : content) {
    CreateRegistryKey(key);
    for (const auto& [name, value] : values) SetRegistryValue(key, name, value);
  }
}

// Its time is when the story begins: at a whole second, as on the virtual notebook,
// so that moments of the story fall into the same seconds.
void PutStoryFile(const fs::path& file, const fs::path& scenario_file,
                  std::chrono::sys_seconds begin) {
  std::ofstream(file, std::ios::binary) << scenario_file.string() << "\n";
  fs::last_write_time(file, std::chrono::file_clock::from_sys(begin));
}

void RemoveFiles(const fs::path& folder, const fs::path& extension) {
  std::error_code ignored;
  for (const auto& file : fs::directory_iterator(folder, ignored)) {
    if (file.path().extension() == extension) fs::remove(file.path(), ignored);
  }
}

}  // namespace

fs::path InstallFolder() {
  std::array<wchar_t, MAX_PATH> path{};
  GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
  return fs::path(path.data()).parent_path();
}

void ChooseVirtualHardware() {
  const std::wstring value = L"native";
  for (const char* program : {kServiceFile, kSupportFile}) {
    const LSTATUS error =
        RegSetKeyValueW(HKEY_CURRENT_USER, (OverridesKey(program) + L"\\DllOverrides").c_str(),
                        fs::path(kHardwareFile).stem().c_str(), REG_SZ, value.c_str(),
                        static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
    if (error != ERROR_SUCCESS) {
      throw std::runtime_error("the virtual hardware cannot be chosen: error " +
                               std::to_string(error));
    }
  }
}

StoryInPrefix::StoryInPrefix(const Scenario& scenario, const fs::path& scenario_file,
                             bool installed) {
  const fs::path folder = InstallFolder();
  // The entry that the installer has made is not the story's to remove.
  const std::string key = installed ? "" : scenario.notebook.service_key;
  const RegistryContent content = Content(scenario);
  RemoveStory(key);
  if (installed) ServiceEntry(scenario.notebook.service_key).StopStarted();
  const fs::path logs = LogFolder();
  fs::remove(folder / kJournalFile);
  RemoveFiles(folder, ".dmp");
  Save(RecordRegistry(key, Places(content, scenario)), folder / kUndoFile);
  try {
    ChooseVirtualHardware();
    WriteRegistry(content);
    // The folder is removed, and below C: Wine has links to folders of the user's.
    if (LogFolder() != logs) {
      throw std::runtime_error("the scenario's registry moves services' \"programdata\"");
    }
    InstallStoryDevices(scenario.notebook);
    const auto begin = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    // The service makes the folder, and those above it, when the installer has not.
    if (installed) {
      RemoveFiles(logs, ".log");
    } else {
      fs::remove_all(logs.parent_path().parent_path());
    }
    m_logs_in_use = PutOldLogs(logs, scenario.notebook.old_logs, begin.time_since_epoch().count());
    PutStoryFile(folder / kStoryFile, scenario_file, begin);
  } catch (...) {
    RemoveStory(key);
    throw;
  }
}

void PrepareForInstaller() {
  const fs::path library = fs::path("C:\\") / kClassesFile;
  // The run-time's own way to copy over a file fails.
  fs::remove(library);
  fs::copy_file(InstallFolder() / kHardwareFile, library);
  RegistryContent content;
  for (const char* name : kClasses) {
    content[std::string(kClassesKey) + name]["DllPath"] = Text(library);
  }
  // The oldest Windows that the package takes; and what Wine gives services as
  // %ProgramData%, which is elsewhere for its installer.
  const std::string windows = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
  content[windows]["CurrentBuildNumber"] = Text("17763");
  content[windows + "\\ProfileList"]["Public"] = Text("C:\\ProgramData");
  WriteRegistry(content);
}

StoryInPrefix::~StoryInPrefix() {
  m_logs_in_use.clear();
  const auto record = LoadUndoRecord(InstallFolder() / kUndoFile);
  RemoveStory(record ? record->service_key : "");
}

void RemoveStory(const std::string& service_key) noexcept {
  try {
    const fs::path folder = InstallFolder();
    const auto record = LoadUndoRecord(folder / kUndoFile);
    ServiceEntry::Remove(service_key);
    if (record) {
      ServiceEntry::Remove(record->service_key);
      RestoreRegistry(*record);
    }
    RemoveStoryDevices();
    for (const char* program : {kServiceFile, kSupportFile}) {
      RegDeleteTreeW(HKEY_CURRENT_USER, OverridesKey(program).c_str());
    }
    for (const char* file : {kStoryFile, kCrashRequestFile, kUndoFile}) fs::remove(folder / file);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "service_driver: not all could be undone: %s\n", error.what());
  }
}

}  // namespace nuvelta::wine
