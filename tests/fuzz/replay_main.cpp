// Gives files to a fuzz target, each once: the seeds and the findings of old, in
// builds without libFuzzer.  fuzz_replay TARGET (FILE|FOLDER)...
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "target.h"

namespace fs = std::filesystem;

namespace {

std::vector<fs::path> FilesOf(const fs::path& path) {
  if (!fs::is_directory(path)) return {path};
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(path)) files.push_back(entry.path());
  std::ranges::sort(files);
  return files;
}

void Replay(nuvelta::fuzz::Target target, const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  // Sized exactly, so that a sanitizer sees any read past the end.
  const std::vector<uint8_t> bytes(text.begin(), text.end());
  target(bytes);
}

}  // namespace

int main(int argc, char** argv) {
  const auto target = argc > 1 ? nuvelta::fuzz::FindTarget(argv[1]) : nullptr;
  if (target == nullptr) {
    std::fprintf(stderr, "usage: %s TARGET (FILE|FOLDER)...\n", argv[0]);
    return 2;
  }
  size_t count = 0;
  for (int i = 2; i < argc; ++i) {
    for (const fs::path& file : FilesOf(argv[i])) {
      // Before it is played, for a crash says nothing more.
      std::printf("%s\n", file.c_str());
      std::fflush(stdout);
      Replay(target, file);
      ++count;
    }
  }
  std::printf("%zu inputs\n", count);
  return count == 0 ? 1 : 0;
}
