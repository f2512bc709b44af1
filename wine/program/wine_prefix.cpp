#include "wine/program/wine_prefix.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <sstream>
#include <stdexcept>

#include "notebook/model/scenario.h"
#include "notebook/story/interruption.h"
#include "notebook/story/log_files.h"
#include "wine/program/bad_input.h"
#include "wine/story/places.h"

namespace nuvelta::wine_notebook {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

constexpr auto kMakePatience = 300s;
constexpr auto kEndPatience = 30s;
constexpr auto kCleanPatience = 60s;
constexpr auto kMsiexecPatience = 300s;

bool CanRun(const fs::path& program) { return access(program.c_str(), X_OK) == 0; }

// The first of the programs that can be run: a path, or a name to be found.
std::string FindProgram(std::initializer_list<const char*> candidates) {
  const char* const variable = std::getenv("PATH");
  for (const fs::path candidate : candidates) {
    if (candidate.is_absolute() && CanRun(candidate)) return candidate.string();
    std::istringstream folders(variable != nullptr ? variable : "");
    for (std::string folder; candidate.is_relative() && std::getline(folders, folder, ':');) {
      if (CanRun(fs::path(folder) / candidate)) return (fs::path(folder) / candidate).string();
    }
  }
  throw std::runtime_error("Wine is not installed; expected the packages of tools/setup");
}

// What a prefix holds once it has been made to its end.
bool IsMade(const fs::path& folder) {
  return fs::exists(folder / "system.reg") &&
         fs::exists(folder / "drive_c/windows/system32/ntdll.dll");
}

// A file that is there has been copied to its end.
void CopyWhole(const fs::path& from, const fs::path& to) {
  const fs::path part = to.string() + ".part";
  fs::copy_file(from, part, fs::copy_options::overwrite_existing);
  fs::rename(part, to);
}

std::array<fs::path, 3> FilesOf(const Binaries& binaries) {
  return {binaries.service / wine::kServiceFile, binaries.stage / wine::kHardwareFile,
          binaries.stage / wine::kDriverFile};
}

}  // namespace

void CheckBinaries(const Binaries& binaries) {
  for (const fs::path& file : FilesOf(binaries)) {
    std::error_code ignored;
    if (fs::is_regular_file(file, ignored)) continue;
    const bool service = file.filename() == wine::kServiceFile;
    throw BadInput("\"" + fs::absolute(file).string() + "\" is missing; expected the " +
                   (service ? "service's executable (--bin" : "stage of stories (--stage") +
                   ", built by tools/build windows-clang)");
  }
}

WinePrefix::WinePrefix(const fs::path& folder)
    : m_wine(FindProgram({"/usr/lib/wine/wine64", "wine64", "wine"})),
      m_server(
          FindProgram({"/usr/lib/wine/wineserver64", "/usr/lib/wine/wineserver", "wineserver"})),
      m_folder(folder) {
  End();
  if (!m_folder.IsWhole() || !IsMade(m_folder.Path())) Make();
}

void CheckSupport(const Binaries& binaries) {
  std::error_code ignored;
  const fs::path file = binaries.service / wine::kSupportFile;
  if (fs::is_regular_file(file, ignored)) return;
  throw BadInput("\"" + fs::absolute(file).string() +
                 "\" is missing; expected the support program (--bin, built by tools/build "
                 "windows-clang hx2208_support)");
}

WinePrefix::~WinePrefix() { End(); }

std::map<std::string, std::string> WinePrefix::Environment() const {
  return {{"WINEPREFIX", m_folder.Path().string()},
          {"WINEARCH", "win64"},
          {"WINEDEBUG", "-all"},
          // Or it offers to fetch the first two, and adds its programs to the user's menus.
          {"WINEDLLOVERRIDES", "mscoree=;mshtml=;winemenubuilder.exe="},
          {"WINESERVER", m_server},
          {"DISPLAY", ""},
          {"WAYLAND_DISPLAY", ""},
          {"TZ", m_zone}};
}

// An interrupted making leaves a mark that does not say that the prefix is whole; the
// next one begins anew.
void WinePrefix::Make() {
  std::fprintf(stderr, "preparing a Wine prefix in %s ...\n", m_folder.Path().c_str());
  m_folder.Empty();
  const int code = RunToEnd({m_wine, "wineboot", "-i"}, kMakePatience);
  // Its registry is on the disk once the server has ended.
  End();
  if (code != 0 || !IsMade(m_folder.Path())) {
    throw std::runtime_error("Wine could not make a prefix in " + m_folder.Path().string());
  }
  m_folder.SetWhole();
}

// What it prints is dropped.
int WinePrefix::RunToEnd(const std::vector<std::string>& command,
                         std::chrono::seconds patience) const {
  ChildProcess child(command, Environment());
  try {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (child.Wait(20ms) && std::chrono::steady_clock::now() < end) {
      child.Lines();
      story::ThrowIfInterrupted();
    }
  } catch (...) {
    End();
    throw;
  }
  return child.ExitCode();
}

void WinePrefix::Install(const Binaries& binaries) const {
  CheckBinaries(binaries);
  fs::create_directories(InstallFolder());
  CopyWhole(binaries.service / wine::kServiceFile, InstallFolder() / wine::kServiceFile);
  const fs::path support = binaries.service / wine::kSupportFile;
  if (fs::exists(support)) CopyWhole(support, InstallFolder() / wine::kSupportFile);
  InstallStage(binaries);
}

void WinePrefix::InstallStage(const Binaries& binaries) const {
  for (const char* file : {wine::kHardwareFile, wine::kDriverFile}) {
    CopyWhole(binaries.stage / file, InstallFolder() / file);
  }
  // Wine 8's dump writer faults when it looks for symbols that are not there.
  const fs::path symbols = fs::path(wine::kServiceFile).replace_extension(".pdb");
  if (fs::exists(binaries.service / symbols)) {
    CopyWhole(binaries.service / symbols, InstallFolder() / symbols);
  }
}

void WinePrefix::Prepare(const Binaries& binaries) {
  // A service is left by a run that was interrupted, or by a package.
  const std::string registry = story::ReadFile(m_folder.Path() / "system.reg");
  if (registry.find(virtual_notebook::Notebook{}.service_key) != std::string::npos) Make();
  Install(binaries);
  const std::string driver = (InstallFolder() / wine::kDriverFile).string();
  const int code = RunToEnd({m_wine, driver, "prepare"}, kCleanPatience);
  // Its registry is on the disk once the server has ended.
  End();
  fs::remove_all(InstallFolder());
  if (code != 0) throw std::runtime_error("the prefix cannot be prepared for a package");
}

void WinePrefix::Msiexec(const std::string& what, const fs::path& package) const {
  const fs::path log = m_folder.Path() / "msiexec.log";
  const int code = RunToEnd({m_wine, "msiexec", what, "Z:" + fs::absolute(package).string(), "/qn",
                             "/l*v", "Z:" + log.string()},
                            kMsiexecPatience);
  if (code == 0) return;
  throw std::runtime_error("msiexec " + what + " " + package.filename().string() + " ended with " +
                           std::to_string(code) + ", see " + log.string());
}

void WinePrefix::InstallPackage(const fs::path& package, const Binaries& binaries) {
  Msiexec("/i", package);
  m_package = package;
  InstallStage(binaries);
}

void WinePrefix::RemovePackage() {
  for (const auto& entry : fs::directory_iterator(InstallFolder())) {
    if (entry.path().extension() != ".exe" || entry.path().filename() == wine::kDriverFile) {
      fs::remove(entry.path());
    }
  }
  Msiexec("/x", m_package);
  m_package.clear();
}

fs::path WinePrefix::InstallFolder() const {
  return HostPath(std::string("C:\\") + wine::kInstallFolder);
}

fs::path WinePrefix::HostPath(const std::string& windows_path) const {
  std::string path = windows_path.substr(std::string_view("C:\\").size());
  std::ranges::replace(path, '\\', '/');
  return m_folder.Path() / "drive_c" / path;
}

void WinePrefix::SetTimeZone(const std::string& zone) {
  // Running services would keep the old one.
  if (zone != m_zone) End();
  m_zone = zone;
}

std::unique_ptr<ChildProcess> WinePrefix::RunDriver(
    const std::vector<std::string>& arguments) const {
  std::vector<std::string> command{
      m_wine, std::string("C:\\") + wine::kInstallFolder + "\\" + wine::kDriverFile};
  command.insert(command.end(), arguments.begin(), arguments.end());
  // Wine looks for symbols in the current folder, and a service inherits this one.
  return std::make_unique<ChildProcess>(command, Environment(), InstallFolder().string());
}

bool WinePrefix::Repair() const {
  if (!fs::exists(InstallFolder() / wine::kUndoFile)) return true;
  const auto driver = RunDriver({"clean"});
  const auto end = std::chrono::steady_clock::now() + kCleanPatience;
  bool runs = true;
  while (runs && std::chrono::steady_clock::now() < end) {
    runs = driver->Wait(20ms);
    for (const std::string& line : driver->Lines()) {
      std::fprintf(stderr, "wine_notebook: %s\n", line.c_str());
    }
  }
  return !runs && driver->ExitCode() == 0 && !fs::exists(InstallFolder() / wine::kUndoFile);
}

void WinePrefix::End() const noexcept {
  try {
    RunQuietly({m_server, "-k"}, Environment(), kEndPatience);
    RunQuietly({m_server, "-w"}, Environment(), kEndPatience);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "wine_notebook: Wine cannot be ended: %s\n", error.what());
  }
}

}  // namespace nuvelta::wine_notebook
