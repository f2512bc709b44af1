#include "wine/driver/support_run.h"

#include "wine/driver/program_run.h"
#include "wine/driver/win32.h"

#include <userenv.h>

#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include "wine/story/places.h"

namespace nuvelta::wine {

namespace fs = std::filesystem;

namespace {

constexpr DWORD kSupportPatienceMs = 300000;

// A service's, which has another "programdata" than this program under Wine.
class ServiceVariables {
 public:
  ServiceVariables() {
    if (CreateEnvironmentBlock(&m_block, nullptr, FALSE) == FALSE) {
      throw std::runtime_error("the environment of services cannot be had: error " +
                               std::to_string(GetLastError()));
    }
  }
  ~ServiceVariables() { DestroyEnvironmentBlock(m_block); }
  ServiceVariables(const ServiceVariables&) = delete;
  ServiceVariables& operator=(const ServiceVariables&) = delete;

  void* Block() const { return m_block; }

 private:
  void* m_block = nullptr;
};

// As the C runtime takes a command line apart: backslashes before a quote count twice.
void AppendQuoted(std::wstring& command, std::wstring_view argument) {
  command += L" \"";
  size_t backslashes = 0;
  for (const wchar_t character : argument) {
    if (character == L'"') command.append(backslashes + 1, L'\\');
    backslashes = character == L'\\' ? backslashes + 1 : 0;
    command += character;
  }
  command.append(backslashes, L'\\');
  command += L'"';
}

Handle OpenOutput(const fs::path& file) {
  SECURITY_ATTRIBUTES inherited{
      .nLength = sizeof inherited, .lpSecurityDescriptor = nullptr, .bInheritHandle = TRUE};
  Handle handle(CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, nullptr));
  if (handle.get() == INVALID_HANDLE_VALUE) {
    throw std::runtime_error(file.string() + " cannot be written: error " +
                             std::to_string(GetLastError()));
  }
  return handle;
}

}  // namespace

DWORD RunSupport(const fs::path& folder) {
  const ServiceVariables variables;
  const Handle output = OpenOutput(folder / kSupportOutput);
  const Handle errors = OpenOutput(folder / kSupportErrors);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = output.get();
  startup.hStdError = errors.get();
  std::wstring command = L"\"" + (folder / kSupportFile).wstring() + L"\"";
  std::ifstream arguments(folder / kSupportArguments, std::ios::binary);
  for (std::string argument; std::getline(arguments, argument, '\0');) {
    AppendQuoted(command, Wide(argument));
  }
  return RunToItsEnd(command, variables.Block(), startup, kSupportPatienceMs);
}

}  // namespace nuvelta::wine
