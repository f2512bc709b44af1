// Plays stories for tests and reads what they left behind.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "notebook/story/story.h"
#include "notebook/story/temporary_folder.h"

namespace nuvelta::test {

using story::TemporaryFolder;
using virtual_notebook::Scenario;
using virtual_notebook::StoryReport;

// One record of the log. `text` is all behind the thread id and its blank:
// "h : + ServiceMain", "i :   NService::Run entry".
struct Record {
  std::string time;
  std::string thread;
  std::string text;
};

struct Told {
  StoryReport report;
  std::string log;  // byte for byte

  std::vector<Record> Records() const;
  // The records' texts of one thread, one a line: from the first record that
  // contains `from` to the next of the same thread that contains `to`. Empty when
  // either is missing. `skip` records that contain `from` are passed over.
  std::string Between(std::string_view from, std::string_view to, int skip = 0) const;
  // How often the log contains the text.
  size_t Count(std::string_view text) const;
  // The texts of the records that contain `part`, one a line.
  std::string Matching(std::string_view part) const;
};

// Shipped scenarios by their name without folder and extension. Tell() notes how those and
// inline ones are played again.
std::vector<std::string> ShippedScenarios();
Scenario Shipped(const std::string& name);
// A scenario in JSON; a title is added. Single quotes may stand for double ones.
Scenario Inline(std::string json);

Told Tell(const Scenario& scenario, std::optional<uint64_t> seed = {});
inline Told TellShipped(const std::string& name) { return Tell(Shipped(name)); }
StoryReport TellFreely(const Scenario& scenario);

// "00 01000000 00*3": the commands' bytes, queries and sets, repetitions counted.
std::string Commands(const StoryReport& report);
// "2 4 3 1 | 2 4": the service states reported, a bar between processes.
std::string States(const StoryReport& report);

// Texts joined with line ends, as Told::Between answers them.
std::string Lines(std::initializer_list<std::string_view> lines);

// Whether two texts are the same. When they are not, it shows the first line that differs
// and what stands around it.
testing::AssertionResult SameLines(const char* written_expression, const char* expected_expression,
                                   const std::string& written, const std::string& expected);
#define EXPECT_LINES(written, expected) \
  EXPECT_PRED_FORMAT2(::nuvelta::test::SameLines, written, expected)

}  // namespace nuvelta::test
