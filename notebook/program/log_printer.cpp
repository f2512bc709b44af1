#include "notebook/program/log_printer.h"

#include <iconv.h>

#include <algorithm>
#include <array>

#include "support/text_shape.h"

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
  const auto plain = [](char c) { return c == '\t' || (c >= ' ' && c <= '~'); };
  if (std::ranges::all_of(line, plain)) return line;
  const iconv_t conversion = iconv_open("UTF-8", "CP936");
  const bool known = conversion != reinterpret_cast<iconv_t>(-1);
  std::string converted;
  std::string input = line;
  char* in = input.data();
  size_t in_left = input.size();
  while (in_left > 0) {
    // A character at a time: two bytes from 0x80, one below.
    const bool high = (*in & 0x80) != 0;
    size_t size = high ? 2 : 1;
    std::array<char, 8> character{};
    char* out = character.data();
    size_t out_left = character.size();
    char* from = in;
    if (!high && (plain(*in) || *in == '\n')) {
      converted += *in;
    } else if (high && known && in_left >= size &&
               iconv(conversion, &from, &size, &out, &out_left) != static_cast<size_t>(-1)) {
      converted.append(character.data(), out);
      ++in;
      --in_left;
    } else {
      converted += "\\x";
      for (const unsigned shift : {4U, 0U}) {
        converted += "0123456789ABCDEF"[(static_cast<unsigned char>(*in) >> shift) & 0xFU];
      }
    }
    ++in;
    --in_left;
  }
  if (known) iconv_close(conversion);
  return converted;
}

LogPrinter::LogPrinter(Output& out) : m_out(out), m_colour(out.IsTerminal()) {}

void LogPrinter::Print(const std::string& text) {
  m_rest += text;
  std::string shown;
  size_t begin = 0;
  for (size_t end = m_rest.find('\n'); end != std::string::npos; end = m_rest.find('\n', begin)) {
    shown += Shown(m_rest.substr(begin, end - begin));
    begin = end + 1;
  }
  m_rest.erase(0, begin);
  if (!shown.empty()) m_out.Print(shown);
}

std::string LogPrinter::Shown(std::string line) {
  if (line.ends_with('\r')) line.pop_back();
  // A line without a head goes on with the message before it.
  if (support::BeginsWithShape(line, kHead)) m_line_colour = ColourOf(line[kHead.size()]);
  const std::string shown = FromLogCodePage(line);
  const bool colour = m_colour && *m_line_colour != '\0';
  return colour ? m_line_colour + shown + kReset + "\n" : shown + "\n";
}

}  // namespace nuvelta::story
