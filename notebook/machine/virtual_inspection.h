// What a support engineer may ask of the virtual notebook.
#pragma once

#include <string>

#include "notebook/machine/virtual_files.h"
#include "notebook/machine/virtual_service_control.h"
#include "notebook/model/scenario.h"
#include "platform/inspection.h"

namespace nuvelta::virtual_notebook {

// The service is installed as an installer would: it starts by itself as LocalSystem and
// is restarted after failures. The calls are not the service's: none is counted.
class VirtualInspection final : public platform::Inspection {
 public:
  VirtualInspection(const Notebook& notebook, const VirtualFiles& files)
      : m_service_key(notebook.service_key), m_program(notebook.program_path), m_files(files) {}

  uint32_t QueryServiceStatusEx(std::u16string_view service,
                                platform::ServiceProcess& process) override;
  uint32_t QueryServiceConfigW(std::u16string_view service,
                               platform::ServiceConfiguration& configuration) override;
  uint32_t QueryServiceConfig2W(std::u16string_view service,
                                platform::ServiceFailureActions& actions) override;
  uint32_t GetProcessTimes(uint32_t process, platform::FileTime& creation) override;
  uint32_t GetNamedSecurityInfoA(const std::string& path,
                                 platform::FolderSecurity& security) override;
  uint32_t GetFileSizeEx(const std::string& path, uint64_t& size) override;

  // What the service is at from now on, for those who ask.
  void Tell(const RunningService& service) { m_service = service; }

 private:
  bool IsInstalled(std::u16string_view service) const;

  const std::string m_service_key;
  const std::string m_program;
  const VirtualFiles& m_files;
  RunningService m_service;
};

}  // namespace nuvelta::virtual_notebook
