// The events of a story that come while no process of the service lives.
#include <algorithm>

#include "wine/driver/player.h"
#include "wine/story/prefix_target.h"

namespace nuvelta::wine {

using virtual_notebook::Action;
using virtual_notebook::ModemDescription;
using virtual_notebook::Scenario;
using virtual_notebook::SentControl;
using namespace std::chrono_literals;

namespace {

// The modem as the events before this one have made it; answers apart.
ModemDescription ModemBefore(const Scenario& scenario, size_t index) {
  ModemDescription modem = scenario.notebook.modem;
  for (size_t i = 0; i < index; ++i) {
    const auto& hardware_id = scenario.events[i].action.modem.hardware_id;
    if (hardware_id) modem.hardware_id = *hardware_id;
  }
  return modem;
}

constexpr auto kRestartPatience = 30s;

}  // namespace

// What an event does while no process of the service lives; the next process learns
// of the rest from the journal.
class Player::Target final : public PrefixTarget {
 public:
  explicit Target(Player& player) : m_player(player) {}

  void Start() override {
    m_player.m_start.emplace([&player = m_player] { return player.m_service.Start(); });
  }
  void Stop() override { SendControl({.control = SERVICE_CONTROL_STOP}); }
  void SendControl(const SentControl& sent) override { m_player.RefuseControl(sent); }

  void Kill() override {}
  void SendDeviceEvent(uint32_t /*type*/, const std::string& /*interface_name*/) override {}
  void SendPowerEvent(uint32_t /*type*/) override {}
  void SendPowerSetting(const platform::Guid& /*setting*/, uint32_t /*data*/) override {}
  void ChangeAccounts(bool /*added*/) override {}
  void WriteRecord(const virtual_notebook::EventRecord& /*record*/) override {}

 private:
  Player& m_player;
};

// Plays the next event without the service; false when there is none left.
bool Player::PlayNext() {
  if (m_restart_asked) {
    if (Clock::now() - *m_restart_asked < kRestartPatience) return true;
    m_restart_asked.reset();
    WriteNote("the command line that was launched did not start the service again");
  }
  const size_t next = Played(m_entries);
  if (next >= m_occurrences.size()) return false;
  const Occurrence& occurrence = m_occurrences[next];
  const Action& action = m_scenario.events[occurrence.index].action;
  Write(EventPlayed{.index = occurrence.index, .repetition = occurrence.repetition},
        std::max(m_now, occurrence.at));
  Target target(*this);
  PlayAction(action, ModemBefore(m_scenario, occurrence.index), target);
  return true;
}

// There is no process: the manager has nobody to send it to.
void Player::RefuseControl(const SentControl& sent) {
  Write(ControlRefused{sent.control, sent.event_type, *virtual_notebook::RefusalOf(sent, {})},
        m_now);
}

}  // namespace nuvelta::wine
