// The Wine prefix of the tests, with the shipped executables in it.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "replay.h"
#include "source_folder.h"
#include "story_support.h"
#include "wine/program/playing.h"
#include "wine/program/wine_prefix.h"

namespace nuvelta::test {

class UnderWine : public testing::Test {
 protected:
  UnderWine() { prefix.Install({.service = binaries, .stage = stage}); }

  static std::string File(const std::string& name) {
    return SourceFolder() / "scenarios" / (name + ".json");
  }

  wine_notebook::WineStory Play(const std::string& name) {
    NoteReplay([name] { return "./run scenarios/" + name + ".json"; });
    return wine_notebook::PlayUnderWine(prefix, File(name), Shipped(name), {});
  }

  // Everything that `program` prints until it ends.
  static std::string Await(wine_notebook::ChildProcess& program) {
    std::string text;
    for (bool runs = true; runs;) {
      runs = program.Wait(std::chrono::milliseconds(100));
      for (const std::string& line : program.Lines()) text += line + "\n";
    }
    return text;
  }

  static std::filesystem::path FromEnvironment(const char* variable, const char* otherwise) {
    const char* const value = std::getenv(variable);
    return value != nullptr ? std::filesystem::path(value) : SourceFolder() / otherwise;
  }

  const std::filesystem::path binaries =
      FromEnvironment("WINE_BINARIES", "build/windows-clang/bin");
  const std::filesystem::path stage = FromEnvironment("WINE_STAGE", "build/windows-clang/wine");
  wine_notebook::WinePrefix prefix{FromEnvironment("WINE_STORY_PREFIX", "build/wine/notebook")};
};

}  // namespace nuvelta::test
