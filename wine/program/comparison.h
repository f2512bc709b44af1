// Compares what a story left behind under Wine with what it left behind on the
// virtual notebook.
#pragma once

#include <string>
#include <vector>

#include "notebook/model/story_report.h"
#include "wine/program/log_records.h"

namespace nuvelta::wine_notebook {

// A story as it is compared.
struct Telling {
  std::vector<ProcessLog> log;
  // What the modem, the service control manager and the shell saw, a line each.
  std::vector<std::string> facts;
};

Telling TellingOf(const virtual_notebook::StoryReport& report, std::string_view log);

enum class Likeness {
  kDiffers,
  kThreads,  // each thread wrote the same; they took turns differently
  kWhole,    // the whole log is the same
};

Likeness Compare(const Telling& left, const Telling& right);

// How many records of the threads stand behind their first differences: 0 when
// there are none.
size_t RecordsFromFirstDifference(const Telling& left, const Telling& right);

// The first differences, with the lines around them, for a person.
std::string Difference(const Telling& wine, const Telling& notebook);

}  // namespace nuvelta::wine_notebook
