// The reader of settings and the switches, on a registry whose values change
// between two queries and are of any type and size.
#include <array>

#include "common/common_util.h"
#include "fake_platform.h"
#include "target.h"

namespace nuvelta::fuzz {
namespace {

using Value = FakeRegistry::Value;

// One value; in most inputs an honest number.
Value TakeValue(Input& input, const char* name) {
  const uint8_t kind = input.Byte();
  Value value{.name = name, .data = {}};
  const Bytes data = input.Some(64);
  value.data.assign(data.begin(), data.end());
  value.asked_size = static_cast<uint32_t>(data.size());
  if ((kind & 1U) != 0) value.asked_size = input.Word();
  if ((kind & 2U) != 0) value.asked_type = input.Word();
  if ((kind & 4U) != 0) value.type = input.Word();
  if ((kind & 8U) != 0) value.asked_status = input.Word();
  if ((kind & 16U) != 0) value.status = input.Word();
  return value;
}

// As the description of the port and of the setting have it: -1, or the first
// byte of a number that could be read.
int32_t Expected(const FakeRegistry::Key& key, const Value& value, bool refuse) {
  constexpr uint32_t kLargestBlock = 1U << 20U;
  const bool asked = key.open_status == 0 && value.asked_status == 0 && value.asked_type == 4 &&
                     value.asked_size != 0 && value.asked_size <= kLargestBlock && !refuse;
  const bool read = value.status == 0 && value.type == 4 && !value.data.empty() &&
                    value.data.size() <= value.asked_size;
  return asked && read ? value.data[0] : -1;
}

void Run(Bytes bytes) {
  static FakePlatform fake;
  Input input(bytes);
  const uint8_t mode = input.Byte();
  fake.memory.refuse = (mode & 0x80U) != 0;
  fake.memory.left_over = {1};
  fake.threads.last_error = input.Byte();
  auto& keys = fake.registry.keys;
  keys.clear();
  keys.push_back({.path = "SOFTWARE\\Nuvelta Wireless Inc\\Logs",
                  .values = {TakeValue(input, "IsMAServiceLog")},
                  .open_status = (mode & 1U) != 0 ? 5U : 0U});
  keys.push_back(
      {.path = "SOFTWARE\\Nuvelta Wireless Inc\\MAService",
       .values = {TakeValue(input, "SupportVerifyPlatform"), TakeValue(input, "IsDisableVerify")},
       .open_status = (mode & 2U) != 0 ? 2U : 0U});
  const int32_t log = Expected(keys[0], keys[0].values[0], fake.memory.refuse);
  const int32_t support = Expected(keys[1], keys[1].values[0], fake.memory.refuse);
  const int32_t disable = Expected(keys[1], keys[1].values[1], fake.memory.refuse);

  Require(CommonUtil::IsEnableServiceLog() == (log == -1 || log == 1), "the log's switch");
  Require(CommonUtil::IsDisableVerify() == (support == 0 || disable == 1), "verification's switch");
  Require(support != 0 || keys[1].values[1].queries == 0, "the second value is not read in vain");
  const int32_t read = CommonUtil::ReadDWORDRegValue(
      0, u"SOFTWARE\\Nuvelta Wireless Inc\\MAService", u"IsDisableVerify");
  Require(read >= -1 && read <= 255, "a value is -1 to 255");
  Require(read == disable, "it is the first byte of a number");
  Require(CommonUtil::ReadDWORDRegValue(0, u"SOFTWARE", u"") == -1, "a key that is not there");
  Require(fake.HoldsNothing(), "keys are closed and buffers freed");
}

const Registration g_registration("settings", Run);

}  // namespace
}  // namespace nuvelta::fuzz
