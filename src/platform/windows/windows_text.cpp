#include "platform/text.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_platform.h"

namespace nuvelta::windows {

namespace {

class Win32Text final : public platform::Text {
 public:
  int WideCharToMultiByte(std::u16string_view wide, std::span<char> out) override {
    return ::WideCharToMultiByte(CP_ACP, 0, WideChars(wide.data()), static_cast<int>(wide.size()),
                                 out.data(), static_cast<int>(out.size()), nullptr, nullptr);
  }

  int MultiByteToWideChar(std::string_view narrow, std::span<char16_t> out) override {
    return ::MultiByteToWideChar(CP_ACP, 0, narrow.data(), static_cast<int>(narrow.size()),
                                 WideChars(out.data()), static_cast<int>(out.size()));
  }
};

}  // namespace

platform::Text& WindowsText() { return Immortal<Win32Text>(); }

}  // namespace nuvelta::windows
