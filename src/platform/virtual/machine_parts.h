// The parts of the virtual machine, in the order in which they are built.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "platform/virtual/code_page.h"
#include "platform/virtual/context.h"
#include "platform/virtual/modem_model.h"
#include "platform/virtual/smbios_builder.h"
#include "platform/virtual/virtual_devices.h"
#include "platform/virtual/virtual_event_log.h"
#include "platform/virtual/virtual_files.h"
#include "platform/virtual/virtual_machine.h"
#include "platform/virtual/virtual_memory.h"
#include "platform/virtual/virtual_mobile_broadband.h"
#include "platform/virtual/virtual_network.h"
#include "platform/virtual/virtual_registry.h"
#include "platform/virtual/virtual_service_control.h"
#include "platform/virtual/virtual_system.h"
#include "platform/virtual/virtual_threads.h"

namespace nuvelta::virtual_notebook {

// Ready once the service's process has gone.
struct ProcessEnded final : Waitable {
  bool ended = true;
  bool Ready(uint32_t /*id*/) const override { return ended; }
  std::string Describe() const override { return "the end of the service's process"; }
};

struct ProcessBegun final : Waitable {
  bool begun = false;
  bool Ready(uint32_t /*id*/) const override { return begun; }
  std::string Describe() const override { return "the begin of the service's process"; }
};

struct VirtualMachine::Parts {
  const Nanoseconds start;
  Scheduler scheduler;
  FaultPlan faults;
  DelayPlan delays;
  Context context;
  ModemModel modem;
  VirtualClock clock;
  VirtualDevices devices;
  VirtualEnvironment environment;
  VirtualEventLog event_log;
  VirtualFiles files;
  VirtualFirmware firmware;
  VirtualMemory memory;
  VirtualMobileBroadband mobile_broadband;
  VirtualRegistry registry;
  VirtualNetwork network;
  VirtualServiceControl service_control;
  VirtualSessions sessions;
  VirtualSystemInformation system_information;
  VirtualText text;
  VirtualThreads threads;
  platform::Platform platform;

  std::atomic<uint32_t> current = 0;  // the running process, 0 when there is none
  uint32_t next_process = 0x0A28;
  ProcessBegun begun;
  ProcessEnded ended;
  std::string log_folder;  // of the service, a path of the notebook
  std::string crash;
  std::vector<ProcessEnd> processes;
  std::vector<std::string> launches;
  std::vector<std::string> notes;
  bool over = false;  // the story; nothing starts any more
  bool cut_short = false;
  std::string stuck;  // who waited for what when the service did not end
  size_t leaked_handles = 0;

  Parts(const Scenario& scenario, Nanoseconds start_time, const Options& options,
        std::function<void(std::string)> launch);

  // Seconds since 1970 of a moment of the story.
  int64_t SecondsAt(Nanoseconds since_start) const;
  // What the operating system takes back from a process that has gone.
  void EndProcess();
};

}  // namespace nuvelta::virtual_notebook
