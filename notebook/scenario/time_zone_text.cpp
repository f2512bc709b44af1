#include "notebook/scenario/time_zone_text.h"

#include <charconv>

namespace nuvelta::virtual_notebook {

namespace {

// Each Take function removes its part from the front; false when it is not there.
class Parser {
 public:
  explicit Parser(std::string_view text) : m_rest(text) {}

  bool AtEnd() const { return m_rest.empty(); }

  bool Take(char c) {
    if (!m_rest.starts_with(c)) return false;
    m_rest.remove_prefix(1);
    return true;
  }

  // Three to ten letters; inside angle brackets digits and signs as well.
  bool TakeName() {
    const bool bracketed = Take('<');
    size_t length = 0;
    while (length < m_rest.size() && IsNamePart(m_rest[length], bracketed)) ++length;
    m_rest.remove_prefix(length);
    return length >= 3 && length <= 10 && (!bracketed || Take('>'));
  }

  bool TakeNumber(int least, int most) {
    int number = -1;
    const char* const begin = m_rest.data();
    const bool digit = !m_rest.empty() && m_rest.front() != '-';
    const auto end = digit ? std::from_chars(begin, begin + m_rest.size(), number).ptr : begin;
    m_rest.remove_prefix(static_cast<size_t>(end - begin));
    return number >= least && number <= most;
  }

  // Hours with a sign or none, then minutes and seconds if given.
  bool TakeTime(int most_hours) {
    if (!Take('-')) Take('+');
    if (!TakeNumber(0, most_hours)) return false;
    for (int part = 0; part < 2 && Take(':'); ++part) {
      if (!TakeNumber(0, 59)) return false;
    }
    return true;
  }

  // ",M3.5.0/2": the last Sunday of March at two. Or a day of the year.
  bool TakeRule() {
    if (!Take(',')) return false;
    const bool day = Take('M') ? TakeNumber(1, 12) && Take('.') && TakeNumber(1, 5) && Take('.') &&
                                     TakeNumber(0, 6)
                               : (Take('J') ? TakeNumber(1, 365) : TakeNumber(0, 365));
    return day && (!Take('/') || TakeTime(167));
  }

  bool BeginsRule() const { return m_rest.starts_with(','); }

 private:
  static bool IsNamePart(char c, bool bracketed) {
    const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    return letter || (bracketed && ((c >= '0' && c <= '9') || c == '+' || c == '-'));
  }

  std::string_view m_rest;
};

}  // namespace

bool IsTimeZone(std::string_view text) {
  if (text == "UTC") return true;
  Parser zone(text);
  if (!zone.TakeName() || !zone.TakeTime(24)) return false;
  if (zone.AtEnd()) return true;
  // The rules' default differs between systems, so both are asked for.
  return zone.TakeName() && (zone.BeginsRule() || zone.TakeTime(24)) && zone.TakeRule() &&
         zone.TakeRule() && zone.AtEnd();
}

}  // namespace nuvelta::virtual_notebook
