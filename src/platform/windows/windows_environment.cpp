#include <cstdio>
#include <cstdlib>

#include "platform/environment.h"
#include "platform/windows/crash_dump_writer.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_platform.h"

namespace nuvelta::windows {

namespace {

class Win32Environment final : public platform::Environment {
 public:
  std::string GetVariable(std::string_view name) override {
    const char* const value = std::getenv(std::string(name).c_str());
    return value == nullptr ? std::string() : value;
  }

  void WriteStandardOutput(std::string_view text) override {
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
  }

  void InstallCrashDumpWriter() override { windows::InstallCrashDumpWriter(); }
};

}  // namespace

platform::Environment& WindowsEnvironment() { return Immortal<Win32Environment>(); }

}  // namespace nuvelta::windows
