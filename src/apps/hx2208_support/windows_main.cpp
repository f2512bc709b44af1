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

constexpr size_t kTextRoom = size_t{1} << 16U;  // more than a text that is printed whole

// UTF-8 and colour on a console, for as long as the program runs.
class Console {
 public:
  Console() : m_code_page(::GetConsoleOutputCP()) {
    // Line ends as they are.
    for (std::FILE* file : {stdout, stderr}) _setmode(_fileno(file), _O_BINARY);
    m_for_answers = ::GetConsoleMode(m_output, &m_mode) != FALSE;
    DWORD mode = 0;
    m_found = m_for_answers || ::GetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), &mode) != FALSE;
    if (!m_found) return;
    ::SetConsoleOutputCP(CP_UTF8);
    // Else the runtime writes a text byte by byte, and a console makes nothing of half a letter.
    for (std::FILE* file : {stdout, stderr}) std::setvbuf(file, nullptr, _IOFBF, kTextRoom);
    m_colour = m_for_answers &&
               ::SetConsoleMode(m_output, m_mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING) != FALSE;
  }
  ~Console() {
    if (!m_found) return;
    for (std::FILE* file : {stdout, stderr}) std::fflush(file);
    if (m_for_answers) ::SetConsoleMode(m_output, m_mode);
    ::SetConsoleOutputCP(m_code_page);
  }
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  bool Colour() const { return m_colour; }
  bool ForAnswers() const { return m_for_answers; }

 private:
  const HANDLE m_output = ::GetStdHandle(STD_OUTPUT_HANDLE);
  const UINT m_code_page;
  DWORD m_mode = 0;
  bool m_found = false;  // for answers or for complaints
  bool m_for_answers = false;
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
  return support::RunProgram(
      argc, pointers.data(),
      {.colour = console.Colour(), .at_once = console.ForAnswers(), .notebook = true});
}
