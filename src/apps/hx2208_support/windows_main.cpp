// The support program for Windows, for the support desk and on the notebook itself.
#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <string>
#include <vector>

#include "apps/hx2208_support/program.h"
#include "platform/platform.h"
#include "platform/windows/process_hardening.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_inspection.h"
#include "platform/windows/windows_platform.h"

namespace {

using namespace nuvelta;

// The whole platform, which the service leaves without its inspection.
void InstallWholePlatform() {
  windows::InstallWindowsPlatform();
  static platform::Platform platform = platform::Os();
  platform.inspection = &windows::WindowsInspection();
  platform::Install(&platform);
}

std::string ToUtf8(const wchar_t* wide) {
  const int size = ::WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr);
  if (size <= 1) return {};
  std::string text(static_cast<size_t>(size), '\0');
  ::WideCharToMultiByte(CP_UTF8, 0, wide, -1, text.data(), size, nullptr, nullptr);
  text.pop_back();
  return text;
}

// UTF-8 and colour on a console, for as long as the program runs.
class Console {
 public:
  Console() : m_code_page(::GetConsoleOutputCP()) {
    // Line ends as they are.
    _setmode(_fileno(stdout), _O_BINARY);
    if (::GetConsoleMode(m_output, &m_mode) == FALSE) return;
    m_changed = true;
    ::SetConsoleOutputCP(CP_UTF8);
    m_colour = ::SetConsoleMode(m_output, m_mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != FALSE;
  }
  ~Console() {
    if (!m_changed) return;
    std::fflush(stdout);
    ::SetConsoleMode(m_output, m_mode);
    ::SetConsoleOutputCP(m_code_page);
  }
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  bool Colour() const { return m_colour; }

 private:
  const HANDLE m_output = ::GetStdHandle(STD_OUTPUT_HANDLE);
  const UINT m_code_page;
  DWORD m_mode = 0;
  bool m_changed = false;
  bool m_colour = false;
};

}  // namespace

int wmain(int argc, wchar_t** argv, wchar_t** /*envp*/) {
  windows::HardenProcess();
  InstallWholePlatform();
  std::vector<std::string> arguments;
  for (int index = 0; index < argc; ++index) arguments.push_back(ToUtf8(argv[index]));
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  const Console console;
  return support::RunProgram(argc, pointers.data(), {.colour = console.Colour(), .notebook = true});
}
