// The notebooks of random lives: mostly ordinary, each member odd now and then.
#include <array>

#include "lives/life.h"

namespace nuvelta::explore {

using nlohmann::json;

namespace {

struct PlatformTexts {
  const char* version;
  const char* product;  // of the baseboard
  const char* family;
};

constexpr std::array kPlatforms{
    PlatformTexts{"ThinkPad L13 Gen 5", "21LB0012US", "ThinkPad L13 Gen 5"},
    PlatformTexts{"ThinkPad T14s Gen5", "21LS0012US", "ThinkPad T14s Gen5"},
    PlatformTexts{"ThinkPad T14 Gen 5 AMD", "21MC0012US", "ThinkPad T14 Gen 5 AMD"},
    PlatformTexts{"ThinkPad T16 Gen 4", "21QE0012US", "ThinkPad T16 Gen 4"},
    PlatformTexts{"ThinkPad T16 Gen 4", "21qn0012us", "ThinkPad T16 Gen 4"},
    PlatformTexts{"ThinkPad T16 Gen 4", "21ZZ0012US", "ThinkPad T16 Gen 4"},
    PlatformTexts{"THINKPAD l16 gen 2", "21SA", "ThinkPad L16 Gen 2"},
    PlatformTexts{"thinkpad t14 gen 5", "21ML0012US", "ThinkPad T14 Gen 5"},
    PlatformTexts{"T1", "21ML0012US", "ThinkPad T14 Gen 5"},
    PlatformTexts{"", "21R1", "ThinkPad T14s Gen 6"},
    PlatformTexts{"", "", ""},
    PlatformTexts{"Example Book 3", "EX30", "Example Book"},
};

constexpr std::array kHardwareIds{"USB\\VID_3A5E&PID_4A10&REV_0318&MI_00",
                                  "USB\\VID_3A5E&PID_4A11&REV_0318&MI_00",
                                  "usb\\VID_3A5E&pid_4a10&rev_0318&mi_00",
                                  "USB\\VID_3A5E&PID_0A31&REV_0100",
                                  "USB\\VID_3A5E&PID_4A1",
                                  "USB\\VID_8087&PID_0A2B",
                                  "PCI\\VEN_2F1B&DEV_0001&SUBSYS_00000000&REV_00",
                                  ""};

constexpr std::array kInstanceIds{
    "USB\\VID_3A5E&PID_4A11&MI_00\\6&1234&0&0000", "USB\\VID_3A5E&PID_0A32&MI_00\\6&1234&0&0000",
    "USB\\VID_3A5E&PID_4A10&MI_02\\6&1234&0&0002", "usb\\vid_3a5e&pid_4a10&mi_00\\6&1234&0&0000"};

constexpr std::array<int64_t, 9> kRadios{4, 0, 1, -1, -2, 7, 257, 2147483647, -2147483648};
constexpr std::array kLatencies{0, 1, 100, 1900, 1992, 1999, 2000, 2001, 2100, 7000};

json MakeFcc(Dice& dice) {
  constexpr std::array kWords{"present", "absent", "lower_case", "too_long", "too_short"};
  if (dice.Percent(15)) return {{"hex", "01 4E 55"}};
  return dice.Of(kWords);
}

json MakeFirmware(Dice& dice) {
  if (dice.Percent(3)) return nullptr;
  json firmware = json::object();
  if (dice.Percent(55)) {
    const PlatformTexts& platform = dice.Of(kPlatforms);
    firmware["system_version"] = platform.version;
    firmware["baseboard_product"] = platform.product;
    firmware["system_family"] = platform.family;
  }
  if (dice.Percent(25)) firmware["fcc"] = MakeFcc(dice);
  if (dice.Percent(4)) firmware["fcc_length"] = dice.Of(std::array{4, 6});
  return firmware;
}

json MakeServices(Dice& dice) {
  json services = json::array();
  if (dice.Percent(40)) services.push_back("vendor");
  for (auto left = dice.Between(0, 2); left > 0; --left) services.push_back("sms");
  if (dice.Percent(30)) services.push_back("vendor");
  return services;
}

json MakeAnswer(Dice& dice) {
  constexpr std::array kWords{"healthy", "never", "never", "canceled", "error", "no_data"};
  constexpr std::array kData{
      "04 00 00 00",   "01 00 00 00", "FF FF FF FF", "FE FF FF FF", "00 00 00 00", "04 00", "",
      "01 01 00 00 55"};
  constexpr std::array kHresults{"0x8007001F", "0x80070015", "0x8007000E"};
  json answer = json::object();
  switch (dice.Below(4)) {
    case 0:
      answer["answer"] = dice.Of(kWords);
      break;
    case 1:
      answer["data"] = dice.Of(kData);
      break;
    case 2:
      answer["hresult"] = dice.Of(kHresults);
      break;
    default:
      answer["status"] = dice.Percent(50) ? json(2) : json("0x80000001");
      break;
  }
  if (dice.Percent(50)) answer["times"] = dice.Between(2, 6);
  const bool comes = !answer.contains("answer") || answer["answer"] != "never";
  if (comes && dice.Percent(25)) answer["late_ms"] = dice.Of(kLatencies);
  return answer;
}

json MakeModem(Dice& dice) {
  json modem = json::object();
  if (dice.Percent(12)) modem["present"] = false;
  if (dice.Percent(45)) modem["radio"] = dice.Of(kRadios);
  if (dice.Percent(8)) modem["mbim"] = false;
  if (dice.Percent(25)) modem["hardware_id"] = dice.Of(kHardwareIds);
  if (dice.Percent(10)) modem["instance_id"] = dice.Of(kInstanceIds);
  if (dice.Percent(12)) modem["device_services"] = MakeServices(dice);
  if (dice.Percent(25)) modem["latency_ms"] = dice.Of(kLatencies);
  if (dice.Percent(30)) modem["query"] = MakeAnswers(dice);
  if (dice.Percent(25)) modem["set"] = MakeAnswers(dice);
  return modem;
}

json MakeRegistry(Dice& dice) {
  json registry = json::object();
  if (dice.Percent(12)) registry[kSettingsKey]["IsDisableVerify"] = MakeSwitchValue(dice);
  if (dice.Percent(12)) registry[kSettingsKey]["SupportVerifyPlatform"] = MakeSwitchValue(dice);
  if (dice.Percent(5)) {
    registry["SOFTWARE\\Nuvelta Wireless Inc\\Logs"]["IsMAServiceLog"] = MakeSwitchValue(dice);
  }
  return registry;
}

json MakeDevices(Dice& dice) {
  json devices = json::array();
  for (auto left = dice.Between(0, 3); left > 0; --left) {
    devices.push_back(dice.Percent(20) ? json(nullptr) : json(dice.Of(kHardwareIds)));
  }
  return devices;
}

json MakeEventLog(Dice& dice) {
  json records = json::array();
  for (auto left = dice.Between(0, 2); left > 0; --left) {
    records.push_back({{"at", -dice.Between(0, 3) * 60}});
    if (dice.Percent(30)) records.back()["type"] = "warning";
  }
  return records;
}

}  // namespace

json MakeSwitchValue(Dice& dice) {
  constexpr std::array kNumbers{0, 0, 1, 1, 2, 255, 256, 257};
  if (dice.Percent(10)) return "1";
  if (dice.Percent(10)) return {{"type", "REG_BINARY"}, {"hex", "01 00 00 00"}};
  return dice.Of(kNumbers);
}

json MakeAnswers(Dice& dice) {
  json answers = json::array();
  for (auto left = dice.Between(0, 3); left > 0; --left) answers.push_back(MakeAnswer(dice));
  return answers;
}

json MakeModemChange(Dice& dice) {
  json change = json::object();
  switch (dice.Below(7)) {
    case 0:
      change["radio"] = dice.Of(kRadios);
      break;
    case 1:
      change["mbim"] = dice.Percent(60);
      break;
    case 2:
      change["hardware_id"] = dice.Of(kHardwareIds);
      break;
    case 3:
      change["device_services"] = MakeServices(dice);
      break;
    case 4:
      change["latency_ms"] = dice.Of(kLatencies);
      break;
    case 5:
      change["query"] = MakeAnswers(dice);
      break;
    default:
      change["set"] = MakeAnswers(dice);
      break;
  }
  return change;
}

json MakeNotebook(Dice& dice) {
  json notebook = json::object();
  if (dice.Percent(60)) notebook["firmware"] = MakeFirmware(dice);
  if (dice.Percent(75)) notebook["modem"] = MakeModem(dice);
  if (dice.Percent(30)) notebook["registry"] = MakeRegistry(dice);
  if (dice.Percent(15)) notebook["devices"] = MakeDevices(dice);
  if (dice.Percent(25)) notebook["accounts"] = dice.Between(1, 4);
  if (dice.Percent(20)) notebook["event_log"] = MakeEventLog(dice);
  return notebook;
}

}  // namespace nuvelta::explore
