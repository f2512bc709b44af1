// Hardware ids: the rules on one text, and both questions about the modem on
// adapters, class keys and devices that the input makes up.
#include "modem/hardware_id.h"

#include <array>

#include "fake_platform.h"
#include "modem/device_helper.h"
#include "notebook/machine/code_page.h"
#include "target.h"

namespace nuvelta::fuzz {
namespace {

constexpr const char* kNetCfg = "NetCfgInstanceId";
constexpr const char* kInstance = "DeviceInstanceID";

void RequireRules(const std::string& id) {
  const std::string_view mbim = CutMbimHwid(id);
  Require(id.starts_with(mbim) && mbim.size() == std::min<size_t>(id.size(), 27), "27 characters");
  Require(IsExpectedMbimHwid(mbim) == (std::string(kExpectedMbimHwids).find(mbim) < 2000),
          "expected is what the list contains");
  const bool pci = id.find("VEN_2F1B") < id.size();
  const bool usb = id.find("VID_3A5E") < id.size();
  const HwidOwner owner = ClassifyHwid(id);
  Require((owner == HwidOwner::kMakerPci) == pci, "a PCI device of the maker");
  Require((owner == HwidOwner::kMakerUsb) == (usb && !pci), "a USB device of the maker");
  const std::string_view cut = CutAuthHwid(owner, id);
  const size_t kept = pci ? 33 : usb ? 21 : 0;
  Require(id.starts_with(cut) && cut.size() == std::min(id.size(), kept), "33 or 21 characters");
  const std::string_view text = FirstText(id);
  Require(id.starts_with(text) && text.find('\0') == std::string_view::npos, "the first text");
  Require(text.size() == id.size() || id[text.size()] == '\0', "up to its end");
}

// ------- the adapters and their class key

std::string UpToZero(const std::string& text) { return text.c_str(); }

FakeRegistry::Value TakeText(Input& input, const char* name, const std::string& instead) {
  const uint8_t kind = input.Byte();
  std::string text = (kind & 1U) != 0 ? instead : std::string();
  text += input.Text(300);
  return {.name = name,
          .status = (kind & 0x40U) != 0 ? 2U : 0U,
          .type = 1,
          .data = {text.begin(), text.end()}};
}

void TakeAdapters(Input& input, FakePlatform& fake) {
  fake.network.adapters.clear();
  fake.registry.keys.clear();
  const uint8_t mode = input.Byte();
  fake.memory.refuse = (mode & 0x80U) != 0;
  fake.network.status = (mode & 0x40U) != 0 ? 232U : 0U;
  fake.network.has_class_key = (mode & 0x20U) == 0;
  for (uint32_t count = input.Below(4); count > 0; --count) {
    const uint8_t kind = input.Byte();
    FakeNetwork::Adapter adapter{.name = {}, .description = {}, .if_type = 6};
    if ((kind & 1U) != 0) adapter.if_type = platform::kIfTypeWwanPp;
    if ((kind & 2U) == 0) adapter.name = UpToZero(input.Text(300));
    if ((kind & 4U) == 0) adapter.description = u"\xD800";
    fake.network.adapters.push_back(adapter);
  }
  const std::string name =
      fake.network.adapters.empty() ? "" : fake.network.adapters.back().name.value_or("");
  fake.registry.keys.push_back({.path = FakeNetwork::kClassKey, .values = {}});
  for (uint32_t count = input.Below(4); count > 0; --count) {
    const uint8_t kind = input.Byte();
    FakeRegistry::Key key{.path = std::string(FakeNetwork::kClassKey) + "\\" +
                                  std::to_string(count) +
                                  std::string(kind & 0x80U ? 256U : 0U, 'k'),
                          .values = {},
                          .open_status = (kind & 0x40U) != 0 ? 5U : 0U};
    if ((kind & 1U) == 0) key.values.push_back(TakeText(input, kNetCfg, name));
    if ((kind & 2U) == 0) {
      key.values.push_back(TakeText(input, kInstance, "USB\\VID_3A5E&PID_4A10&MI_00"));
    }
    fake.registry.keys.push_back(std::move(key));
  }
}

std::optional<std::string> TextValue(const FakeRegistry::Key& key, const char* name) {
  for (const FakeRegistry::Value& value : key.values) {
    if (value.name != name) continue;
    if (value.status != 0 || value.data.size() > 256) return std::nullopt;
    return UpToZero({value.data.begin(), value.data.end()});
  }
  return std::nullopt;
}

// The instance id behind the first mobile-broadband adapter, or nothing.
std::string InstanceId(const FakePlatform& fake) {
  const auto& adapters = fake.network.adapters;
  const auto adapter =
      std::ranges::find(adapters, platform::kIfTypeWwanPp, &FakeNetwork::Adapter::if_type);
  if (fake.memory.refuse || fake.network.status != 0 || adapter == adapters.end()) return {};
  if (!fake.network.has_class_key) return {};
  const std::string name = adapter->name.value_or("").substr(0, 255);
  const auto& keys = fake.registry.keys;
  for (size_t i = 1; i < keys.size(); ++i) {
    if (keys[i].path.size() > 255) break;  // the list of subkeys ends at the first error
    if (keys[i].open_status != 0) continue;
    const auto net_cfg = TextValue(keys[i], kNetCfg);
    if (!net_cfg || net_cfg->find(name) == std::string::npos) continue;
    if (const auto id = TextValue(keys[i], kInstance)) return *id;
  }
  return {};
}

void RequirePresence(Input& input, FakePlatform& fake) {
  TakeAdapters(input, fake);
  const std::string id = InstanceId(fake);
  const bool expected =
      !id.empty() && std::string(kExpectedMbimHwids).find(id.substr(0, 27)) != std::string::npos;
  bool found = false;
  const uint32_t answer = CDeviceHelper::IsNuveltaMBIMDevcieExist(found);
  Require(found == expected, "present is what the list contains");
  Require(answer == (found ? 1U : 0U), "the answer and the output agree");
  Require(fake.HoldsNothing(), "keys are closed and the buffer is freed");
}

// ------- the devices

std::string DeviceText(const std::vector<uint8_t>& property) {
  std::u16string wide;
  for (size_t i = 0; i < property.size(); i += 2) {
    const unsigned high = i + 1 < property.size() ? property[i + 1] : 0U;
    const auto unit = static_cast<char16_t>(property[i] | high << 8U);
    if (unit == 0) break;
    wide += unit;
  }
  return virtual_notebook::ToCodePage(wide);
}

void TakeDevices(Input& input, FakePlatform& fake) {
  auto& properties = fake.devices.properties;
  properties.clear();
  const uint8_t mode = input.Byte();
  fake.devices.refuse = (mode & 0x80U) != 0;
  for (uint32_t count = input.Below(5); count > 0; --count) {
    const uint8_t kind = input.Byte();
    const Bytes bytes = input.Some(1100);
    if ((kind & 1U) != 0) {
      properties.emplace_back();
      continue;
    }
    std::vector<uint8_t> property(bytes.begin(), bytes.end());
    if ((kind & 2U) != 0) {  // plain letters are easier to come by
      property.clear();
      for (const uint8_t byte : bytes) property.insert(property.end(), {byte, 0});
    }
    properties.emplace_back(std::move(property));
  }
}

std::string AuthHwid(const FakePlatform& fake) {
  std::string kept;
  if (fake.devices.refuse) return kept;
  for (const auto& property : fake.devices.properties) {
    if (!property || property->size() > 1024) continue;
    const std::string text = DeviceText(*property);
    if (text.find("VEN_2F1B") != std::string::npos) return text.substr(0, 33);
    if (text.find("VID_3A5E") != std::string::npos) kept = text.substr(0, 21);
  }
  return kept;
}

void RequireAuthHwid(Input& input, FakePlatform& fake) {
  TakeDevices(input, fake);
  const std::string expected = AuthHwid(fake);
  std::array<char, 128> hwid{};
  hwid.fill('x');
  const bool found = CDeviceHelper::GetAuthDeviceHwid(hwid);
  Require(found == !expected.empty(), "a device of the maker is found where there is one");
  Require(fake.HoldsNothing(), "the list of devices is destroyed");
  std::array<char, 128> whole{};
  if (!found) whole.fill('x');
  std::ranges::copy(expected, whole.begin());
  Require(hwid == whole, "the buffer holds the id and zeros, or what it held");
}

void Run(Bytes bytes) {
  static FakePlatform fake;
  Input input(bytes);
  RequireRules(input.Text(300));
  RequirePresence(input, fake);
  fake.memory.refuse = false;
  RequireAuthHwid(input, fake);
}

const Registration g_registration("hardware_id", Run);

}  // namespace
}  // namespace nuvelta::fuzz
