#include <atomic>
#include <memory>
#include <new>

#include "modem/projected.h"
#include "platform/mobile_broadband.h"
#include "platform/platform.h"
#include "platform/threads.h"
#include "support/capture/read_notebook.h"
#include "support/inspections.h"
#include "support/rehearsal.h"

namespace nuvelta::support {

namespace {

constexpr uint32_t kPoll = 20;  // milliseconds
constexpr int kPolls = 150;
constexpr uint32_t kLatePoll = 100;
constexpr int kLatePolls = 80;
constexpr uint32_t kNoMemory = 0x8007000E;  // E_OUTOFMEMORY

// Its handlers may run late.
struct Enumeration {
  std::atomic<uint32_t> accounts = 0;
  std::atomic<bool> done = false;
};

std::optional<uint32_t> CountAccounts() {
  const auto seen = std::make_shared<Enumeration>();
  const auto watcher = NotNull(platform::Os().mobile_broadband->CreateAccountWatcher());
  watcher->AccountAdded([seen] { ++seen->accounts; });
  watcher->EnumerationCompleted([seen] { seen->done = true; });
  watcher->Start();
  for (int i = 0; i < kPolls && !seen->done; ++i) platform::Os().threads->Sleep(kPoll);
  return seen->done ? std::optional(seen->accounts.load()) : std::nullopt;
}

void ReadAccounts(CapturedNotebook& notebook) {
  constexpr const char* kWhat = "the mobile-broadband accounts";
  try {
    notebook.accounts = CountAccounts();
    if (!notebook.accounts) notebook.not_seen.emplace_back(kWhat);
  } catch (const platform::HresultError& error) {
    NoteError(notebook, kWhat, error.code);
  } catch (const std::bad_alloc&) {
    NoteError(notebook, kWhat, kNoMemory);
  }
}

// An answer that comes too late for the service tells its latency all the same.
QueryRecord RecordOf(const QueryWatch& watch) {
  QueryRecord record = watch.Record();
  for (int i = 0; i < kLatePolls && record.sent && !record.state; ++i) {
    platform::Os().threads->Sleep(kLatePoll);
    record = watch.Record();
  }
  return record;
}

}  // namespace

void ReadModem(CapturedNotebook& notebook, bool query) {
  const QueryWatch watch;
  ReadAccounts(notebook);
  const ModemFacts facts = InspectModem();
  CapturedModem& modem = notebook.modem;
  modem.offered = facts.present;
  modem.error = facts.error;
  modem.services = facts.services;
  if (facts.error != 0) NoteError(notebook, facts.failed_call, facts.error);
  const bool none = facts.failed_call == "MobileBroadbandModem::GetDefault";
  modem.failed_call = none ? "MobileBroadband::GetDefault" : facts.failed_call;
  modem.asked = query && facts.present;
  if (modem.asked) AskModem();
  modem.query = RecordOf(watch);
}

}  // namespace nuvelta::support
