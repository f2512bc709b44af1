#include "support/run_text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

#include "auth/platform_table.h"
#include "common/text_util.h"
#include "support/printable.h"

namespace nuvelta::support {

namespace {

std::string Quoted(std::string_view text) { return '"' + Printable(text) + '"'; }

std::string ModemText(const Evidence& seen) {
  if (seen.adapter.empty() && seen.mbim_id.empty()) return {};
  // "NAME, adapter desc = DESCRIPTION, friend name=FRIENDLY"
  constexpr std::string_view kDescription = ", adapter desc = ";
  constexpr std::string_view kFriendly = ", friend name=";
  const std::string_view adapter = seen.adapter;
  const size_t begin = adapter.find(kDescription);
  const size_t end = adapter.rfind(kFriendly);
  std::string text;
  if (begin != std::string_view::npos && end != std::string_view::npos && begin < end) {
    const size_t at = begin + kDescription.size();
    text = "adapter " + Quoted(adapter.substr(at, end - std::min(end, at)));
  }
  if (!seen.instance_id.empty()) text += ", device " + Printable(seen.instance_id);
  if (!seen.mbim_id.empty()) text += ", compared as " + Printable(seen.mbim_id);
  return text.starts_with(", ") ? text.substr(2) : text;
}

std::string VerificationText(const Evidence& seen) {
  switch (seen.verification) {
    case Verification::kNotRead:
      return {};
    case Verification::kOffByOldSwitch:
      return "OFF, by SupportVerifyPlatform = 0 (256 reads as 0, too): neither the platform nor "
             "FCC mode is checked";
    case Verification::kOffByNewSwitch:
      return "OFF, by IsDisableVerify = 1: neither the platform nor FCC mode is checked";
    case Verification::kOn:
      break;
  }
  std::string text = "on";
  if (seen.old_switch) text += ", SupportVerifyPlatform = " + std::to_string(*seen.old_switch);
  if (seen.new_switch) text += ", IsDisableVerify = " + std::to_string(*seen.new_switch);
  return text;
}

std::string AllowedIds(const std::string& key) {
  std::string text;
  for (const PlatformEntry& entry : platform_modem_map) {
    if (!EqualIgnoreCase(entry.key, key)) continue;
    for (const std::string_view id : entry.hwids) {
      text += (text.empty() ? "" : " or ") + std::string(id);
    }
  }
  return text;
}

std::string PlatformText(const Evidence& seen) {
  if (seen.platform.empty() && !seen.listed) return {};
  std::string text = Quoted(seen.platform);
  if (seen.replaced_by_family) text += " (named by its family)";
  if (!seen.listed) return text;
  if (!*seen.listed) return text + ", not listed: approved by design";
  text += ", listed, allows " + AllowedIds(seen.platform);
  text += seen.device_id.empty() ? "; no device of the maker was found"
                                 : "; the modem is " + Printable(seen.device_id);
  if (seen.approved) text += *seen.approved ? ": approved" : ": NOT approved";
  return text;
}

std::string FccText(const Evidence& seen) {
  if (!seen.fcc_mode) return {};
  if (*seen.fcc_mode) return "declared by the firmware";
  if (seen.fcc_content.empty()) return "NOT declared: no FCC structure was read";
  return "NOT declared: the content is " + Printable(seen.fcc_content);
}

std::string CommandText(const Command& command, const char* bytes, bool set) {
  if (command.begin.line == 0) return {};
  std::string text = bytes;
  if (!command.sent) return text + ", not sent";
  const std::string after =
      command.milliseconds ? " after " + std::to_string(*command.milliseconds) + " ms" : "";
  if (command.status) {
    std::array<char, 16> code{};
    std::snprintf(code.data(), code.size(), "0x%x", unsigned{*command.status});
    return text + ", refused" + after + " with status code " + code.data();
  }
  if (!command.state.empty()) {
    const bool late = command.state == "Started";
    return text + (late ? ", no answer" : ", ended as " + Printable(command.state)) + after;
  }
  if (set) return text + (command.obeyed ? ", obeyed" + after : ", without a usable answer");
  if (command.level)
    return text + ", answered" + after + ": level " + std::to_string(*command.level);
  return text + ", without a usable answer";
}

}  // namespace

std::vector<ChainLink> DecisionChain(const Run& run) {
  const Evidence& seen = run.evidence;
  std::vector<ChainLink> chain{
      {.label = "modem", .text = ModemText(seen)},
      {.label = "verification", .text = VerificationText(seen)},
      {.label = "platform", .text = PlatformText(seen)},
      {.label = "FCC mode", .text = FccText(seen)},
      {.label = "query", .text = CommandText(seen.query, "00", false)},
      {.label = "set", .text = CommandText(seen.set, "01 00 00 00", true)},
      {.label = "exception", .text = Printable(seen.exception)},
  };
  std::erase_if(chain, [](const ChainLink& link) { return link.text.empty(); });
  return chain;
}

const char* NameOf(TriggerKind kind) {
  switch (kind) {
    case TriggerKind::kStart:
      return "service start";
    case TriggerKind::kAdapter:
      return "a network adapter arrived";
    case TriggerKind::kAccount:
      return "a mobile-broadband account appeared";
    case TriggerKind::kResume:
      return "back from sleep or hibernation";
    case TriggerKind::kQuickBoot:
      return "quick boot";
    case TriggerKind::kUnknown:
      break;
  }
  return "not known: its line is not in the log";
}

std::string TextOf(const Note& note) {
  const std::string text = note.text.empty() ? "" : ": " + Printable(note.text);
  switch (note.kind) {
    case NoteKind::kServiceRuns:
      return "the service runs";
    case NoteKind::kStopAsked:
      return "the service is told to stop";
    case NoteKind::kServiceEnds:
      return "the service ends";
    case NoteKind::kSuspends:
      return "the notebook goes to sleep";
    case NoteKind::kResumes:
      return "the notebook is back from sleep or hibernation";
    case NoteKind::kQuickBoot:
      return "the notebook is back by quick boot";
    case NoteKind::kLogon:
      return "a user logs on";
    case NoteKind::kDeviceArrives:
      return "device arrives" + text;
    case NoteKind::kDeviceLeaves:
      return "device leaves" + text;
    case NoteKind::kRetry:
      return "another run follows; runs left before it" + text;
    case NoteKind::kGiveUp:
      return "the service gives up until the next trigger";
    case NoteKind::kRestartAsked:
      return "after four exceptions the service restarts itself";
    case NoteKind::kRestartFailed:
      return "the service could not restart itself" + text;
    case NoteKind::kFailure:
      return "failure" + text;
  }
  return {};
}

const char* ColourOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::kOn:
      return "\x1B[32m";
    case Verdict::kOffByRule:
      return "\x1B[33m";
    case Verdict::kOffByFailure:
      return "\x1B[31m";
    case Verdict::kUnknown:
      break;
  }
  return "\x1B[35m";
}

}  // namespace nuvelta::support
