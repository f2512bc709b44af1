#include "apps/virtual_notebook/log_printer.h"

#include <iconv.h>
#include <unistd.h>

#include <algorithm>

#include "apps/story/text_shape.h"

namespace nuvelta::story {

namespace {

// Before the tag letter of a line.
constexpr std::string_view kHead = "dddd-dd-dd dd:dd:dd.ddd xxxxxxxx ";
constexpr const char* kReset = "\033[0m";

const char* ColourOf(char tag) {
  switch (tag) {
    case 'e':
      return "\033[31m";  // red
    case 'w':
      return "\033[33m";  // yellow
    case 'h':
      return "\033[90m";  // grey
    default:
      return "";
  }
}

}  // namespace

std::string FromLogCodePage(const std::string& line) {
  if (std::ranges::none_of(line, [](char c) { return (c & 0x80) != 0; })) return line;
  std::string converted(line.size() * 3 + 4, '\0');
  std::string input = line;
  char* in = input.data();
  size_t in_left = input.size();
  char* out = converted.data();
  size_t out_left = converted.size();
  const iconv_t conversion = iconv_open("UTF-8", "CP936");
  const bool known = conversion != reinterpret_cast<iconv_t>(-1);
  while (known && in_left > 0 &&
         iconv(conversion, &in, &in_left, &out, &out_left) == static_cast<size_t>(-1)) {
    if (in_left == 0 || out_left == 0) break;
    *out++ = '?';
    --out_left;
    ++in;
    --in_left;
  }
  if (!known) {
    for (char& letter : input) {
      if ((letter & 0x80) != 0) letter = '?';
    }
    return input;
  }
  iconv_close(conversion);
  converted.resize(static_cast<size_t>(out - converted.data()));
  return converted;
}

LogPrinter::LogPrinter(std::FILE* out) : m_out(out), m_colour(isatty(fileno(out)) != 0) {}

void LogPrinter::Print(const std::string& text) {
  m_rest += text;
  size_t begin = 0;
  for (size_t end = m_rest.find('\n'); end != std::string::npos; end = m_rest.find('\n', begin)) {
    PrintLine(m_rest.substr(begin, end - begin));
    begin = end + 1;
  }
  m_rest.erase(0, begin);
  std::fflush(m_out);
}

void LogPrinter::PrintLine(std::string line) {
  std::erase(line, '\r');
  // A line without a head goes on with the message before it.
  if (BeginsWithShape(line, kHead)) m_line_colour = ColourOf(line[kHead.size()]);
  const std::string shown = FromLogCodePage(line);
  const bool colour = m_colour && *m_line_colour != '\0';
  const std::string whole = colour ? m_line_colour + shown + kReset + "\n" : shown + "\n";
  std::fwrite(whole.data(), 1, whole.size(), m_out);
}

}  // namespace nuvelta::story
