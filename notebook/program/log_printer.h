// Prints service log text for a person.
#pragma once

#include <string>

#include "notebook/story/standard_output.h"

namespace nuvelta::story {

class LogPrinter {
 public:
  // Colours lines by their level when `out` is a terminal.
  explicit LogPrinter(Output& out);

  // Any piece of the log's text; whole lines are printed at once.
  void Print(const std::string& text);

 private:
  std::string Shown(std::string line);

  Output& m_out;
  bool m_colour;
  std::string m_rest;  // of a line whose end has not come yet
  const char* m_line_colour = "";
};

// Text in the log's code page 936 as UTF-8. What is no character there, or would
// control a terminal, is shown as "\x1B"; line ends and tabs stay.
std::string FromLogCodePage(const std::string& line);

}  // namespace nuvelta::story
