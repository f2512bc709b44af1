#include "test_stage.h"

#include <thread>
#include <utility>

namespace nuvelta::wine {

ModemStage& Stage() { return TestStage::Get(); }

TestStage& TestStage::Get() {
  static auto* const stage = new TestStage;
  return *stage;
}

void TestStage::Reset(virtual_notebook::ModemDescription modem,
                      std::vector<virtual_notebook::Fault> faults, uint32_t accounts) {
  m_modem.emplace(std::move(modem));
  m_faults.emplace(std::move(faults));
  m_later.clear();
  m_accounts = accounts;
  m_listeners.clear();
}

size_t TestStage::RunAll() {
  size_t ran = 0;
  for (; !m_later.empty(); ++ran) {
    std::thread([work = m_later.extract(m_later.begin())] { work.mapped()(); }).join();
  }
  return ran;
}

void TestStage::ChangeAccounts(bool added) {
  m_accounts = added ? m_accounts + 1 : m_accounts - 1;
  for (const auto& listener : m_listeners) std::thread(listener, added).join();
}

std::optional<virtual_notebook::Fault> TestStage::Count(virtual_notebook::KnownCall call) {
  return m_faults->Count(call.Name());
}

virtual_notebook::ModemReply TestStage::Execute(bool set, uint32_t command_id,
                                                std::vector<uint8_t> payload) {
  return m_modem->Execute(set, command_id, std::move(payload), {});
}

void TestStage::RunLater(virtual_notebook::Duration after, std::function<void()> work) {
  m_later.emplace(after, std::move(work));
}

void TestStage::ListenToAccounts(std::function<void(bool added)> listener) {
  m_listeners.push_back(std::move(listener));
}

}  // namespace nuvelta::wine
