#include "support/capture/log_notebook.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "support/wide_text.h"

namespace nuvelta::support {

namespace {

using std::chrono::milliseconds;

// From the begin of a process to its first line; of the platform's accounts to their events.
constexpr milliseconds kFirstLine{20};
constexpr milliseconds kAccountsTold{500};

template <class Number>
std::optional<Number> ParseNumber(std::string_view text, int base = 10) {
  Number number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (error != std::errc() || end == text.data()) return std::nullopt;
  return number;
}

// What stands behind `mark` up to `end`.
std::optional<std::string_view> Behind(std::string_view text, std::string_view mark,
                                       std::string_view end = {}) {
  const size_t at = text.find(mark);
  if (at == std::string_view::npos) return std::nullopt;
  text.remove_prefix(at + mark.size());
  return end.empty() ? text : text.substr(0, text.find(end));
}

std::string_view Trimmed(std::string_view text) {
  while (text.ends_with('\n') || text.ends_with('\r')) text.remove_suffix(1);
  return text;
}

// At a desk the notebook's code page is not known: what is no UTF-8 becomes U+FFFD.
std::string TextOfLog(std::string_view text) { return Utf8Of(WideOf(text)); }

struct FirmwareText {
  const char* key;
  std::string_view mark;
};
constexpr std::array kFirmwareTexts{
    FirmwareText{"system_manufacturer", "manufacturer_ = "},
    FirmwareText{"system_product", "productname_  = "},
    FirmwareText{"system_serial", "serialnumber_ = "},
    FirmwareText{"system_version", "project_name_ = "},
    FirmwareText{"system_sku", "sku_\t\t= "},
    FirmwareText{"system_family", "family_\t= "},
    FirmwareText{"processor_version", "processor Type = "},
    FirmwareText{"processor_manufacturer", "processor Manufacturer = "},
    FirmwareText{"baseboard_manufacturer", "[1]baseboard_manufacturer_ = "},
    FirmwareText{"baseboard_product", "[2]baseboard_product_  = "},
    FirmwareText{"baseboard_version", "[3]baseboard_version_ = "},
    FirmwareText{"baseboard_serial", "[4]baseboard_serialnumber_ = "},
    FirmwareText{"baseboard_asset_tag", "[5]baseboard_asset_tag_  = "},
};

}  // namespace

void LogNotebook::OnNotebook(const NotebookLogs& /*logs*/) { ++notebooks; }

void LogNotebook::Say(const std::string& what, uint32_t number, const std::string& text) {
  events.push_back({.at = m_now, .what = what, .text = text, .number = number});
}

void LogNotebook::Fail(const std::string& call, const std::string& how, uint32_t code) {
  faults.push_back({.call = call, .nth = m_calls[call], .how = how, .code = code});
}

void LogNotebook::OnProcess(const Process& begun) {
  const auto at = MomentOf(begun.begin.time);
  if (!at) return;
  m_process_begin = *at;
  if (processes++ == 0) {
    begins_whole = begun.has_begin;
    first = *at - (begun.has_begin ? kFirstLine : milliseconds());
  }
  if (!m_restarts) events.push_back({.at = *at - kFirstLine, .what = "start"});
  m_restarts = false;
}

void LogNotebook::OnNote(const Note& note) {
  const auto at = MomentOf(note.at.time);
  if (!at) return;
  m_now = *at;
  if (note.kind == NoteKind::kDeviceArrives) Say("arrival", 0, note.text);
  if (note.kind == NoteKind::kDeviceLeaves) Say("removal", 0, note.text);
  if (note.kind == NoteKind::kRestartAsked) m_restarts = true;
  if (note.kind == NoteKind::kRestartFailed) {
    m_calls["ShellExecuteExW"] += 1;
    Fail("ShellExecuteExW", "error",
         ParseNumber<uint32_t>(
             std::string_view(note.text).substr(note.text.starts_with("0x") ? 2 : 0), 16)
             .value_or(5));
  }
}

void LogNotebook::OnRun(const Run& run) {
  const auto begin = MomentOf(run.begin.time);
  const auto end = MomentOf(run.end.time);
  if (begin && end) runs.push_back({*begin, *end, run});
  m_devices_known = !devices.empty();
}

void LogNotebook::OnProcessEnds(const Process& process) {
  if (m_asks) unanswered.push_back(runs.size());
  m_asks = false;
  const auto at = MomentOf(process.last_line.time);
  if (process.ended || m_restarts || !at) return;
  m_now = *at + milliseconds(1);
  Say("kill");
}

void LogNotebook::OnLine(const LogLine& line, LineMeaning meaning) {
  const auto at = MomentOf(line.time);
  if (!at) return;
  m_now = *at;
  if (meaning.kind == LineKind::kEnterAccount) {
    if (m_now - m_process_begin < kAccountsTold && processes <= 1) {
      ++accounts;
    } else if (m_now - m_process_begin >= kAccountsTold) {
      Say("account_added");
    }
  }
  if (meaning.kind == LineKind::kQuerySent) m_asks = true;
  if (meaning.kind == LineKind::kAsyncState || meaning.kind == LineKind::kStatusCode ||
      meaning.kind == LineKind::kAnswer || meaning.kind == LineKind::kRunEnds) {
    m_asks = false;
  }
  if (meaning.kind == LineKind::kOperStatus && runs.empty()) {
    oper_status = std::clamp<uint32_t>(ParseNumber<uint32_t>(meaning.rest).value_or(2), 1, 7);
  }
  if (line.text == "h : + CMbnWinRtHelper::AccountRemovedHandler") Say("account_removed");
  const std::string_view message = line.text.size() > 6 ? line.text.substr(6) : std::string_view();
  CountCalls(message, meaning);
  TakeStart(message);
  TakeFirmware(message);
  TakeDevice(message);
  TakeSession(message);
  TakeControl(message);
  TakeLogon(message);
}

void LogNotebook::TakeStart(std::string_view message) {
  if (const auto boot = Behind(message, "boot time (ms) == ")) {
    if (!boot_ticks) boot_ticks = ParseNumber<uint64_t>(*boot, 16);
  } else if (message.starts_with("Date: ") && !boot_local) {
    // "11-16-2026\nTime: 00:58:04"
    const auto date = message.substr(6);
    const auto time = Behind(message, "Time: ");
    if (date.size() < 10 || !time || time->size() < 8) return;
    boot_local = MomentOf(std::string(date.substr(6, 4)) + "-" + std::string(date.substr(0, 5)) +
                          " " + std::string(time->substr(0, 8)) + ".000");
  } else if (message.starts_with("filename: ") && program_path.empty()) {
    program_path = TextOfLog(Trimmed(message.substr(10)));
  } else if (message.starts_with("verion: ") && program_version.empty()) {
    program_version = Trimmed(message.substr(8));
  }
}

void LogNotebook::TakeFirmware(std::string_view message) {
  for (const FirmwareText& text : kFirmwareTexts) {
    if (!message.starts_with(text.mark) || firmware.contains(text.key)) continue;
    firmware[text.key] = TextOfLog(Trimmed(message.substr(text.mark.size())));
  }
  const auto content = Behind(message, "szoembuf string_buf:", ", length:");
  if (content && !fcc) fcc = std::string(*content);
}

void LogNotebook::TakeDevice(std::string_view message) {
  const auto rest = Behind(message, "GET device Hwid[");
  if (!rest || m_devices_known) return;
  const auto number = ParseNumber<uint32_t>(*rest);
  auto id = Behind(*rest, "] : ");
  if (!number || *number < 2 || !id) return;
  const std::string_view text = Trimmed(*id);
  devices[*number - 2] = TextOfLog(text.ends_with(' ') ? text.substr(0, text.size() - 1) : text);
}

void LogNotebook::TakeSession(std::string_view message) {
  if (message.starts_with("dwSessionCount: ")) ++m_session_lists;
  const auto number = Behind(message, "SessionNumber is: ");
  if (!number || m_session_lists > 1) return;
  const bool active = message.find(" is active") != std::string_view::npos;
  const auto name = Behind(message, "pWinStationName = ", active ? " is active" : "");
  const auto state = NumberBehind(message, "wts.State = ");
  std::string_view text = Trimmed(name.value_or(std::string_view()));
  if (!active && text.ends_with(' ')) text.remove_suffix(1);
  sessions.push_back({.number = ParseNumber<uint32_t>(*number).value_or(0),
                      .name = TextOfLog(text),
                      .state = static_cast<uint32_t>(state.value_or(0))});
}

void LogNotebook::TakeControl(std::string_view message) {
  if (const auto type = NumberBehind(message, "PowerChanged: Event Type = ")) {
    return Say("power_event", static_cast<uint32_t>(*type));
  }
  if (const auto percent = NumberBehind(message, "ULONG32  tmp = ")) {
    return Say("battery", static_cast<uint32_t>(*percent));
  }
  const auto code = Behind(message, "CtrlCode = 0x");
  if (!code) return;
  const auto control = ParseNumber<uint32_t>(*code, 16).value_or(0);
  const auto type = static_cast<uint32_t>(NumberBehind(message, "dwEventType = ").value_or(0));
  if (control == 1) Say("stop");
  if (control == 14 && type >= 1 && type <= 11) Say("session_change", type);
  if (control == 4 || (control >= 128 && control < 256)) Say("control", control);
}

void LogNotebook::TakeLogon(std::string_view message) {
  if (const auto written = NumberBehind(message, ";TimeWritten = "); written && !logon) {
    logon = *written;
  }
  if (message.starts_with("not find logon time")) logon_missed = true;
}

// Calls that the log counts, and those of them that failed.
void LogNotebook::CountCalls(std::string_view message, LineMeaning meaning) {
  constexpr const char* kDefault = "MobileBroadband::GetDefault";
  const auto is = [&](std::string_view text) { return Trimmed(message) == text; };
  if (meaning.kind == LineKind::kEnterExist || is("+Get MobileBroadbandModem")) ++m_calls[kDefault];
  if (is("+Get GetDeviceService")) ++m_calls["Modem::GetDeviceService"];
  if (is("+OpenCommandSession")) ++m_calls["DeviceService::OpenCommandSession"];
  if (is("RestartService success.")) ++m_calls["ShellExecuteExW"];
  if (is("+getLastLogTime")) ++m_calls["OpenEventLogW"];
  if (meaning.kind == LineKind::kNoModem) Fail(kDefault, "null");
  if (meaning.kind == LineKind::kServiceRefused) Fail("Modem::GetDeviceService", "null");
  if (meaning.kind == LineKind::kSessionRefused) Fail("DeviceService::OpenCommandSession", "null");
  if (meaning.kind == LineKind::kEventLogNotRead) Fail("OpenEventLogW", "error", 5);
}

}  // namespace nuvelta::support
