// The one way from the service to the operating system.
#pragma once

namespace nuvelta::platform {

class Clock;
class Devices;
class Environment;
class EventLog;
class Files;
class Firmware;
class Inspection;
class Memory;
class MobileBroadband;
class NetworkAdapters;
class Registry;
class ServiceControl;
class Sessions;
class SystemInformation;
class Text;
class Threads;

// The ports. Copied, it is the same platform, of which single ports can be replaced.
struct Platform {
  Clock* clock = nullptr;
  Devices* devices = nullptr;
  Environment* environment = nullptr;
  EventLog* event_log = nullptr;
  Files* files = nullptr;
  Firmware* firmware = nullptr;
  Inspection* inspection = nullptr;  // null in the service, which asks for none of it
  Memory* memory = nullptr;
  MobileBroadband* mobile_broadband = nullptr;
  NetworkAdapters* network = nullptr;
  Registry* registry = nullptr;
  ServiceControl* service_control = nullptr;
  Sessions* sessions = nullptr;
  SystemInformation* system_information = nullptr;
  Text* text = nullptr;
  Threads* threads = nullptr;
};

// The installed platform. Calling it before Install is a programming error.
const Platform& Os() noexcept;

// Installs the platform that Os() answers from now on; null removes it. Call it
// only while no thread of the service runs.
void Install(const Platform* platform) noexcept;

}  // namespace nuvelta::platform
