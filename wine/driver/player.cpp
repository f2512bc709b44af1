#include "wine/driver/player.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <utility>

#include "notebook/model/story_report.h"
#include "notebook/model/story_times.h"
#include "wine/driver/handle_count.h"
#include "wine/story/places.h"

namespace nuvelta::wine {

namespace fs = std::filesystem;
using virtual_notebook::kNetStart;
using virtual_notebook::kStopPatience;
using virtual_notebook::kTaskKill;
using virtual_notebook::Scenario;
using namespace std::chrono_literals;

namespace {

constexpr DWORD kLookMs = 5;
constexpr auto kDumpPatience = 5s;
// Longer than the crash writer and the slowest pair of calls take.
constexpr auto kNewsPatience = 120s;

// The process that a command line kills; 0 for another command line.
uint32_t Victim(const std::string& command_line) {
  unsigned process = 0;
  std::sscanf(command_line.c_str(), "cmd.exe /C taskkill /pid %u", &process);
  return process;
}

// Its writer holds a dump for itself alone while it is at work.
bool IsReleased(const fs::path& dump) {
  const Handle file(CreateFileW(dump.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  return file.get() != INVALID_HANDLE_VALUE;
}

}  // namespace

Player::Player(const Scenario& scenario, const fs::path& folder, ServiceEntry service,
               bool awaits_end)
    : m_scenario(scenario),
      m_folder(folder),
      m_awaits_end(awaits_end),
      m_journal(folder / kJournalFile),
      m_service(std::move(service)),
      m_occurrences(Occurrences(scenario)) {}

void Player::Play() {
  for (;;) {
    ReadOn();
    if (m_process) {
      Watch();
    } else if (!FindProcess() && !Starting()) {
      if (m_over || !PlayNext()) return Look();
    }
    Sleep(kLookMs);
  }
}

// Reads what the journal holds beyond what has been read.
void Player::ReadOn() {
  std::error_code error;
  const uintmax_t size = fs::file_size(m_journal, error);
  if (error || size == m_journal_size) return;
  std::vector<Entry> entries = ReadJournal(m_journal);
  if (entries.size() <= m_entries.size()) return;
  m_journal_size = size;
  m_last_news = Clock::now();
  m_entries = std::move(entries);
  while (m_read < m_entries.size()) {
    // A copy: what is done about it may be journaled, and read, too.
    const Entry entry = m_entries[m_read++];
    Read(entry);
  }
}

void Player::Read(const Entry& entry) {
  m_now = std::max(m_now, entry.at);
  if (const auto* began = std::get_if<ProcessBegan>(&entry.what)) m_begun.push_back(began->process);
  if (const auto* launch = std::get_if<Launched>(&entry.what)) {
    const uint32_t victim = Victim(launch->command_line);
    if (victim != 0) m_doomed.insert(victim);
  }
  if (const auto* request = std::get_if<Request>(&entry.what)) Serve(request->kind);
}

void Player::Serve(Request::Kind request) {
  switch (request) {
    case Request::Kind::kStop:
      return SendStop();
    case Request::Kind::kKill:
      return Kill(Fate::kKilled);
    case Request::Kind::kEnd:
      m_over = true;
      Look();
      // The service rests: what it still holds, it keeps.
      if (const auto handles = m_process ? CountHandles(m_process->Id()) : std::nullopt) {
        std::printf("handles %u\n", *handles);
      }
      if (!m_scenario.stop_at_end) return Kill(Fate::kKilled);
      m_end_asked = Clock::now();
      return SendStop();
  }
}

void Player::Look() {
  const auto look = std::exchange(m_look, nullptr);
  if (!look) return;
  look();
  m_last_news = Clock::now();
}

// On a thread of its own: the call returns with the handler, and the story may
// have more to ask for until then.
void Player::SendStop() {
  m_stop.emplace([this] { return m_service.Stop(); });
}

void Player::CheckStop() {
  const auto answer = m_stop ? m_stop->Answer() : std::nullopt;
  if (!answer) return;
  m_stop.reset();
  const DWORD error = *answer;
  if (error == ERROR_SUCCESS || error == ERROR_SERVICE_REQUEST_TIMEOUT) return;
  if (!m_end_asked) {
    return Write(ControlRefused{.control = SERVICE_CONTROL_STOP, .error = error}, m_now);
  }
  const DWORD state = m_service.Status().dwCurrentState;
  if (state == SERVICE_STOP_PENDING || state == SERVICE_STOPPED) return;
  WriteNote(virtual_notebook::kRefusesStop);
  Kill(Fate::kKilled);
}

void Player::CheckEnd() {
  if (!m_end_asked || Clock::now() - *m_end_asked < kStopPatience) return;
  WriteNote(std::string(kStuckNote) + virtual_notebook::kDoesNotEnd);
  Kill(Fate::kKilled);
}

void Player::CheckCrash() {
  std::error_code ignored;
  for (const auto& file : fs::directory_iterator(m_folder, ignored)) {
    const fs::path& path = file.path();
    if (path.extension() != ".dmp" || m_dumps.contains(path) || !IsWhole(path)) continue;
    m_dumps.insert(path);
    WriteNote(kCrashNote + ("dump " + path.filename().string()));
    return Kill(Fate::kCrashed);
  }
}

// Wine 8's dump writer may itself fault once all is written, and never let go.
bool Player::IsWhole(const fs::path& dump) {
  if (IsReleased(dump)) return true;
  std::error_code ignored;
  const uintmax_t size = fs::file_size(dump, ignored);
  if (size != m_dump_size) {
    m_dump_size = size;
    m_dump_grew = Clock::now();
  }
  return size != 0 && Clock::now() - m_dump_grew > kDumpPatience;
}

void Player::CheckProgress() {
  if (Clock::now() - m_last_news < kNewsPatience) return;
  m_over = true;
  WriteNote(kStuckNote + std::string(m_begun.empty()
                                         ? "the virtual hardware is not in the service's process"
                                         : "nothing happened for 120 s of real time"));
  Kill(Fate::kKilled);
}

void Player::Watch() {
  if (!m_process->Runs()) return ProcessGone();
  if (!m_awaits_end) CheckCrash();
  CheckStop();
  CheckEnd();
  CheckProgress();
}

// The process that the manager, or the journal, knows and that is not known to be
// gone.
bool Player::FindProcess() {
  const DWORD managers = m_service.Status().dwProcessId;
  const uint32_t journaled = m_begun.empty() ? 0 : m_begun.back();
  for (const uint32_t id : {journaled, static_cast<uint32_t>(managers)}) {
    if (id == 0 || m_gone.contains(id)) continue;
    m_restart_asked.reset();
    m_last_news = Clock::now();
    m_fate = Fate::kOpen;
    m_process = ServiceProcess::Open(id);
    m_process_found = Clock::now();
    if (m_process) return true;
    // It was too quick to be looked at.
    m_gone.insert(id);
    Write(ProcessEnded{.process = id}, m_now);
    return false;
  }
  return false;
}

void Player::ProcessGone() {
  ReadOn();
  const uint32_t id = m_process->Id();
  const uint32_t code = m_process->ExitCode();
  const bool doomed = m_doomed.contains(id) && m_fate == Fate::kOpen;
  if (m_fate == Fate::kOpen && !doomed && code >= 0xC0000000) {
    WriteNote(kCrashNote + ("exit code " + std::to_string(code)));
  }
  if (m_awaits_end) PrintEnd();
  if (doomed) m_restart_asked = Clock::now();
  Write(ProcessEnded{.process = id, .killed = doomed || m_fate == Fate::kKilled, .exit_code = code},
        m_now + (doomed ? kTaskKill + kNetStart : 0ms));
  m_gone.insert(id);
  m_process.reset();
  if (m_end_asked) m_over = true;
}

void Player::PrintEnd() const {
  const auto lived =
      std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_process_found);
  std::printf("ended after %lld ms with exit code %08lX\n", static_cast<long long>(lived.count()),
              m_process->ExitCode());
  std::fflush(stdout);
}

// Whether a start is under way.
bool Player::Starting() {
  if (!m_start) return false;
  const auto answer = m_start->Answer();
  if (!answer) return true;
  m_start.reset();
  const DWORD error = *answer;
  if (FindProcess()) return true;
  if (error != ERROR_SUCCESS && m_begun.empty() && m_gone.empty()) {
    throw std::runtime_error("the service cannot be started: error " + std::to_string(error));
  }
  return true;
}

void Player::Kill(Fate fate) {
  if (!m_process && !FindProcess()) return;
  m_fate = fate;
  m_process->Kill();
}

void Player::Write(decltype(Entry::what) what, Duration at) {
  Append(m_journal, {.at = at, .what = std::move(what)});
  ReadOn();
}

}  // namespace nuvelta::wine
