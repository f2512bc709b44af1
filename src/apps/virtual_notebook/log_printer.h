// Prints service log text for a person.
#pragma once

#include <cstdio>
#include <string>

namespace nuvelta::story {

class LogPrinter {
 public:
  // Colours lines by their level when `out` is a terminal.
  explicit LogPrinter(std::FILE* out);

  // Any piece of the log's text; whole lines are printed at once.
  void Print(const std::string& text);

 private:
  void PrintLine(std::string line);

  std::FILE* m_out;
  bool m_colour;
  std::string m_rest;  // of a line whose end has not come yet
  const char* m_line_colour = "";
};

// A line in the log's code page 936 as UTF-8; bytes that are none become "?".
std::string FromLogCodePage(const std::string& line);

}  // namespace nuvelta::story
