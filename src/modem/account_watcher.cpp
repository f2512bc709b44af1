#include <exception>
#include <utility>

#include "common/func_trace.h"
#include "common/logger.h"
#include "modem/mbn_winrt_helper.h"
#include "modem/projected.h"
#include "platform/mobile_broadband.h"
#include "platform/platform.h"

namespace nuvelta {

namespace {

// The log has room for the low 32 bits only.
int LogToken(int64_t token) { return static_cast<int>(token); }

}  // namespace

CMbnWinRtHelper& CMbnWinRtHelper::GetInstance() {
  // Never destroyed: the platform may call a handler while the process exits.
  static auto* const instance = new CMbnWinRtHelper;
  return *instance;
}

void CMbnWinRtHelper::Init(std::function<void()> on_account_added) {
  const CFuncTrace trace("CMbnWinRtHelper::Init");
  if (m_bInitialised) return;
  // Before the watcher exists: a failed setup is not tried again.
  m_bInitialised = true;
  m_onAccountAdded = std::move(on_account_added);
  InitMobileBroadbandAccountWatcher();
  StartMobileBroadbandAccountWatcher();
}

void CMbnWinRtHelper::InitMobileBroadbandAccountWatcher() {
  constexpr const char* kName = "CMbnWinRtHelper::InitMobileBroadbandAccountWatcher";
  const CFuncTrace trace(kName);
  m_watcher = platform::Os().mobile_broadband->CreateAccountWatcher();
  // The tokens are not kept: the handlers stay for good.
  const int64_t added = NotNull(m_watcher)->AccountAdded([this] { AccountAddedHandler(); });
  LogInfo(kName, "event add token = %d\n", LogToken(added));
  const int64_t removed = m_watcher->AccountRemoved(&CMbnWinRtHelper::AccountRemovedHandler);
  LogInfo(kName, "event remove token = %d\n", LogToken(removed));
  const int64_t enumerated = m_watcher->EnumerationCompleted(&CMbnWinRtHelper::AccountEnumHandler);
  LogInfo(kName, "event enum token = %d\n", LogToken(enumerated));
}

void CMbnWinRtHelper::StartMobileBroadbandAccountWatcher() {
  constexpr const char* kName = "CMbnWinRtHelper::StartMobileBroadbandAccountWatcher";
  const CFuncTrace trace(kName);
  try {
    // Asked twice: the watcher may finish its enumeration between.
    if (NotNull(m_watcher)->Status() == platform::WatcherStatus::kStarted ||
        m_watcher->Status() == platform::WatcherStatus::kEnumerationCompleted) {
      LogInfo(kName, "Watcher is already started.");
      return;
    }
    m_watcher->Start();
    LogInfo(kName, "Watcher is started successfully.");
  } catch (const std::exception& error) {
    LogInfo(kName, "exception : %s", error.what());
  }
}

void CMbnWinRtHelper::AccountAddedHandler() {
  const CFuncTrace trace("CMbnWinRtHelper::AccountAddedHandler");
  if (m_onAccountAdded) m_onAccountAdded();
}

void CMbnWinRtHelper::AccountRemovedHandler() {
  const CFuncTrace trace("CMbnWinRtHelper::AccountRemovedHandler");
}

void CMbnWinRtHelper::AccountEnumHandler() {
  const CFuncTrace trace("CMbnWinRtHelper::AccountEnumHandler");
}

void CMbnWinRtHelper::MakeAfreshForSimulation() {
  m_watcher.reset();
  m_onAccountAdded = nullptr;
  m_bInitialised = false;
}

}  // namespace nuvelta
