#include "notebook/model/modem_model.h"

#include <utility>

namespace nuvelta::virtual_notebook {

namespace {

constexpr uint32_t kCfunCommand = 1;
constexpr uint32_t kStatusNotSupported = 9;  // MBIM_STATUS_NO_DEVICE_SUPPORT

std::vector<uint8_t> LittleEndian(int32_t value) {
  const auto word = static_cast<uint32_t>(value);
  return {static_cast<uint8_t>(word), static_cast<uint8_t>(word >> 8U),
          static_cast<uint8_t>(word >> 16U), static_cast<uint8_t>(word >> 24U)};
}

bool IsExpectedPayload(bool set, const std::vector<uint8_t>& payload) {
  return payload.size() == (set ? 4U : 1U);
}

int32_t ValueOf(const std::vector<uint8_t>& payload) {
  const auto byte = [&](size_t i) { return static_cast<uint32_t>(payload[i]) << (8U * i); };
  return static_cast<int32_t>(byte(0) | byte(1) | byte(2) | byte(3));
}

}  // namespace

platform::AsyncStatus ModemReply::EndState() const {
  if (kind == Answer::Kind::kError) return platform::AsyncStatus::kError;
  if (kind == Answer::Kind::kCanceled) return platform::AsyncStatus::kCanceled;
  return platform::AsyncStatus::kCompleted;
}

ModemModel::ModemModel(ModemDescription description) : m_modem(std::move(description)) {}

Answer ModemModel::NextAnswer(std::vector<Answer>& answers) {
  if (answers.empty()) return {};
  Answer answer = answers.front();
  if (answer.times == 1) {
    answers.erase(answers.begin());
  } else if (answer.times > 1) {
    --answers.front().times;
  }
  return answer;
}

ModemReply ModemModel::Execute(bool set, uint32_t command_id, std::vector<uint8_t> payload,
                               Duration now) {
  const std::lock_guard lock(m_mutex);
  Answer answer = NextAnswer(set ? m_modem.set : m_modem.query);
  ModemCommand command{.set = set,
                       .command_id = command_id,
                       .payload = std::move(payload),
                       .at = now,
                       .radio_before = m_modem.radio,
                       .radio_after = m_modem.radio};
  if (answer.kind == Answer::Kind::kHealthy) {
    if (command_id != kCfunCommand || !IsExpectedPayload(set, command.payload)) {
      answer.kind = Answer::Kind::kStatus;
      answer.code = kStatusNotSupported;
    } else if (set) {
      m_modem.radio = ValueOf(command.payload);
    } else {
      answer.data = LittleEndian(m_modem.radio);
    }
  }
  command.radio_after = m_modem.radio;
  m_commands.push_back(std::move(command));
  return {.kind = answer.kind,
          .after = answer.after.value_or(m_modem.latency),
          .code = answer.code,
          .data = std::move(answer.data)};
}

void ModemModel::SetPresent(bool present) {
  const std::lock_guard lock(m_mutex);
  m_modem.present = present;
}

void ModemModel::Apply(const Action::ModemChange& change) {
  const std::lock_guard lock(m_mutex);
  if (change.radio) m_modem.radio = *change.radio;
  if (change.mbim) m_modem.mbim = *change.mbim;
  if (change.hardware_id) m_modem.hardware_id = *change.hardware_id;
  if (change.device_services) m_modem.device_services = *change.device_services;
  if (change.latency) m_modem.latency = *change.latency;
  if (change.query) m_modem.query = *change.query;
  if (change.set) m_modem.set = *change.set;
}

ModemDescription ModemModel::Description() const {
  const std::lock_guard lock(m_mutex);
  return m_modem;
}

std::vector<ModemCommand> ModemModel::Commands() const {
  const std::lock_guard lock(m_mutex);
  return m_commands;
}

}  // namespace nuvelta::virtual_notebook
