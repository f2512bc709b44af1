#include <array>
#include <cstdio>
#include <exception>
#include <span>
#include <string>

#include "common/func_trace.h"
#include "common/logger.h"
#include "common/text_util.h"
#include "modem/async_wait.h"
#include "modem/mbn_winrt_helper.h"
#include "modem/projected.h"
#include "platform/mobile_broadband.h"
#include "platform/platform.h"
#include "platform/text.h"
#include "platform/vendor_service.h"

namespace nuvelta {

namespace {

constexpr const char* kExistName = "CMbnWinRtHelper::IsMbimExist";
constexpr const char* kGetName = "CMbnWinRtHelper::GetMbimCfun";
constexpr const char* kSetName = "CMbnWinRtHelper::SetMbimCfun";

constexpr uint32_t kCfunCommand = 1;  // for query and set alike
constexpr std::array<uint8_t, 1> kQueryPayload{0};
constexpr std::array<uint8_t, 4> kSetPayload{1, 0, 0, 0};  // level 1, little-endian
constexpr int32_t kSetLevel = 1;
constexpr uint32_t kCommandTimeout = 2000;  // milliseconds
constexpr uint32_t kResponseSize = 4;

const char* StatusName(platform::AsyncStatus status) {
  static constexpr std::array<const char*, 4> kNames{"Started", "Completed", "Canceled", "Error"};
  const auto index = static_cast<size_t>(status);
  return index < kNames.size() ? kNames[index] : "";
}

// To be called in a catch block only.
void LogException(int level, const char* name) {
  try {
    throw;
  } catch (const std::exception& error) {
    CLogger::GetInstance().WriteLog(level, name, "exception : %s", error.what());
  } catch (...) {
    CLogger::GetInstance().WriteLog(level, name, "exception other");
  }
}

std::shared_ptr<platform::Modem> GetModem(const char* name) {
  LogInfo(name, "+Get MobileBroadbandModem");
  std::shared_ptr<platform::Modem> modem = platform::Os().mobile_broadband->GetDefault();
  LogInfo(name, "-Get MobileBroadbandModem");
  if (modem == nullptr) LogError(name, "MBIM Modem is not exist!");
  return modem;
}

using GuidText = std::array<char, 40>;

GuidText ToText(const platform::Guid& id) {
  GuidText text{};
  const auto& tail = id.Data4;
  std::snprintf(text.data(), text.size(), "{%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x}",
                id.Data1, unsigned{id.Data2}, unsigned{id.Data3}, unsigned{tail[0]},
                unsigned{tail[1]}, unsigned{tail[2]}, unsigned{tail[3]}, unsigned{tail[4]},
                unsigned{tail[5]}, unsigned{tail[6]}, unsigned{tail[7]});
  return text;
}

// The platform hands out wide text; one that cannot be converted is no match.
bool IsVendorService(std::string_view id) {
  const std::u16string wide(id.begin(), id.end());
  std::string narrow(wide.size(), ' ');
  const int written = platform::Os().text->WideCharToMultiByte(wide, narrow);
  return written > 0 && EqualIgnoreCase(narrow, platform::kVendorServiceText);
}

// Goes through the whole list even after a match: the log shows every service.
bool HasVendorService(platform::Modem& modem) {
  bool found = false;
  const std::shared_ptr<platform::DeviceServiceList> services = modem.DeviceServices();
  const uint32_t size = NotNull(services)->Size();
  for (uint32_t index = 0; index < size; ++index) {
    const GuidText id = ToText(NotNull(services->GetAt(index))->DeviceServiceId());
    LogInfo(kGetName, "device sevice: %s\n", id.data());
    if (!IsVendorService(id.data())) continue;
    LogInfo(kGetName, "find service : %s ,support MA", platform::kVendorServiceText);
    found = true;
  }
  return found;
}

// The service is released only after its session has been closed.
struct Channel {
  std::shared_ptr<platform::DeviceService> service;
  std::shared_ptr<platform::CommandSession> session;
};

// No session, and a line at `failure_level`, when service or session cannot be had.
Channel OpenChannel(platform::Modem& modem, const char* name, int failure_level) {
  CLogger& logger = CLogger::GetInstance();
  Channel channel;
  LogInfo(name, "+Get GetDeviceService");
  channel.service = modem.GetDeviceService(platform::kVendorService);
  LogInfo(name, "-Get GetDeviceService");
  if (channel.service == nullptr) {
    logger.WriteLog(failure_level, name, "GetDeviceService() failed. qbi_uuid =%s",
                    platform::kVendorServiceText);
    return channel;
  }
  LogInfo(name, "+OpenCommandSession");
  channel.session = channel.service->OpenCommandSession();
  LogInfo(name, "-OpenCommandSession");
  if (channel.session == nullptr) {
    logger.WriteLog(failure_level, name, "OpenCommandSession() failed.");
  }
  return channel;
}

std::shared_ptr<platform::DataBuffer> MakePayload(std::span<const uint8_t> bytes) {
  const std::shared_ptr<platform::DataWriter> writer =
      platform::Os().mobile_broadband->CreateDataWriter();
  NotNull(writer)->WriteBytes(bytes);
  return writer->DetachBuffer();
}

// Waits for the answer; null, and a line at `failure_level`, without one.
std::shared_ptr<platform::CommandResult> AwaitResult(platform::CommandOperation& operation,
                                                     const char* name, int failure_level) {
  const platform::AsyncStatus status = WaitForCompletion(operation, kCommandTimeout);
  if (status == platform::AsyncStatus::kCompleted) return NotNull(operation.GetResults());
  CLogger::GetInstance().WriteLog(failure_level, name, "async_state = %s", StatusName(status));
  return nullptr;
}

// No data at all reads as a short answer.
bool ReadCfun(platform::CommandResult& result, int32_t& cfun) {
  const std::shared_ptr<platform::DataBuffer> data = result.ResponseData();
  if (data == nullptr || data->Length() < kResponseSize) return false;
  const uint8_t* bytes = data->Buffer();
  if (bytes == nullptr) return false;
  uint32_t value = 0;
  for (uint32_t index = kResponseSize; index-- > 0;) value = value << 8U | bytes[index];
  cfun = static_cast<int32_t>(value);
  return true;
}

bool QueryCfun(platform::CommandSession& session, int32_t& cfun) {
  LogInfo(kGetName, "device_service_session:0x%x", static_cast<uint32_t>(session.Handle()));
  const std::shared_ptr<platform::DataBuffer> payload = MakePayload(kQueryPayload);
  LogInfo(kGetName, "+SendQueryCommandAsync");
  const std::shared_ptr<platform::CommandOperation> operation =
      session.SendQueryCommandAsync(kCfunCommand, NotNull(payload));
  LogInfo(kGetName, "-SendQueryCommandAsync");
  bool done = false;
  const std::shared_ptr<platform::CommandResult> result =
      AwaitResult(*NotNull(operation), kGetName, kLogError);
  if (result != nullptr) {
    const uint32_t code = result->StatusCode();
    if (code != 0) {
      LogError(kGetName, "result status code = 0x%x\n", code);
    } else if (ReadCfun(*result, cfun)) {
      LogInfo(kGetName, "query command complete. cfun mode = %d.", cfun);
      done = true;
    }
  }
  // [fixed] also after a time-out, without a cancel.
  session.CloseSession();
  return done;
}

bool SendCfun(platform::CommandSession& session) {
  const std::shared_ptr<platform::DataBuffer> payload = MakePayload(kSetPayload);
  LogInfo(kSetName, "set cfun value: %d.", kSetLevel);
  LogInfo(kSetName, "+SendSetCommandAsync");
  const std::shared_ptr<platform::CommandOperation> operation =
      session.SendSetCommandAsync(kCfunCommand, NotNull(payload));
  LogInfo(kSetName, "-SendSetCommandAsync");
  bool done = false;
  const std::shared_ptr<platform::CommandResult> result =
      AwaitResult(*NotNull(operation), kSetName, kLogInfo);
  if (result != nullptr) {
    const uint32_t code = result->StatusCode();
    done = code == 0;
    if (done) {
      LogInfo(kSetName, "set cfun successful.");
    } else {
      // [fixed] decimal, unlike in the query.
      LogInfo(kSetName, "result status code = %d\n", static_cast<int>(code));
    }
  }
  session.CloseSession();
  return done;
}

}  // namespace

bool CMbnWinRtHelper::IsMbimExist() {
  const CFuncTrace trace(kExistName);
  try {
    return platform::Os().mobile_broadband->GetDefault() != nullptr;
  } catch (...) {
    LogException(kLogError, kExistName);
  }
  return false;
}

bool CMbnWinRtHelper::GetMbimCfun(int32_t& cfun, bool& exceptionRaised) {
  CFuncTrace trace(kGetName);
  exceptionRaised = false;
  try {
    const std::shared_ptr<platform::Modem> modem = GetModem(kGetName);
    if (modem == nullptr) {
      cfun = kCfunNotReady;
      return false;
    }
    if (!HasVendorService(*modem)) {
      LogInfo(kGetName, "module current version not support MA,return");
      cfun = kCfunNotSupported;
      // [fixed] this one return leaves no exit line.
      trace.Dismiss();
      return false;
    }
    const Channel channel = OpenChannel(*modem, kGetName, kLogError);
    return channel.session != nullptr && QueryCfun(*channel.session, cfun);
  } catch (...) {
    exceptionRaised = true;
    LogException(kLogError, kGetName);
  }
  return false;
}

// [fixed] no look at the service list and no session line; its failures, apart from a
// missing modem, at info level.
bool CMbnWinRtHelper::SetMbimCfun(bool& exceptionRaised) {
  const CFuncTrace trace(kSetName);
  exceptionRaised = false;
  try {
    const std::shared_ptr<platform::Modem> modem = GetModem(kSetName);
    if (modem == nullptr) return false;
    const Channel channel = OpenChannel(*modem, kSetName, kLogInfo);
    return channel.session != nullptr && SendCfun(*channel.session);
  } catch (...) {
    exceptionRaised = true;
    LogException(kLogInfo, kSetName);
  }
  return false;
}

}  // namespace nuvelta
