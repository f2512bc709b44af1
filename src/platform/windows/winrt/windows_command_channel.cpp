#include "platform/windows/winrt/windows_command_channel.h"

#include <bit>
#include <utility>

#include "platform/windows/winrt/delegate.h"
#include "platform/windows/winrt/hresult.h"

namespace nuvelta::windows {

namespace {

using winrt::Check;
using winrt::ComPtr;

// A class of this file for an object of the platform; null for null.
template <class Projected, class Interface>
std::shared_ptr<Projected> Project(ComPtr<Interface> object) {
  return object ? std::make_shared<Projected>(std::move(object)) : nullptr;
}

class WindowsBuffer final : public platform::DataBuffer {
 public:
  explicit WindowsBuffer(ComPtr<abi::IBuffer> buffer) : m_buffer(std::move(buffer)) {}

  uint32_t Length() override {
    UINT32 length = 0;
    Check(m_buffer->get_Length(&length));
    return length;
  }
  const uint8_t* Buffer() override {
    ComPtr<abi::IBufferByteAccess> access;
    Check(m_buffer.As(access));
    BYTE* bytes = nullptr;
    Check(access->Buffer(&bytes));
    return bytes;
  }
  abi::IBuffer* Get() const { return m_buffer.Get(); }

 private:
  ComPtr<abi::IBuffer> m_buffer;
};

class WindowsDataWriter final : public platform::DataWriter {
 public:
  explicit WindowsDataWriter(ComPtr<abi::IDataWriter> writer) : m_writer(std::move(writer)) {}

  void WriteBytes(std::span<const uint8_t> bytes) override {
    // The platform only reads them.
    Check(m_writer->WriteBytes(static_cast<UINT32>(bytes.size()), const_cast<BYTE*>(bytes.data())));
  }
  std::shared_ptr<platform::DataBuffer> DetachBuffer() override {
    ComPtr<abi::IBuffer> buffer;
    Check(m_writer->DetachBuffer(buffer.Out()));
    return Project<WindowsBuffer>(std::move(buffer));
  }

 private:
  ComPtr<abi::IDataWriter> m_writer;
};

class WindowsCommandResult final : public platform::CommandResult {
 public:
  explicit WindowsCommandResult(ComPtr<abi::IMobileBroadbandDeviceServiceCommandResult> result)
      : m_result(std::move(result)) {}

  uint32_t StatusCode() override {
    UINT32 code = 0;
    Check(m_result->get_StatusCode(&code));
    return code;
  }
  std::shared_ptr<platform::DataBuffer> ResponseData() override {
    ComPtr<abi::IBuffer> data;
    Check(m_result->get_ResponseData(data.Out()));
    return Project<WindowsBuffer>(std::move(data));
  }

 private:
  ComPtr<abi::IMobileBroadbandDeviceServiceCommandResult> m_result;
};

class WindowsCommandOperation final : public platform::CommandOperation {
 public:
  explicit WindowsCommandOperation(ComPtr<abi::ICommandOperation> operation)
      : m_operation(std::move(operation)) {}

  void Completed(CompletedHandler handler) override {
    using Delegate =
        winrt::Delegate<abi::ICommandCompletedHandler, abi::ICommandOperation*, abi::AsyncStatus>;
    const auto delegate =
        Delegate::Make([handler = std::move(handler)](
                           abi::ICommandOperation*, abi::AsyncStatus status) { handler(status); });
    Check(m_operation->put_Completed(delegate.Get()));
  }
  std::shared_ptr<platform::CommandResult> GetResults() override {
    ComPtr<abi::IMobileBroadbandDeviceServiceCommandResult> result;
    Check(m_operation->GetResults(result.Out()));
    return Project<WindowsCommandResult>(std::move(result));
  }

 private:
  ComPtr<abi::ICommandOperation> m_operation;
};

class WindowsCommandSession final : public platform::CommandSession {
 public:
  explicit WindowsCommandSession(ComPtr<abi::IMobileBroadbandDeviceServiceCommandSession> session)
      : m_session(std::move(session)) {}

  std::shared_ptr<platform::CommandOperation> SendQueryCommandAsync(
      uint32_t command_id, const std::shared_ptr<platform::DataBuffer>& data) override {
    ComPtr<abi::ICommandOperation> operation;
    Check(m_session->SendQueryCommandAsync(command_id, Native(data), operation.Out()));
    return Project<WindowsCommandOperation>(std::move(operation));
  }
  std::shared_ptr<platform::CommandOperation> SendSetCommandAsync(
      uint32_t command_id, const std::shared_ptr<platform::DataBuffer>& data) override {
    ComPtr<abi::ICommandOperation> operation;
    Check(m_session->SendSetCommandAsync(command_id, Native(data), operation.Out()));
    return Project<WindowsCommandOperation>(std::move(operation));
  }
  void CloseSession() override { Check(m_session->CloseSession()); }
  uintptr_t Handle() override { return reinterpret_cast<uintptr_t>(m_session.Get()); }

 private:
  // Every buffer comes from this file.
  static abi::IBuffer* Native(const std::shared_ptr<platform::DataBuffer>& data) {
    return data == nullptr ? nullptr : static_cast<const WindowsBuffer&>(*data).Get();
  }

  ComPtr<abi::IMobileBroadbandDeviceServiceCommandSession> m_session;
};

class WindowsDeviceService final : public platform::DeviceService {
 public:
  explicit WindowsDeviceService(ComPtr<abi::IMobileBroadbandDeviceService> service)
      : m_service(std::move(service)) {}

  std::shared_ptr<platform::CommandSession> OpenCommandSession() override {
    ComPtr<abi::IMobileBroadbandDeviceServiceCommandSession> session;
    Check(m_service->OpenCommandSession(session.Out()));
    return Project<WindowsCommandSession>(std::move(session));
  }

 private:
  ComPtr<abi::IMobileBroadbandDeviceService> m_service;
};

class WindowsDeviceServiceInformation final : public platform::DeviceServiceInformation {
 public:
  explicit WindowsDeviceServiceInformation(
      ComPtr<abi::IMobileBroadbandDeviceServiceInformation> information)
      : m_information(std::move(information)) {}

  platform::Guid DeviceServiceId() override {
    GUID id{};
    Check(m_information->get_DeviceServiceId(&id));
    return std::bit_cast<platform::Guid>(id);
  }

 private:
  ComPtr<abi::IMobileBroadbandDeviceServiceInformation> m_information;
};

class WindowsDeviceServiceList final : public platform::DeviceServiceList {
 public:
  explicit WindowsDeviceServiceList(ComPtr<abi::IDeviceServiceInformationView> view)
      : m_view(std::move(view)) {}

  uint32_t Size() override {
    UINT32 size = 0;
    Check(m_view->get_Size(&size));
    return size;
  }
  std::shared_ptr<platform::DeviceServiceInformation> GetAt(uint32_t index) override {
    ComPtr<abi::IMobileBroadbandDeviceServiceInformation> information;
    Check(m_view->GetAt(index, information.Out()));
    return Project<WindowsDeviceServiceInformation>(std::move(information));
  }

 private:
  ComPtr<abi::IDeviceServiceInformationView> m_view;
};

class WindowsModem final : public platform::Modem {
 public:
  explicit WindowsModem(ComPtr<abi::IMobileBroadbandModem> modem) : m_modem(std::move(modem)) {}

  std::shared_ptr<platform::DeviceServiceList> DeviceServices() override {
    ComPtr<abi::IDeviceServiceInformationView> view;
    Check(m_modem->get_DeviceServices(view.Out()));
    return Project<WindowsDeviceServiceList>(std::move(view));
  }
  std::shared_ptr<platform::DeviceService> GetDeviceService(const platform::Guid& id) override {
    ComPtr<abi::IMobileBroadbandDeviceService> service;
    Check(m_modem->GetDeviceService(ToGuid(id), service.Out()));
    return Project<WindowsDeviceService>(std::move(service));
  }

 private:
  ComPtr<abi::IMobileBroadbandModem> m_modem;
};

}  // namespace

std::shared_ptr<platform::Modem> ProjectModem(ComPtr<abi::IMobileBroadbandModem> modem) {
  return Project<WindowsModem>(std::move(modem));
}

std::shared_ptr<platform::DataWriter> ProjectDataWriter(ComPtr<abi::IDataWriter> writer) {
  return Project<WindowsDataWriter>(std::move(writer));
}

}  // namespace nuvelta::windows
