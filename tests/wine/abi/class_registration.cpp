#include "class_registration.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "platform/windows/winrt/abi.h"

namespace nuvelta::wine {

namespace {

constexpr std::array kClasses{windows::abi::kModemClass, windows::abi::kAccountWatcherClass,
                              windows::abi::kDataWriterClass};

std::wstring KeyOf(const wchar_t* name) {
  return std::wstring(L"Software\\Microsoft\\WindowsRuntime\\ActivatableClassId\\") + name;
}

}  // namespace

ClassRegistration::ClassRegistration() {
  std::array<wchar_t, MAX_PATH> path{};
  const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
  const auto bytes = static_cast<DWORD>((length + 1) * sizeof(wchar_t));
  for (const wchar_t* name : kClasses) {
    EXPECT_EQ(RegSetKeyValueW(HKEY_LOCAL_MACHINE, KeyOf(name).c_str(), L"DllPath", REG_SZ,
                              path.data(), bytes),
              ERROR_SUCCESS);
  }
}

ClassRegistration::~ClassRegistration() { Clear(); }

void ClassRegistration::Clear() {
  for (const wchar_t* name : kClasses) RegDeleteTreeW(HKEY_LOCAL_MACHINE, KeyOf(name).c_str());
}

}  // namespace nuvelta::wine
