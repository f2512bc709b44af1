// What the service control manager does with a control, by what the service has last
// reported: one rule for every stage that a story is played on.
// Facts: the ControlServiceEx (its table of states), SERVICE_STATUS and HandlerEx
// reference pages, and section 3.1.4.2 of [MS-SCMR], which names the valid controls.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "notebook/model/scenario.h"
#include "platform/service_control.h"

namespace nuvelta::virtual_notebook {

inline constexpr uint32_t kErrorServiceRequestTimeout = 1053;    // ERROR_SERVICE_REQUEST_TIMEOUT
inline constexpr uint32_t kErrorInvalidServiceControl = 1052;    // ERROR_INVALID_SERVICE_CONTROL
inline constexpr uint32_t kErrorServiceCannotAcceptCtrl = 1061;  // ERROR_SERVICE_CANNOT_ACCEPT_CTRL
inline constexpr uint32_t kErrorServiceNotActive = 1062;         // ERROR_SERVICE_NOT_ACTIVE

// The error of a notification that the system keeps to itself: nobody is told.
inline constexpr uint32_t kNotDelivered = 0;

// What the manager knows of the service.
struct ManagedService {
  // As last reported. The state of a process that has reported nothing is
  // SERVICE_START_PENDING, and it accepts nothing; 0: there is no process.
  platform::ServiceStatus status;
  // The stop control has been sent, behind which the manager sends no other.
  bool stop_sent = false;
  bool has_handler = false;
};

// Why a control does not reach the handler: the error that its sender is answered, or
// kNotDelivered where only the system itself sends such a control. Empty when it does.
// Device events and power settings go by registration, and are asked about elsewhere.
std::optional<uint32_t> RefusalOf(uint32_t control, const ManagedService& service);

// A control that did not reach the handler.
struct RefusedControl {
  Duration at{};  // since the story's start
  uint32_t control = 0;
  uint32_t event_type = 0;
  uint32_t error = 0;  // as RefusalOf answers
};

// As in "10.000 s: control 2, error 1052 (the service does not accept it)".
std::string Describe(const RefusedControl& refused);

// A control that a story sends.
struct SentControl {
  uint32_t control = 0;
  uint32_t event_type = 0;
  bool regardless = false;  // of the manager's rule
};
// Why it does not reach the handler. Not even regardless of the rule can it where there is
// none.
std::optional<uint32_t> RefusalOf(const SentControl& sent, const ManagedService& service);

}  // namespace nuvelta::virtual_notebook
