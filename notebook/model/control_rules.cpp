#include "notebook/model/control_rules.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace nuvelta::virtual_notebook {

namespace {

constexpr uint32_t kErrorInvalidParameter = 87;  // ERROR_INVALID_PARAMETER
constexpr uint32_t kFirstOwnControl = 128;       // of those that services define themselves
constexpr uint32_t kLastOwnControl = 255;

enum class Sender { kProgram, kSystem };

// The controls that have a name, and the SERVICE_ACCEPT_* bit that each needs. No bit
// is enough for a device event, which its registration brings with its data.
struct NamedControl {
  uint32_t control;
  Sender sender;
  uint32_t needs;
};
constexpr uint32_t kNothing = 0;
constexpr uint32_t kNoBit = 0x80000000;
constexpr std::array kNamed{
    NamedControl{platform::kServiceControlStop, Sender::kProgram, platform::kServiceAcceptStop},
    NamedControl{platform::kServiceControlPause, Sender::kProgram, 0x02},
    NamedControl{platform::kServiceControlContinue, Sender::kProgram, 0x02},
    NamedControl{4, Sender::kProgram, kNothing},  // SERVICE_CONTROL_INTERROGATE
    NamedControl{platform::kServiceControlShutdown, Sender::kSystem, 0x04},
    NamedControl{6, Sender::kProgram, 0x08},   // SERVICE_CONTROL_PARAMCHANGE
    NamedControl{7, Sender::kProgram, 0x10},   // SERVICE_CONTROL_NETBINDADD
    NamedControl{8, Sender::kProgram, 0x10},   // SERVICE_CONTROL_NETBINDREMOVE
    NamedControl{9, Sender::kProgram, 0x10},   // SERVICE_CONTROL_NETBINDENABLE
    NamedControl{10, Sender::kProgram, 0x10},  // SERVICE_CONTROL_NETBINDDISABLE
    NamedControl{platform::kServiceControlDeviceEvent, Sender::kSystem, kNoBit},
    NamedControl{12, Sender::kSystem, 0x20},  // SERVICE_CONTROL_HARDWAREPROFILECHANGE
    NamedControl{platform::kServiceControlPowerEvent, Sender::kSystem, 0x40},
    NamedControl{platform::kServiceControlSessionChange, Sender::kSystem,
                 platform::kServiceAcceptSessionChange},
    NamedControl{15, Sender::kSystem, 0x100},  // SERVICE_CONTROL_PRESHUTDOWN
    NamedControl{16, Sender::kSystem, 0x200},  // SERVICE_CONTROL_TIMECHANGE
    NamedControl{32, Sender::kSystem, 0x400},  // SERVICE_CONTROL_TRIGGEREVENT
    NamedControl{64, Sender::kSystem, 0x800},  // SERVICE_CONTROL_USERMODEREBOOT
};

std::optional<NamedControl> Find(uint32_t control) {
  if (control >= kFirstOwnControl && control <= kLastOwnControl) {
    return NamedControl{control, Sender::kProgram, kNothing};
  }
  const auto* const found = std::ranges::find(kNamed, control, &NamedControl::control);
  return found == kNamed.end() ? std::nullopt : std::optional(*found);
}

// The table of states: whether the manager looks at what the service accepts at all.
uint32_t ErrorOfState(uint32_t control, const ManagedService& service) {
  switch (service.status.dwCurrentState) {
    case 0:
    case platform::kServiceStopped:
      return kErrorServiceNotActive;
    case platform::kServiceStopPending:
      return kErrorServiceCannotAcceptCtrl;
    case platform::kServiceStartPending:
      return control == platform::kServiceControlStop ? 0 : kErrorServiceCannotAcceptCtrl;
    default:
      // A second sender waits for the handler of the stop, and then meets its state.
      return service.stop_sent ? kErrorServiceCannotAcceptCtrl : 0;
  }
}

const char* Reason(uint32_t error) {
  switch (error) {
    case kNotDelivered:
      return "not delivered";
    case kErrorInvalidParameter:
      return "error 87, there is no such control";
    case kErrorInvalidServiceControl:
      return "error 1052, the service does not accept it";
    case kErrorServiceRequestTimeout:
      return "error 1053, no handler is registered";
    case kErrorServiceCannotAcceptCtrl:
      return "error 1061, the service is starting or stopping";
    case kErrorServiceNotActive:
      return "error 1062, the service does not run";
    default:
      return "refused";
  }
}

}  // namespace

std::optional<uint32_t> RefusalOf(uint32_t control, const ManagedService& service) {
  const auto named = Find(control);
  if (!named) return kErrorInvalidParameter;
  const bool accepts = (service.status.dwControlsAccepted & named->needs) == named->needs;
  if (named->sender == Sender::kSystem) {
    const bool over = service.stop_sent || service.status.dwCurrentState == 0 ||
                      service.status.dwCurrentState == platform::kServiceStopped ||
                      service.status.dwCurrentState == platform::kServiceStopPending;
    return accepts && !over ? std::nullopt : std::optional(kNotDelivered);
  }
  const uint32_t error = ErrorOfState(control, service);
  if (error != 0) return error;
  return accepts ? std::nullopt : std::optional(kErrorInvalidServiceControl);
}

std::optional<uint32_t> RefusalOf(const SentControl& sent, const ManagedService& service) {
  if (!sent.regardless) {
    if (const auto error = RefusalOf(sent.control, service)) return error;
  }
  if (service.status.dwCurrentState == 0) return kErrorServiceNotActive;
  return service.has_handler ? std::nullopt : std::optional(kErrorServiceRequestTimeout);
}

std::string Describe(const RefusedControl& refused) {
  std::array<char, 64> begin{};
  std::snprintf(begin.data(), begin.size(), "%.3f s: control %u, ",
                std::chrono::duration<double>(refused.at).count(), refused.control);
  return begin.data() + std::string(Reason(refused.error));
}

}  // namespace nuvelta::virtual_notebook
