// Gives files to a fuzz target: the seeds and the findings of old, in builds
// without libFuzzer, each once as it is, and damaged copies of them.
//   fuzz_replay TARGET COPIES (FILE|FOLDER)...
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "target.h"

namespace fs = std::filesystem;

namespace {

std::string g_target;
std::vector<uint8_t> g_input;  // that the target has now

// Nothing but what was given may be at fault: the input is kept, to be played
// alone.
void KeepInput() {
  const std::string file = "finding_" + g_target;
  std::ofstream(file, std::ios::binary)
      << std::string(g_input.begin(), g_input.end()) << std::flush;
  std::fprintf(stderr,
               "the input is kept; played again by: "
               "build/native/bin/fuzz_replay %s 0 %s\n"
               "once mended, it belongs to tests/fuzz/seeds/%s\n",
               g_target.c_str(), fs::absolute(file).c_str(), g_target.c_str());
}

std::vector<fs::path> FilesOf(const fs::path& path) {
  if (!fs::is_directory(path)) return {path};
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(path)) files.push_back(entry.path());
  std::ranges::sort(files);
  return files;
}

std::vector<uint8_t> Read(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  return {text.begin(), text.end()};
}

}  // namespace

int main(int argc, char** argv) {
  const auto target = argc > 2 ? nuvelta::fuzz::FindTarget(argv[1]) : nullptr;
  if (target == nullptr) {
    std::fprintf(stderr, "usage: %s TARGET COPIES (FILE|FOLDER)...\n", argv[0]);
    return 2;
  }
  g_target = argv[1];
  std::signal(SIGABRT, [](int) { KeepInput(); });
  std::vector<fs::path> files;
  for (int i = 3; i < argc; ++i) std::ranges::copy(FilesOf(argv[i]), std::back_inserter(files));
  const auto play = [&](std::vector<uint8_t> input) {
    g_input = std::move(input);
    target(g_input);
  };
  const size_t copies = std::strtoul(argv[2], nullptr, 10);
  std::mt19937 random(20261116);
  for (const fs::path& file : files) {
    std::printf("%s\n", file.c_str());
    std::fflush(stdout);
    const std::vector<uint8_t> whole = Read(file);
    play(whole);
    for (size_t i = 0; i < copies / files.size(); ++i) play(nuvelta::fuzz::Damaged(whole, random));
  }
  std::printf("%zu inputs\n", files.size());
  return files.empty() ? 1 : 0;
}
