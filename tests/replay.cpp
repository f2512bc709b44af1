#include "replay.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <utility>

#include "source_folder.h"

namespace nuvelta::test {

namespace fs = std::filesystem;

namespace {

std::function<std::string()> g_command;

class Printer final : public testing::EmptyTestEventListener {
  void OnTestEnd(const testing::TestInfo& /*test*/) override { g_command = nullptr; }
  // Behind what the failure itself prints; once for all failures of one story.
  void OnTestPartResult(const testing::TestPartResult& result) override {
    if (!result.failed() || !g_command) return;
    std::printf("  played last: %s\n\n", std::exchange(g_command, nullptr)().c_str());
  }
};

}  // namespace

std::string ReplayCommand(const std::string& file, std::optional<uint64_t> seed) {
  return "build/native/bin/virtual_notebook run " + file +
         (seed ? " --seed " + std::to_string(*seed) : "");
}

std::string KeepFinding(const std::string& name, const std::string& scenario) {
  // The build's folder is above that of the programs.
  const fs::path folder =
      fs::read_symlink("/proc/self/exe").parent_path().parent_path() / "findings";
  fs::create_directories(folder);
  // No shell needs quotes for it.
  std::string file;
  for (const char c : name) {
    const bool plain = std::isalnum(static_cast<unsigned char>(c)) != 0;
    if (plain || (!file.empty() && file.back() != '_')) file += plain ? c : '_';
  }
  const fs::path path = folder / (file + ".json");
  std::ofstream(path) << scenario << "\n";
  const fs::path shown = path.lexically_proximate(SourceFolder());
  return *shown.begin() == ".." ? path : shown;
}

void NoteReplay(std::function<std::string()> command) {
  // Not before the first test, so that it comes behind Google Test's own printer.
  static const bool listens = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new Printer);
    return true;
  }();
  if (listens) g_command = std::move(command);
}

}  // namespace nuvelta::test
