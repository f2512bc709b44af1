// The doctor on the notebooks of stories: its whole text, and what it says where something
// is not as it should be.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "story_support.h"
#include "support/doctor.h"

namespace nuvelta::test {
namespace {

using namespace std::chrono_literals;
using support::Diagnosis;
using virtual_notebook::Nanoseconds;

struct Visited {
  Diagnosis diagnosis;
  StoryReport report;

  std::string Text() const { return support::DiagnosisText(diagnosis, false); }
  // The lines that hold `part`, without their indentation.
  std::string Matching(const std::string& part) const {
    std::string lines;
    std::istringstream text(Text());
    for (std::string line; std::getline(text, line);) {
      if (line.find(part) == std::string::npos) continue;
      lines += line.substr(std::min(line.find_first_not_of(' '), line.size())) + "\n";
    }
    return lines;
  }
  std::string Cause() const { return support::InfoOf(diagnosis.run.cause).id; }
};

Visited Visit(const Scenario& scenario, std::optional<Nanoseconds> at = {}, bool query = true) {
  const TemporaryFolder disk;
  Visited visited;
  visited.report = story::Play(
      scenario, {.disk = disk.Path(),
                 .visit = {.body = [&] { visited.diagnosis = support::Diagnose({.query = query}); },
                           .at = at}});
  EXPECT_EQ(visited.report.leaked_handles, 0U);
  return visited;
}

TEST(Doctor, LooksAtAHealthyNotebookBeforeItsModemComes) {
  EXPECT_LINES(Visit(Shipped("healthy_arrival"), 2s).Text(), R"(doctor, 2026-11-16 00:58:48
  ok  service        "Nuvelta Wireless AUTH Service HX2208" is running, process 2600 since 2026-11-16 00:58:46
                     start automatic, account LocalSystem, program "C:\Program Files\Nuvelta Wireless\hx2208_auth_service.exe"
                     recovery restart after 60000 ms, restart after 60000 ms, nothing; failures are forgotten after 86400 s
      log folder     C:\ProgramData\Nuvelta Wireless Inc\MAService\HX2208GW
                     owner NT AUTHORITY\SYSTEM
                     allows NT AUTHORITY\SYSTEM: full control, inherited
                     allows BUILTIN\Administrators: full control, inherited
                     allows BUILTIN\Users: read and execute, inherited
                     newest log of 1: nuvelta_maservice_monitor_HX2208GW_2026-11-16_00.58.46.log, 5650 bytes
  ok  switches       IsMAServiceLog is absent: the log is written
                     SupportVerifyPlatform is absent: switches no check off
                     IsDisableVerify is absent: switches no check off
  NO  adapters         "Example Gigabit Ethernet Controller" (Ethernet), {0F3C9A52-7B1D-4E86-A0C4-5D2E8F716B39}, type 6, down
                       "Example Wi-Fi 6 Adapter" (Wi-Fi), {B7A41E08-63F2-4D9C-8E15-C0937D2F5A64}, type 71, up
                     none is a mobile-broadband adapter (type 243)
      firmware       SMBIOS 3.4, 676 bytes; "Example Computers" "21ML0012US"
                     version "ThinkPad T14 Gen 5", family "ThinkPad T14 Gen 5", board "21ML0012US"
  NO  platform       key "ThinkPad T14 Gen 5", of CS24, by its name alone
                     listed, allows USB\VID_3A5E&PID_4A10
                     no device of the maker is found: NOT approved
  NO  devices        0 of 3 present devices carry the maker's marks
  ok  FCC mode       declared by the firmware
                     found     15 bytes  01 4E 55 56 45 4C 54 41 46 43 43 4D 4F 44 45
                     expected  15 bytes  01 4E 55 56 45 4C 54 41 46 43 43 4D 4F 44 45, letter case and the last byte aside
  NO  modem          Windows offers NO mobile-broadband modem
  NO  query          NOT sent

  => radio off by failure [no_adapter], if an adapter arrived now
     reason      there is no mobile-broadband adapter
     would log   not get adapter,return
     what to do  Look for the modem in the device manager: absent, disabled in the firmware's set-up, in need of a driver, or not fitted.
)");
}

TEST(Doctor, LooksAtAHealthyNotebookAtRest) {
  const Visited visited = Visit(Shipped("healthy_arrival"));
  EXPECT_LINES(visited.Text(), R"(doctor, 2026-11-16 00:58:50
  ok  service        "Nuvelta Wireless AUTH Service HX2208" is running, process 2600 since 2026-11-16 00:58:46
                     start automatic, account LocalSystem, program "C:\Program Files\Nuvelta Wireless\hx2208_auth_service.exe"
                     recovery restart after 60000 ms, restart after 60000 ms, nothing; failures are forgotten after 86400 s
      log folder     C:\ProgramData\Nuvelta Wireless Inc\MAService\HX2208GW
                     owner NT AUTHORITY\SYSTEM
                     allows NT AUTHORITY\SYSTEM: full control, inherited
                     allows BUILTIN\Administrators: full control, inherited
                     allows BUILTIN\Users: read and execute, inherited
                     newest log of 1: nuvelta_maservice_monitor_HX2208GW_2026-11-16_00.58.46.log, 19357 bytes
  ok  switches       IsMAServiceLog is absent: the log is written
                     SupportVerifyPlatform is absent: switches no check off
                     IsDisableVerify is absent: switches no check off
  ok  adapters         "Example Gigabit Ethernet Controller" (Ethernet), {0F3C9A52-7B1D-4E86-A0C4-5D2E8F716B39}, type 6, down
                       "Example Wi-Fi 6 Adapter" (Wi-Fi), {B7A41E08-63F2-4D9C-8E15-C0937D2F5A64}, type 71, up
                     > "HX2208 Mobile Broadband" (Cellular), {5C1E7A90-3D42-4B7E-9C55-0A2B4C6D8E10}, type 243, down
                     class key entry 0002: device USB\VID_3A5E&PID_4A10&MI_00\6&2A1B3C4D&0&0000
                     compared as USB\VID_3A5E&PID_4A10&MI_00: one of the service's modems
      firmware       SMBIOS 3.4, 676 bytes; "Example Computers" "21ML0012US"
                     version "ThinkPad T14 Gen 5", family "ThinkPad T14 Gen 5", board "21ML0012US"
  ok  platform       key "ThinkPad T14 Gen 5", of CS24, by its name alone
                     listed, allows USB\VID_3A5E&PID_4A10
                     the modem is USB\VID_3A5E&PID_4A10: approved
  ok  devices        1 of 4 present devices carry the maker's marks
                     > USB\VID_3A5E&PID_4A10&REV_0318&MI_00: decides, as USB\VID_3A5E&PID_4A10
  ok  FCC mode       declared by the firmware
                     found     15 bytes  01 4E 55 56 45 4C 54 41 46 43 43 4D 4F 44 45
                     expected  15 bytes  01 4E 55 56 45 4C 54 41 46 43 43 4D 4F 44 45, letter case and the last byte aside
  ok  modem          offered by Windows, with the vendor's service
                       {533FBEEB-14FE-4467-9F90-33A223E56C3F}
                     > {11223344-5566-7788-99AA-BBCCDDEEFF11}
  ok  query          00: completed after 20 ms, status 0x0, 4 bytes 01 00 00 00, level 1 (on)

  => radio on [already_on], if an adapter arrived now
     reason      the modem said that the radio is on already
     would log   CFUN = 1, cfun 1,will do nothing
     what to do  Nothing.
)");
  // The service's query and set command, then the doctor's query.
  EXPECT_EQ(Commands(visited.report), "00 01000000 00");
}

TEST(Doctor, NamesWhatStandsAgainstTheRadio) {
  const Visited wrong = Visit(Shipped("wrong_modem"));
  EXPECT_EQ(wrong.Cause(), "modem_not_allowed");
  EXPECT_EQ(wrong.Matching("the modem is"), "the modem is USB\\VID_3A5E&PID_4A11: NOT approved\n");
  // The query tells the radio's level all the same.
  EXPECT_EQ(
      wrong.Matching("  query"),
      "NO  query          00: completed after 20 ms, status 0x0, 4 bytes 04 00 00 00, level 4 "
      "(not on)\n");

  const Visited missing = Visit(Shipped("fcc_missing"));
  EXPECT_EQ(missing.Cause(), "fcc_structure_missing");
  EXPECT_EQ(missing.Matching("FCC mode  "),
            "NO  FCC mode       NOT declared: no structure of type 133\n");
  const Visited too_long = Visit(Shipped("fcc_too_long"));
  EXPECT_EQ(too_long.Cause(), "fcc_content_wrong");
  EXPECT_EQ(too_long.Matching("found  "),
            "found     16 bytes  01 4E 55 56 45 4C 54 41 46 43 43 4D 4F 44 45 58\n");

  const Visited no_service = Visit(Shipped("vendor_service_missing"));
  EXPECT_EQ(no_service.Cause(), "vendor_service_missing");
  EXPECT_EQ(no_service.Matching("offered"),
            "NO  modem          offered by Windows, WITHOUT the vendor's service\n");
  EXPECT_EQ(no_service.Matching("query  "), "NO  query          NOT sent\n");
}

TEST(Doctor, NamesAPciDeviceThatDecides) {
  EXPECT_EQ(Visit(Shipped("pci_device_beside_usb_modem")).Matching("decides"),
            "> PCI\\VEN_2F1B&DEV_0001&SUBSYS_00000000&REV_00: decides, as "
            "PCI\\VEN_2F1B&DEV_0001&SUBSYS_0000\n");
}

TEST(Doctor, ReadsSwitchesAsTheServiceDoes) {
  const Visited off = Visit(Shipped("verification_off_by_256"));
  EXPECT_EQ(off.Matching("REG_"),
            "SupportVerifyPlatform is REG_DWORD 00 01 00 00, read as 0: platform and FCC mode are "
            "NOT checked\n");
  // No structure, and on all the same.
  EXPECT_EQ(off.Cause(), "already_on");
  EXPECT_EQ(off.Matching("FCC mode  "),
            "NO  FCC mode       NOT declared: no structure of type 133\n");
  EXPECT_EQ(Visit(Shipped("registry_values_of_every_type")).Matching("REG_"),
            "SupportVerifyPlatform is REG_BINARY 00 00 00 00, not read by the service: switches no "
            "check off\n"
            "IsDisableVerify is REG_DWORD 01 01 00 00, read as 1: platform and FCC mode are NOT "
            "checked\n");
  EXPECT_EQ(Visit(Shipped("logging_off")).Matching("REG_"),
            "!!  switches       IsMAServiceLog is REG_DWORD 00 00 00 00, read as 0: the log stays "
            "EMPTY\n");
}

TEST(Doctor, LeavesTheModemAloneWhenItIsTold) {
  const Scenario starts_late = Inline(R"({'events': [{'at': 60, 'do': 'start'}]})");
  const Visited left_alone = Visit(starts_late, 30s, false);
  EXPECT_EQ(left_alone.Cause(), "not_asked");
  EXPECT_EQ(Commands(left_alone.report), "");
  EXPECT_EQ(left_alone.Matching("but  "), "but         the service does not run: start it\n");
  EXPECT_EQ(left_alone.Matching("is stopped"),
            "NO  service        \"Nuvelta Wireless AUTH Service HX2208\" is stopped, and has not "
            "been started since Windows was\n");

  const Visited asked = Visit(starts_late, 30s);
  EXPECT_EQ(asked.Cause(), "would_switch_on");
  EXPECT_EQ(Commands(asked.report), "00");
}

// The log has them in the system's code page; the doctor need not.
TEST(Doctor, ShowsNamesInLettersOfTheirOwn) {
  const Visited visited = Visit(Inline(R"({'notebook': {'modem': {
      'description': 'Mobilfunkger\u00E4t', 'friendly_name': '\u643A\u5E2F \uD83D\uDCF6'}}})"));
  EXPECT_EQ(visited.Matching("Mobilfunk"),
            "> \"Mobilfunkger\u00E4t\" (\u643A\u5E2F \U0001F4F6), "
            "{5C1E7A90-3D42-4B7E-9C55-0A2B4C6D8E10}, type 243, down\n");
}

TEST(Doctor, SaysWhatItCouldNotSee) {
  const Visited visited = Visit(Inline(R"({'notebook': {'service_key': 'Another'}, 'faults': [
      {'call': 'SetupDiGetClassDevsW', 'count': 'always', 'error': 5},
      {'call': 'SetupDiOpenClassRegKeyExW', 'count': 'always', 'error': 5},
      {'call': 'RegOpenKeyExW', 'count': 'always', 'error': 5},
      {'call': 'GetSystemFirmwareTable', 'count': 'always', 'error': 1},
      {'call': 'Modem::DeviceServices', 'count': 'always', 'hresult': '0x80070015'}]})"));
  EXPECT_LINES(visited.Matching("not seen"),
               "??  switches       IsMAServiceLog not seen: error 5: the log is written\n"
               "SupportVerifyPlatform not seen: error 5: switches no check off\n"
               "IsDisableVerify not seen: error 5: switches no check off\n"
               "its class key entry is not seen: error 5\n"
               "??  firmware       the table is not seen: error 1\n"
               "??  devices        the list is not seen: error 5\n"
               "??  modem          Modem::DeviceServices: not seen: error 0x80070015\n");
  EXPECT_EQ(visited.Matching("  service  "),
            "NO  service        \"Nuvelta Wireless AUTH Service HX2208\" is NOT installed\n");
}

}  // namespace
}  // namespace nuvelta::test
