#include "wine/driver/program_run.h"

#include <stdexcept>

namespace nuvelta::wine {

DWORD RunToItsEnd(std::wstring command, void* environment, STARTUPINFOW startup, DWORD patience) {
  PROCESS_INFORMATION made{};
  if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, CREATE_UNICODE_ENVIRONMENT,
                     environment, nullptr, &startup, &made) == FALSE) {
    throw std::runtime_error("the program cannot be started: error " +
                             std::to_string(GetLastError()));
  }
  const Handle thread(made.hThread);
  const Handle process(made.hProcess);
  if (WaitForSingleObject(process.get(), patience) != WAIT_OBJECT_0) {
    TerminateProcess(process.get(), 1);
    throw std::runtime_error("the program does not end");
  }
  DWORD code = 0;
  GetExitCodeProcess(process.get(), &code);
  return code;
}

}  // namespace nuvelta::wine
