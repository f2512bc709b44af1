#include "apps/wine_notebook/wine_prefix.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <sstream>
#include <stdexcept>

#include "wine/story/places.h"

namespace nuvelta::wine_notebook {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

constexpr auto kMakePatience = 300s;
constexpr auto kEndPatience = 30s;
constexpr auto kCleanPatience = 60s;

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
  throw std::runtime_error("Wine is not installed");
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

}  // namespace

WinePrefix::WinePrefix(const fs::path& folder)
    : m_folder(fs::absolute(folder).lexically_normal()),
      m_wine(FindProgram({"/usr/lib/wine/wine64", "wine64", "wine"})),
      m_server(
          FindProgram({"/usr/lib/wine/wineserver64", "/usr/lib/wine/wineserver", "wineserver"})) {
  fs::create_directories(m_folder.parent_path());
  const std::string lock = m_folder.string() + ".lock";
  m_lock = open(lock.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (m_lock < 0) throw std::runtime_error(lock + " cannot be written");
  try {
    if (flock(m_lock, LOCK_EX | LOCK_NB) != 0) {
      throw std::runtime_error(m_folder.string() + " is in use by another wine_notebook");
    }
    if (!IsMade(m_folder)) Make();
    End();
  } catch (...) {
    close(m_lock);
    throw;
  }
}

WinePrefix::~WinePrefix() {
  End();
  close(m_lock);
}

std::map<std::string, std::string> WinePrefix::Environment() const {
  return {{"WINEPREFIX", m_folder.string()},
          {"WINEARCH", "win64"},
          {"WINEDEBUG", "-all"},
          {"WINEDLLOVERRIDES", "mscoree=;mshtml="},  // or it offers to fetch them
          {"WINESERVER", m_server},
          {"DISPLAY", ""},
          {"WAYLAND_DISPLAY", ""},
          {"TZ", m_zone}};
}

// Made beside its place and moved there when it is whole: a prefix that is there
// can be used.
void WinePrefix::Make() const {
  std::fprintf(stderr, "preparing a Wine prefix in %s ...\n", m_folder.c_str());
  const fs::path part = m_folder.string() + ".part";
  std::map<std::string, std::string> environment = Environment();
  environment["WINEPREFIX"] = part.string();
  // What an interrupted making has left may still be at work in its folder.
  fs::create_directories(part);
  RunQuietly({m_server, "-k"}, environment, kEndPatience);
  RunQuietly({m_server, "-w"}, environment, kEndPatience);
  fs::remove_all(part);
  fs::create_directories(part);
  const int code = RunQuietly({m_wine, "wineboot", "-i"}, environment, kMakePatience);
  // Its registry is on the disk once the server has ended.
  RunQuietly({m_server, "-k"}, environment, kEndPatience);
  RunQuietly({m_server, "-w"}, environment, kEndPatience);
  if (code != 0 || !IsMade(part)) {
    throw std::runtime_error("Wine could not make a prefix in " + part.string());
  }
  fs::remove_all(m_folder);
  fs::rename(part, m_folder);
}

void WinePrefix::Install(const fs::path& binaries) const {
  fs::create_directories(InstallFolder());
  for (const char* file : {wine::kServiceFile, wine::kHardwareFile, wine::kDriverFile}) {
    if (!fs::exists(binaries / file)) {
      throw std::runtime_error((binaries / file).string() +
                               " is missing: build the preset windows-clang");
    }
    CopyWhole(binaries / file, InstallFolder() / file);
  }
  // Wine 8's dump writer faults when it looks for symbols that are not there.
  const fs::path symbols = fs::path(wine::kServiceFile).replace_extension(".pdb");
  if (fs::exists(binaries / symbols)) CopyWhole(binaries / symbols, InstallFolder() / symbols);
}

fs::path WinePrefix::InstallFolder() const {
  return HostPath(std::string("C:\\") + wine::kInstallFolder);
}

fs::path WinePrefix::HostPath(const std::string& windows_path) const {
  std::string path = windows_path.substr(std::string_view("C:\\").size());
  std::ranges::replace(path, '\\', '/');
  return m_folder / "drive_c" / path;
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

void WinePrefix::Repair() const {
  if (!fs::exists(InstallFolder() / wine::kUndoFile)) return;
  const auto driver = RunDriver({"clean"});
  const auto end = std::chrono::steady_clock::now() + kCleanPatience;
  while (driver->Wait(20ms) && std::chrono::steady_clock::now() < end) driver->Lines();
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
