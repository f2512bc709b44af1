// The one way from the service to the operating system.
#pragma once

namespace nuvelta::platform {

class Clock;
class Devices;
class Environment;
class EventLog;
class Files;
class Firmware;
class Memory;
class MobileBroadband;
class NetworkAdapters;
class Registry;
class ServiceControl;
class Sessions;
class SystemInformation;
class Text;
class Threads;

struct Platform {
  Clock& clock;
  Devices& devices;
  Environment& environment;
  EventLog& event_log;
  Files& files;
  Firmware& firmware;
  Memory& memory;
  MobileBroadband& mobile_broadband;
  NetworkAdapters& network;
  Registry& registry;
  ServiceControl& service_control;
  Sessions& sessions;
  SystemInformation& system_information;
  Text& text;
  Threads& threads;
};

// The installed platform. Calling it before Install is a programming error.
Platform& Os() noexcept;

// Installs the platform that Os() answers from now on; null removes it. Call it
// only while no thread of the service runs.
void Install(Platform* platform) noexcept;

}  // namespace nuvelta::platform
