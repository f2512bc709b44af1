// The modem of the virtual notebook: what it is, how it answers, and what it has
// been told. It keeps state: a set command that succeeds changes what the next
// query answers.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "notebook/model/scenario.h"
#include "platform/mobile_broadband.h"

namespace nuvelta::virtual_notebook {

// One command that reached the modem.
struct ModemCommand {
  bool set = false;
  uint32_t command_id = 0;
  std::vector<uint8_t> payload;
  Duration at{};  // since the epoch
  int32_t radio_before = 0;
  int32_t radio_after = 0;
};

// What the modem makes of a command. The modem acts at once; the host learns of
// it after `after`.
struct ModemReply {
  Answer::Kind kind = Answer::Kind::kHealthy;
  Duration after{};
  uint32_t code = 0;
  std::vector<uint8_t> data;

  // What the operation has come to, once it has.
  platform::AsyncStatus EndState() const;
  // The status code of its result.
  uint32_t StatusCode() const { return kind == Answer::Kind::kStatus ? code : 0; }
};

// Whether the mobile-broadband stack offers it.
inline bool IsOffered(const ModemDescription& modem) { return modem.present && modem.mbim; }

// Safe on any thread.
class ModemModel {
 public:
  explicit ModemModel(ModemDescription description);

  ModemReply Execute(bool set, uint32_t command_id, std::vector<uint8_t> payload, Duration now);

  void SetPresent(bool present);
  void Apply(const Action::ModemChange& change);

  ModemDescription Description() const;
  std::vector<ModemCommand> Commands() const;

 private:
  Answer NextAnswer(std::vector<Answer>& answers);

  mutable std::mutex m_mutex;
  ModemDescription m_modem;
  std::vector<ModemCommand> m_commands;
};

}  // namespace nuvelta::virtual_notebook
