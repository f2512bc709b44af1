// Wherever calls of the ports are named, all of notebook/model/port_calls.h are.
#include "notebook/model/port_calls.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "notebook/scenario/call_lists.h"
#include "notebook/story/log_files.h"
#include "source_folder.h"

namespace nuvelta::virtual_notebook {
namespace {

namespace fs = std::filesystem;

const fs::path kRoot = test::SourceFolder();

std::string Sources(const char* folder) {
  std::string text;
  for (const auto& file : fs::directory_iterator(kRoot / folder)) {
    if (file.path().extension() == ".cpp") text += story::ReadFile(file.path());
  }
  return text;
}

TEST(PortCalls, AreKnownInEveryPlace) {
  const std::string notebook = Sources("notebook/machine");
  const std::string wine =
      Sources("wine/hardware") + story::ReadFile(kRoot / "wine/program/unplayable.cpp");
  const std::string sweep = story::ReadFile(kRoot / "tests/sweep/consequences.cpp");
  const std::string fuzzers = story::ReadFile(kRoot / "tests/fuzz/scenario.dict");
  const auto has = [](const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
  };
  for (const PortCall& call : kPortCalls) {
    const std::string name(call.name);
    EXPECT_TRUE(has(notebook, '"' + name + '"')) << "notebook/machine never counts " << name;
    EXPECT_TRUE(has(wine, '"' + name + '"') || has(wine, ", " + name + ','))
        << "wine/hardware never counts " << name << ": refuse it in fault_hooks.cpp, or say in "
        << "wine/program/unplayable.cpp why it cannot be";
    EXPECT_TRUE(has(sweep, name + ' ') || has(sweep, name + '\n'))
        << "tests/sweep/consequences.cpp: add what follows when " << name << " fails";
    EXPECT_TRUE(has(fuzzers, "\"\\\"" + name + "\\\"\""))
        << "tests/fuzz/scenario.dict: add " << name;
  }
  EXPECT_TRUE(has(story::ReadFile(kRoot / "docs/scenarios.md"), '\n' + CallTable() + '\n'))
      << "docs/scenarios.md: its table of calls is to be what `virtual_notebook calls` prints";
}

}  // namespace
}  // namespace nuvelta::virtual_notebook
