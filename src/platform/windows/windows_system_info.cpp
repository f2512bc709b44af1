#include <atomic>

#include "platform/system_info.h"
#include "platform/windows/win32.h"
#include "platform/windows/windows_platform.h"

namespace nuvelta::windows {

namespace {

using NtQuerySystemInformationFunction = LONG(NTAPI*)(ULONG information_class, void* information,
                                                      ULONG length, ULONG* returned);

static_assert(sizeof(SYSTEMTIME) == sizeof(platform::SystemTime));

class Win32SystemInformation final : public platform::SystemInformation {
 public:
  bool LookUpNtQuerySystemInformation() override {
    const HMODULE ntdll = LoadLibraryW(L"ntdll.dll");
    if (ntdll == nullptr) return false;
    // Through void*, as the tool chains allow no direct cast between functions.
    auto* const address =
        reinterpret_cast<void*>(GetProcAddress(ntdll, "NtQuerySystemInformation"));
    m_query = reinterpret_cast<NtQuerySystemInformationFunction>(address);
    return address != nullptr;
  }

  uint32_t NtQuerySystemInformation(uint32_t information_class,
                                    std::span<std::byte> buffer) override {
    return static_cast<uint32_t>(m_query.load()(information_class, buffer.data(),
                                                static_cast<ULONG>(buffer.size()), nullptr));
  }

  bool FileTimeToLocalFileTime(platform::FileTime utc, platform::FileTime& local) override {
    const FILETIME from = Split(utc);
    FILETIME to{};
    if (::FileTimeToLocalFileTime(&from, &to) == FALSE) return false;
    local = Join(to);
    return true;
  }

  bool FileTimeToSystemTime(platform::FileTime time, platform::SystemTime& broken_down) override {
    const FILETIME from = Split(time);
    SYSTEMTIME to{};
    if (::FileTimeToSystemTime(&from, &to) == FALSE) return false;
    broken_down = std::bit_cast<platform::SystemTime>(to);
    return true;
  }

  uint32_t GetModuleFileNameW(std::span<char16_t> path) override {
    return ::GetModuleFileNameW(nullptr, WideChars(path.data()), static_cast<DWORD>(path.size()));
  }

  uint32_t GetFileVersionInfoSizeW(const char16_t* path) override {
    DWORD ignored = 0;
    return ::GetFileVersionInfoSizeW(WideChars(path), &ignored);
  }

  bool GetFileVersionInfoW(const char16_t* path, std::span<std::byte> block) override {
    return ::GetFileVersionInfoW(WideChars(path), 0, static_cast<DWORD>(block.size()),
                                 block.data()) != FALSE;
  }

  bool VerQueryValueW(std::span<const std::byte> block, platform::FixedFileInfo& info) override {
    // It would read past the end of a block that no version was read into.
    if (block.size() < sizeof(VS_FIXEDFILEINFO)) return false;
    void* found = nullptr;
    UINT size = 0;
    if (::VerQueryValueW(block.data(), L"\\", &found, &size) == FALSE || found == nullptr ||
        size < sizeof(VS_FIXEDFILEINFO)) {
      return false;
    }
    const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(found);
    info = {.dwFileVersionMS = fixed.dwFileVersionMS, .dwFileVersionLS = fixed.dwFileVersionLS};
    return true;
  }

 private:
  std::atomic<NtQuerySystemInformationFunction> m_query = nullptr;
};

}  // namespace

platform::SystemInformation& WindowsSystemInformation() {
  return Immortal<Win32SystemInformation>();
}

}  // namespace nuvelta::windows
