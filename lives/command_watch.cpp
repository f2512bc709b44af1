#include "lives/command_watch.h"

#include <algorithm>
#include <array>
#include <string>

namespace nuvelta::explore {

namespace {

constexpr std::array<uint8_t, 1> kQueryPayload{0};
constexpr std::array<uint8_t, 4> kSetPayload{1, 0, 0, 0};
constexpr std::array<int32_t, 3> kNotToBeSet{1, -1, -2};
// An event can be late by what the story's own steps before it take.
constexpr std::chrono::milliseconds kSlack{100};

}  // namespace

void CommandWatch::OnRun(bool running, Duration now) {
  if (running && !m_running) {
    m_begin = now;
    m_queries = 0;
    m_set = false;
    m_answer.reset();
  }
  m_running = running;
}

void CommandWatch::OnQuery(std::span<const uint8_t> payload) {
  m_findings.Expect(m_running, "a query outside of a run");
  m_findings.Expect(++m_queries == 1, "a second query in a run");
  m_findings.Expect(!m_set, "a query after the radio was set");
  m_findings.Expect(std::ranges::equal(payload, kQueryPayload), "a query with another payload");
}

void CommandWatch::OnSet(std::span<const uint8_t> payload, Duration now) {
  ++m_sets;
  m_findings.Expect(m_running, "the radio is set outside of a run");
  m_findings.Expect(!m_set, "the radio is set twice in a run");
  m_set = true;
  m_findings.Expect(std::ranges::equal(payload, kSetPayload), "a set with another payload");
  if (!m_answer) {
    m_findings.Add("the radio is set without an answer to a query");
  } else if (std::ranges::find(kNotToBeSet, *m_answer) != kNotToBeSet.end()) {
    m_findings.Add("the radio is set after the answer " + std::to_string(*m_answer));
  }
  m_findings.Expect(m_allowed(m_begin - kSlack, now), "the radio is set where the rules forbid it");
}

void CommandWatch::OnAnswer(int32_t level) { m_answer = level; }

}  // namespace nuvelta::explore
