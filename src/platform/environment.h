// What the process inherits and what ends it.
#pragma once

#include <string>
#include <string_view>

namespace nuvelta::platform {

class Environment {
 public:
  virtual ~Environment() = default;

  // An environment variable in the ANSI code page; empty when absent.
  virtual std::string GetVariable(std::string_view name) = 0;
  virtual void WriteStandardOutput(std::string_view text) = 0;
  // SetUnhandledExceptionFilter with this program's crash-dump writer.
  virtual void InstallCrashDumpWriter() = 0;
};

}  // namespace nuvelta::platform
