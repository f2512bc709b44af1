#include "platform/windows/windows_inspection.h"

#include <array>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/windows/win32.h"

#include <aclapi.h>
#include <winsvc.h>

namespace nuvelta::windows {

namespace {

// What the manager's functions want at most.
constexpr DWORD kLargestAnswer = 8192;

struct CloseService {
  void operator()(SC_HANDLE handle) const { ::CloseServiceHandle(handle); }
};
using ServiceHandle = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, CloseService>;

// Asks about the service with no more rights than asking needs, which every user has by
// default: SERVICE_QUERY_CONFIG and SERVICE_QUERY_STATUS.
template <class Query>
uint32_t AskManager(std::u16string_view service, DWORD access, Query query) {
  const ServiceHandle manager(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
  if (manager == nullptr) return ::GetLastError();
  const ServiceHandle handle(::OpenServiceW(manager.get(), Terminated(service).c_str(), access));
  if (handle == nullptr) return ::GetLastError();
  alignas(8) std::array<BYTE, kLargestAnswer> answer{};
  DWORD needed = 0;
  if (query(handle.get(), answer, needed) == FALSE) return ::GetLastError();
  return ERROR_SUCCESS;
}

std::u16string FromWide(const wchar_t* text) {
  return text == nullptr ? std::u16string() : std::u16string(Utf16Chars(text));
}

struct FreeLocal {
  void operator()(void* block) const { ::LocalFree(block); }
};

// "S-1-5-18".
std::u16string SidText(PSID sid) {
  const auto& value = *static_cast<const SID*>(sid);
  uint64_t authority = 0;
  for (const BYTE byte : value.IdentifierAuthority.Value) authority = authority << 8U | byte;
  std::string text = "S-" + std::to_string(value.Revision) + "-" + std::to_string(authority);
  for (BYTE index = 0; index < *::GetSidSubAuthorityCount(sid); ++index) {
    text += "-" + std::to_string(*::GetSidSubAuthority(sid, index));
  }
  return {text.begin(), text.end()};
}

std::u16string AccountName(PSID sid) {
  if (sid == nullptr || ::IsValidSid(sid) == FALSE) return u"nobody";
  std::array<wchar_t, 256> name{};
  std::array<wchar_t, 256> domain{};
  auto name_size = static_cast<DWORD>(name.size());
  auto domain_size = static_cast<DWORD>(domain.size());
  SID_NAME_USE use{};
  if (::LookupAccountSidW(nullptr, sid, name.data(), &name_size, domain.data(), &domain_size,
                          &use) == FALSE) {
    return SidText(sid);
  }
  std::u16string account = FromWide(domain.data());
  if (!account.empty()) account += u'\\';
  return account + FromWide(name.data());
}

void AddEntries(PACL list, std::vector<platform::AccessEntry>& entries) {
  for (DWORD index = 0; index < list->AceCount; ++index) {
    void* entry = nullptr;
    if (::GetAce(list, index, &entry) == FALSE) return;
    const auto& header = *static_cast<const ACE_HEADER*>(entry);
    const bool allows = header.AceType == ACCESS_ALLOWED_ACE_TYPE;
    if (!allows && header.AceType != ACCESS_DENIED_ACE_TYPE) continue;
    // Both kinds have the same layout.
    auto& access = *static_cast<ACCESS_ALLOWED_ACE*>(entry);
    entries.push_back({.allows = allows,
                       .inherited = (header.AceFlags & INHERITED_ACE) != 0,
                       .inherit_only = (header.AceFlags & INHERIT_ONLY_ACE) != 0,
                       .mask = access.Mask,
                       .account = AccountName(&access.SidStart)});
  }
}

class Win32Inspection final : public platform::Inspection {
 public:
  uint32_t QueryServiceStatusEx(std::u16string_view service,
                                platform::ServiceProcess& process) override {
    return AskManager(
        service, SERVICE_QUERY_STATUS, [&](SC_HANDLE handle, auto& answer, DWORD& needed) {
          const BOOL success = ::QueryServiceStatusEx(handle, SC_STATUS_PROCESS_INFO, answer.data(),
                                                      kLargestAnswer, &needed);
          const auto& status = *reinterpret_cast<const SERVICE_STATUS_PROCESS*>(answer.data());
          process = {.dwCurrentState = status.dwCurrentState,
                     .dwWin32ExitCode = status.dwWin32ExitCode,
                     .dwServiceSpecificExitCode = status.dwServiceSpecificExitCode,
                     .dwProcessId = status.dwProcessId};
          return success;
        });
  }

  uint32_t QueryServiceConfigW(std::u16string_view service,
                               platform::ServiceConfiguration& configuration) override {
    return AskManager(
        service, SERVICE_QUERY_CONFIG, [&](SC_HANDLE handle, auto& answer, DWORD& needed) {
          auto& config = *reinterpret_cast<QUERY_SERVICE_CONFIGW*>(answer.data());
          const BOOL success = ::QueryServiceConfigW(handle, &config, kLargestAnswer, &needed);
          if (success == FALSE) return success;
          configuration = {.dwStartType = config.dwStartType,
                           .lpBinaryPathName = FromWide(config.lpBinaryPathName),
                           .lpServiceStartName = FromWide(config.lpServiceStartName)};
          return success;
        });
  }

  uint32_t QueryServiceConfig2W(std::u16string_view service,
                                platform::ServiceFailureActions& actions) override {
    return AskManager(
        service, SERVICE_QUERY_CONFIG, [&](SC_HANDLE handle, auto& answer, DWORD& needed) {
          const BOOL success = ::QueryServiceConfig2W(handle, SERVICE_CONFIG_FAILURE_ACTIONS,
                                                      answer.data(), kLargestAnswer, &needed);
          if (success == FALSE) return success;
          const auto& found = *reinterpret_cast<const SERVICE_FAILURE_ACTIONSW*>(answer.data());
          actions.dwResetPeriod = found.dwResetPeriod;
          for (DWORD index = 0; found.lpsaActions != nullptr && index < found.cActions; ++index) {
            actions.actions.push_back({.Type = static_cast<uint32_t>(found.lpsaActions[index].Type),
                                       .Delay = found.lpsaActions[index].Delay});
          }
          return success;
        });
  }

  // Of a process of the system an ordinary user learns nothing.
  uint32_t GetProcessTimes(uint32_t process, platform::FileTime& creation) override {
    const HANDLE handle = ::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, process);
    if (handle == nullptr) return ::GetLastError();
    FILETIME begin{};
    FILETIME end{};
    FILETIME kernel{};
    FILETIME user{};
    const bool success = ::GetProcessTimes(handle, &begin, &end, &kernel, &user) != FALSE;
    const uint32_t error = success ? uint32_t{ERROR_SUCCESS} : ::GetLastError();
    ::CloseHandle(handle);
    if (success) creation = Join(begin);
    return error;
  }

  // Needs READ_CONTROL.
  uint32_t GetNamedSecurityInfoA(const std::string& path,
                                 platform::FolderSecurity& security) override {
    PSID owner = nullptr;
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    const DWORD error = ::GetNamedSecurityInfoA(
        path.c_str(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION,
        &owner, nullptr, &list, nullptr, &descriptor);
    if (error != ERROR_SUCCESS) return error;
    const std::unique_ptr<void, FreeLocal> free(descriptor);
    security = {.owner = AccountName(owner), .has_list = list != nullptr, .entries = {}};
    if (list != nullptr) AddEntries(list, security.entries);
    return ERROR_SUCCESS;
  }

  // Asks for attributes alone, which the one who writes it need not share.
  uint32_t GetFileSizeEx(const std::string& path, uint64_t& size) override {
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE file = ::CreateFileA(path.c_str(), FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return ::GetLastError();
    LARGE_INTEGER bytes{};
    const uint32_t error =
        ::GetFileSizeEx(file, &bytes) != FALSE ? uint32_t{ERROR_SUCCESS} : ::GetLastError();
    ::CloseHandle(file);
    size = static_cast<uint64_t>(bytes.QuadPart);
    return error;
  }
};

}  // namespace

platform::Inspection& WindowsInspection() { return Immortal<Win32Inspection>(); }

}  // namespace nuvelta::windows
