#include <array>

#include "auth/auth_task.h"
#include "auth/platform_table.h"
#include "auth/systeminfo.h"
#include "common/func_trace.h"
#include "common/logger.h"
#include "modem/device_helper.h"

namespace nuvelta {

namespace {

constexpr const char* kVerifyPlatform = "CTaskAuthModule::VerifyPlatform";
constexpr size_t kMinProjectLength = 3;
constexpr size_t kHwidSize = 128;

bool IsCS24Project(const std::string& project) {
  const CFuncTrace trace("IsCS24Project");
  return IsCs24ProjectName(project);
}

std::string ReadProject() {
  const Systeminfo info;
  std::string project = info.project_name_;
  LogInfo(kVerifyPlatform, "SMBIOS system project_name = %s", project.c_str());
  if (project.size() < kMinProjectLength) {
    project = info.family_;
    // The comma is the full-width one of code page 936.
    LogInfo(kVerifyPlatform,
            "SMBIOS system project_name = %s "
            "\xA3\xAC"
            " replace by family",
            project.c_str());
  }
  return project;
}

}  // namespace

// [fixed] no trace scope, unlike its siblings.
bool CTaskAuthModule::IsSupportPlatform(const std::string& project) {
  constexpr const char* kPartName = "CTaskAuthModule::IsSupportPlatform";
  // [fixed] both sizes, whatever this table's are.
  LogInfo(kPartName,
          "platform_modem_map_size = %d"
          " ;sizeof(platform_modem_map) = 1760 ; sizeof(platform_modem_map[0] = 32 ; ",
          static_cast<int>(kPlatformCount));
  return IsListedPlatform(project);
}

bool CTaskAuthModule::IsSupportModem(const std::string& project, const char* hwid) {
  constexpr const char* kPartName = "CTaskAuthModule::IsSupportModem";
  LogInfo(kPartName, "SMBIOS system version = %s, Device modem_id = %s", project.c_str(), hwid);
  const CFuncTrace trace(kPartName);
  return IsAllowedModem(project, hwid);
}

bool CTaskAuthModule::VerifyPlatform() {
  const CFuncTrace trace(kVerifyPlatform);
  std::string project = ReadProject();
  if (!IsCS24Project(project)) {
    LogInfo(kVerifyPlatform, "CS25 project");
    // [fixed] a second reading of the firmware, with all its lines.
    project = Cs25PlatformKey(project, Systeminfo().baseboard_product_);
  }
  if (!IsSupportPlatform(project)) {
    // [fixed] without the closing line.
    LogInfo(kVerifyPlatform, "not in platform list. VerifyPlatform return = true ");
    return true;
  }
  std::array<char, kHwidSize> szAuthHwid{};
  const bool found = CDeviceHelper::GetAuthDeviceHwid(szAuthHwid);
  LogInfo(kVerifyPlatform, "szAuthHwid = %s", szAuthHwid.data());
  bool allowed = false;
  if (found) {
    allowed = IsSupportModem(project, szAuthHwid.data());
  } else {
    LogInfo(kVerifyPlatform, "Get Nuvelta Device HardwareID Faild");
  }
  LogInfo(kVerifyPlatform,
          allowed ? "VerifyPlatform return = true " : "VerifyPlatform return = false ");
  return allowed;
}

}  // namespace nuvelta
