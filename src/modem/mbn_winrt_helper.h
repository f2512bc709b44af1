// The way to the modem through the mobile-broadband stack.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace nuvelta {

namespace platform {
class AccountWatcher;
}

// Functionality levels that no modem has.
inline constexpr int32_t kCfunNotReady = -2;
inline constexpr int32_t kCfunNotSupported = -1;

class CMbnWinRtHelper {
 public:
  // The command channel, defined in command_channel.cpp. No state, no exception leaves
  // these three.

  // True when there is a default MBIM modem; false when not or on a failure.
  static bool IsMbimExist();

  // Asks the modem for its functionality level, at most 2 seconds. True only
  // when `cfun` holds the modem's answer; writes kCfunNotReady without a modem and
  // kCfunNotSupported when the modem lacks the vendor service, else leaves it alone.
  // `exceptionRaised` tells whether a platform call threw.
  static bool GetMbimCfun(int32_t& cfun, bool& exceptionRaised);

  // Sets the modem's functionality level to 1, at most 2 seconds. True only when
  // the modem confirmed it. `exceptionRaised` as above.
  static bool SetMbimCfun(bool& exceptionRaised);

  // The account watcher, one for the life of the process. Defined in account_watcher.cpp.

  static CMbnWinRtHelper& GetInstance();

  // The first call creates and starts the watcher, later ones do nothing. From
  // then on `on_account_added` runs on a platform thread for each account, those
  // already present included. The caller sees to it that one thread calls at a
  // time. Throws what its two steps throw.
  void Init(std::function<void()> on_account_added);

  // Forgets watcher and flag, as at the start of a process. Call it only while
  // no thread of the service or of the platform runs.
  void MakeAfreshForSimulation();

 private:
  CMbnWinRtHelper() = default;

  // Creates the watcher and registers the handlers. Throws on any failure; the
  // registrations after it are not made.
  void InitMobileBroadbandAccountWatcher();

  // Starts the watcher unless it runs. Logs a std::exception and swallows it;
  // anything else, HresultError included, leaves the function.
  void StartMobileBroadbandAccountWatcher();

  // On threads of the platform. Only an added account starts work.
  void AccountAddedHandler();
  static void AccountRemovedHandler();
  static void AccountEnumHandler();

  bool m_bInitialised = false;
  std::shared_ptr<platform::AccountWatcher> m_watcher;
  std::function<void()> m_onAccountAdded;
};

}  // namespace nuvelta
