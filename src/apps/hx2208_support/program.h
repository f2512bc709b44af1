// The program on both systems, behind its entry.
#pragma once

namespace nuvelta::support {

struct Host {
  bool colour = false;    // standard output is a terminal that shows it
  bool at_once = false;   // each text goes out whole, and before the next
  bool notebook = false;  // a platform with its inspection is installed: the doctor can look
};

// Answers the exit code. Arguments in UTF-8.
int RunProgram(int argc, char** argv, const Host& host);

}  // namespace nuvelta::support
