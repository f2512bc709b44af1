// Makes folders for the system and administrators alone to write, each below the one
// before: hx2208_log_folder ROOT NAME...
//
// The installer runs it before the service can start. Its tables say the same of the
// folders that they make, but users may make folders below %ProgramData%, too: who owns
// one may change its access rights at any time, or put a link in its place. What is there
// and not the system's is therefore set aside, as it is, under another name.
//
// Exit code: 0, or the system's error.
#include <windows.h>

#include <aclapi.h>
#include <sddl.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace {

// Also in packaging/msi/MsiLockPermissionsEx.idt.
constexpr const wchar_t* kAccess = L"O:BAG:SYD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;FRFX;;;BU)";
// Somebody may put another in the place of what was set aside.
constexpr int kAttempts = 10;

// Without the run-time's formatting, which would be most of the program.
class Path {
 public:
  // Answers whether it was short enough.
  bool Append(std::wstring_view text) {
    if (text.size() >= m_text.size() - m_length) return false;
    for (const wchar_t character : text) m_text[m_length++] = character;
    return true;
  }
  bool AppendHex(uint64_t number) {
    constexpr std::wstring_view kDigits = L"0123456789ABCDEF";
    for (int shift = 60; shift >= 0; shift -= 4) {
      if (!Append({&kDigits[(number >> shift) & 0xF], 1})) return false;
    }
    return true;
  }
  const wchar_t* Get() const { return m_text.data(); }

 private:
  std::array<wchar_t, 1024> m_text{};
  size_t m_length = 0;
};

class Folder {
 public:
  // Not what a link leads to.
  explicit Folder(const wchar_t* path)
      : m_handle(CreateFileW(path, READ_CONTROL | WRITE_DAC | WRITE_OWNER | FILE_READ_ATTRIBUTES,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                             OPEN_EXISTING,
                             FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr)) {}
  ~Folder() {
    if (m_handle != INVALID_HANDLE_VALUE) CloseHandle(m_handle);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  // Whether it is a folder, no link, and the system's or the administrators'.
  bool IsOurs() const {
    BY_HANDLE_FILE_INFORMATION about{};
    if (m_handle == INVALID_HANDLE_VALUE || GetFileInformationByHandle(m_handle, &about) == FALSE ||
        (about.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 ||
        (about.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
      return false;
    }
    PSID owner = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (GetSecurityInfo(m_handle, SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION, &owner, nullptr,
                        nullptr, nullptr, &descriptor) != ERROR_SUCCESS) {
      return false;
    }
    const bool ours = IsWellKnownSid(owner, WinLocalSystemSid) != FALSE ||
                      IsWellKnownSid(owner, WinBuiltinAdministratorsSid) != FALSE ||
                      IsOwnAccount(owner);
    LocalFree(descriptor);
    return ours;
  }

  DWORD Secure(PSECURITY_DESCRIPTOR access) const {
    PSID owner = nullptr;
    PACL entries = nullptr;
    BOOL given = FALSE;
    BOOL defaulted = FALSE;
    if (GetSecurityDescriptorOwner(access, &owner, &defaulted) == FALSE ||
        GetSecurityDescriptorDacl(access, &given, &entries, &defaulted) == FALSE) {
      return GetLastError();
    }
    return SetSecurityInfo(m_handle, SE_FILE_OBJECT,
                           OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION |
                               PROTECTED_DACL_SECURITY_INFORMATION,
                           owner, nullptr, entries, nullptr);
  }

 private:
  // This program's: LocalSystem, but for an administrator who runs it himself.
  static bool IsOwnAccount(PSID owner) {
    HANDLE token = nullptr;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token) == FALSE) return false;
    alignas(TOKEN_USER) std::array<BYTE, 256> user{};
    DWORD size = 0;
    const bool own = GetTokenInformation(token, TokenUser, user.data(),
                                         static_cast<DWORD>(user.size()), &size) != FALSE &&
                     EqualSid(owner, reinterpret_cast<TOKEN_USER*>(user.data())->User.Sid) != FALSE;
    CloseHandle(token);
    return own;
  }

  HANDLE m_handle;
};

// A link is renamed itself. The name cannot be foreseen, and so not be taken.
DWORD SetAside(const Path& path) {
  FILETIME now{};
  GetSystemTimeAsFileTime(&now);
  Path aside = path;
  if (!aside.Append(L".set-aside-") ||
      !aside.AppendHex(uint64_t{now.dwHighDateTime} << 32U | now.dwLowDateTime)) {
    return ERROR_FILENAME_EXCED_RANGE;
  }
  return MoveFileExW(path.Get(), aside.Get(), 0) != FALSE ? ERROR_SUCCESS : GetLastError();
}

DWORD MakeFolder(const Path& path, PSECURITY_DESCRIPTOR access) {
  SECURITY_ATTRIBUTES attributes{sizeof attributes, access, FALSE};
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    if (CreateDirectoryW(path.Get(), &attributes) != FALSE) return ERROR_SUCCESS;
    if (GetLastError() != ERROR_ALREADY_EXISTS) return GetLastError();
    {
      const Folder folder(path.Get());
      if (folder.IsOurs()) return folder.Secure(access);
    }
    const DWORD error = SetAside(path);
    if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) return error;
  }
  return ERROR_ALREADY_EXISTS;
}

DWORD MakeFolders(int count, wchar_t** names) {
  PSECURITY_DESCRIPTOR access = nullptr;
  if (ConvertStringSecurityDescriptorToSecurityDescriptorW(kAccess, SDDL_REVISION_1, &access,
                                                           nullptr) == FALSE) {
    return GetLastError();
  }
  Path path;
  if (!path.Append(names[0])) return ERROR_FILENAME_EXCED_RANGE;
  for (int i = 1; i < count; ++i) {
    if (!path.Append(L"\\") || !path.Append(names[i])) return ERROR_FILENAME_EXCED_RANGE;
    const DWORD error = MakeFolder(path, access);
    if (error != ERROR_SUCCESS) return error;
  }
  return ERROR_SUCCESS;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc < 3) return ERROR_INVALID_PARAMETER;
  return static_cast<int>(MakeFolders(argc - 1, argv + 1));
}
