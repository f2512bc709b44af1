#include "support/run.h"

#include <algorithm>
#include <charconv>
#include <chrono>

#include "auth/platform_table.h"

namespace nuvelta::support {

namespace {

using enum LineKind;

// With the full-width comma of code page 936.
constexpr std::string_view kByFamily = " \xA3\xAC replace by family";

std::string Keep(std::string_view text) { return std::string(text.substr(0, kLongestText)); }

std::optional<int64_t> Number(std::string_view text) { return NumberBehind(text, ""); }

// "0x80000001" of a query, "5" of a set command.
std::optional<uint32_t> StatusCode(std::string_view text) {
  uint32_t code = 0;
  if (text.starts_with("0x")) {
    text.remove_prefix(2);
    const auto read = std::from_chars(text.data(), text.data() + text.size(), code, 16);
    return read.ec == std::errc() ? std::optional(code) : std::nullopt;
  }
  if (const auto number = Number(text)) return static_cast<uint32_t>(*number);
  return std::nullopt;
}

}  // namespace

std::optional<std::chrono::sys_time<std::chrono::milliseconds>> MomentOf(std::string_view text) {
  const auto part = [&](size_t at, size_t length) {
    int number = -1;
    if (text.size() < at + length) return number;
    std::from_chars(text.data() + at, text.data() + at + length, number);
    return number;
  };
  const std::chrono::year_month_day day{std::chrono::year(part(0, 4)),
                                        std::chrono::month(static_cast<unsigned>(part(5, 2))),
                                        std::chrono::day(static_cast<unsigned>(part(8, 2)))};
  if (text.size() < 23 || !day.ok()) return std::nullopt;
  return std::chrono::sys_days(day) + std::chrono::hours(part(11, 2)) +
         std::chrono::minutes(part(14, 2)) + std::chrono::seconds(part(17, 2)) +
         std::chrono::milliseconds(part(20, 3));
}

std::optional<int64_t> MillisecondsBetween(std::string_view from, std::string_view to) {
  const auto begin = MomentOf(from);
  const auto end = MomentOf(to);
  // Local time can jump; then it does not tell.
  if (!begin || !end || *end < *begin) return std::nullopt;
  return (*end - *begin).count();
}

void RunReader::Begin(uint64_t number, const Place& at) {
  *this = {};
  m_run.number = number;
  m_run.begin = at;
}

Place RunReader::Here() const {
  return {.file = *m_file, .line = m_line->number, .time = std::string(m_line->time)};
}

void RunReader::Decide(Cause cause) {
  if (m_closed) return;
  m_run.cause = cause;
  m_run.decided = Here();
  m_run.deciding = Keep(m_line->text);
}

void RunReader::Close(Cause cause) {
  Decide(cause);
  m_closed = true;
}

// What did not decide up to here does not decide any more.
void RunReader::Enter(At at) {
  m_at = at;
  if (!m_closed) m_run.cause = Cause::kUnexplained;
}

Command& RunReader::CommandAtHand() {
  return m_at == At::kSet ? m_run.evidence.set : m_run.evidence.query;
}

void RunReader::End(std::string_view rest, const Place& at) {
  m_run.end = at;
  std::from_chars(rest.data(), rest.data() + rest.size(), m_run.seconds);
  if (m_closed) return;
  m_run.cause = Cause::kUnexplained;
  m_run.decided = at;
  m_run.deciding.clear();
}

void RunReader::Take(LineMeaning meaning, const LogLine& line, const std::string& file) {
  if (meaning.kind == kOther || meaning.kind == kUnknown || meaning.kind == kLeave) return;
  m_meaning = meaning;
  m_line = &line;
  m_file = &file;
  TakePresence();
  TakeSwitches();
  TakePlatform();
  TakeFccMode();
  TakeCommand();
  TakeAnswer();
  TakeEnd();
}

void RunReader::TakePresence() {
  Evidence& seen = m_run.evidence;
  const std::string_view rest = m_meaning.rest;
  switch (m_meaning.kind) {
    case kAdaptersNotRead:
      return Decide(Cause::kAdaptersNotRead);
    case kAdapter:
      seen.adapter = Keep(rest);
      return;
    case kNoAdapter:
      return Decide(Cause::kNoAdapter);
    case kInstanceId:
      seen.instance_id = Keep(rest);
      return;
    case kNoInstanceId:
      return Decide(Cause::kNoInstanceId);
    case kMbimId:
      seen.mbim_id = Keep(rest);
      return;
    case kNotExpected:
      return Decide(Cause::kAdapterNotExpected);
    case kNotThere:
      m_closed = m_run.cause != Cause::kUnexplained;
      return;
    case kEnterExist:
      return Enter(At::kModem);
    case kNotReachable:
      if (m_run.cause != Cause::kMobileBroadbandFailed) Decide(Cause::kModemNotReachable);
      m_closed = true;
      return;
    default:
      return;
  }
}

void RunReader::TakeSwitches() {
  Evidence& seen = m_run.evidence;
  switch (m_meaning.kind) {
    case kSwitchesBegin:
      seen.verification = Verification::kOn;
      return;
    case kOldSwitchAbsent:
      m_old_switch_read = true;
      return;
    case kSwitchValue:
      (m_old_switch_read ? seen.new_switch : seen.old_switch) = Number(m_meaning.rest);
      m_old_switch_read = true;
      return;
    case kSwitchOffBy0:
      seen.verification = Verification::kOffByOldSwitch;
      return;
    case kSwitchOffBy1:
      seen.verification = Verification::kOffByNewSwitch;
      return;
    default:
      return;
  }
}

void RunReader::TakePlatform() {
  Evidence& seen = m_run.evidence;
  std::string_view rest = m_meaning.rest;
  switch (m_meaning.kind) {
    case kProject:
      seen.replaced_by_family = rest.ends_with(kByFamily);
      if (seen.replaced_by_family) rest.remove_suffix(kByFamily.size());
      m_project = Keep(rest);
      return;
    case kNewerPlatform:
      m_newer_platform = true;
      m_board_product.clear();
      return;
    case kBoardProduct:
      m_board_product = Keep(rest);
      return;
    case kLookUp:
      seen.platform = m_newer_platform ? Cs25PlatformKey(m_project, m_board_product) : m_project;
      return;
    case kNotListed:
      seen.listed = false;
      return;
    case kDevicesNotRead:
      return Decide(Cause::kDevicesNotRead);
    case kDeviceId:
      seen.listed = true;
      seen.device_id = Keep(rest);
      return;
    case kNoDeviceId:
      if (m_run.cause != Cause::kDevicesNotRead) Decide(Cause::kNoDeviceId);
      return;
    case kAllowed:
      seen.approved = true;
      return;
    case kNotAllowed:
      seen.approved = false;
      if (m_run.cause == Cause::kUnexplained) Decide(Cause::kModemNotAllowed);
      m_closed = true;
      return;
    default:
      return;
  }
}

void RunReader::TakeFccMode() {
  Evidence& seen = m_run.evidence;
  switch (m_meaning.kind) {
    case kFirmwareSize:
      m_firmware_read = NumberBehind(m_meaning.rest, "smBiosData->Length:").value_or(0) != 0;
      return;
    case kFccContent:
      seen.fcc_content = Keep(m_meaning.rest);
      return;
    case kFccMode:
      seen.fcc_mode = true;
      return;
    case kNoFccMode:
      seen.fcc_mode = false;
      if (!m_firmware_read) return Close(Cause::kFirmwareNotRead);
      return Close(seen.fcc_content.empty() ? Cause::kFccStructureMissing
                                            : Cause::kFccContentWrong);
    default:
      return;
  }
}

void RunReader::TakeCommand() {
  switch (m_meaning.kind) {
    case kEnterQuery:
      return Enter(At::kQuery);
    case kEnterSet:
      return Enter(At::kSet);
    case kNoModem:
      return Decide(Cause::kModemVanished);
    case kVendorService:
      m_run.evidence.vendor_service = true;
      return;
    case kNoVendorService:
      return Decide(Cause::kVendorServiceMissing);
    case kServiceRefused:
      return Decide(Cause::kVendorServiceRefused);
    case kSessionRefused:
      return Decide(Cause::kSessionRefused);
    case kQueryBegins:
    case kSetBegins:
      CommandAtHand().begin = Here();
      return;
    case kQuerySent:
    case kSetSent:
      CommandAtHand().sent = true;
      return;
    default:
      return;
  }
}

void RunReader::TakeAnswer() {
  Command& command = CommandAtHand();
  const bool set = m_at == At::kSet;
  switch (m_meaning.kind) {
    case kAsyncState: {
      command.state = Keep(m_meaning.rest);
      const bool late = command.state == "Started";
      Decide(set ? (late ? Cause::kSetNotAnswered : Cause::kSetFailed)
                 : (late ? Cause::kQueryNotAnswered : Cause::kQueryFailed));
      break;
    }
    case kStatusCode:
      command.status = StatusCode(m_meaning.rest);
      Decide(set ? Cause::kSetRefused : Cause::kQueryRefused);
      break;
    case kAnswer:
      if (const auto level = Number(m_meaning.rest)) command.level = static_cast<int32_t>(*level);
      break;
    case kSetAnswered:
      command.obeyed = true;
      break;
    case kException:
    case kOtherException:
      m_run.evidence.exception = m_meaning.kind == kException ? Keep(m_meaning.rest) : "other";
      Decide(m_at == At::kModem ? Cause::kMobileBroadbandFailed : Cause::kPlatformException);
      return;
    default:
      return;
  }
  command.milliseconds = MillisecondsBetween(command.begin.time, m_line->time);
}

void RunReader::TakeEnd() {
  switch (m_meaning.kind) {
    case kQueryFailed:
      // An answer that says nothing has no line of its own.
      if (m_run.cause == Cause::kUnexplained) Decide(Cause::kQueryTooShort);
      m_closed = true;
      return;
    case kSaysUnsupported:
      return Close(Cause::kModemSaysUnsupported);
    case kNotReady:
      return Close(Cause::kModemNotReady);
    case kAlreadyOn:
      return Close(Cause::kAlreadyOn);
    case kSetSucceeded:
      return Close(Cause::kSwitchedOn);
    case kSetFailed:
      m_closed = m_run.cause != Cause::kUnexplained;
      return;
    case kRaised:
      if (m_run.cause == Cause::kUnexplained) Decide(Cause::kPlatformException);
      m_closed = true;
      return;
    default:
      return;
  }
}

}  // namespace nuvelta::support
