// Windows.Networking.NetworkOperators and Windows.Storage.Streams.DataWriter, as
// a language projection shows them. Every call may throw: HresultError for a
// failing HRESULT, std::bad_alloc for E_OUTOFMEMORY. Null pointers are answers,
// not errors. Facts: the namespace's reference pages.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>

#include "platform/types.h"

namespace nuvelta::platform {

// A failing HRESULT. No std::exception, as in the projection.
struct HresultError {
  uint32_t code = 0;
};

enum class AsyncStatus : int32_t { kStarted = 0, kCompleted = 1, kCanceled = 2, kError = 3 };

enum class WatcherStatus : int32_t {
  kCreated = 0,
  kStarted = 1,
  kEnumerationCompleted = 2,
  kStopped = 3,
  kAborted = 4
};

// IBuffer with IBufferByteAccess. The bytes belong to the object.
class DataBuffer {
 public:
  virtual ~DataBuffer() = default;
  virtual uint32_t Length() = 0;
  virtual const uint8_t* Buffer() = 0;
};

class DataWriter {
 public:
  virtual ~DataWriter() = default;
  virtual void WriteBytes(std::span<const uint8_t> bytes) = 0;
  virtual std::shared_ptr<DataBuffer> DetachBuffer() = 0;
};

class CommandResult {
 public:
  virtual ~CommandResult() = default;
  virtual uint32_t StatusCode() = 0;
  virtual std::shared_ptr<DataBuffer> ResponseData() = 0;
};

class CommandOperation {
 public:
  using CompletedHandler = std::function<void(AsyncStatus)>;
  virtual ~CommandOperation() = default;
  // put_Completed: the handler runs once, on any thread, perhaps inside this
  // call, perhaps long after the caller has given up.
  virtual void Completed(CompletedHandler handler) = 0;
  virtual std::shared_ptr<CommandResult> GetResults() = 0;
};

class CommandSession {
 public:
  virtual ~CommandSession() = default;
  virtual std::shared_ptr<CommandOperation> SendQueryCommandAsync(
      uint32_t command_id, const std::shared_ptr<DataBuffer>& data) = 0;
  virtual std::shared_ptr<CommandOperation> SendSetCommandAsync(
      uint32_t command_id, const std::shared_ptr<DataBuffer>& data) = 0;
  virtual void CloseSession() = 0;
  // The object's identity, for the log.
  virtual uintptr_t Handle() = 0;
};

class DeviceService {
 public:
  virtual ~DeviceService() = default;
  virtual std::shared_ptr<CommandSession> OpenCommandSession() = 0;
};

class DeviceServiceInformation {
 public:
  virtual ~DeviceServiceInformation() = default;
  virtual Guid DeviceServiceId() = 0;
};

// IVectorView of DeviceServiceInformation.
class DeviceServiceList {
 public:
  virtual ~DeviceServiceList() = default;
  virtual uint32_t Size() = 0;
  virtual std::shared_ptr<DeviceServiceInformation> GetAt(uint32_t index) = 0;
};

class Modem {
 public:
  virtual ~Modem() = default;
  virtual std::shared_ptr<DeviceServiceList> DeviceServices() = 0;
  virtual std::shared_ptr<DeviceService> GetDeviceService(const Guid& id) = 0;
};

class AccountWatcher {
 public:
  using Handler = std::function<void()>;
  virtual ~AccountWatcher() = default;
  // Each registers a handler and returns its token. Handlers run on threads of
  // the platform; an exception that leaves one is reported to the platform only.
  virtual int64_t AccountAdded(Handler handler) = 0;
  virtual int64_t AccountRemoved(Handler handler) = 0;
  virtual int64_t EnumerationCompleted(Handler handler) = 0;
  virtual WatcherStatus Status() = 0;
  virtual void Start() = 0;
};

class MobileBroadband {
 public:
  virtual ~MobileBroadband() = default;
  // MobileBroadbandModem::GetDefault; null when there is no modem.
  virtual std::shared_ptr<Modem> GetDefault() = 0;
  virtual std::shared_ptr<DataWriter> CreateDataWriter() = 0;
  virtual std::shared_ptr<AccountWatcher> CreateAccountWatcher() = 0;
};

}  // namespace nuvelta::platform
