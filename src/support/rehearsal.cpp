#include "support/rehearsal.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <string_view>

#include "auth/auth_task.h"
#include "auth/systeminfo.h"
#include "common/common_util.h"
#include "common/logger.h"
#include "modem/device_helper.h"
#include "modem/mbn_winrt_helper.h"
#include "platform/clock.h"
#include "platform/platform.h"

namespace nuvelta::support {

namespace {

using enum LineKind;

constexpr int32_t kLevelOn = 1;

// The time as the log has it.
std::string LogTime() {
  using namespace std::chrono;
  platform::Clock& clock = *platform::Os().clock;
  const auto now = clock.Now();
  const auto second = floor<seconds>(now);
  const std::tm local = clock.localtime(second.time_since_epoch().count());
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02d:%02d:%02d.%03d",
                local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                local.tm_sec, static_cast<int>(floor<milliseconds>(now - second).count()));
  return text.data();
}

// Hears what the service's functions would log.
class Listening final : public LogListenerForSimulation {
 public:
  Listening() {
    m_reader.Begin(1, {.line = 1, .time = LogTime()});
    CLogger::GetInstance().ListenForSimulation(this);
  }
  ~Listening() override { CLogger::GetInstance().ListenForSimulation(nullptr); }
  Listening(const Listening&) = delete;
  Listening& operator=(const Listening&) = delete;

  void OnMessage(std::string_view message) override { Take(MeaningOfMessage(message), message); }
  void OnLost(const std::string& /*why*/) override {}

  // What doJob itself would say, and the scopes, which are no messages.
  void Say(LineKind kind) { Take({.kind = kind}, TextOf(kind)); }

  Run End() {
    m_reader.End("0", {.line = m_lines, .time = LogTime()});
    return m_reader.Get();
  }

 private:
  void Take(LineMeaning meaning, std::string_view text) {
    const std::string time = LogTime();
    m_reader.Take(meaning, {.time = time, .thread = {}, .text = text, .number = ++m_lines}, {});
  }

  RunReader m_reader;
  uint64_t m_lines = 0;
};

bool MayUseTheModem(Listening& listening) {
  bool present = false;
  CDeviceHelper::IsNuveltaMBIMDevcieExist(present);
  if (!present) {
    listening.Say(kNotThere);
    return false;
  }
  listening.Say(kEnterExist);
  if (!CMbnWinRtHelper::IsMbimExist()) {
    listening.Say(kNotReachable);
    return false;
  }
  listening.Say(kSwitchesBegin);
  if (CommonUtil::IsDisableVerify()) return true;
  const bool allowed = CTaskAuthModule::VerifyPlatform();
  listening.Say(allowed ? kAllowed : kNotAllowed);
  if (!allowed) return false;
  const bool fcc_mode = Systeminfo::isFccMode();
  listening.Say(fcc_mode ? kFccMode : kNoFccMode);
  return fcc_mode;
}

// False when the run would send the set command now.
bool EndsWithTheQuery(Listening& listening) {
  listening.Say(kEnterQuery);
  int32_t cfun = kCfunNotReady;
  bool raised = false;
  const bool answered = CMbnWinRtHelper::GetMbimCfun(cfun, raised);
  if (raised) {
    listening.Say(kRaised);
  } else if (!answered) {
    listening.Say(kQueryFailed);
  } else if (cfun == kCfunNotSupported) {
    listening.Say(kSaysUnsupported);
  } else if (cfun == kCfunNotReady) {
    listening.Say(kNotReady);
  } else if (cfun == kLevelOn) {
    listening.Say(kAlreadyOn);
  } else {
    return false;
  }
  return true;
}

}  // namespace

Rehearsal Rehearse(bool query) {
  Listening listening;
  const bool approved = MayUseTheModem(listening);
  const bool queried = approved && query;
  const bool ended = !approved || (queried && EndsWithTheQuery(listening));
  Rehearsal rehearsal{.run = listening.End(), .queried = queried};
  if (!ended) rehearsal.run.cause = queried ? Cause::kWouldSwitchOn : Cause::kNotAsked;
  return rehearsal;
}

Command AskModem() {
  Listening listening;
  EndsWithTheQuery(listening);
  return listening.End().evidence.query;
}

}  // namespace nuvelta::support
