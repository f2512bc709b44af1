#include "notebook/machine/machine_parts.h"

namespace nuvelta::virtual_notebook {

VirtualMachine::Parts::Parts(const Scenario& scenario, Nanoseconds start_time,
                             const Options& options, std::function<void(std::string)> launch)
    : start(start_time),
      scheduler(options.mode, options.seed, start),
      faults(scenario.faults),
      delays(scenario.delays),
      context{.scheduler = scheduler, .faults = faults, .delays = &delays},
      modem(scenario.notebook.modem),
      clock(context),
      devices(context, modem, scenario.notebook.devices),
      environment(context, scenario.notebook.environment),
      event_log(context),
      files(context, options.disk),
      firmware(context, FirmwareTableOf(scenario.notebook)),
      inspection(scenario.notebook, files),
      memory(context),
      mobile_broadband(context, modem, scenario.notebook.accounts),
      registry(context, scenario.notebook.registry),
      network(context, registry, modem, scenario.notebook.adapters),
      service_control(context, scenario.notebook, std::move(launch)),
      sessions(context, scenario.notebook.sessions),
      system_information(context, scenario.notebook, start - scenario.notebook.uptime),
      text(context),
      threads(context),
      platform{.clock = &clock,
               .devices = &devices,
               .environment = &environment,
               .event_log = &event_log,
               .files = &files,
               .firmware = &firmware,
               .inspection = &inspection,
               .memory = &memory,
               .mobile_broadband = &mobile_broadband,
               .network = &network,
               .registry = &registry,
               .service_control = &service_control,
               .sessions = &sessions,
               .system_information = &system_information,
               .text = &text,
               .threads = &threads} {}

int64_t VirtualMachine::Parts::SecondsAt(Nanoseconds since_start) const {
  return std::chrono::floor<std::chrono::seconds>(start + since_start).count();
}

void VirtualMachine::Parts::EndProcess() {
  leaked_handles += registry.OpenHandles() + devices.OpenHandles() + event_log.OpenHandles() +
                    files.OpenHandles();
  service_control.EndProcess();
  mobile_broadband.EndProcess();
  registry.EndProcess();
  devices.EndProcess();
  event_log.EndProcess();
  files.EndProcess();
  threads.EndProcess();
  memory.EndProcess();
}

}  // namespace nuvelta::virtual_notebook
