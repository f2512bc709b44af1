#include "platform/windows/process_hardening.h"

#include "platform/windows/win32.h"

namespace nuvelta::windows {

namespace {

// NoRemoteImages, NoLowMandatoryLabelImages, PreferSystem32Images.
constexpr DWORD kImageLoadFlags = 0b111;
constexpr DWORD kEnforceRedirectionTrust = 0b1;

void SetPolicy(PROCESS_MITIGATION_POLICY policy, DWORD flags) {
  SetProcessMitigationPolicy(policy, &flags, sizeof flags);
}

}  // namespace

void HardenProcess() {
  SetDefaultDllDirectories(LOAD_LIBRARY_SEARCH_SYSTEM32);
  SetPolicy(ProcessImageLoadPolicy, kImageLoadFlags);
  SetPolicy(ProcessRedirectionTrustPolicy, kEnforceRedirectionTrust);
}

}  // namespace nuvelta::windows
