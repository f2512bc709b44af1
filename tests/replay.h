// How to play again what a test has played: printed behind each of its failures.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace nuvelta::test {

// "build/native/bin/virtual_notebook run FILE --seed N", for a shell in the root of the
// sources.
std::string ReplayCommand(const std::string& file, std::optional<uint64_t> seed = {});

// Keeps a scenario that no file holds with the shrunk lives, as NAME.json. The file, as a
// shell in the root of the sources names it.
std::string KeepFinding(const std::string& name, const std::string& scenario);

// `command` tells how to play again what the running test plays now. It is asked when a
// check fails from here on, until the next is noted.
void NoteReplay(std::function<std::string()> command);

}  // namespace nuvelta::test
