// The Wine prefix in which stories are played, and the programs that run in it.
#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "wine/program/child_process.h"
#include "wine/program/prefix_folder.h"

namespace nuvelta::wine_notebook {

// Where the programs are that play a story.
struct Binaries {
  std::filesystem::path service;  // the folder of the shipped executable, and its symbols
  std::filesystem::path stage;    // the folder of its virtual hardware and of the driver
};

// Throws BadInput naming the first program that is missing.
void CheckBinaries(const Binaries& binaries);
// The support program, which most commands do without.
void CheckSupport(const Binaries& binaries);

class WinePrefix {
 public:
  // Holds the prefix at `folder` for itself, so that no other program plays in it
  // at the same time, and ends what an earlier one has left running; makes it when
  // it is not there, or not whole, which takes some seconds. Throws BadInput when
  // something else is there, Interrupted, or std::runtime_error in one line.
  explicit WinePrefix(const std::filesystem::path& folder);
  // Ends all that runs in it.
  ~WinePrefix();
  WinePrefix(const WinePrefix&) = delete;
  WinePrefix& operator=(const WinePrefix&) = delete;

  // Copies the service with its symbols and the support program, if there are any, its
  // virtual hardware and the driver, all into one folder. Throws BadInput naming the one that is
  // missing.
  void Install(const Binaries& binaries) const;

  // Makes the prefix a notebook that a package can be installed on, with no product on
  // it. Throws as Install does, Interrupted, or std::runtime_error in one line.
  void Prepare(const Binaries& binaries);
  // Installs the package, which starts the service, and puts the virtual hardware and the
  // driver beside it; takes all of it away again, but for the logs. Both throw as above.
  void InstallPackage(const std::filesystem::path& package, const Binaries& binaries);
  void RemovePackage();
  // Whether stories are played with the service of a package.
  bool HasPackage() const { return !m_package.empty(); }

  // The folder that holds them.
  std::filesystem::path InstallFolder() const;
  // Where a path on drive C: lies.
  std::filesystem::path HostPath(const std::string& windows_path) const;

  // All programs in the prefix run in the time zone, a POSIX TZ text.
  void SetTimeZone(const std::string& zone);

  // Runs the driver with these arguments.
  std::unique_ptr<ChildProcess> RunDriver(const std::vector<std::string>& arguments) const;

  // Undoes what an interrupted story has left, if there is one; prints why it cannot.
  // Answers whether nothing is left.
  bool Repair() const;
  // Ends all that runs in the prefix.
  void End() const noexcept;

 private:
  void Make();
  void InstallStage(const Binaries& binaries) const;
  int RunToEnd(const std::vector<std::string>& command, std::chrono::seconds patience) const;
  void Msiexec(const std::string& what, const std::filesystem::path& package) const;
  std::map<std::string, std::string> Environment() const;

  // Wine is looked for before the folder is touched.
  const std::string m_wine;
  const std::string m_server;
  PrefixFolder m_folder;
  std::string m_zone;
  std::filesystem::path m_package;  // the one that is installed
};

}  // namespace nuvelta::wine_notebook
