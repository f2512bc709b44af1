// Lives as scenarios, and what is left of one that fails.
#include <gtest/gtest.h>

#include <algorithm>

#include "lives/exploring.h"
#include "lives/life.h"
#include "lives/shrinking.h"

namespace nuvelta::test {
namespace {

using nlohmann::json;

// Lives that are being shrunk may lack anything.
bool HasSuspendAndModem(const json& life) {
  const json events = life.value("events", json::array());
  return life.value("notebook", json::object()).contains("modem") &&
         std::ranges::any_of(events, [](const json& e) { return e.value("do", "") == "suspend"; });
}

TEST(Shrinking, LeavesWhatTheFailureNeeds) {
  // The first life with both, among much else.
  json life;
  for (uint64_t seed = 1; life.is_null(); ++seed) {
    json candidate = explore::MakeLife(seed);
    const bool big = candidate["events"].size() > 8 && candidate["notebook"].size() > 2;
    if (big && HasSuspendAndModem(candidate)) life = std::move(candidate);
  }
  const json small = explore::Shrink(life, HasSuspendAndModem);
  EXPECT_TRUE(HasSuspendAndModem(small)) << small;
  const bool healthy_end = small.value("story", "") == explore::kHealthyEnd;
  EXPECT_EQ(small["events"].size(), 1 + (healthy_end ? explore::kHealthyEndEvents : 0)) << small;
  EXPECT_EQ(small["notebook"].size(), 1U) << small;
}

// A rule that does not hold, and a process that dies of a life, are both findings.
TEST(Exploring, TellsWhatALifeBreaks) {
  const json sound = explore::MakeLife(1);
  EXPECT_TRUE(explore::PlayApart(sound, false).empty());
  EXPECT_EQ(explore::MakeLife(1), sound);
  EXPECT_NE(explore::MakeLife(2)["notebook"], sound["notebook"]);

  // The story says that the radio has to end on, and its modem takes no command.
  json broken = sound;
  broken["story"] = explore::kHealthyEnd;
  broken.erase("faults");
  broken["notebook"] = {{"modem", {{"radio", 4}}}};
  broken["events"] = {{{"do", "start"}, {"at", 0}},
                      {{"do", "modem_changes"}, {"at", 1}, {"radio", 4}}};
  broken["rest_within_s"] = 3;
  EXPECT_EQ(explore::PlayApart(broken, false),
            std::vector<std::string>{"the radio is not on at the end"});
}

}  // namespace
}  // namespace nuvelta::test
