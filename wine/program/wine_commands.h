// The commands of the program wine_notebook.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "wine/program/playing.h"
#include "wine/program/wine_prefix.h"

namespace nuvelta::wine_notebook {

// Exit codes beside those of virtual_notebook.
inline constexpr int kWineFailed = 3;  // no Wine, it does not work, or its prefix is in use
// The same where the support program's exit codes are answered, which have a 3.
inline constexpr int kWineFailedSupport = 6;

struct Places {
  Binaries binaries;
  std::filesystem::path prefix;
  std::filesystem::path package;  // the one whose service is played; empty: none
};

struct SupportOrder {
  Moment moment = Moment::kAfter;
  std::string file;
  std::vector<std::string> arguments;
};

// Plays stories; nothing runs when one of them cannot be read. These throw BadInput,
// story::Interrupted, or std::runtime_error in one line.
int Run(const Places& places, const std::vector<std::string>& files, bool json);
// Plays stories both ways.
int Parity(const Places& places, const std::vector<std::string>& files);
// Runs the support program on a story's notebook; prints what it prints and answers its exit
// code.
int Support(const Places& places, const SupportOrder& order);
// Runs the driver with these arguments, for its measurements; prints what it prints
// and answers its exit code.
int Drive(const Places& places, const std::vector<std::string>& arguments);
// Makes the prefix one that packages can be installed in, with no product in it.
int Prepare(const Places& places);
// Undoes what an interrupted story has left; makes no prefix for it.
int Clean(const Places& places);

}  // namespace nuvelta::wine_notebook
