// The commands of the program wine_notebook.
#pragma once

#include <string>
#include <vector>

namespace nuvelta::wine_notebook {

// Exit codes beside those of virtual_notebook.
inline constexpr int kWineFailed = 3;  // no Wine, or it does not work

struct Places {
  std::string binaries;  // the folder of the executable, its virtual hardware, the driver
  std::string prefix;
};

// Plays stories; nothing runs when one of them cannot be read. These throw
// Interrupted, or std::runtime_error in one line.
int Run(const Places& places, const std::vector<std::string>& files, bool json);
// Plays stories both ways.
int Parity(const Places& places, const std::vector<std::string>& files);
// Runs the driver with these arguments, for its measurements; prints what it prints
// and answers its exit code.
int Drive(const Places& places, const std::vector<std::string>& arguments);
// Undoes what an interrupted story has left.
int Clean(const Places& places);

}  // namespace nuvelta::wine_notebook
