// The parts of the virtual machine, in the order in which they are built.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "notebook/machine/code_page.h"
#include "notebook/machine/context.h"
#include "notebook/machine/virtual_devices.h"
#include "notebook/machine/virtual_event_log.h"
#include "notebook/machine/virtual_files.h"
#include "notebook/machine/virtual_inspection.h"
#include "notebook/machine/virtual_machine.h"
#include "notebook/machine/virtual_memory.h"
#include "notebook/machine/virtual_mobile_broadband.h"
#include "notebook/machine/virtual_network.h"
#include "notebook/machine/virtual_registry.h"
#include "notebook/machine/virtual_service_control.h"
#include "notebook/machine/virtual_system.h"
#include "notebook/machine/virtual_threads.h"
#include "notebook/model/modem_model.h"
#include "notebook/model/smbios_builder.h"
#include "platform/platform.h"

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
  VirtualInspection inspection;
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
