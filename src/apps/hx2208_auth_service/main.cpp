// The service for Windows: the service's logic wired to Win32.
#include "platform/windows/crash_dump_writer.h"
#include "platform/windows/process_hardening.h"
#include "platform/windows/windows_platform.h"
#include "service/service_main.h"

int wmain(int /*argc*/, wchar_t** /*argv*/, wchar_t** /*envp*/) {
  // First of all, so that what follows cannot end without a dump either.
  nuvelta::windows::InstallCrashDumpWriter();
  nuvelta::windows::HardenProcess();
  nuvelta::windows::InstallWindowsPlatform();
  return nuvelta::ServiceProcessMain();
}
